#include "Mask.h"

#include <vantu/CQorImage.h>

#include <functional>

namespace pdf {

namespace {

constexpr unsigned char kOutside = 0;
constexpr unsigned char kHalf = 128;
constexpr unsigned char kInside = 255;

// round(a * b / 255)
unsigned char Product(unsigned int a, unsigned int b) {
    return static_cast<unsigned char>((a * b * 2 + 255) / 510);
}

// The part of a mask in a box inside its own, with the samples as a function has them.
template <typename Function>
Mask Changed(const Mask& mask, const Pixels& box, Function function) {
    if (!mask.image) return {box, nullptr};
    Mask out = MakeMask(box);
    for (int y = box.y0; y < box.y1; ++y) {
        const unsigned char* const row = RowOf(mask, y) + (box.x0 - mask.box.x0);
        std::transform(row, row + Width(box), RowOf(out, y), function);
    }
    return out;
}

Mask Cut(const Mask& mask, const Pixels& box) {
    const bool isAll = Width(box) == Width(mask.box) && Height(box) == Height(mask.box);
    return isAll ? mask : Changed(mask, box, std::identity());
}

}  // namespace

Mask MakeMask(const Pixels& box) {
    if (IsEmpty(box)) return {};
    return {box, std::make_shared<vantu::CQorImage>(static_cast<unsigned int>(Width(box)),
                                                    static_cast<unsigned int>(Height(box)), vantu::PixelFormat::Index8,
                                                    static_cast<unsigned char>(1), false)};
}

unsigned char* RowOf(const Mask& mask, int y) {
    return mask.image->GetPixelData() + static_cast<std::size_t>(y - mask.box.y0) * mask.image->GetWidth();
}

unsigned char SampleAt(const Mask& mask, int x, int y) {
    const Pixels& box = mask.box;
    if (x < box.x0 || x >= box.x1 || y < box.y0 || y >= box.y1) return 0;
    return mask.image ? RowOf(mask, y)[x - box.x0] : 255;
}

Mask Intersect(const Mask& a, const Mask& b) {
    const Pixels box = Intersect(a.box, b.box);
    if (IsEmpty(box)) return {};
    if (!a.image || !b.image) return Cut(a.image ? a : b, box);
    Mask out = MakeMask(box);
    for (int y = box.y0; y < box.y1; ++y) {
        const unsigned char* const row = RowOf(a, y) + (box.x0 - a.box.x0);
        const unsigned char* const other = RowOf(b, y) + (box.x0 - b.box.x0);
        std::transform(row, row + Width(box), other, RowOf(out, y), Product);
    }
    return out;
}

Mask UnderStroke(const Mask& fill, const Mask& stroke, double strokeAlpha) {
    if (IsEmpty(Intersect(fill.box, stroke.box))) return fill;
    Mask out = MakeMask(fill.box);
    for (int y = fill.box.y0; y < fill.box.y1; ++y) {
        unsigned char* const row = RowOf(out, y);
        for (int x = fill.box.x0; x < fill.box.x1; ++x) {
            const double s = SampleAt(stroke, x, y) / 255.0;
            // f (1 - s) / (1 - a s); a fill under nothing but stroke is not seen
            const double part = s < 1 ? SampleAt(fill, x, y) * (1 - s) / (1 - strokeAlpha * s) : 0;
            row[x - fill.box.x0] = static_cast<unsigned char>(std::lround(part));
        }
    }
    return out;
}

Mask AtLeast(const Mask& mask, unsigned char least) {
    return Changed(mask, mask.box, [least](unsigned char sample) { return std::max(sample, least); });
}

Mask HardEdged(const Mask& mask) {
    return Changed(mask, mask.box, [](unsigned char sample) { return sample >= kHalf ? kInside : kOutside; });
}

}  // namespace pdf
