#include "blend/GroupResolve.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "pixel/Accessor.h"

namespace vantu {
namespace {

constexpr bool IsInverted(PixelFormat format) {
    return format == PixelFormat::Bgra32Inverted;
}

/// The stored alpha byte of an alpha, and the alpha of a stored byte.
template <PixelFormat F>
constexpr unsigned char AlphaByte(std::uint32_t alpha) {
    return static_cast<unsigned char>(IsInverted(F) ? 255 - alpha : alpha);
}

/// Takes the snapshot's contribution out of a pixel whose group alpha is a (ISO 32000-2, 11.4.6): with the straight
/// channels n of the image and o of the snapshot and k = ba - a*ba/255, c = n + (n-o)*k/a, stored as c*a/255. A
/// negative difference wraps in 32 bits and is divided as unsigned; that is required.
template <PixelFormat F>
void RemoveBackdrop(unsigned char* p, const unsigned char* b, std::uint32_t a) {
    if (a == 0) {
        StoreWord32(p, IsInverted(F) ? 0xFF000000U : 0U);
        return;
    }
    const std::uint32_t pa = AlphaByte<F>(p[3]);
    const std::uint32_t ba = AlphaByte<F>(b[3]);
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
    p[3] = AlphaByte<F>(a);
}

/// Gives a pixel the group alpha a and keeps its colour: c*a/pa.
template <PixelFormat F>
void RescaleToGroupAlpha(unsigned char* p, const unsigned char*, std::uint32_t a) {
    const std::uint32_t pa = AlphaByte<F>(p[3]);
    if (pa == 0) return;  // no colour to keep: the pixel stays as it is
    for (const int c : {2, 1, 0}) p[c] = static_cast<unsigned char>(p[c] * a / pa);
    p[3] = AlphaByte<F>(a);
}

/// Mixes the stored bytes of image and snapshot by the group alpha a, which is stored as it is in both formats:
/// ((255-a)*b + a*p) / 255.
void MixWithBackdrop(unsigned char* p, const unsigned char* b, std::uint32_t a) {
    const std::uint32_t low = a & 0xFF;
    p[3] = static_cast<unsigned char>(low);
    for (const int c : {2, 1, 0}) p[c] = static_cast<unsigned char>(((255 - low) * b[c] + low * p[c]) / 255);
}

/// An edge of a range, cut to the edges 0 and `size` of an image.
unsigned int Cut(int coordinate, unsigned int size) {
    return coordinate < 0 ? 0 : std::min(static_cast<unsigned int>(coordinate), size);
}

/// Runs `step` on each pixel of the group's ranges, in list order, with its place in the snapshot and its group alpha.
/// What of a range lies outside the image is passed over: a masked element is painted at its range plus the offset.
template <PixelFormat F, typename Step>
void EachPaintedPixel(GroupState& group, Step step) {
    const auto image = ViewOf<Accessor<F>>(*group.image);
    const auto snapshot = ViewOf<ConstAccessor<F>>(static_cast<const IQorImage&>(*group.backdrop));
    const unsigned int width = group.image->GetWidth();
    const unsigned int height = group.image->GetHeight();
    for (const Range<int, 2>& range : group.coverage->GetRanges()) {
        const unsigned int x1 = Cut(range.x1, width), y1 = Cut(range.y1, height);
        for (unsigned int y = Cut(range.y0, height); y < y1; ++y) {
            for (unsigned int x = Cut(range.x0, width); x < x1; ++x) {
                step(image.Address(x, y), snapshot.Address(x, y), group.groupAlpha[std::size_t{width} * y + x]);
            }
        }
    }
}

template <PixelFormat F>
void Resolve(GroupState& group) {
    if (group.plainResolve && group.keepBackdrop) {
        EachPaintedPixel<F>(group, MixWithBackdrop);
    } else if (group.plainResolve) {
        EachPaintedPixel<F>(group, RescaleToGroupAlpha<F>);
    } else if (!group.keepBackdrop) {
        EachPaintedPixel<F>(group, RemoveBackdrop<F>);
    }
}

}  // namespace

void ResolveGroup(GroupState& group) {
    if (group.image->GetPixelData() == nullptr) return;  // the host has taken its memory away meanwhile
    const IQorImage& decisive = group.plainResolve ? *group.image : *group.backdrop;
    switch (decisive.GetPixelFormat()) {
        case PixelFormat::Bgra32Premultiplied: Resolve<PixelFormat::Bgra32Premultiplied>(group); break;
        case PixelFormat::Bgra32Inverted: Resolve<PixelFormat::Bgra32Inverted>(group); break;
        default: break;
    }
}

}  // namespace vantu
