#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "util/PixelBlock.h"

namespace vantu {

/// Which way a quarter turn goes, as the picture is seen.
enum class Turn { CounterClockwise, Clockwise };

/// Turns pixels of `Size` bytes. Rows of both pictures count from the bottom; `width` and `height` are the target's.
///
/// A tile at a time, by way of a buffer: each source and target row is touched in runs, and a power of two between
/// rows, which puts all of a column in the same few cache lines, costs nothing.
template <unsigned int Size>
void TurnPixels(Turn turn, const RowWalk<const unsigned char>& source, const RowWalk<unsigned char>& target,
                std::size_t width, std::size_t height) {
    constexpr std::size_t tile = 32;
    unsigned char turned[tile][tile * Size];
    const bool clockwise = turn == Turn::Clockwise;
    for (std::size_t top = 0; top < height; top += tile) {
        const std::size_t rows = std::min(tile, height - top);
        for (std::size_t left = 0; left < width; left += tile) {
            const std::size_t columns = std::min(tile, width - left);
            for (std::size_t c = 0; c < columns; ++c) {
                const std::size_t column = left + c;
                // Counter-clockwise, target (column, row) comes from source row width - 1 - column, column row;
                // clockwise from source row column, column height - 1 - row.
                const unsigned char* const run = clockwise ? source.Row(column) + (height - top - rows) * Size
                                                           : source.Row(width - 1 - column) + top * Size;
                for (std::size_t r = 0; r < rows; ++r) {
                    std::memcpy(&turned[clockwise ? rows - 1 - r : r][c * Size], run + r * Size, Size);
                }
            }
            for (std::size_t r = 0; r < rows; ++r) {
                std::memcpy(target.Row(top + r) + left * Size, turned[r], columns * Size);
            }
        }
    }
}

/// Turns fields of `Bits` bits. Rows of both pictures count from the top; `width` and `height` are the target's. Other
/// bits of the target's last bytes are kept.
template <unsigned int Bits>
void TurnFields(Turn turn, const RowWalk<const unsigned char>& source, const RowWalk<unsigned char>& target,
                std::size_t width, std::size_t height) {
    constexpr std::size_t perByte = 8 / Bits;
    const bool clockwise = turn == Turn::Clockwise;
    // The target rows of one band come from one column of source bytes.
    for (std::size_t band = 0; band < height; band += perByte) {
        const std::size_t bandEnd = std::min(height, band + perByte);
        for (std::size_t x = 0; x < width; x += perByte) {
            const std::size_t used = std::min(perByte, width - x);
            for (std::size_t y = band; y < bandEnd; ++y) {
                // Counter-clockwise, target (x, y) comes from source column height - 1 - y, row x; clockwise from
                // source column y, row width - 1 - x.
                const std::size_t position = (clockwise ? y : height - 1 - y) * Bits;
                unsigned int fields = 0;
                for (std::size_t i = 0; i < used; ++i) {
                    const unsigned int byte = source.Row(clockwise ? width - 1 - x - i : x + i)[position >> 3];
                    const unsigned int field = byte << (position & 7) & 0xFFU & ~(0xFFU >> Bits);
                    fields |= field >> i * Bits;
                }
                const unsigned int kept = 0xFFU >> used * Bits;
                unsigned char& byte = target.Row(y)[x / perByte];
                byte = static_cast<unsigned char>((byte & kept) | fields);
            }
        }
    }
}

}  // namespace vantu
