#pragma once

#include <cstdint>
#include <cstring>

#include "util/TurnSteps.h"

// The steps of flips and turns, a few pixels at a time.

namespace vantu {

/// The fields of `Bits` bits of one byte in reverse order.
template <unsigned int Bits>
constexpr unsigned int ReverseFieldsOfByte(unsigned int byte) {
    byte = (byte & 0x0FU) << 4 | (byte & 0xF0U) >> 4;
    if constexpr (Bits == 1) {
        byte = (byte & 0x33U) << 2 | (byte & 0xCCU) >> 2;
        byte = (byte & 0x55U) << 1 | (byte & 0xAAU) >> 1;
    }
    return byte;
}

/// The pixels of `Size` bytes in a word in reverse order, which is the same in either byte order.
template <unsigned int Size>
constexpr std::uint64_t ReversePixelsOfWord(std::uint64_t word) {
    constexpr std::uint64_t pairs = 0x0000FFFF0000FFFF, bytes = 0x00FF00FF00FF00FF;
    word = word << 32 | word >> 32;
    if constexpr (Size <= 2) word = (word & pairs) << 16 | (word >> 16 & pairs);
    if constexpr (Size == 1) word = (word & bytes) << 8 | (word >> 8 & bytes);
    return word;
}

template <unsigned int Bits>
struct ScalarTurn {
    static void Reverse(const unsigned char* end, unsigned int shift, unsigned char* target, std::size_t count) {
        constexpr std::size_t size = Bits / 8;
        std::size_t i = 0;
        if constexpr (Bits < 8) {
            for (; i < count; ++i) {
                const unsigned char* const from = end - 1 - i;
                const unsigned int byte = from[0], next = shift > 0 ? from[1] : 0U;
                const unsigned int window = byte << shift | next >> (8 - shift);
                target[i] = static_cast<unsigned char>(ReverseFieldsOfByte<Bits>(window & 0xFFU));
            }
        } else {
            if constexpr (8 % size == 0) {
                for (; i + 8 <= count; i += 8) {
                    std::uint64_t word;
                    std::memcpy(&word, end - i - 8, sizeof word);
                    word = ReversePixelsOfWord<size>(word);
                    std::memcpy(target + i, &word, sizeof word);
                }
            }
            for (; i < count; i += size) std::memcpy(target + i, end - i - size, size);
        }
    }

    static void Transpose(const PixelRows<const unsigned char>& source, const PixelRows<unsigned char>& target,
                          std::size_t across, std::size_t down) {
        constexpr std::size_t side = SquareSide(Bits);
        for (std::size_t top = 0; top < down * side; top += side) {
            for (std::size_t left = 0; left < across * side; left += side) {
                for (std::size_t y = top; y < top + side; ++y) TransposeColumn(source, y, target.Row(y), left);
            }
        }
    }

private:
    /// The pixels of a square that lie in column `y` of the source, to be one row of the target from pixel `left` on.
    static void TransposeColumn(const PixelRows<const unsigned char>& source, std::size_t y, unsigned char* target,
                                std::size_t left) {
        constexpr std::size_t side = SquareSide(Bits);
        if constexpr (Bits < 8) {
            constexpr std::size_t perByte = 8 / Bits;
            constexpr unsigned int firstField = Bits == 1 ? 0x80 : 0xF0;
            for (std::size_t x = left; x < left + side; x += perByte) {
                unsigned int fields = 0;
                for (std::size_t i = 0; i < perByte; ++i) {
                    const unsigned int byte = source.Row(x + i)[y / perByte];
                    fields |= (byte << y % perByte * Bits & firstField) >> i * Bits;
                }
                target[x / perByte] = static_cast<unsigned char>(fields);
            }
        } else {
            constexpr std::size_t size = Bits / 8;
            for (std::size_t x = left; x < left + side; ++x) {
                std::memcpy(target + x * size, source.Row(x) + y * size, size);
            }
        }
    }
};

/// The steps of one depth that `Turn` has.
template <typename Turn>
TurnSteps MakeTurnSteps() {
    return {Turn::Reverse, Turn::Transpose};
}

/// The steps of `Turn<bits>`; none for a depth that no format has.
template <template <unsigned int> typename Turn>
TurnSteps TurnStepsOf(unsigned int bits) {
    switch (bits) {
        case 1: return MakeTurnSteps<Turn<1>>();
        case 4: return MakeTurnSteps<Turn<4>>();
        case 8: return MakeTurnSteps<Turn<8>>();
        case 16: return MakeTurnSteps<Turn<16>>();
        case 24: return MakeTurnSteps<Turn<24>>();
        case 32: return MakeTurnSteps<Turn<32>>();
        default: return {};
    }
}

}  // namespace vantu
