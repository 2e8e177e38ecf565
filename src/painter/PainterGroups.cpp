#include <vantu/ImageUtil.h>

#include <cstring>
#include <utility>

#include "painter/PainterImplementation.h"

namespace vantu {
namespace {

std::shared_ptr<CQorImage> MakeImage(const Rectangle& bounds, PixelFormat format) {
    const auto length = [](int start, int end) {
        return static_cast<unsigned int>(end) - static_cast<unsigned int>(start);
    };
    return std::make_shared<CQorImage>(length(bounds.x0, bounds.x1), length(bounds.y0, bounds.y1), format, 4, false);
}

Rectangle WholeOf(const IQorImage& image) {
    return RectangleAt({0, 0}, image.GetWidth(), image.GetHeight());
}

/// The pixels of a surface as straight colours.
std::shared_ptr<CQorImage> ReadSurface(RasterSurface& surface, const Rectangle& bounds) {
    std::shared_ptr<CQorImage> image = MakeImage(bounds, PixelFormat::Bgra32);
    unsigned char* pixel = image->GetPixelData();
    for (int y = bounds.y0; y < bounds.y1; ++y) {
        for (int x = bounds.x0; x < bounds.x1; ++x) {
            Color color;
            surface.GetPixel(&surface, x, y, color);
            for (const unsigned char byte : {color.GetBlue(), color.GetGreen(), color.GetRed(), color.GetAlpha()}) {
                *pixel++ = byte;
            }
        }
    }
    return image;
}

/// Whether a group ends as it was promised.
bool IsAsPromised(const GroupKind& kind, const Paint& paint) {
    if (kind.plain) return paint.mode == BlendMode::Normal && paint.alpha == 255 && !paint.mask;
    return !kind.normal || paint.mode == BlendMode::Normal;
}

constexpr std::size_t kGroupPixelBytes = 4;

std::size_t SizeOf(const IQorImage& groupImage) {
    return std::size_t{groupImage.GetWidth()} * groupImage.GetHeight() * kGroupPixelBytes;
}

/// Whether all pixels of a group's image are opaque.
bool IsOpaque(const IQorImage& groupImage) {
    const unsigned char* pixel = groupImage.GetPixelData();
    const unsigned char* const end = pixel + SizeOf(groupImage);
    while (pixel != end && pixel[3] == 255) pixel += kGroupPixelBytes;
    return pixel == end;
}

/// Gives the pixels of a group's image that are opaque in another one of its size the bytes that they have there.
void CopyOpaque(const IQorImage& from, IQorImage& to) {
    const unsigned char* source = from.GetPixelData();
    unsigned char* target = to.GetPixelData();
    const unsigned char* const end = source + SizeOf(from);
    for (; source != end; source += kGroupPixelBytes, target += kGroupPixelBytes) {
        if (source[3] == 255) std::memcpy(target, source, kGroupPixelBytes);
    }
}

}  // namespace

/// What a group with `depth` levels below it starts on: the content of the level below or, if that is a knockout group,
/// what that started on, which lies unchanged below it. @return null for a transparent start.
const Painter::Implementation::Level* Painter::Implementation::StartOf(const GroupKind& kind, std::size_t depth) const {
    if (kind.isolated) return nullptr;
    const Level* level = &levels_[depth - 1];
    for (; level->kind.knockout; --level) {
        if (level->kind.isolated) return nullptr;
    }
    return level;
}

PaintResult Painter::Implementation::BeginGroup(const Rectangle& bounds, const GroupKind& kind) {
    const Level& parent = levels_.back();
    const Level* const start = StartOf(kind, levels_.size());
    const bool plainStart = kind.plain && !kind.isolated && !parent.kind.knockout;
    Level group;
    group.kind = kind;
    group.isThrough = plainStart && !kind.knockout;
    group.inGroup = parent.inGroup || !group.isThrough;
    group.copiedBack = plainStart && kind.knockout && !parent.inGroup && PageIsCopiedExactly();
    group.clip = clip_;
    group.bounds = VisibleBox(bounds);
    group.origin = {group.bounds.x0, group.bounds.y0};
    group.refusal = parent.refusal;
    if (group.refusal == PaintResult::Painted && IsEmpty(group.bounds)) group.refusal = PaintResult::NothingToPaint;
    if (group.refusal == PaintResult::Painted && start != nullptr && !start->inGroup) group.refusal = CheckPage();
    const PaintResult refusal = group.refusal;
    levels_.push_back(std::move(group));
    return refusal == PaintResult::Painted ? PaintResult::GroupBegun : refusal;
}

/// Opens the groups that are painted in: many are not, and then cost nothing.
/// @return false if what one starts on has no pixels.
bool Painter::Implementation::OpenGroups() {
    if (levels_.back().isOpen) return true;
    for (std::size_t depth = 1; depth < levels_.size(); ++depth) {
        if (!levels_[depth].isOpen && !Open(depth)) return false;
    }
    return true;
}

bool Painter::Implementation::Open(std::size_t depth) {
    const Level& parent = levels_[depth - 1];
    Level group = levels_[depth];
    if (group.isThrough) {
        // Its elements composite with what lies below, where its result would come to lie as it is.
        group.image = parent.image;
        group.origin = parent.origin;
        group.keepsOpaque = parent.keepsOpaque;
        group.keepsAll = parent.keepsAll;
    } else {
        const Level* const start = StartOf(group.kind, depth);
        if (start != nullptr && !start->image && CheckPage() != PaintResult::Painted) return false;
        group.image = TakeImage(group.bounds);
        if (start != nullptr) CopyContent(*start, group);
        // C + k (result - C) = (1 - k) C + k result, where C is what lies below, opaque, and k how opaque the group is.
        // In a group out of which C is taken again it must not be painted: it would count as an element.
        const bool mayPaintBelow = group.kind.normal && !parent.kind.knockout && parent.keepsOpaque;
        group.keepsAll = group.kind.isolated || group.copiedBack || (mayPaintBelow && IsOpaque(*group.image));
        group.keepsOpaque = group.keepsAll || mayPaintBelow;
        OpenInBlender(group);
    }
    group.isOpen = true;
    levels_[depth] = std::move(group);
    return true;
}

/// A clear image for a group.
std::shared_ptr<IQorImage> Painter::Implementation::TakeImage(const Rectangle& bounds) {
    std::shared_ptr<IQorImage> spare = std::exchange(spareImage_, nullptr);
    const Rectangle whole = Moved(bounds, {bounds.x0, bounds.y0});
    if (!spare || WholeOf(*spare).x1 != whole.x1 || WholeOf(*spare).y1 != whole.y1) {
        return MakeImage(bounds, PixelFormat::Bgra32Premultiplied);
    }
    if (!IsEmpty(spareRows_)) ImageUtil::ClearIndex(*spare, 0, {0, spareRows_.y0, whole.x1, spareRows_.y1});
    return spare;
}

/// Whether pixels of the page come back from a group's image as they were.
bool Painter::Implementation::PageIsCopiedExactly() const {
    return page_ && (page_->GetPixelFormat() == PixelFormat::Bgr24 ||
                     page_->GetPixelFormat() == PixelFormat::Bgra32Premultiplied);
}

void Painter::Implementation::CopyContent(const Level& from, const Level& group) const {
    const Rectangle whole = WholeOf(*group.image);
    if (from.image) {
        ImageUtil::Copy(*from.image, Moved(group.bounds, from.origin), *group.image, {0, 0});
    } else if (page_) {
        ImageUtil::Copy(PagePart(group.bounds), whole, *group.image, {0, 0});
    } else {
        ImageUtil::Copy(*ReadSurface(*surface_, group.bounds), whole, *group.image, {0, 0});
    }
}

/// The pixels of the page in a rectangle, from (0, 0) on. Palettes do not count on a page.
ImageView Painter::Implementation::PagePart(const Rectangle& r) const {
    ImageView view;
    view.Show(*page_, static_cast<unsigned int>(r.x0), static_cast<unsigned int>(r.y0),
              static_cast<unsigned int>(r.y1 - r.y0), nullptr);
    return view;
}

void Painter::Implementation::OpenInBlender(const Level& group) {
    blender_->BeginGroup(group.image, nullptr, group.kind.knockout, group.keepsAll, false);
    // The group notes these two empty ranges as one, the box of both: its whole image. Each range that is painted later
    // is joined to it, so that every pixel is resolved once.
    const Rectangle whole = WholeOf(*group.image);
    try {
        const auto empty = std::make_shared<RangeList>();
        empty->ranges = {{0, 0, 0, whole.y1}, {0, 0, whole.x1, 0}};
        blender_->Blend(group.image, empty, {0, 0}, nullptr, nullptr, {0, 0}, 255, BlendMode::Normal, painted_);
    } catch (...) {
        blender_->EndGroup();
        throw;
    }
}

void Painter::Implementation::CloseInBlender(const Level& group) {
    std::shared_ptr<IQorImage> painted;
    try {
        if (group.keepsOpaque && !group.keepsAll) painted = ImageUtil::Clone(*group.image, nullptr, nullptr);
    } catch (...) {
        blender_->EndGroup();
        throw;
    }
    blender_->EndGroup();
    if (painted) CopyOpaque(*painted, *group.image);
}

PaintResult Painter::Implementation::EndGroup(const Paint& paint) {
    if (levels_.size() == 1) return PaintResult::NoGroup;
    const Level group = std::move(levels_.back());
    levels_.pop_back();
    clip_ = group.clip;
    const bool ownsImage = group.isOpen && !group.isThrough;
    if (ownsImage) CloseInBlender(group);
    if (group.refusal != PaintResult::Painted) return group.refusal;

    PaintResult result = PaintResult::NothingToPaint;
    const bool some = !IsEmpty(group.painted);
    if (some && group.isThrough) {
        NotePainted(group.painted);
        result = PaintResult::Painted;
    } else if (some && group.copiedBack) {
        result = CopyBack(group);
    } else if (some) {
        Paint asPromised = group.kind.plain ? Paint{} : paint;
        if (group.kind.normal) asPromised.mode = BlendMode::Normal;
        // Where nothing was painted an isolated group is clear, and so is one that its backdrop was taken out of.
        const bool isClearAround = group.kind.isolated || !group.keepsAll;
        result = Draw(group.image, group.origin, asPromised, isClearAround ? &group.painted : nullptr);
    }
    if (ownsImage) {
        spareImage_ = group.image;
        const bool isKnown = group.kind.isolated && allIsNoted_;
        spareRows_ = isKnown ? Moved(group.painted, group.origin) : WholeOf(*group.image);
    }
    return IsAsPromised(group.kind, paint) ? result : PaintResult::PlainGroup;
}

/// Puts the group's image in the page's place, as far as the clip allows.
PaintResult Painter::Implementation::CopyBack(const Level& group) {
    const PaintResult refusal = CheckPage();
    if (refusal != PaintResult::Painted) return refusal;
    ranges_->ranges.clear();
    AddVisible(nullptr, group.bounds);
    for (const Rectangle& r : ranges_->ranges) {
        // Copy does nothing where the target's position is beyond the end of the source's range: it starts at (0, 0).
        ImageView target = PagePart(r);
        ImageUtil::Copy(*group.image, Moved(r, group.origin), target, {0, 0});
    }
    NotePainted(group.bounds);
    return PaintResult::Painted;
}

}  // namespace vantu
