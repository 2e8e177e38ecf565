#pragma once

#include <vantu/ImageUtil.h>
#include <vantu/Painter.h>

#include <algorithm>
#include <limits>
#include <optional>
#include <stdexcept>

#include "blend/Painting.h"

namespace vantu::test {

using Rectangle = Range<int, 2>;
using How = vantu::Paint;
using Image = std::shared_ptr<TestImage>;

inline bool Holds(const Rectangle& r, int x, int y) {
    return r.x0 <= x && x < r.x1 && r.y0 <= y && y < r.y1;
}

inline Rectangle RectangleOf(const IQorImage& image, const Point<int, 2>& at) {
    const auto end = [](int start, unsigned int length) {
        return static_cast<int>(std::min<std::int64_t>(std::int64_t{start} + length, std::numeric_limits<int>::max()));
    };
    return {at.x, at.y, end(at.x, image.GetWidth()), end(at.y, image.GetHeight())};
}

/// One pixel of an image as an image of the same format and palette.
inline Image PixelOf(const IQorImage& image, int x, int y) {
    auto pixel = std::make_shared<TestImage>(Shape{1, 1, image.GetPixelFormat()});
    if (image.GetPalette() != nullptr) pixel->SetPalette(std::make_unique<ColorMap>(*image.GetPalette()));
    ImageUtil::Copy(image, {x, y, x + 1, y + 1}, *pixel, {0, 0});
    return pixel;
}

/// Paints what a painter paints by calls of `Blend` for one pixel each, and groups as their guide tells: images of the
/// size of their bounds that start as copies, of which a knockout group keeps one.
class ByHand {
public:
    ByHand(Image page, std::shared_ptr<TestSurface> surface, const Rectangle& bounds)
        : page_(std::move(page)), surface_(std::move(surface)), blender_(BlenderOn(page_, surface_)) {
        levels_.push_back({page_, nullptr, {0, 0}, bounds, {}, {}, true, true});
    }

    /// Paints where `shape(x, y)` holds. `at` is where the picture lies; one of a single pixel repeats.
    /// @return whether there was such a pixel.
    template <typename Shape>
    bool Element(const IQorImage& picture, const Point<int, 2>& at, Shape shape, const How& how) {
        const Level& level = levels_.back();
        bool some = false;
        if (how.alpha == 0) return false;
        for (int y = level.bounds.y0; y < level.bounds.y1; ++y) {
            for (int x = level.bounds.x0; x < level.bounds.x1; ++x) {
                if (!shape(x, y) || !InClip(x, y)) continue;
                const bool repeats = picture.GetWidth() == 1 && picture.GetHeight() == 1;
                const Image colors = repeats ? PixelOf(picture, 0, 0) : PixelOf(picture, x - at.x, y - at.y);
                Image mask;
                if (how.mask) {
                    const bool inside = Holds(RectangleOf(*how.mask, how.maskAt), x, y);
                    if (inside) mask = PixelOf(*how.mask, x - how.maskAt.x, y - how.maskAt.y);
                    if (!inside && !how.outsideMask) continue;
                }
                some = PaintPixel(colors, mask, x, y, how) || some;
            }
        }
        return some;
    }

    void BeginGroup(const Rectangle& bounds, const GroupKind& kind) {
        const Level& parent = levels_.back();
        const auto cut = [](const Rectangle& a, const Rectangle& b) {
            return Rectangle{std::max(a.x0, b.x0), std::max(a.y0, b.y0), std::min(a.x1, b.x1), std::min(a.y1, b.y1)};
        };
        Rectangle box = cut(bounds, parent.bounds);
        if (clip) {
            constexpr int least = std::numeric_limits<int>::min(), most = std::numeric_limits<int>::max();
            Rectangle all{most, most, least, least};
            for (const Rectangle& r : *clip) {
                if (r.x0 >= r.x1 || r.y0 >= r.y1) continue;
                all = {std::min(all.x0, r.x0), std::min(all.y0, r.y0), std::max(all.x1, r.x1), std::max(all.y1, r.y1)};
            }
            box = cut(box, all);
        }
        const bool plainStart = kind.plain && !kind.isolated && !parent.kind.knockout;
        const PixelFormat format = page_ ? page_->GetPixelFormat() : PixelFormat::Index1;
        Level group{parent.image, parent.start, parent.origin, box, kind, clip, parent.keepsOpaque, parent.keepsAll};
        group.copiedBack = plainStart && parent.image && parent.image == page_ &&
                           (format == PixelFormat::Bgr24 || format == PixelFormat::Bgra32Premultiplied);
        group.through = (plainStart && !kind.knockout) || box.x0 >= box.x1 || box.y0 >= box.y1;
        if (group.through) {
            levels_.push_back(group);
            return;
        }
        group.origin = {box.x0, box.y0};
        const Shape shape{static_cast<unsigned int>(box.x1 - box.x0), static_cast<unsigned int>(box.y1 - box.y0),
                          PixelFormat::Bgra32Premultiplied};
        group.image = std::make_shared<TestImage>(shape);
        ImageUtil::ClearIndex(*group.image, 0, {1, 0, 0, 0});
        if (!kind.isolated) {
            const IQorImage* const below = parent.kind.knockout ? parent.start.get() : parent.image.get();
            const std::shared_ptr<IQorImage> surface = below == nullptr ? SurfaceColors() : nullptr;
            const auto [x, y] = parent.origin;
            ImageUtil::Copy(below != nullptr ? *below : *surface, {box.x0 - x, box.y0 - y, box.x1 - x, box.y1 - y},
                            *group.image, {0, 0});
        }
        group.start = ImageUtil::Clone(*group.image, nullptr, nullptr);
        group.keepsAll = kind.isolated || group.copiedBack;
        group.keepsOpaque = group.keepsAll || (kind.normal && !parent.kind.knockout && parent.keepsOpaque);
        blender_->BeginGroup(group.image, nullptr, kind.knockout, group.keepsAll, false);
        levels_.push_back(group);
    }

    bool EndGroup(const How& how) {
        const Level group = levels_.back();
        if (group.through) {
            levels_.pop_back();
            clip = group.clip;
            levels_.back().painted = levels_.back().painted || group.painted;
            return group.painted;
        }
        // A soft mask without a function paints nothing, but the group notes the range.
        const Rectangle whole = RectangleOf(*group.image, {0, 0});
        const Image grey =
            std::make_shared<TestImage>(Shape{group.image->GetWidth(), group.image->GetHeight(), PixelFormat::Index8});
        Blend({.source = group.image, .coverage = Cover({whole}), .mask = grey});
        const std::vector<unsigned char> before = group.image->Bytes();
        blender_->EndGroup();
        for (std::size_t i = 0; group.keepsOpaque && i < before.size(); i += 4) {
            if (before[i + 3] == 255) std::copy_n(&before[i], 4, group.image->GetPixelData() + i);
        }
        levels_.pop_back();
        clip = group.clip;
        if (!group.painted) return false;
        const Rectangle place = RectangleOf(*group.image, group.origin);
        const auto holds = [&](int x, int y) { return Holds(place, x, y); };
        if (!group.copiedBack) return Element(*group.image, group.origin, holds, how);
        const std::size_t bytes = BitsPerPixel(page_->GetPixelFormat()) / 8;
        for (int y = place.y0; y < place.y1; ++y) {
            for (int x = place.x0; x < place.x1; ++x) {
                const Image pixel = PixelOf(*group.image, x - place.x0, y - place.y0);
                if (InClip(x, y)) std::copy_n(pixel->GetPixelData(), bytes, BytesAt(x, y));
            }
        }
        levels_.back().painted = true;
        return true;
    }

    [[nodiscard]] bool OnSurface() const { return !levels_.back().image; }

    std::optional<std::vector<Rectangle>> clip;

private:
    struct Level {
        Image image;
        std::shared_ptr<IQorImage> start;
        Point<int, 2> origin;
        Rectangle bounds;
        GroupKind kind;
        std::optional<std::vector<Rectangle>> clip;
        bool keepsOpaque;      ///< nothing is taken out of its opaque pixels at its end
        bool keepsAll;         ///< nor of others
        bool through = false;  ///< paints on the one below
        bool copiedBack = false;
        bool painted = false;
    };

    void Blend(const Call& call) {
        if (!test::Paint(*blender_, call)) throw std::logic_error("a call made by hand is refused");
    }

    [[nodiscard]] bool InClip(int x, int y) const {
        return !clip || std::ranges::any_of(*clip, [&](const Rectangle& r) { return Holds(r, x, y); });
    }

    unsigned char* BytesAt(int x, int y) {
        const int row = page_->IsBottomUp() ? static_cast<int>(page_->GetHeight()) - 1 - y : y;
        const unsigned int bytes = BitsPerPixel(page_->GetPixelFormat()) / 8;
        return page_->GetPixelData() + page_->Stride() * static_cast<unsigned int>(row) +
               bytes * static_cast<unsigned int>(x);
    }

    std::shared_ptr<IQorImage> SurfaceColors() const {
        const Rectangle& bounds = levels_.front().bounds;
        auto image = std::make_shared<TestImage>(
            Shape{static_cast<unsigned int>(bounds.x1), static_cast<unsigned int>(bounds.y1), PixelFormat::Bgra32});
        const auto view = MakeAccessor(*image);
        for (int y = bounds.y0; y < bounds.y1; ++y) {
            for (int x = bounds.x0; x < bounds.x1; ++x) {
                view->SetColor(*view, static_cast<unsigned int>(x), static_cast<unsigned int>(y), surface_->At(x, y));
            }
        }
        return image;
    }

    bool PaintPixel(const Image& colors, Image mask, int x, int y, const How& how) {
        Level& level = levels_.back();
        const std::shared_ptr<IPDFTransferFunction>& transfer = how.maskTransfer;
        const bool stencil = mask && mask->GetPixelFormat() == PixelFormat::Index1 &&
                             (!transfer || (transfer->GetType() == TransferType::Identity &&
                                            transfer->GetSourceType() == TransferSource::Alpha));
        const bool opaque =
            colors->GetPixelFormat() <= PixelFormat::Bgr24 && colors->GetPixelFormat() >= PixelFormat::Rgb565;
        const bool copies = !opaque && how.mode == BlendMode::Normal && how.alpha == 255;
        if (stencil && (level.image != page_ || copies)) {
            // What a stencil does there is not what a mask does: it says which pixels there are.
            if (ValueAt(*mask, 0, 0) != 0) return false;
            mask = nullptr;
        }
        if (level.kind.knockout) {
            Color color, maskColor;
            const auto reader = MakeConstAccessor(*colors);
            reader->GetColor(*reader, 0, 0, color);
            if (color.GetAlpha() == 0) return false;
            if (mask) {
                const auto maskReader = MakeConstAccessor(*mask);
                maskReader->GetColor(*maskReader, 0, 0, maskColor);
                if (GroupMaskByte(transfer->ComputeAlpha(maskColor)) == 0) return false;
            }
        }
        const int tx = x - level.origin.x, ty = y - level.origin.y;
        Call call{colors, Cover({{0, 0, 1, 1}}), {tx, ty}, mask, transfer, {0, 0}, how.alpha, how.mode};
        if (!mask) {
            call.coverage = Cover({{tx, ty, tx + 1, ty + 1}});
            call.offset = {-tx, -ty};
        }
        Blend(call);
        level.painted = true;
        return true;
    }

    Image page_;
    std::shared_ptr<TestSurface> surface_;
    std::shared_ptr<IPDFImageBlender> blender_;
    std::vector<Level> levels_;
};

}  // namespace vantu::test
