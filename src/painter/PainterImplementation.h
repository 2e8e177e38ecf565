#pragma once

#include <vantu/CQorImage.h>
#include <vantu/IPDFImageBlender.h>
#include <vantu/Painter.h>

#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "painter/ColorSheet.h"
#include "painter/ElementShape.h"
#include "painter/ImageFacts.h"
#include "painter/ImageView.h"
#include "painter/RangeList.h"
#include "painter/Rectangles.h"

namespace vantu {

/// A painter: a blender, the page and the stack of open groups on it.
class Painter::Implementation {
public:
    Implementation(std::shared_ptr<IQorImage> page, std::shared_ptr<RasterSurface> surface, const Rectangle& bounds);

    void SetClip(const std::vector<Rectangle>& rectangles);
    void ClearClip() { clip_ = nullptr; }
    /// @param content null, or a rectangle of the page around which the picture is clear.
    PaintResult Draw(const std::shared_ptr<IQorImage>& picture, const Point<int, 2>& at, const Paint& paint,
                     const Rectangle* content = nullptr);
    PaintResult Fill(std::span<const Rectangle> rectangles, const Color& color, const Paint& paint);
    PaintResult BeginGroup(const Rectangle& bounds, const GroupKind& kind);
    PaintResult EndGroup(const Paint& paint);
    [[nodiscard]] std::size_t GroupDepth() const { return levels_.size() - 1; }

private:
    struct Clip {
        Bands bands;
        Rectangle box;
    };

    /// The page, or an open group.
    struct Level {
        std::shared_ptr<IQorImage> image;  ///< what is painted on; empty for the page, and before a group is open
        Point<int, 2> origin{0, 0};        ///< where pixel (0, 0) of what is painted on lies on the page
        Rectangle bounds{};                ///< what can be painted, on the page
        PaintResult refusal = PaintResult::Painted;  ///< why nothing can be, if so
        GroupKind kind;
        bool inGroup = false;              ///< what is painted on is an image of a group
        bool isThrough = false;            ///< what is painted on is the level's below
        bool isOpen = false;               ///< that is known; of a group with an image, it is open in the blender
        bool copiedBack = false;           ///< the image takes the page's place at the end
        bool keepsOpaque = false;          ///< nothing will be taken out of the opaque pixels of what is painted on
        bool keepsAll = false;             ///< nor of others
        Rectangle painted{};               ///< around what was painted, on the page; empty if nothing was
        std::shared_ptr<const Clip> clip;  ///< that held before the group
    };

    /// What colours are taken from.
    struct Source {
        const std::shared_ptr<IQorImage>& image;
        Point<int, 2> at;  ///< its top left corner on the page
        bool hasAlpha;
        unsigned char alpha;                 ///< constant alpha
        const Rectangle* content = nullptr;  ///< on the page, around it the image is clear; null if that is not known
    };

    [[nodiscard]] PaintResult CheckPage() const;
    [[nodiscard]] PaintResult CheckPaint(const Paint& paint, const std::optional<ImageFacts>& mask) const;
    [[nodiscard]] PaintResult CheckPicture(const std::optional<ImageFacts>& picture) const;
    [[nodiscard]] bool OnSurface() const { return surface_ != nullptr && !levels_.back().inGroup; }
    [[nodiscard]] Rectangle VisibleBox(const Rectangle& rectangle) const;

    PaintResult Replace(const Rectangle& box, const Color& color);
    PaintResult PaintShape(const Source& source, const Bands* shape, const Rectangle& box, const Paint& paint,
                           const std::optional<ImageFacts>& mask);
    void NotePainted(const Rectangle& box) { levels_.back().painted = Union(levels_.back().painted, box); }
    void AddVisible(const Bands* shape, const Rectangle& box);
    bool Blend(const std::shared_ptr<IQorImage>& source, const Point<int, 2>& offset,
               const std::shared_ptr<IQorImage>& mask, const std::shared_ptr<IPDFTransferFunction>& maskTransfer,
               const Point<int, 2>& maskOffset, unsigned char alpha, BlendMode mode);
    bool LeaveOutClear(const Source& source);
    bool BlendUnmasked(const Source& source, const Paint& paint);
    bool BlendInside(const Source& source, const Rectangle& box, const Paint& paint, const ImageFacts& mask);
    [[nodiscard]] bool CountsFromSource(const Source& source, const Rectangle& box, const Rectangle& mask) const;
    bool BlendMasked(const Source& source, const Paint& paint);
    bool BlendMaskedParts(const Source& source, const Rectangle& box, const Paint& paint);

    [[nodiscard]] const Level* StartOf(const GroupKind& kind, std::size_t depth) const;
    bool OpenGroups();
    bool Open(std::size_t depth);
    [[nodiscard]] bool PageIsCopiedExactly() const;
    [[nodiscard]] ImageView PagePart(const Rectangle& r) const;
    std::shared_ptr<IQorImage> TakeImage(const Rectangle& bounds);
    void CopyContent(const Level& from, const Level& group) const;
    void OpenInBlender(const Level& group);
    void CloseInBlender(const Level& group);
    PaintResult CopyBack(const Level& group);

    std::shared_ptr<IQorImage> page_;  ///< empty on a surface
    std::shared_ptr<RasterSurface> surface_;
    std::shared_ptr<IPDFImageBlender> blender_;
    std::shared_ptr<const Clip> clip_;  ///< empty for none
    std::vector<Level> levels_;         ///< the page, and above it the open groups

    /// Image of a group that was closed, for the next one of that size: fresh memory costs several times what painting
    /// on it does. It is clear in all rows but these.
    std::shared_ptr<IQorImage> spareImage_;
    Rectangle spareRows_{};
    bool allIsNoted_ = true;  ///< not where a call broke off, which may have painted more than is noted

    // Kept from call to call for their memory.
    const std::shared_ptr<RangeList> ranges_ = std::make_shared<RangeList>();
    const std::shared_ptr<ImageView> sourceView_ = std::make_shared<ImageView>();
    const std::shared_ptr<ImageView> maskView_ = std::make_shared<ImageView>();
    // The same as a blender takes them: a conversion at each call would count references.
    const std::shared_ptr<IPDFImageBlender::Coverage> coverage_ = ranges_;
    const std::shared_ptr<IQorImage> sourcePart_ = sourceView_;
    const std::shared_ptr<IQorImage> maskPart_ = maskView_;
    std::shared_ptr<IPDFImageBlender::Coverage> painted_ = std::make_shared<RangeList>();  ///< a copy of the ranges
    Bands shape_;
    std::vector<Rectangle> visible_;
    ColorSheet sheet_;
    ElementShape elementShape_;
};

}  // namespace vantu
