#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "util/TurnSteps.h"

namespace vantu {

/// Copies up to `kSquareBytes` bytes without a call: half of them forward from the start, half up to the end, which may
/// overlap.
inline void CopyRun(const unsigned char* source, unsigned char* target, std::size_t bytes) {
    constexpr std::size_t half = kSquareBytes / 2;
    if (bytes >= half) {
        std::memcpy(target, source, half);
        std::memcpy(target + bytes - half, source + bytes - half, half);
    } else {
        for (std::size_t i = 0; i < bytes; ++i) target[i] = source[i];
    }
}

/// Copies bits of one row of a square; the other bits of the last target byte are kept.
inline void CopyBits(const unsigned char* source, unsigned char* target, std::size_t count) {
    const std::size_t whole = count / 8;
    CopyRun(source, target, whole);
    if (count % 8 == 0) return;
    const unsigned int kept = 0xFFU >> count % 8;
    target[whole] = static_cast<unsigned char>((target[whole] & kept) | (source[whole] & ~kept));
}

/// Target pixel (x, y) gets source pixel (y, x). The other bits of the target's last bytes are kept.
///
/// A quarter turn is this with the rows of one of the two in reverse order: counter-clockwise the target's, clockwise
/// the source's.
/// @param steps those for pixels of `bits` bits.
/// @param width the target's, in pixels.
inline void Transpose(const TurnSteps& steps, unsigned int bits, const PixelRows<const unsigned char>& source,
                      const PixelRows<unsigned char>& target, std::size_t width) {
    const std::size_t side = SquareSide(bits), height = target.count;
    steps.transpose(source, target, width / side, height / side);

    // What is left at the right and at the bottom goes through squares of its own.
    unsigned char from[SquareSide(1) * kSquareBytes] = {}, to[SquareSide(1) * kSquareBytes];
    const auto transposePart = [&](std::size_t left, std::size_t top) {
        const std::size_t columns = std::min(side, width - left), rows = std::min(side, height - top);
        for (std::size_t x = 0; x < columns; ++x) {
            CopyRun(source.Row(left + x) + top * bits / 8, from + x * kSquareBytes, (rows * bits + 7) / 8);
        }
        steps.transpose({from, kSquareBytes, side}, {to, kSquareBytes, side}, 1, 1);
        for (std::size_t y = 0; y < rows; ++y) {
            CopyBits(to + y * kSquareBytes, target.Row(top + y) + left * bits / 8, columns * bits);
        }
    };
    const std::size_t right = width - width % side, bottom = height - height % side;
    for (std::size_t top = 0; right < width && top < height; top += side) transposePart(right, top);
    for (std::size_t left = 0; bottom < height && left < right; left += side) transposePart(left, bottom);
}

}  // namespace vantu
