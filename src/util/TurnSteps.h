#pragma once

#include <cstddef>

#include "pixel/PixelRows.h"

// What flips and turns do to many pixels at once.

namespace vantu {

/// A square of pixels that is transposed at once is so many bytes wide, or 12 where a pixel has three.
inline constexpr std::size_t kSquareBytes = 16;

/// Pixels along its side.
constexpr std::size_t SquareSide(unsigned int bits) {
    return bits == 24 ? 4 : kSquareBytes * 8 / bits;
}

/// The steps for pixels of one depth.
struct TurnSteps {
    /// Byte i of `target` gets the pixels of the 8 bits that start `shift` (0 to 7) bits into end[-1 - i], in reverse
    /// order. Pixels of whole bytes are reversed likewise; their `shift` is 0 and `count` a multiple of their size.
    ///
    /// REQUIRES: end[-count] to end[-1] can be read; if `shift` is not 0, end[0], too.
    void (*reverse)(const unsigned char* end, unsigned int shift, unsigned char* target, std::size_t count);

    /// Target pixel (x, y) gets source pixel (y, x), in `across` squares side by side times `down` squares.
    void (*transpose)(const PixelRows<const unsigned char>& source, const PixelRows<unsigned char>& target,
                      std::size_t across, std::size_t down);
};

/// The fastest steps that this machine runs for 1, 4, 8, 16, 24 or 32 bits.
TurnSteps ActiveTurnSteps(unsigned int bits);

}  // namespace vantu
