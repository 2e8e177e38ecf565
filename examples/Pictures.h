#pragma once

#include <vantu/imageop.h>

#include <memory>
#include <string>

/// What the examples share: reading and writing pictures, making them fit, and painting them in one line.
namespace examples {

/// Blenders want a rasterizer even when they paint on an image; this one has no surface.
class NoSurface : public vantu::IRasterizer {
public:
    std::shared_ptr<vantu::RasterSurface> GetRasterSurface() override { return nullptr; }
};

/// A blender that paints on `image`.
[[nodiscard]] std::shared_ptr<vantu::IPDFImageBlender> MakeBlender(const std::shared_ptr<vantu::IQorImage>& image);

/// A bottom-up `Bgr24` image of one colour, rows aligned to 4 bytes.
[[nodiscard]] std::shared_ptr<vantu::CQorImage> MakeSheet(int width, int height, const vantu::Color& color);

/// Paints one range of a source. @throws std::runtime_error if the blender refuses.
void BlendRange(vantu::IPDFImageBlender& blender, const std::shared_ptr<vantu::IQorImage>& source,
                const vantu::Range<int, 2>& range, const vantu::Point<int, 2>& offset, unsigned char alpha,
                vantu::BlendMode mode);

/// Paints a source with its top left corner at `corner`. @throws as `BlendRange`.
void PaintAt(vantu::IPDFImageBlender& blender, const std::shared_ptr<vantu::IQorImage>& source,
             const vantu::Point<int, 2>& corner, unsigned char alpha, vantu::BlendMode mode);

/// Paints what a mask lets through of a source of its size or more, both with their corners at `corner`. With a mask a
/// range is a place in the source and in the mask, and the offset leads from there to what is painted on.
/// @param transfer empty for a stencil. @throws as `BlendRange`.
void PaintThrough(vantu::IPDFImageBlender& blender, const std::shared_ptr<vantu::IQorImage>& source,
                  const std::shared_ptr<vantu::IQorImage>& mask,
                  const std::shared_ptr<vantu::IPDFTransferFunction>& transfer, const vantu::Point<int, 2>& corner,
                  unsigned char alpha, vantu::BlendMode mode);

/// First byte of a row, counted from the top of the picture.
[[nodiscard]] unsigned char* RowOf(vantu::IQorImage& image, unsigned int row);
[[nodiscard]] const unsigned char* RowOf(const vantu::IQorImage& image, unsigned int row);

/// A 1-bit mask of a `Bgr24` picture: what is dark paints (sample 0), what is light protects (sample 1).
[[nodiscard]] std::shared_ptr<vantu::CQorImage> MakeStencil(const vantu::IQorImage& picture);

/// Writes a PNG file. @throws std::runtime_error if it cannot be written.
void Save(const vantu::IQorImage& image, const std::string& path);

/// Reads a BMP, PNG or JPEG file, told apart by their first bytes.
///
/// @return an upright picture that can be a blender's source: `Bgr24`, or `Bgra32Premultiplied` if it has alpha.
/// @throws std::runtime_error with a text that names the file and says why it cannot be read.
[[nodiscard]] std::shared_ptr<vantu::IQorImage> ReadPicture(const std::string& path);

/// What happens to a picture whose shape is not that of its frame.
enum class Framing {
    Fill,   ///< what stands out on two sides is cut off
    Whole,  ///< the picture's edges are drawn out to those of the frame
};

/// A picture of `ReadPicture` scaled to `width` by `height` pixels, both at least 1; a bottom-up image of the same
/// format, rows aligned to 4 bytes.
[[nodiscard]] std::shared_ptr<vantu::CQorImage> Fit(const vantu::IQorImage& picture, unsigned int width,
                                                    unsigned int height, Framing framing);

}  // namespace examples
