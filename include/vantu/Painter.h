#pragma once

#include <vantu/BlendMode.h>
#include <vantu/Color.h>
#include <vantu/Export.h>
#include <vantu/Geometry.h>
#include <vantu/IPDFTransferFunction.h>
#include <vantu/IQorImage.h>
#include <vantu/IRasterizer.h>

#include <memory>
#include <vector>

namespace vantu {

/// What became of a call to a `Painter`. All but `Painted` and `PlainGroup` have changed no pixel.
enum class PaintResult {
    Painted,              ///< something of it lies where it can be seen
    GroupBegun,           ///< a group is open, and something in it can be seen
    NothingToPaint,       ///< all of it lies outside, or its alpha is 0
    NoPixels,             ///< the page, the picture or the mask is missing or has no pixels in memory
    TooWide,              ///< the page, the picture or the mask has rows of 2^31 bits or more
    SourceFormat,         ///< the picture's format is not painted from
    TargetFormat,         ///< the page's format is not painted on
    MaskFormat,           ///< the mask's format is none
    MaskWithoutFunction,  ///< a soft mask came without a transfer function
    NoSuchMode,           ///< the blend mode is none
    PlainGroup,           ///< a plain or normal group ended otherwise, which was not heeded
    NoGroup,              ///< no group is open
};

/// One line of English about a result, without a full stop. Static, never null.
[[nodiscard]] VANTU_API const char* TextOf(PaintResult result);

/// How something is painted.
struct Paint {
    BlendMode mode = BlendMode::Normal;  ///< the blend mode
    unsigned char alpha = 255;           ///< constant alpha, 0 to 255
    /// Empty for none. A 1-bit mask with no function, or with an identity of `Alpha`, is a stencil: sample 0 paints, 1
    /// protects. Any other is a soft mask and needs `maskTransfer`.
    std::shared_ptr<IQorImage> mask = nullptr;
    Point<int, 2> maskAt{0, 0};  ///< place of the mask's top left corner on the page
    /// Turns the colour of a soft mask into an opacity 0 to 1.
    std::shared_ptr<IPDFTransferFunction> maskTransfer = nullptr;
    bool outsideMask = false;  ///< whether what lies outside the mask's rectangle is painted, without it
};

/// What a transparency group is (ISO 32000-2, 11.4).
struct GroupKind {
    bool isolated = false;  ///< it starts transparent, not on what lies below
    bool knockout = false;  ///< each element composites with what the group started on and replaces the ones before it
    /// The group will end with Normal, alpha 255 and no mask. This is a promise that saves work and rounding: a group
    /// that is not isolated need not have what lies below taken out of it again.
    bool plain = false;
    /// The group will end with Normal, at any alpha and through any mask; a plain one does. The opaque pixels of such a
    /// group are painted as they stand, what lies below included, which gives the same: nothing is taken out of them,
    /// and no colour is bent by that.
    bool normal = false;
};

/// Paints pictures, colours and transparency groups on a page: an image, or a host's surface.
///
/// All positions are the page's, in pixels from its top left corner, inside groups too. Any position, picture and
/// mask is allowed: nothing is read or written outside an image. A pixel is painted once by a call, with the
/// bytes that `IPDFImageBlender::Blend` gives there.
///
/// Pictures and masks must stay alive, unmoved and unchanged during a call, the page and the surface as long as the
/// painter, and the page's size and format must stay as they are. Only std::bad_alloc leaves, and what a host's own
/// transfer function or surface throws. A painter is used by one thread at a time; distinct ones share nothing. It
/// costs what a blender costs to make, so keep it as long as its page.
class VANTU_API Painter {
public:
    using Rectangle = Range<int, 2>;  ///< in pixels of the page; nothing if it has no columns or rows

    /// Paints on an image of any format but the palette formats 1 to 3.
    /// @param page the image; its pixels stay where they are in it.
    explicit Painter(std::shared_ptr<IQorImage> page);
    /// Paints on a surface. Outside groups pictures of all nine formats are painted there.
    /// @param surface held as long as the painter; it is never asked for a position outside `bounds`.
    /// @param bounds the part of the page that the surface holds, anywhere.
    Painter(std::shared_ptr<RasterSurface> surface, const Rectangle& bounds);
    /// Takes over the page, the clip and the open groups of another, which can then only be assigned to or destroyed.
    /// @{
    Painter(Painter&& other) noexcept;
    Painter& operator=(Painter&& other) noexcept;
    /// @}
    /// Drops groups that are still open.
    ~Painter();

    /// Paints only inside these rectangles from now on: exactly there, however they touch or overlap. None of them, or
    /// empty ones, leave nothing to paint. In a group the clip holds until the group's end.
    /// @throws std::bad_alloc; the clip is then as it was.
    void SetClip(const std::vector<Rectangle>& rectangles);
    /// Paints everywhere from now on; in a group, everywhere inside it.
    void ClearClip();

    /// Paints a picture.
    ///
    /// Through a stencil the picture's alpha counts as it does without one.
    /// @param picture of format `Rgb555`, `Bgr24`, `Bgra32Premultiplied` or `Bgra32Inverted`. Others are refused
    ///        (`ImageUtil::Copy` makes them one of these) but on a surface outside groups, where palettes count too.
    /// @param at where its top left corner comes to lie, anywhere.
    /// @param paint how.
    PaintResult Draw(const std::shared_ptr<IQorImage>& picture, const Point<int, 2>& at, const Paint& paint = {});

    /// Paints a colour in a rectangle.
    /// @param rectangle anywhere; nothing if it has no columns or rows.
    /// @param color straight; its alpha multiplies `paint.alpha`, cut to 8 bits.
    /// @param paint how.
    PaintResult Fill(const Rectangle& rectangle, const Color& color, const Paint& paint = {});
    /// Paints a colour where any of the rectangles is. Those that come in rows from the top, each row from the left,
    /// without overlapping, as the runs of an outline do, are painted as they are; others are cut up first.
    /// @param rectangles anywhere; empty ones count for nothing.
    /// @param color, paint as above.
    PaintResult Fill(const std::vector<Rectangle>& rectangles, const Color& color, const Paint& paint = {});

    /// Opens a transparency group. What is painted until its end is painted in it.
    ///
    /// Whatever the answer, a group is then open and needs its `EndGroup`. The first call that paints in it takes
    /// twelve bytes for each pixel of `bounds` that can be seen, which the painter keeps for the next group of that
    /// size; a plain group that is neither isolated nor knockout takes nothing. In a group the opacity of a mask is cut
    /// to 8 bits. In a knockout group an element is the pixels where neither its picture nor its mask is clear, and
    /// `maskTransfer` may be asked twice about a pixel.
    /// @param bounds what the group may paint, anywhere.
    /// @param kind isolated, knockout.
    /// @return `GroupBegun`, or why nothing in the group will be seen.
    /// @throws std::bad_alloc; no group is then opened.
    PaintResult BeginGroup(const Rectangle& bounds, const GroupKind& kind = {});

    /// Closes the group that was opened last, brings back the clip of its beginning and paints the group's result as
    /// one picture.
    /// @param paint of the group as a whole.
    /// @throws std::bad_alloc; the group is then closed and may be painted in part.
    PaintResult EndGroup(const Paint& paint = {});

    /// Number of open groups.
    [[nodiscard]] unsigned int GetGroupDepth() const;

private:
    class Implementation;
    std::unique_ptr<Implementation> implementation_;
};

}  // namespace vantu
