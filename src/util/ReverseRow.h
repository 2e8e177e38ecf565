#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vantu {

/// The pixels of `Size` bytes in a word in reverse order, which is the same in either byte order.
template <unsigned int Size>
constexpr std::uint64_t ReversePixelsOfWord(std::uint64_t word) {
    constexpr std::uint64_t pairs = 0x0000FFFF0000FFFF, bytes = 0x00FF00FF00FF00FF;
    word = word << 32 | word >> 32;
    if constexpr (Size <= 2) word = (word & pairs) << 16 | (word >> 16 & pairs);
    if constexpr (Size == 1) word = (word & bytes) << 8 | (word >> 8 & bytes);
    return word;
}

/// Copies `count` pixels of `Size` bytes in reverse order.
template <unsigned int Size>
void ReversePixels(const unsigned char* source, unsigned char* target, std::size_t count) {
    std::size_t i = 0;
    if constexpr (8 % Size == 0) {
        constexpr std::size_t perWord = 8 / Size;
        for (; i + perWord <= count; i += perWord) {
            std::uint64_t word;
            std::memcpy(&word, source + (count - perWord - i) * Size, sizeof word);
            word = ReversePixelsOfWord<Size>(word);
            std::memcpy(target + i * Size, &word, sizeof word);
        }
    }
    for (; i < count; ++i) std::memcpy(target + i * Size, source + (count - 1 - i) * Size, Size);
}

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

/// Target field x gets source field `last` - x, for x from 0 to `count` - 1; `last` is `count` or `count` - 1. The
/// other bits of the last target byte are kept.
/// @param available bytes that can be read from `source` on; what lies beyond counts as 0.
template <unsigned int Bits>
void ReverseFields(const unsigned char* source, std::uint64_t available, std::size_t last, unsigned char* target,
                   std::size_t count) {
    constexpr std::size_t perByte = 8 / Bits;
    const auto byteAt = [=](std::int64_t i) -> unsigned int {
        return static_cast<std::uint64_t>(i) < available ? source[i] : 0U;
    };
    for (std::size_t x = 0; x < count; x += perByte) {
        // The 8 source bits that end with field last - x; they begin before the row if the last target byte is not
        // full.
        const auto start = (static_cast<std::int64_t>(last) - static_cast<std::int64_t>(x + perByte - 1)) *
                           static_cast<std::int64_t>(Bits);
        const unsigned int window = byteAt(start >> 3) << 8 | byteAt((start >> 3) + 1);
        const unsigned int fields = ReverseFieldsOfByte<Bits>(window >> (8 - (start & 7)) & 0xFFU);
        const std::size_t used = count - x < perByte ? count - x : perByte;
        const unsigned int kept = 0xFFU >> used * Bits;
        unsigned char& byte = target[x / perByte];
        byte = static_cast<unsigned char>((byte & kept) | (fields & ~kept));
    }
}

}  // namespace vantu
