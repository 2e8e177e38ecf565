#pragma once

#include <cstdint>
#include <cstring>

#include "pixel/Spans.h"

// What the end of a group makes of one pixel (ISO 32000-2, 11.4.6), in unsigned 32-bit arithmetic that wraps; that is
// required. These steps are the definition, faster code is tested against them.
//
//   p, b  premultiplied packed pixels of the group's image and of its snapshot      pa, ba  their alphas
//   a     group alpha of the pixel: 0 to 255, unless a transfer function leaves 0 to 1

namespace vantu {

/// Takes the snapshot's contribution out of a pixel: with the straight channels n of the image and o of the snapshot
/// and k = ba - a*ba/255, c = n + (n-o)*k/a, stored as c*a/255. A negative difference is divided as the unsigned number
/// that it wraps to.
inline void RemoveBackdrop(unsigned char* p, const unsigned char* b, std::uint32_t a) {
    if (a == 0) {
        std::memset(p, 0, kPackedBytes);
        return;
    }
    const std::uint32_t pa = p[3], ba = b[3];
    if (ba != 0) {
        if (pa == 0) return;  // there is no colour to take anything out of: the pixel stays as it is
        const std::uint32_t k = ba - a * ba / 255;
        for (const int c : {2, 1, 0}) {
            const std::uint32_t n = p[c] * 255U / pa;
            const std::uint32_t o = b[c] * 255U / ba;
            const std::uint32_t t = (n - o) * k / a;
            p[c] = static_cast<unsigned char>((n + t) * a / 255);
        }
    }
    p[3] = static_cast<unsigned char>(a);
}

/// Gives a pixel the group alpha and keeps its colour: c*a/pa.
inline void RescaleToGroupAlpha(unsigned char* p, const unsigned char*, std::uint32_t a) {
    const std::uint32_t pa = p[3];
    if (pa == 0) return;  // no colour to keep: the pixel stays as it is
    for (const int c : {2, 1, 0}) p[c] = static_cast<unsigned char>(p[c] * a / pa);
    p[3] = static_cast<unsigned char>(a);
}

/// Mixes the bytes of image and snapshot by the group alpha's low byte, which becomes the last one:
/// ((255-a)*b + a*p) / 255.
inline void MixWithBackdrop(unsigned char* p, const unsigned char* b, std::uint32_t a) {
    const std::uint32_t low = a & 0xFF;
    p[3] = static_cast<unsigned char>(low);
    for (const int c : {2, 1, 0}) p[c] = static_cast<unsigned char>(((255 - low) * b[c] + low * p[c]) / 255);
}

}  // namespace vantu
