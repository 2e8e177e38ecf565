#pragma once

#include <memory>
#include <string>
#include <vector>

#include "../Pictures.h"

/// The pictures of the documents, drawn through the library. Every one is an opaque `Bgr24` image.
namespace examples {

using Image = std::shared_ptr<vantu::IQorImage>;
using Transfer = std::shared_ptr<vantu::IPDFTransferFunction>;

struct Drawing {
    std::string name;  ///< of its file, without an ending
    Image (*draw)();
};

[[nodiscard]] std::vector<Drawing> ModeDrawings();     ///< blend modes and constant alphas
[[nodiscard]] std::vector<Drawing> MaskDrawings();     ///< soft masks and stencils
[[nodiscard]] std::vector<Drawing> GroupDrawings();    ///< transparency groups
[[nodiscard]] std::vector<Drawing> FormatDrawings();   ///< what pixel formats keep of a colour
[[nodiscard]] std::vector<Drawing> UtilityDrawings();  ///< the image utilities

/// A picture of examples/data, cut to a size.
[[nodiscard]] Image Photograph(const std::string& file, int width, int height);

/// The hues from red (0) to magenta (1), mixed with a third of white.
[[nodiscard]] vantu::Color Rainbow(double position);

/// The same picture in another format, opaque or not.
[[nodiscard]] Image Convert(const vantu::IQorImage& picture, vantu::PixelFormat format);

/// A sheet on which pictures of one size are laid out in reading order.
class Sheet {
public:
    Sheet(int columns, int rows, const vantu::Point<int, 2>& cell, const vantu::Color& color);

    [[nodiscard]] const Image& GetImage() const { return image_; }
    [[nodiscard]] vantu::Painter& GetPainter() { return painter_; }
    /// The corner of the next cell.
    [[nodiscard]] vantu::Point<int, 2> NextCell();
    /// Paints a picture in the middle of the next cell.
    void Mount(const Image& picture);

private:
    static constexpr int kGap = 8;

    int columns_;
    vantu::Point<int, 2> cell_;
    int used_ = 0;
    Image image_;
    vantu::Painter painter_;
};

}  // namespace examples
