#pragma once

#include <vantu/Color.h>

#include <cstdint>

#include "blend/definition/BlendFunctions.h"

// What happens to one pixel, on straight colours in unsigned 32-bit arithmetic. These steps are the definition:
// surfaces and every fallback run them pixel by pixel, and all faster code is tested against them.
//
//   cs, cd, c0  source, destination and group snapshot      ab, a0  alpha of cd and of c0, as read
//   as          effective source alpha                      g       group alpha of the pixel
//
// as is 0 to 255, unless a transfer function leaves 0 to 1; then the arithmetic goes on, wrapping in 32 bits.

namespace vantu {

/// Union of two alphas: p - p*q/255 + q.
constexpr std::uint32_t UniteAlpha(std::uint32_t p, std::uint32_t q) {
    return p - p * q / 255 + q;
}

/// The double cut to a 32-bit integer; the least integer for what has none, as NaN.
inline std::int32_t Truncate(double value) {
    return value > -2147483649.0 && value < 2147483648.0 ? static_cast<std::int32_t>(value) : INT32_MIN;
}

/// as without a mask or through a stencil: k*sa / 255.
constexpr std::uint32_t ConstantOpacity(std::uint32_t k, std::uint32_t sa) {
    return k * sa / 255;
}

/// as through a soft mask outside groups: trunc(k * (sa * t) / 255), in double precision in this order.
inline std::uint32_t PlainMaskOpacity(std::uint32_t k, std::uint32_t sa, double t) {
    return static_cast<std::uint32_t>(Truncate(static_cast<double>(k) * (static_cast<double>(sa) * t) / 255.0));
}

/// The 8-bit opacity to which a group cuts t: trunc(t * 255).
inline std::uint32_t GroupMaskByte(double t) {
    return static_cast<std::uint32_t>(Truncate(t * 255.0));
}

/// as through a soft mask in a group: k * sa * trunc(t * 255) / 65025.
constexpr std::uint32_t GroupMaskOpacity(std::uint32_t k, std::uint32_t sa, std::uint32_t maskByte) {
    return k * sa * maskByte / 65025;
}

/// Replaces each colour channel of `cd` by `formula(cb, cs)`, in the order red, green, blue.
template <typename Formula>
inline void SetChannels(const Color& cs, Color& cd, Formula formula) {
    cd.SetRed(static_cast<unsigned char>(formula(cd.GetRed(), cs.GetRed())));
    cd.SetGreen(static_cast<unsigned char>(formula(cd.GetGreen(), cs.GetGreen())));
    cd.SetBlue(static_cast<unsigned char>(formula(cd.GetBlue(), cs.GetBlue())));
}

/// Composites `cs` over `cd` (ISO 32000-2, 11.3.6): ar = U(ab, as) and, unless ar is 0,
/// c = (B*ab*as + (255-ab)*cs*as + (255-as)*cb*ab) / (255*ar). @return ar.
template <BlendMode Mode>
inline std::uint32_t CompositePlain(const Color& cs, Color& cd, std::uint32_t as) {
    const std::uint32_t ab = cd.GetAlpha();
    const std::uint32_t ar = UniteAlpha(ab, as);
    cd.SetAlpha(static_cast<unsigned char>(ar));
    if (ar != 0) {
        SetChannels(cs, cd, [=](std::uint32_t cb, std::uint32_t c) {
            return (BlendChannel<Mode>(cb, c) * ab * as + (255 - ab) * c * as + (255 - as) * cb * ab) / (255 * ar);
        });
    }
    return ar;
}

/// Composites `cs` over what the group holds (ISO 32000-2, 11.4.6), whose group alpha is now g: ai = U(a0, g) and,
/// unless ai is 0, c = (((255-ab)*cs + B*ab)*as + (ai-as)*cb*255) / (255*ai). @return ai.
template <BlendMode Mode>
inline std::uint32_t CompositeInGroup(const Color& cs, Color& cd, std::uint32_t a0, std::uint32_t as, std::uint32_t g) {
    const std::uint32_t ab = cd.GetAlpha();
    const std::uint32_t ai = UniteAlpha(a0, g);
    cd.SetAlpha(static_cast<unsigned char>(ai));
    if (ai != 0) {
        SetChannels(cs, cd, [=](std::uint32_t cb, std::uint32_t c) {
            return (((255 - ab) * c + BlendChannel<Mode>(cb, c) * ab) * as + (ai - as) * cb * 255) / (255 * ai);
        });
    }
    return ai;
}

/// One pixel of a group. A stencil's element raises the group alpha by its own alpha, without the constant alpha, and
/// in a knockout group neither the group alpha nor the pixel's alpha; both are meant.
/// @return whether `cd` is to be written.
template <BlendMode Mode, bool Knockout>
inline bool StepInGroup(const Color& cs, Color& cd, const Color& c0, std::uint32_t& g, std::uint32_t as, bool stencil) {
    if constexpr (Knockout) {
        if (!stencil) g = UniteAlpha(g, as);
        // The element composites with the snapshot. With as = 0 the group's colour stays.
        Color result = c0;
        const std::uint32_t ar = CompositePlain<Mode>(cs, result, as);
        if (as != 0) SetChannels(result, cd, [](std::uint32_t, std::uint32_t c) { return c; });
        if (!stencil) cd.SetAlpha(static_cast<unsigned char>(ar));
        return true;
    } else {
        g = UniteAlpha(g, stencil ? cs.GetAlpha() : as);
        return CompositeInGroup<Mode>(cs, cd, c0.GetAlpha(), as, g) != 0;
    }
}

}  // namespace vantu
