#pragma once

#include <vantu/Color.h>
#include <vantu/ColorMap.h>
#include <vantu/Export.h>
#include <vantu/Geometry.h>
#include <vantu/IGraphicsFactory.h>
#include <vantu/IQorImage.h>

#include <memory>

/// Operations on whole images and rectangles of them.
///
/// Ranges count from the visual top left; one with y0 above y1 has no rows. One thread at a time on an image that is
/// written; no state of its own. Where an image cannot be had for lack of memory, std::bad_alloc leaves.
///
/// REQUIRES: a range lies inside its image, unless it is one that means the whole image; nothing is clipped.
namespace vantu::ImageUtil {

/// Fills a rectangle with a colour. A range with x0 above x1 means the whole image; one with x0 = x1 nothing.
///
/// `Index8` without a palette is filled with zero bytes.
/// @param image the image to change.
/// @param color straight; written as the format stores it.
/// @param range in pixels.
/// @return false, with nothing touched, for an image with a palette, and for an image without memory unless the
///         rectangle is empty. Pixels of 1 and 4 bits are never touched: true for a rectangle of them that is empty, or
///         that reaches an end of a byte and holds no whole one; else false.
VANTU_API bool Clear(IQorImage& image, const Color& color, const Range<int, 2>& range);

/// Fills a rectangle with a raw pixel value, most significant byte first in memory (so not the order of a colour).
///
/// @param image the image to change.
/// @param index 1 bit: any value but 0 is 1; 4 and 8 bits: the low bits; else as many low bytes as a pixel has.
/// @param range in pixels; with x0 above x1 the whole image.
/// @return false, with nothing touched, for a format of no depth, an image without memory unless the rectangle is
///         empty, and a rectangle of 1- or 4-bit pixels that starts and ends inside one byte with bits left over on
///         both sides.
VANTU_API bool ClearIndex(IQorImage& image, unsigned int index, const Range<int, 2>& range);

/// Sets the alpha of every pixel of a rectangle and leaves the colour bytes as they are, premultiplied or not.
///
/// @param image the image to change.
/// @param alpha 0 (transparent) to 255 (opaque); `Bgra32Inverted` stores 255 less it.
/// @param range in pixels; with x0 above x1 the whole image.
/// @return false, with nothing touched, for a format without alpha, and for an image without memory unless the
///         rectangle is empty.
VANTU_API bool ClearPixelAlpha(IQorImage& image, unsigned char alpha, const Range<int, 2>& range);

/// Sets the alpha of every entry; of a palette of 65,536 entries or more, of as many as the low 16 bits of its size.
/// @param palette the palette to change.
/// @param alpha 0 (transparent) to 255 (opaque).
/// @return true.
VANTU_API bool ClearPaletteAlpha(ColorMap& palette, unsigned char alpha);

/// A new image with the size, format, row order and pixel bytes of `image`; its palette is the one it is born with.
///
/// Rows are taken from the source at the new image's stride: with a factory that chooses another alignment the rows
/// come out skewed. Bytes past the end of the source's block come out as 0.
/// @param image only read.
/// @param factory makes the image; null for a `CQorImage` of the source's alignment.
/// @param memory handed to the factory.
/// @return empty if no image could be made, or if one of the two has pixels to copy but no memory.
VANTU_API [[nodiscard]] std::shared_ptr<IQorImage> Clone(const IQorImage& image, IGraphicsFactory* factory,
                                                         void** memory);

/// Copies a rectangle of `source` to `targetPoint` of `target`, row by row from the top left, pixel by pixel.
///
/// Between images of one format raw values are copied, indices as they are; otherwise colours are converted. A source
/// without colours (`Index8` without palette) paints black.
/// Nothing is done, with the result true, when sourceRange.x0 > sourceRange.x1, targetPoint.x > sourceRange.x1 or
/// targetPoint.y > sourceRange.y1: a picture at (0, 0) of its image is not copied further right or down than its own
/// size. `IPDFImageBlender::Blend` puts one there.
///
/// REQUIRES: the rectangle lies inside the target at `targetPoint`, too.
/// @param source only read.
/// @param sourceRange in pixels of the source.
/// @param target the image to change. It may be the source.
/// @param targetPoint in pixels of the target.
/// @return false, with nothing written, for a format that is none, for colours into an image with a palette, and for
///         1- or 4-bit images of one format where one has no palette or an image without memory, unless the rectangle
///         is empty.
VANTU_API bool Copy(const IQorImage& source, const Range<int, 2>& sourceRange, IQorImage& target,
                    const Point<int, 2>& targetPoint);

/// A mirrored image. Both ways at once is the half turn of `Rotate`: with a factory that chooses another alignment its
/// rows of 8 bits and more come out skewed.
///
/// The horizontal flip of 1- and 4-bit images takes target pixel x from source position width - x, one further than the
/// mirror image: the source's first pixel is not used and target pixel 0 gets the bits behind the row's last pixel (0
/// behind the last byte of the block). Bytes between rows are not written.
/// @param image only read.
/// @param horizontal whether left and right are swapped.
/// @param vertical whether top and bottom are swapped; neither is a `Clone`.
/// @param factory makes the image; null for a `CQorImage` of the source's alignment.
/// @param memory handed to the factory.
/// @return the new image with the source's format and row order, or empty if none could be made, one of the two has no
///         memory, or rows of one hold more bits than `RowStride` counts.
VANTU_API [[nodiscard]] std::shared_ptr<IQorImage> Flip(const IQorImage& image, bool horizontal, bool vertical,
                                                        IGraphicsFactory* factory, void** memory);

/// An image turned by quarter turns, counter-clockwise for positive counts; 0 is `Clone`.
///
/// A multiple of four other than 0 gives a new image whose pixels are not written. Rows of 8 bits and more are laid by
/// the source's alignment: an image of another alignment, which a factory may make, shows them skewed and keeps what
/// fits into its block.
/// @param image only read.
/// @param quarterTurns any number; odd ones exchange width and height.
/// @param factory makes the image; null for a `CQorImage` of the source's alignment.
/// @param memory handed to the factory.
/// @return the new image with the source's format and row order, or empty if none could be made, one of the two has no
///         memory, or rows of one hold more bits than `RowStride` counts.
VANTU_API [[nodiscard]] std::shared_ptr<IQorImage> Rotate(const IQorImage& image, int quarterTurns,
                                                          IGraphicsFactory* factory, void** memory);

}  // namespace vantu::ImageUtil
