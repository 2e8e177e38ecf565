#include "painter/PainterImplementation.h"

#include <vantu/ImageUtil.h>

#include <array>
#include <utility>

namespace vantu {
namespace {

/// A blender asks for a rasterizer even if it paints on an image.
class SurfaceHolder : public IRasterizer {
public:
    explicit SurfaceHolder(std::shared_ptr<RasterSurface> surface) : surface_(std::move(surface)) {}
    std::shared_ptr<RasterSurface> GetRasterSurface() override { return surface_; }

private:
    std::shared_ptr<RasterSurface> surface_;
};

/// Whether an image's pixels can be reached. Its format is one.
PaintResult CheckPixels(const ImageFacts& image) {
    if (image.IsTooWide()) return PaintResult::TooWide;
    return image.hasPixels ? PaintResult::Painted : PaintResult::NoPixels;
}

bool IsStencil(const Paint& paint, const ImageFacts& mask) {
    const IPDFTransferFunction* const transfer = paint.maskTransfer.get();
    return mask.format == PixelFormat::Index1 &&
           (transfer == nullptr || (transfer->GetType() == IPDFTransferFunction::Type::Identity &&
                                    transfer->GetSourceType() == IPDFTransferFunction::SourceType::Alpha));
}

bool MayHaveClearPixels(PixelFormat format) {
    return format != PixelFormat::Rgb565 && format != PixelFormat::Rgb555 && format != PixelFormat::Bgr24;
}

/// The last position of a step of `length` from `start`, or `end` if that comes first.
int StepEnd(int start, int length, int end) {
    return std::int64_t{end} - start > length ? start + length : end;
}

/// The parts of `outer` around `inner`, which lies in it: above, below, left, right.
std::array<Rectangle, 4> Around(const Rectangle& outer, const Rectangle& inner) {
    if (IsEmpty(inner)) return {outer};
    return {Rectangle{outer.x0, outer.y0, outer.x1, inner.y0}, Rectangle{outer.x0, inner.y1, outer.x1, outer.y1},
            Rectangle{outer.x0, inner.y0, inner.x0, inner.y1}, Rectangle{inner.x1, inner.y0, outer.x1, inner.y1}};
}

/// Whether sums and differences of such positions are ints as well.
bool IsNear(const Rectangle& r) {
    constexpr int far = 1 << 28;
    return r.x0 > -far && r.y0 > -far && r.x1 < far && r.y1 < far;
}

/// Stands for no mask and no function in a `Blend`.
const std::shared_ptr<IQorImage> kNoMask;
const std::shared_ptr<IPDFTransferFunction> kNoTransfer;

}  // namespace

Painter::Implementation::Implementation(std::shared_ptr<IQorImage> page, std::shared_ptr<RasterSurface> surface,
                                        const Rectangle& bounds)
    : page_(std::move(page)), surface_(std::move(surface)) {
    std::shared_ptr<IRasterizer> rasterizer = std::make_shared<SurfaceHolder>(surface_);
    blender_ = IPDFImageBlender::Create(rasterizer, page_);
    Level& level = levels_.emplace_back();
    level.bounds = page_ ? RectangleAt({0, 0}, page_->GetWidth(), page_->GetHeight()) : bounds;
    level.refusal = CheckPage();
    level.keepsOpaque = level.keepsAll = true;
    level.isOpen = true;
}

void Painter::Implementation::SetClip(const std::vector<Rectangle>& rectangles) {
    auto clip = std::make_shared<Clip>();
    clip->bands = ToBands(rectangles);
    clip->box = BoundingBox(clip->bands);
    clip_ = std::move(clip);
}

PaintResult Painter::Implementation::CheckPage() const {
    if (surface_) return PaintResult::Painted;
    const std::optional<ImageFacts> page = FactsOf(page_);
    if (!page) return PaintResult::NoPixels;
    return BitsPerPixel(page->format) < 16 ? PaintResult::TargetFormat : CheckPixels(*page);
}

PaintResult Painter::Implementation::CheckPaint(const Paint& paint, const std::optional<ImageFacts>& mask) const {
    if (static_cast<unsigned int>(paint.mode) >= kBlendModeCount) return PaintResult::NoSuchMode;
    if (!mask) return PaintResult::Painted;
    if (BitsPerPixel(mask->format) == 0) return PaintResult::MaskFormat;
    if (!paint.maskTransfer && !IsStencil(paint, *mask)) return PaintResult::MaskWithoutFunction;
    return CheckPixels(*mask);
}

PaintResult Painter::Implementation::CheckPicture(const std::optional<ImageFacts>& picture) const {
    if (!picture) return PaintResult::NoPixels;
    const PixelFormat format = picture->format;
    const bool painted = OnSurface() ? BitsPerPixel(format) != 0
                                     : format >= PixelFormat::Rgb555 && format <= PixelFormat::Bgra32Inverted;
    return painted ? CheckPixels(*picture) : PaintResult::SourceFormat;
}

Rectangle Painter::Implementation::VisibleBox(const Rectangle& rectangle) const {
    const Rectangle box = Intersection(rectangle, levels_.back().bounds);
    return clip_ ? Intersection(box, clip_->box) : box;
}

PaintResult Painter::Implementation::Draw(const std::shared_ptr<IQorImage>& picture, const Point<int, 2>& at,
                                          const Paint& paint, const Rectangle* content) {
    const std::optional<ImageFacts> facts = FactsOf(picture);
    const std::optional<ImageFacts> mask = FactsOf(paint.mask);
    PaintResult refusal = levels_.back().refusal;
    if (refusal == PaintResult::Painted) refusal = CheckPicture(facts);
    if (refusal == PaintResult::Painted) refusal = CheckPaint(paint, mask);
    if (refusal != PaintResult::Painted) return refusal;
    const Source source{picture, at, MayHaveClearPixels(facts->format), paint.alpha, content};
    return PaintShape(source, nullptr, VisibleBox(facts->PlaceAt(at)), paint, mask);
}

PaintResult Painter::Implementation::Fill(std::span<const Rectangle> rectangles, const Color& color,
                                          const Paint& paint) {
    const std::optional<ImageFacts> mask = FactsOf(paint.mask);
    PaintResult refusal = levels_.back().refusal;
    if (refusal == PaintResult::Painted) refusal = CheckPaint(paint, mask);
    if (refusal != PaintResult::Painted) return refusal;
    if (AreBands(rectangles)) {
        shape_.assign(rectangles.begin(), rectangles.end());
    } else {
        shape_ = ToBands(rectangles);
    }
    const Rectangle box = VisibleBox(BoundingBox(shape_));
    const auto alpha = static_cast<unsigned char>(paint.alpha * color.GetAlpha() / 255);
    if (alpha == 255 && !mask && paint.mode == BlendMode::Normal && !levels_.back().inGroup && page_) {
        return Replace(box, color);
    }
    PaintResult result = PaintResult::NothingToPaint;
    if (IsEmpty(box)) return result;
    const int columns = StepEnd(box.x0, ColorSheet::kPixels, box.x1) - box.x0;
    for (int y = box.y0; y < box.y1;) {
        const int bottom = StepEnd(y, ColorSheet::kPixels / columns, box.y1);
        for (int x = box.x0; x < box.x1;) {
            const int right = StepEnd(x, columns, box.x1);
            const Source source{sheet_.Get(color, right - x, bottom - y), {x, y}, false, alpha};
            const PaintResult part = PaintShape(source, &shape_, {x, y, right, bottom}, paint, mask);
            if (part == PaintResult::NoPixels) return part;
            if (part == PaintResult::Painted) result = part;
            x = right;
        }
        y = bottom;
    }
    return result;
}

/// Gives the pixels of the page that can be seen of the shape in a box an opaque colour, which is all that painting it
/// with Normal does.
PaintResult Painter::Implementation::Replace(const Rectangle& box, const Color& color) {
    ranges_->ranges.clear();
    if (!IsEmpty(box)) AddVisible(&shape_, box);
    if (ranges_->ranges.empty()) return PaintResult::NothingToPaint;
    const PaintResult refusal = CheckPage();
    if (refusal != PaintResult::Painted) return refusal;
    for (const Rectangle& r : ranges_->ranges) {
        ImageView target = PagePart(r);
        ImageUtil::Clear(target, color, {0, 0, r.x1 - r.x0, r.y1 - r.y0});
    }
    NotePainted(box);
    return PaintResult::Painted;
}

/// Paints what can be seen of a shape in a box, which lies in the visible part of the page, first inside the mask.
/// @param shape null for all of the box.
PaintResult Painter::Implementation::PaintShape(const Source& source, const Bands* shape, const Rectangle& box,
                                                const Paint& paint, const std::optional<ImageFacts>& mask) {
    if (source.alpha == 0 || IsEmpty(box)) return PaintResult::NothingToPaint;
    const bool wasNoted = std::exchange(allIsNoted_, false);
    bool some = false;
    Rectangle inside{};
    if (mask) {
        inside = Intersection(box, mask->PlaceAt(paint.maskAt));
        ranges_->ranges.clear();
        if (!IsEmpty(inside)) AddVisible(shape, inside);
        if (!ranges_->ranges.empty()) {
            if (!OpenGroups() || !BlendInside(source, inside, paint, *mask)) return PaintResult::NoPixels;
            some = !ranges_->ranges.empty();
        }
    }
    if (!mask || paint.outsideMask) {
        ranges_->ranges.clear();
        for (const Rectangle& part : Around(box, inside)) {
            if (!IsEmpty(part)) AddVisible(shape, part);
        }
        if (!ranges_->ranges.empty()) {
            if (!OpenGroups() || !BlendUnmasked(source, paint)) return PaintResult::NoPixels;
            some = some || !ranges_->ranges.empty();
        }
    }
    allIsNoted_ = wasNoted;
    if (!some) return PaintResult::NothingToPaint;
    NotePainted(mask && !paint.outsideMask ? inside : box);
    return PaintResult::Painted;
}

/// Adds what can be seen of a shape in a box to the ranges. @param shape null for all of the box.
void Painter::Implementation::AddVisible(const Bands* shape, const Rectangle& box) {
    std::vector<Rectangle>& parts = clip_ ? visible_ : ranges_->ranges;
    if (clip_) visible_.clear();
    if (shape != nullptr) {
        AppendIntersection(*shape, box, parts);
    } else {
        parts.push_back(box);
    }
    if (!clip_) return;
    for (const Rectangle& r : visible_) AppendIntersection(clip_->bands, r, ranges_->ranges);
}

/// Paints the ranges. The blender's copy of them is looked at by nobody.
bool Painter::Implementation::Blend(const std::shared_ptr<IQorImage>& source, const Point<int, 2>& offset,
                                    const std::shared_ptr<IQorImage>& mask,
                                    const std::shared_ptr<IPDFTransferFunction>& maskTransfer,
                                    const Point<int, 2>& maskOffset, unsigned char alpha, BlendMode mode) {
    ranges_->Reuse(static_cast<RangeList&>(*painted_));
    return blender_->Blend(source, coverage_, offset, mask, maskTransfer, maskOffset, alpha, mode, painted_);
}

/// Cuts ranges to what of a source is not clear, where a clear pixel changes nothing: outside groups, and where nothing
/// was painted in an isolated one. Elsewhere in a group it may round a colour anew, and what knocks out is cut by
/// pixels.
/// @return false, with the ranges as they were, if nothing would be left.
bool Painter::Implementation::LeaveOutClear(const Source& source) {
    const Level& level = levels_.back();
    const bool mayRound = level.inGroup && (!level.kind.isolated || level.kind.knockout);
    if (source.content == nullptr || mayRound) return true;
    Rectangle kept = *source.content;
    if (level.inGroup) kept = Union(kept, level.painted);
    std::vector<Rectangle>& ranges = ranges_->ranges;
    const auto isLeftOut = [&](const Rectangle& r) { return IsEmpty(Intersection(r, kept)); };
    if (std::ranges::all_of(ranges, isLeftOut)) return false;
    std::erase_if(ranges, isLeftOut);
    for (Rectangle& r : ranges) r = Intersection(r, kept);
    return true;
}

/// Without a mask a range is a place in the target, also where a group notes it.
bool Painter::Implementation::BlendUnmasked(const Source& source, const Paint& paint) {
    if (!LeaveOutClear(source)) return true;
    const Level& level = levels_.back();
    const Point<int, 2> offset = Difference(level.origin, source.at);
    for (Rectangle& r : ranges_->ranges) r = Moved(r, level.origin);
    if (level.kind.knockout && source.hasAlpha) {
        elementShape_.CutToPicture(ranges_->ranges, *source.image, Difference(source.at, level.origin));
    }
    if (ranges_->ranges.empty()) return true;
    return Blend(source.image, offset, kNoMask, kNoTransfer, {0, 0}, source.alpha, paint.mode);
}

/// Paints the ranges, which lie inside the mask.
bool Painter::Implementation::BlendInside(const Source& source, const Rectangle& box, const Paint& paint,
                                          const ImageFacts& mask) {
    // A stencil leaves alphas out in groups, and with Normal at full alpha it copies clear pixels. There it is taken
    // for the runs of pixels that it paints.
    const bool copies = source.hasAlpha && source.alpha == 255 && paint.mode == BlendMode::Normal;
    if (!IsStencil(paint, mask) || !(levels_.back().image || copies)) {
        if (!LeaveOutClear(source)) return true;
        const bool whole = CountsFromSource(source, box, mask.PlaceAt(paint.maskAt));
        return whole ? BlendMasked(source, paint) : BlendMaskedParts(source, box, paint);
    }
    elementShape_.CutToStencil(ranges_->ranges, *paint.mask, paint.maskAt);
    return BlendUnmasked(source, paint);
}

/// Whether the ranges of a masked call may count from the source's corner: where nothing is so far away that positions
/// wrap. A group notes such a range although it is painted elsewhere: inside its image that changes nothing, as all of
/// it is noted from the start.
bool Painter::Implementation::CountsFromSource(const Source& source, const Rectangle& box,
                                               const Rectangle& mask) const {
    if (!IsNear(mask) || !IsNear({source.at.x, source.at.y, source.at.x, source.at.y})) return false;
    const Level& level = levels_.back();
    if (!level.image) return true;
    const Rectangle noted = Moved(box, source.at);
    return !level.kind.knockout && static_cast<unsigned int>(noted.x1) <= level.image->GetWidth() &&
           static_cast<unsigned int>(noted.y1) <= level.image->GetHeight();
}

/// With a mask a range is a place in the source, and the target lies at the range plus the offset.
bool Painter::Implementation::BlendMasked(const Source& source, const Paint& paint) {
    for (Rectangle& r : ranges_->ranges) r = Moved(r, source.at);
    const Point<int, 2> offset = Difference(source.at, levels_.back().origin);
    return Blend(source.image, offset, paint.mask, paint.maskTransfer, Difference(paint.maskAt, source.at),
                 source.alpha, paint.mode);
}

/// The same with ranges that count from the box, as parts of source and mask do that start there. It is small, however
/// far away, and fits into a group's image.
bool Painter::Implementation::BlendMaskedParts(const Source& source, const Rectangle& box, const Paint& paint) {
    const Level& level = levels_.back();
    const auto height = static_cast<unsigned int>(box.y1) - static_cast<unsigned int>(box.y0);
    // Shows an image from the box on, or from the start of that byte. @return how many pixels before the box.
    const auto show = [&](ImageView& view, const IQorImage& image, const Point<int, 2>& at) {
        const auto [x, y] = Difference({box.x0, box.y0}, at);
        const auto column = static_cast<unsigned int>(x);
        const unsigned int early = BitsPerPixel(image.GetPixelFormat()) < 8 ? column % 8 : 0;
        view.Show(image, column - early, static_cast<unsigned int>(y), height, image.GetPalette());
        return static_cast<int>(early);
    };
    const int maskEarly = show(*maskView_, *paint.mask, paint.maskAt);
    const int sourceEarly = show(*sourceView_, *source.image, source.at);
    const Point<int, 2> start{box.x0 - sourceEarly, box.y0};
    const Point<int, 2> maskOffset{sourceEarly - maskEarly, 0};
    for (Rectangle& r : ranges_->ranges) r = Moved(r, start);
    if (level.kind.knockout) {
        if (source.hasAlpha) elementShape_.CutToPicture(ranges_->ranges, *sourceView_, {0, 0});
        elementShape_.CutToMask(ranges_->ranges, *maskView_, maskOffset, *paint.maskTransfer);
        if (ranges_->ranges.empty()) return true;
    }
    return Blend(sourcePart_, Difference(start, level.origin), maskPart_, paint.maskTransfer, maskOffset, source.alpha,
                 paint.mode);
}

}  // namespace vantu
