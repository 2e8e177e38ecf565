#pragma once

#include <vantu/IQorImage.h>

#include <cstdint>
#include <cstring>

#include "pixel/Formats.h"

// The pixel formats in memory: how each is read into a straight `Color` and written from one. Every division
// truncates, nothing rounds and no bits are replicated; what exceeds 8 bits is cut by the `Color` setters.

namespace vantu {

/// floor(255 * premultiplied / alpha) cut to 8 bits: the straight channel; 0 at alpha 0.
constexpr unsigned char Unpremultiply(unsigned int premultiplied, unsigned int alpha) {
    return static_cast<unsigned char>(alpha == 0 ? 0 : premultiplied * 255 / alpha);
}

/// floor(alpha * straight / 255): the premultiplied channel.
constexpr unsigned char Premultiply(unsigned int straight, unsigned int alpha) {
    return static_cast<unsigned char>(alpha * straight / 255);
}

/// A 5-bit field on the 8-bit scale. A wider field (green of 5-6-5) wraps.
constexpr unsigned char ExpandField(unsigned int field) {
    return static_cast<unsigned char>(field * 255 / 31);
}

/// An 8-bit channel as a 5-bit field.
constexpr unsigned int ReduceToField(unsigned int channel) {
    return channel * 31 / 255;
}

inline std::uint32_t LoadWord16(const unsigned char* p) {
    return p[0] | std::uint32_t{p[1]} << 8;
}

inline void StoreWord16(unsigned char* p, std::uint32_t value) {
    p[0] = static_cast<unsigned char>(value);
    p[1] = static_cast<unsigned char>(value >> 8);
}

inline std::uint32_t LoadWord32(const unsigned char* p) {
    return LoadWord16(p) | LoadWord16(p + 2) << 16;
}

inline void StoreWord32(unsigned char* p, std::uint32_t value) {
    StoreWord16(p, value);
    StoreWord16(p + 2, value >> 16);
}

/// Reads the pixel at `p` into `out`. Formats without colours leave `out` as it is.
template <PixelFormat F>
inline void ReadPixel([[maybe_unused]] const unsigned char* p, [[maybe_unused]] Color& out) {
    const auto set = [&out](unsigned char red, unsigned char green, unsigned char blue, unsigned char alpha) {
        out.SetRed(red);
        out.SetGreen(green);
        out.SetBlue(blue);
        out.SetAlpha(alpha);
    };
    if constexpr (F == PixelFormat::Rgb565) {
        // Green is scaled as if its field had five bits: 63 reads as 63 * 255 / 31 = 518, cut to 6.
        const std::uint32_t word = LoadWord16(p);
        set(ExpandField(word >> 11), ExpandField(word >> 5 & 63), ExpandField(word & 31), 255);
    } else if constexpr (F == PixelFormat::Rgb555) {
        const std::uint32_t word = LoadWord16(p);
        set(ExpandField(word >> 10 & 31), ExpandField(word >> 5 & 31), ExpandField(word & 31), 255);
    } else if constexpr (F == PixelFormat::Bgr24) {
        set(p[2], p[1], p[0], 255);
    } else if constexpr (F == PixelFormat::Bgra32Premultiplied || F == PixelFormat::Bgra32Inverted) {
        const unsigned char alpha = AlphaByte(F, p[3]);
        set(Unpremultiply(p[2], alpha), Unpremultiply(p[1], alpha), Unpremultiply(p[0], alpha), alpha);
    } else if constexpr (F == PixelFormat::Bgra32) {
        set(p[2], p[1], p[0], p[3]);
    } else {
        static_assert(!HasColors(F), "a format with colours is read");
    }
}

/// Writes `in` to the pixel at `p`. Formats without colours are left as they are.
template <PixelFormat F>
inline void WritePixel([[maybe_unused]] unsigned char* p, [[maybe_unused]] const Color& in) {
    const auto store = [p](unsigned char blue, unsigned char green, unsigned char red) {
        p[0] = blue;
        p[1] = green;
        p[2] = red;
    };
    if constexpr (F == PixelFormat::Rgb565) {
        StoreWord16(p,
                    ReduceToField(in.GetRed()) << 11 | ReduceToField(in.GetGreen()) << 5 | ReduceToField(in.GetBlue()));
    } else if constexpr (F == PixelFormat::Rgb555) {
        StoreWord16(p,
                    ReduceToField(in.GetRed()) << 10 | ReduceToField(in.GetGreen()) << 5 | ReduceToField(in.GetBlue()));
    } else if constexpr (F == PixelFormat::Bgr24) {
        store(in.GetBlue(), in.GetGreen(), in.GetRed());
    } else if constexpr (F == PixelFormat::Bgra32Premultiplied || F == PixelFormat::Bgra32Inverted) {
        const unsigned char alpha = in.GetAlpha();
        store(Premultiply(in.GetBlue(), alpha), Premultiply(in.GetGreen(), alpha), Premultiply(in.GetRed(), alpha));
        p[3] = AlphaByte(F, alpha);
    } else if constexpr (F == PixelFormat::Bgra32) {
        store(in.GetBlue(), in.GetGreen(), in.GetRed());
        p[3] = in.GetAlpha();
    } else {
        static_assert(!HasColors(F), "a format with colours is written");
    }
}

/// The raw little-endian value of a pixel of whole bytes.
template <PixelFormat F>
inline std::uint32_t LoadValue(const unsigned char* p) {
    constexpr unsigned int bits = BitsPerPixel(F);
    static_assert(bits >= 8, "a packed index has no byte of its own");
    if constexpr (bits == 8) return p[0];
    if constexpr (bits == 16) return LoadWord16(p);
    if constexpr (bits == 24) return LoadWord16(p) | std::uint32_t{p[2]} << 16;
    if constexpr (bits == 32) return LoadWord32(p);
}

/// Stores the low bits of `value` as a pixel of whole bytes.
template <PixelFormat F>
inline void StoreValue(unsigned char* p, std::uint32_t value) {
    constexpr unsigned int bits = BitsPerPixel(F);
    static_assert(bits >= 8, "a packed index has no byte of its own");
    if constexpr (bits == 8) p[0] = static_cast<unsigned char>(value);
    if constexpr (bits == 16 || bits == 24) StoreWord16(p, value);
    if constexpr (bits == 24) p[2] = static_cast<unsigned char>(value >> 16);
    if constexpr (bits == 32) StoreWord32(p, value);
}

}  // namespace vantu
