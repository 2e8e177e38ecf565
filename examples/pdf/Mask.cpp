#include "Mask.h"

#include <vantu/CQorImage.h>

namespace pdf {

namespace {

constexpr unsigned char kHalf = 128;

// round(a * b / 255)
unsigned char Product(unsigned int a, unsigned int b) {
    return static_cast<unsigned char>((a * b * 2 + 255) / 510);
}

// The part of a mask in a box inside its own.
Mask Cut(const Mask& mask, const Pixels& box) {
    if (!mask.image) return {box, nullptr};
    Mask out = MakeMask(box);
    for (int y = box.y0; y < box.y1; ++y) {
        const unsigned char* const row = RowOf(mask, y) + (box.x0 - mask.box.x0);
        std::copy(row, row + Width(box), RowOf(out, y));
    }
    return out;
}

bool IsSame(const Pixels& a, const Pixels& b) {
    return a.x0 == b.x0 && a.y0 == b.y0 && a.x1 == b.x1 && a.y1 == b.y1;
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
    if (!b.image) return IsSame(box, a.box) ? a : Cut(a, box);
    if (!a.image) return IsSame(box, b.box) ? b : Cut(b, box);
    Mask out = Cut(a, box);
    for (int y = box.y0; y < box.y1; ++y) {
        unsigned char* const row = RowOf(out, y);
        const unsigned char* const other = RowOf(b, y) + (box.x0 - b.box.x0);
        for (int x = 0; x < Width(box); ++x) row[x] = Product(row[x], other[x]);
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
    if (!mask.image) return mask;
    Mask out = Cut(mask, mask.box);
    for (int y = mask.box.y0; y < mask.box.y1; ++y) {
        unsigned char* const row = RowOf(out, y);
        std::transform(row, row + Width(mask.box), row, [least](unsigned char s) { return std::max(s, least); });
    }
    return out;
}

std::vector<Pixels> RunsOf(const Mask& mask) {
    if (!mask.image) return {mask.box};
    const auto isInside = [](unsigned char sample) { return sample >= kHalf; };
    std::vector<Pixels> runs;
    for (int y = mask.box.y0; y < mask.box.y1; ++y) {
        const unsigned char* const row = RowOf(mask, y);
        const unsigned char* const end = row + Width(mask.box);
        for (const unsigned char* first = row;;) {
            first = std::find_if(first, end, isInside);
            if (first == end) break;
            const unsigned char* const last = std::find_if_not(first, end, isInside);
            runs.push_back(
                {mask.box.x0 + static_cast<int>(first - row), y, mask.box.x0 + static_cast<int>(last - row), y + 1});
            first = last;
        }
    }
    return runs;
}

}  // namespace pdf
