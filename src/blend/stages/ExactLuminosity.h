#pragma once

#include <vantu/Color.h>

#include <cstdint>

#include "blend/definition/CompositeSteps.h"
#include "transfer/SourceValue.h"

namespace vantu {

/// The luminosity of a colour as a byte, in doubles: what groups cut it to, or the effective alpha of an opaque source.
inline unsigned char ExactLuminosity(const unsigned char* bgr, bool inGroup) {
    const std::uint32_t rgb = bgr[0] | std::uint32_t{bgr[1]} << 8 | std::uint32_t{bgr[2]} << 16;
    const double luminosity = LuminosityValue(Color(ARGB_BLACK | rgb));
    return static_cast<unsigned char>(inGroup ? GroupMaskByte(luminosity) : PlainMaskOpacity(255, 255, luminosity));
}

}  // namespace vantu
