#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

// Tables to be looked up by bytes: quotients by an 8-bit divisor, and what rounding makes of ColorBurn.

namespace vantu {

using WordTable = std::array<std::uint16_t, 256>;

/// A table of words, and its low and its high bytes: vectors look up the ones or the others.
struct SplitTable {
    explicit constexpr SplitTable(const WordTable& table) : words(table) {
        for (std::size_t i = 0; i < words.size(); ++i) {
            low[i] = static_cast<std::uint8_t>(words[i]);
            high[i] = static_cast<std::uint8_t>(words[i] >> 8);
        }
    }

    alignas(64) WordTable words;
    alignas(64) std::array<std::uint8_t, 256> low{};
    alignas(64) std::array<std::uint8_t, 256> high{};
};

/// A table of `numerator / d`, rounded up or down, its bits from `shift` on; entry 0 is 0.
constexpr SplitTable MakeQuotientTable(std::uint32_t numerator, bool roundUp, unsigned int shift) {
    WordTable table{};
    for (std::uint32_t d = 1; d < table.size(); ++d) {
        table[d] = static_cast<std::uint16_t>((numerator + (roundUp ? d - 1 : 0)) / d >> shift);
    }
    return SplitTable(table);
}

/// ceil(255 * 65536 / a), its high and its low word: the factor of floor(255 * c / a) for every byte c. The high words
/// are bytes.
inline constexpr SplitTable kUnpremultiplyHigh = MakeQuotientTable(255U << 16, true, 16);
inline constexpr SplitTable kUnpremultiplyLow = MakeQuotientTable(255U << 16, true, 0);

/// floor(65535 / d).
inline constexpr SplitTable kReciprocal = MakeQuotientTable(65535, false, 0);

/// Whether trunc((1 - k/255) * 255) in double precision is one below 255 - k: where ColorBurn divides without
/// remainder.
constexpr bool RoundsDown(unsigned int k) {
    return static_cast<unsigned int>((1.0 - static_cast<double>(k) / 255.0) * 255.0) != 255 - k;
}

/// The same for all k: a bit each, the lowest of a byte first.
alignas(16) inline constexpr std::array<std::uint8_t, 32> kRoundsDown = [] {
    std::array<std::uint8_t, 32> bits{};
    for (unsigned int k = 0; k < 256; ++k) {
        if (RoundsDown(k)) bits[k / 8] = static_cast<std::uint8_t>(bits[k / 8] | 1U << k % 8);
    }
    return bits;
}();

}  // namespace vantu
