#pragma once

#include <vantu/imageop.h>

#include <memory>
#include <string>

/// What the examples share: reading and writing pictures and making them fit.
namespace examples {

/// A bottom-up `Bgr24` image of one colour, rows aligned to 4 bytes.
[[nodiscard]] std::shared_ptr<vantu::CQorImage> MakeSheet(int width, int height, const vantu::Color& color);

/// First byte of a row, counted from the top of the picture.
[[nodiscard]] unsigned char* RowOf(vantu::IQorImage& image, unsigned int row);
[[nodiscard]] const unsigned char* RowOf(const vantu::IQorImage& image, unsigned int row);

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

/// A 1-bit mask of a picture of `ReadPicture` on white paper: what is dark paints (sample 0), what is light protects
/// (sample 1).
[[nodiscard]] std::shared_ptr<vantu::CQorImage> MakeStencil(const std::shared_ptr<vantu::IQorImage>& picture);

}  // namespace examples
