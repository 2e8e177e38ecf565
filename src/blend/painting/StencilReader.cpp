#include "blend/painting/StencilReader.h"

#include <array>
#include <bit>
#include <cstring>

namespace vantu {
namespace {

using Eight = std::array<unsigned char, 8>;

/// The select bytes of eight pixels by their mask byte.
constexpr std::array<Eight, 256> kSelectOfByte = [] {
    std::array<Eight, 256> table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte) {
        for (std::size_t i = 0; i < 8; ++i) table[byte][i] = static_cast<unsigned char>(~byte >> (7 - i) & 1);
    }
    return table;
}();

/// The eight bits from bit `shift` of `p[0]` on; a second byte is read only if the first has not enough.
unsigned int EightBits(const unsigned char* p, unsigned int shift) {
    if (shift == 0) return p[0];
    return (static_cast<unsigned int>(p[0]) << shift | static_cast<unsigned int>(p[1]) >> (8 - shift)) & 255;
}

/// Reads `count` pixels of a row. @return how many of them are protected.
std::size_t ReadRow(const unsigned char* row, std::size_t x, std::size_t count, unsigned char* select) {
    const unsigned char* byte = row + (x >> 3);
    const auto shift = static_cast<unsigned int>(x & 7);
    std::size_t guarded = 0;
    std::size_t i = 0;
    for (; i + 8 <= count; i += 8, ++byte) {
        const unsigned int bits = EightBits(byte, shift);
        guarded += static_cast<std::size_t>(std::popcount(bits));
        std::memcpy(select + i, kSelectOfByte[bits].data(), 8);
    }
    for (std::size_t position = x + i; i < count; ++i, ++position) {
        const unsigned int bit = static_cast<unsigned int>(row[position >> 3]) >> (7 - (position & 7)) & 1;
        guarded += bit;
        select[i] = static_cast<unsigned char>(bit ^ 1);
    }
    return guarded;
}

}  // namespace

Painted ReadStencil(const PixelRows<const unsigned char>& rows, std::size_t x, std::size_t width,
                    unsigned char* select) {
    std::size_t guarded = 0;
    for (std::size_t row = 0; row < rows.count; ++row)
        guarded += ReadRow(rows.Row(row), x, width, select + row * width);
    if (guarded == 0) return Painted::Everything;
    return guarded == rows.count * width ? Painted::Nothing : Painted::Some;
}

}  // namespace vantu
