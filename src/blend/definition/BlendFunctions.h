#pragma once

#include <vantu/BlendMode.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

// The blend functions B(cb, cs) of ISO 32000-2, 11.3.5.2, on straight 8-bit channels: cb of the backdrop, cs of the
// source. Integer divisions truncate. The three modes in double precision round each operation to double in the order
// written and truncate at the end. Whatever else computes a mode is tested against these.

namespace vantu {

/// Multiply for a dark steering channel t, Screen for a light one:
/// t < 128: 2*t*o / 255, otherwise ((255-o)*(2*t-255) + 255*o) / 255.
constexpr std::uint32_t HardMix(std::uint32_t t, std::uint32_t o) {
    return t < 128 ? 2 * t * o / 255 : ((255 - o) * (2 * t - 255) + 255 * o) / 255;
}

/// min(1, cb / (255-cs)) * 255; a full source gives 255 whatever the backdrop.
inline std::uint32_t ColorDodge(std::uint32_t cb, std::uint32_t cs) {
    if (cs == 255) return 255;
    const double r = std::min(static_cast<double>(cb) / (255.0 - static_cast<double>(cs)), 1.0);
    return static_cast<std::uint32_t>(r * 255.0);
}

/// (1 - min(1, (255-cb) / cs)) * 255; an empty source gives 0 whatever the backdrop. The subtraction rounds, which puts
/// 232 operand pairs one below the exact value.
inline std::uint32_t ColorBurn(std::uint32_t cb, std::uint32_t cs) {
    if (cs == 0) return 0;
    const double r = std::min((255.0 - static_cast<double>(cb)) / static_cast<double>(cs), 1.0);
    return static_cast<std::uint32_t>((1.0 - r) * 255.0);
}

/// s < 0.5: b - (1-2s)*b*(1-b), otherwise b + (2s-1)*(d(b)-b) with d(b) = ((16b-12)b+4)b below 0.25, else sqrt(b).
inline std::uint32_t SoftLight(std::uint32_t cb, std::uint32_t cs) {
    const double s = static_cast<double>(cs) / 255.0;
    const double b = static_cast<double>(cb) / 255.0;
    double v = 0.0;
    if (s < 0.5) {
        v = b - ((1.0 - (s + s)) * b) * (1.0 - b);
    } else {
        const double d = b < 0.25 ? ((b * 16.0 - 12.0) * b + 4.0) * b : std::sqrt(b);
        v = b + ((s + s) - 1.0) * (d - b);
    }
    return static_cast<std::uint32_t>(v * 255.0);
}

/// B(cb, cs) of a mode, 0 to 255.
template <BlendMode Mode>
inline std::uint32_t BlendChannel(std::uint32_t cb, std::uint32_t cs) {
    static_assert(static_cast<unsigned int>(Mode) < kBlendModeCount);
    if constexpr (Mode == BlendMode::Normal) return cs;
    if constexpr (Mode == BlendMode::Multiply) return cs * cb / 255;
    if constexpr (Mode == BlendMode::Screen) return ((255 - cb) * cs + 255 * cb) / 255;
    if constexpr (Mode == BlendMode::Overlay) return HardMix(cb, cs);
    if constexpr (Mode == BlendMode::Darken) return std::min(cb, cs);
    if constexpr (Mode == BlendMode::Lighten) return std::max(cb, cs);
    if constexpr (Mode == BlendMode::ColorDodge) return ColorDodge(cb, cs);
    if constexpr (Mode == BlendMode::ColorBurn) return ColorBurn(cb, cs);
    if constexpr (Mode == BlendMode::HardLight) return HardMix(cs, cb);
    if constexpr (Mode == BlendMode::SoftLight) return SoftLight(cb, cs);
    if constexpr (Mode == BlendMode::Difference) return std::max(cb, cs) - std::min(cb, cs);
    // 255-2*cb wraps below zero and the sum wraps back: the numerator is never negative.
    if constexpr (Mode == BlendMode::Exclusion) return ((255 - 2 * cb) * cs + 255 * cb) / 255;
}

}  // namespace vantu
