#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <type_traits>

#include "pixel/PixelRows.h"

namespace vantu {

/// Which way a quarter turn goes, as the picture is seen.
enum class Turn { CounterClockwise, Clockwise };

/// Turns pixels of `Size` bytes. Rows of both pictures count from the bottom; `width` and `height` are the target's.
///
/// A tile at a time: runs of source rows are gathered in a buffer, from which whole cache lines of the target are
/// written. So rows a power of two apart, which compete for the same few cache lines, do no harm.
template <unsigned int Size>
void TurnPixels(Turn turn, const PixelRows<const unsigned char>& source, const PixelRows<unsigned char>& target,
                std::size_t width, std::size_t height) {
    constexpr std::size_t tileWidth = 64 / Size;
    constexpr std::size_t tileHeight = 128 / Size;
    unsigned char runs[tileWidth][tileHeight * Size];
    const bool clockwise = turn == Turn::Clockwise;
    const auto turnTile = [&](std::size_t left, std::size_t top, auto columns, auto rows) {
        // Counter-clockwise, target (column, row) comes from source row width - 1 - column, column row;
        // clockwise from source row column, column height - 1 - row.
        for (std::size_t c = 0; c < columns; ++c) {
            const unsigned char* const run = clockwise ? source.Row(left + c) + (height - top - rows) * Size
                                                       : source.Row(width - 1 - left - c) + top * Size;
            std::memcpy(runs[c], run, rows * Size);
        }
        for (std::size_t r = 0; r < rows; ++r) {
            const std::size_t position = (clockwise ? rows - 1 - r : r) * Size;
            unsigned char* const out = target.Row(top + r) + left * Size;
            for (std::size_t c = 0; c < columns; ++c) std::memcpy(out + c * Size, runs[c] + position, Size);
        }
    };
    for (std::size_t top = 0; top < height; top += tileHeight) {
        const std::size_t rows = std::min(tileHeight, height - top);
        for (std::size_t left = 0; left < width; left += tileWidth) {
            const std::size_t columns = std::min(tileWidth, width - left);
            if (columns == tileWidth && rows == tileHeight) {
                // Constant counts make straight code of the copies: without them a tile takes twice as long.
                turnTile(left, top, std::integral_constant<std::size_t, tileWidth>(),
                         std::integral_constant<std::size_t, tileHeight>());
            } else {
                turnTile(left, top, columns, rows);
            }
        }
    }
}

/// Turns fields of `Bits` bits. Rows of both pictures count from the top; `width` and `height` are the target's. Other
/// bits of the target's last bytes are kept.
template <unsigned int Bits>
void TurnFields(Turn turn, const PixelRows<const unsigned char>& source, const PixelRows<unsigned char>& target,
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
