#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "pixel/PixelRows.h"

namespace vantu {

/// A byte for each key of a pixel.
using ByteTable = std::array<unsigned char, 256>;

/// Rows of packed pixels: a source and the target that it is mixed into. They do not overlap.
struct MixedRows {
    PixelRows<unsigned char> target;
    PixelRows<const unsigned char> source;
    std::size_t width;
};

/// Opaque pixels mixed into opaque ones where they lie, by an alpha a pixel: Normal as text, outlines and shadows need
/// it. Pixels are (source * alpha + target * (255-alpha)) / 255, each byte of them.
struct MixStages {
    /// Mixes by the alphas of keys, a byte a pixel. Stops before the first row that has a pixel that is not opaque.
    /// @return the rows that are mixed.
    std::size_t (*byKeys)(const MixedRows& rows, const PixelRows<const unsigned char>& keys,
                          const ByteTable& alphaOfKey);
    /// The same by bits of a stencil, from bit `first` of each row on, the most significant bit of a byte first: by
    /// `alpha` where they are 0.
    std::size_t (*byBits)(const MixedRows& rows, const PixelRows<const unsigned char>& bits, std::size_t first,
                          std::uint32_t alpha);
};

/// The stages as plain loops.
const MixStages& ScalarMixStages();

/// The fastest stages that this machine runs; chosen at first use.
const MixStages& ActiveMixStages();

}  // namespace vantu
