#pragma once

#include <vantu/BlendMode.h>
#include <vantu/IQorImage.h>

#include <string>
#include <vector>

#include "ScalarLoop.h"

namespace vantu::bench {

/// What is painted on what, in 32-bit terms; formats without alpha make it opaque.
enum class Content : char {
    ConstantOverOpaque = 'a',  ///< opaque source at constant alpha 128 over opaque
    AlphaOverOpaque = 'b',     ///< random source alpha over opaque
    AlphaOverAlpha = 'c',      ///< random over random
    SpriteOverOpaque = 'd',    ///< 60 % transparent, 30 % opaque, 10 % edge pixels, in runs, over opaque
    SpriteOverHalf = 'e',      ///< the same over alpha 128
};

/// One combination that is measured. `scalar` is the plain loop of the same combination.
struct BlendCase {
    BlendMode mode;
    PixelFormat destination;
    PixelFormat source;
    Content content;
    Loop loop;
    CompositeForm form;
    unsigned int size;  ///< pixels on each side
    ScalarLoop scalar;

    /// As in "Multiply/7<-7/c/rect/plain/256".
    [[nodiscard]] std::string Name() const;
    [[nodiscard]] unsigned char Alpha() const { return content == Content::ConstantOverOpaque ? 128 : 255; }
};

/// All combinations that are measured: every mode and content where it matters most, and Normal and Multiply for the
/// other formats, loops, forms and sizes.
std::vector<BlendCase> BlendCases();

}  // namespace vantu::bench
