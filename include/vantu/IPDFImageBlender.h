#pragma once

#include <vantu/BlendMode.h>
#include <vantu/Export.h>
#include <vantu/Geometry.h>
#include <vantu/IPDFTransferFunction.h>
#include <vantu/IQorImage.h>
#include <vantu/IRasterizer.h>

#include <memory>
#include <vector>

namespace vantu {

/// Paints images under the PDF transparency model (ISO 32000-2, clause 11) onto an image or a raster surface.
///
/// All arithmetic is on 8-bit integers and truncates at fixed places: the same call gives the same bytes on every
/// CPU. A blender is used by one thread at a time; distinct blenders share nothing, and any number of them may read one
/// source or mask. A blender that is dropped with groups open drops them unresolved.
class VANTU_API IPDFImageBlender {
public:
    /// A list of rectangles that says what a `Blend` paints, in pixels of the destination or, through a mask, of the
    /// source. One thread at a time.
    class VANTU_API Coverage {
    public:
        virtual ~Coverage() = default;

        /// A copy, owned by the caller.
        [[nodiscard]] virtual Coverage* Clone() const = 0;
        /// Adds each range of another coverage in list order.
        /// @param other may be this one.
        /// @throws std::length_error, std::bad_alloc; the ranges before it are then added.
        virtual void AddCoverage(const Coverage& other) = 0;
        /// Adds a range. In one pass over the list, each range that touches it (a shared edge or corner is enough)
        /// is replaced by the bounding box of both, which may cover pixels that neither covers; the result becomes the
        /// last of the list. Empty ranges count.
        ///
        /// REQUIRES: x0 <= x1 and y0 <= y1, if the range is painted; a reversed one is not detected.
        /// @param range in pixels, anywhere.
        /// @throws std::length_error, std::bad_alloc; the list is then as it was.
        virtual void AddRange(const Range<int, 2>& range) = 0;
        /// The list, valid until the next change. Ranges may overlap; a pixel in two of them is painted twice.
        [[nodiscard]] virtual const std::vector<Range<int, 2>>& GetRanges() const = 0;
    };

    /// For implementations alone.
    /// @{
    IPDFImageBlender() = default;
    IPDFImageBlender(const IPDFImageBlender&) = default;
    IPDFImageBlender& operator=(const IPDFImageBlender&) = default;
    /// @}
    virtual ~IPDFImageBlender() = default;

    /// Paints `source` through `coverage` onto the top group's image, or else the destination.
    ///
    /// Without a mask a range is a place in the destination and the source is read at the range plus `offset`: the
    /// range {x, y, x + w, y + h} and the offset (-x, -y) put a picture of w by h pixels at (x, y).
    /// With a mask whose rectangle meets the range the sides change: the destination is written at the range plus
    /// `offset`, the source read at the range, and the mask rectangle is compared with the range as it stands: the
    /// range {0, 0, w, h} and the offset (x, y) put the picture at (x, y). What lies outside the mask's rectangle is
    /// painted without it.
    ///
    /// REQUIRES: what is read lies inside the source, what is written inside the destination; nothing is clipped.
    /// REQUIRES: in a group a range lies inside the group's image as it stands, too: there it is resolved.
    /// REQUIRES: source, mask and destination stay alive and unmoved during the call.
    ///
    /// @param source on an image destination of format `Rgb555`, `Bgr24`, `Bgra32Premultiplied` or
    ///        `Bgra32Inverted`; on a surface of any format. Its palette counts only on a surface.
    /// @param coverage the rectangles to paint.
    /// @param offset in pixels, see above.
    /// @param mask empty for none. A 1-bit mask with no function, or with an identity of `Alpha`, is a stencil:
    ///        sample 0 paints, 1 protects. Any other is a soft mask.
    /// @param maskTransfer turns the colour of a soft mask into an opacity 0 to 1. Without a function a soft mask
    ///        paints nothing inside its rectangle, as a mask without memory does.
    /// @param maskOffset top left corner of the mask's rectangle.
    /// @param alpha constant alpha, 0 to 255. At 0 the call returns true and changes nothing.
    /// @param mode the blend mode. On an image a number above 255 runs into the formats by which the kernel is looked
    ///        up: it is refused, or its low 8 bits are the mode and the pixels are painted as those of the formats that
    ///        come out, as far as they lie inside the images.
    /// @param blended on success replaced by a copy of `coverage`. On refusal it may have been filled with an empty
    ///        coverage.
    /// @return true if the call was carried out; an `Index1`, `Index4` or `Index8` destination stays as it is all the
    ///         same. False, with nothing painted, if there is no destination, source, coverage or source memory; if a
    ///         destination to be painted on has no memory; if the format of one of the two is none or the source's is
    ///         not one of the above; if the mode is none; if memory ran out for a view of the images; or, in a library
    ///         built with `IMAGEOP_CHECKED`, if what is painted or read leaves an image.
    /// @throws std::bad_alloc if memory runs out, and what a host's function or surface throws: coverages and groups
    ///         are then as before, and what was painted until then stays.
    virtual bool Blend(const std::shared_ptr<IQorImage>& source, const std::shared_ptr<Coverage>& coverage,
                       const Point<int, 2>& offset, const std::shared_ptr<IQorImage>& mask,
                       const std::shared_ptr<IPDFTransferFunction>& maskTransfer, const Point<int, 2>& maskOffset,
                       unsigned char alpha, BlendMode mode, std::shared_ptr<Coverage>& blended) = 0;

    /// Opens a transparency group that is painted on `image`; groups nest.
    ///
    /// What the image holds is the group's initial backdrop, of which a snapshot is taken. Until the matching
    /// `EndGroup` every `Blend` goes to this image.
    ///
    /// @param image the group image. If it is empty, of no pixels, or cannot be cloned, no group is opened, and its
    ///        `EndGroup` would close the group around it.
    /// @param heldObject kept alive as long as the group; never looked at.
    /// @param knockout each element composites with the initial backdrop, not with the elements before it.
    /// @param keepBackdrop, plainResolve choose what `EndGroup` does with the image.
    /// @return true in every case.
    /// @throws std::bad_alloc if memory runs out; no group is opened then.
    virtual bool BeginGroup(const std::shared_ptr<IQorImage>& image, const std::shared_ptr<void>& heldObject,
                            bool knockout, bool keepBackdrop, bool plainResolve) = 0;

    /// Resolves the top group's image in place and closes the group. Resolved are the ranges that were painted, without
    /// their offset, as far as they lie in the image; a pixel in two of them is resolved twice.
    ///
    /// Images of format `Bgra32Premultiplied` and `Bgra32Inverted` are changed, others never:
    /// neither flag: the backdrop's contribution is taken out of each pixel, whose alpha becomes the group's own;
    /// `keepBackdrop` alone: nothing; `plainResolve` alone: the colours stay and alpha becomes the group's own;
    /// both: the snapshot and the image are mixed by the group's own alpha.
    ///
    /// The result is painted into the parent by a `Blend` with the group image as source.
    /// @return false if no group is open.
    virtual bool EndGroup() = 0;

    /// Makes a blender.
    ///
    /// @param rasterizer required; held as long as the blender.
    /// @param image the destination; if empty the destination is the rasterizer's surface.
    /// @return empty if there is no rasterizer.
    /// @throws std::bad_alloc if memory runs out.
    [[nodiscard]] static std::shared_ptr<IPDFImageBlender> Create(std::shared_ptr<IRasterizer>& rasterizer,
                                                                  const std::shared_ptr<IQorImage>& image);
    /// Makes an empty coverage.
    [[nodiscard]] static std::shared_ptr<Coverage> CreateCoverage();
};

}  // namespace vantu
