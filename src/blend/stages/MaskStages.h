#pragma once

#include <vantu/Color.h>

#include <array>
#include <cstddef>
#include <cstdint>

#include "blend/definition/CompositeSteps.h"
#include "pixel/PixelRows.h"

namespace vantu {

/// A byte for each key of a pixel.
using ByteTable = std::array<unsigned char, 256>;

/// Rows of packed pixels: a source and the target that it is mixed into. They do not overlap.
struct MixedRows {
    PixelRows<unsigned char> target;
    PixelRows<const unsigned char> source;
    std::size_t width;
    /// Whether the target is premultiplied. Its pixels of no byte but 0 are then mixed as opaque ones are, and such
    /// pixels of the source leave what they lie on; not through stencils, which at full alpha copy them.
    bool mixesClear;
};

/// How keys that are the values of an identity's source scale a source alpha sa, at full constant alpha outside groups:
/// to trunc(255 * (sa * opacity) / 255), which is (sa * key + bias) * 257 / 65536 up to some alpha, mostly up to 255.
/// Above it the roundings of the doubles may differ. The bias is 1, or 0 where the opacity falls short of key / 255.
struct KeyScaling {
    explicit KeyScaling(const std::array<double, 256>& opacitiesOfKeys);

    [[nodiscard]] static constexpr std::uint32_t Approximately(std::uint32_t alpha, std::uint32_t key,
                                                               std::uint32_t bias) {
        return (alpha * key + bias) * 257 >> 16;
    }
    [[nodiscard]] std::uint32_t Exactly(std::uint32_t alpha, std::size_t key) const {
        return PlainMaskOpacity(255, alpha, opacities[key]);
    }

    ByteTable bias;       ///< by key, as all of these
    ByteTable holdsUpTo;  ///< the greatest alpha
    std::array<double, 256> opacities;
};

/// Packed pixels and the keys of their mask, a byte a pixel.
struct KeyedSpan {
    const unsigned char* keys;
    const unsigned char* source;
    unsigned char* effective;  ///< out: effective source alpha per pixel
    std::size_t count;
};

/// Luminosities as bytes: floor(255 * luminosity) in the doubles that define it, all roundings included.
struct LuminosityBytes {
    const ByteTable& ofGrey;
    bool inGroup;  ///< what groups cut them to; else the effective alphas of an opaque source
};

/// What a soft mask or a stencil takes: reading a mask's bytes as alphas, and Normal of opaque pixels on opaque or
/// clear ones, as text, outlines and shadows are painted. These are mixed where they lie, by an alpha a pixel: each of
/// their bytes is (source * alpha + target * (255-alpha)) / 255.
struct MaskStages {
    /// Mixes by the alphas of keys, a byte a pixel. Stops before the first pixel of which that does not hold, or some
    /// pixels ahead of it.
    /// @return how many pixels are mixed, row by row.
    std::size_t (*byKeys)(const MixedRows& rows, const PixelRows<const unsigned char>& keys,
                          const ByteTable& alphaOfKey);
    /// The same by bits of a stencil, from bit `first` of each row on, the most significant bit of a byte first: by
    /// `alpha` where they are 0.
    std::size_t (*byBits)(const MixedRows& rows, const PixelRows<const unsigned char>& bits, std::size_t first,
                          std::uint32_t alpha);
    /// The same by luminosities of packed pixels of a mask. Stops also ahead of one that is not opaque, if it
    /// `needsOpaque`.
    std::size_t (*byColors)(const MixedRows& rows, const PixelRows<const unsigned char>& colors, bool needsOpaque,
                            const LuminosityBytes& of);
    /// Luminosities of packed pixels, whatever their alpha, as bytes. @return whether all of the pixels are opaque.
    bool (*luminosities)(const unsigned char* packed, std::size_t count, const LuminosityBytes& of,
                         unsigned char* bytes);
    /// Whether 256 colours are the opaque greys, each at its value.
    bool (*areGreys)(const Color* colors);
    /// The bytes of keys.
    void (*lookUp)(const unsigned char* keys, std::size_t count, const ByteTable& table, unsigned char* bytes);
    /// Effective alphas of any source, outside groups at full constant alpha.
    void (*scale)(const KeyedSpan& span, const KeyScaling& scaling);
};

/// The stages as plain loops.
const MaskStages& ScalarMaskStages();

/// The fastest stages that this machine runs; chosen at first use.
const MaskStages& ActiveMaskStages();

}  // namespace vantu
