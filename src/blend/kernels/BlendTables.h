#pragma once

#include <vantu/BlendMode.h>

#include <array>

namespace vantu {

/// B(cb, cs) of a mode at 256*cb + cs, and three bytes more, so that four can be read at each entry.
struct BlendTable {
    std::array<unsigned char, 65536 + 3> bytes;
};

/// Whether vector code looks a mode up instead of computing it.
constexpr bool HasBlendTable(BlendMode mode) {
    return mode == BlendMode::ColorBurn || mode == BlendMode::SoftLight;
}

/// The table of a mode that has one, made at first use by the function that defines the mode; null for other modes.
const BlendTable* BlendTableOf(BlendMode mode);

}  // namespace vantu
