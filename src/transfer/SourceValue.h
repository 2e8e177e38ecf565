#pragma once

#include <vantu/IPDFTransferFunction.h>

namespace vantu {

/// x = A / 255
inline double AlphaValue(const Color& color) {
    return color.GetAlpha() / 255.0;
}

/// x = ((R * 0.3 + G * 0.59) + B * 0.11) / 255, in this order of operations
inline double LuminosityValue(const Color& color) {
    return ((color.GetRed() * 0.3 + color.GetGreen() * 0.59) + color.GetBlue() * 0.11) / 255.0;
}

/// The source value of a colour; every type but alpha means luminosity.
inline double SourceValue(IPDFTransferFunction::SourceType source, const Color& color) {
    return source == IPDFTransferFunction::SourceType::Alpha ? AlphaValue(color) : LuminosityValue(color);
}

}  // namespace vantu
