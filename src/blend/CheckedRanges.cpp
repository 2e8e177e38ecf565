#include "blend/CheckedRanges.h"

#include <cstdio>

#include "blend/definition/RangeWalk.h"

namespace vantu {
namespace {

/// Goes where a kernel would go, and looks only.
class Inspector {
public:
    Inspector(const BlendRequestBase& request, const IQorImage* target, const IQorImage& source)
        : request_(request), target_(target), source_(source) {}

    void Rect(const PaintArea& area) {
        if (target_ != nullptr) Look("image that it paints on", *target_, area.targetX, area.targetY, area);
        Look("source", source_, area.sourceX, area.sourceY, area);
    }
    void Masked(const PaintArea& area, unsigned int maskX, unsigned int maskY) {
        const IQorImage& mask = **request_.mask;
        const bool paints = mask.GetPixelData() != nullptr && (HasStencil(request_) || *request_.maskTransfer);
        if (!paints) return;
        Rect(area);
        Look("mask", mask, maskX, maskY, area);
    }

    [[nodiscard]] bool Inside() const { return inside_; }

private:
    void Look(const char* what, const IQorImage& image, long long x0, long long y0, const PaintArea& area) {
        const long long x1 = x0 + area.width, y1 = y0 + area.height;
        if (!inside_ || (x0 >= 0 && y0 >= 0 && x1 <= image.GetWidth() && y1 <= image.GetHeight())) return;
        inside_ = false;
        static_cast<void>(std::fprintf(
            stderr, "imageop: Blend is refused: x %lld to %lld, y %lld to %lld leaves the %s of %u x %u pixels\n", x0,
            x1, y0, y1, what, image.GetWidth(), image.GetHeight()));
    }

    const BlendRequestBase& request_;
    const IQorImage* target_;
    const IQorImage& source_;
    bool inside_ = true;
};

}  // namespace

bool MayPaint(const BlendRequestBase& request, const IQorImage* target, const IQorImage& source) {
    Inspector inspector(request, target, source);
    WalkRanges(request, inspector);
    return inspector.Inside();
}

}  // namespace vantu
