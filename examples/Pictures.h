#pragma once

#include <vantu/imageop.h>

#include <memory>
#include <string>

/// What the examples share: reading a user's pictures, making them fit, and the rasterizer that a blender asks for.
namespace examples {

/// Blenders want a rasterizer even when they paint on an image; this one has no surface.
class NoSurface : public vantu::IRasterizer {
public:
    std::shared_ptr<vantu::RasterSurface> GetRasterSurface() override { return nullptr; }
};

/// A blender that paints on `image`.
[[nodiscard]] std::shared_ptr<vantu::IPDFImageBlender> MakeBlender(const std::shared_ptr<vantu::IQorImage>& image);

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
