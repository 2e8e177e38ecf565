#pragma once

#include <vantu/imageop.h>

#include <memory>
#include <string>

namespace examples {

/// A page of 960 by 640 pixels on which one picture is painted on another in sixteen ways, row by row: Normal,
/// Multiply, Screen, Overlay; Darken, Lighten, ColorDodge, ColorBurn; HardLight, SoftLight, Difference, Exclusion, all
/// at 85 %; through a soft mask, through the same mask inverted, through a stencil, and the stencil's own picture with
/// Multiply.
///
/// The paths name BMP, PNG or JPEG files. @throws std::runtime_error if one cannot be read.
[[nodiscard]] std::shared_ptr<vantu::IQorImage> PaintPage(const std::string& backgroundPath,
                                                          const std::string& picturePath,
                                                          const std::string& stencilPath);

}  // namespace examples
