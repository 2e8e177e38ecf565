#pragma once

#include <vantu/CQorImage.h>
#include <vantu/IPDFImageBlender.h>

#include <cstddef>
#include <memory>
#include <vector>

#include "BlendCase.h"

namespace vantu::bench {

/// A blender that paints on `image`.
std::shared_ptr<IPDFImageBlender> MakeBlender(const std::shared_ptr<IQorImage>& image);

enum class Alphas { Opaque, Half, Random, Sprite };

/// Pixels of random colours; the same for the same arguments.
std::shared_ptr<const std::vector<unsigned char>> MakePixels(PixelFormat format, Alphas alphas, std::size_t count,
                                                             unsigned int seed);

/// The images of a case. Painting changes the target, so that a second painting would meet other content: targets are
/// painted once and then put back. To make that worth a look at the clock, small targets stand in a column of several
/// in one image, painted one after the other.
class BlendScene {
public:
    explicit BlendScene(const BlendCase& blendCase);

    /// What the column looks like before it is painted.
    [[nodiscard]] const std::vector<unsigned char>& Pristine() const { return *pristine_; }
    [[nodiscard]] std::size_t TargetBytes() const { return Pristine().size() / copies; }

    unsigned int copies;                ///< targets in the column
    std::shared_ptr<CQorImage> source;  ///< of the case's size
    std::shared_ptr<CQorImage> target;  ///< as wide, and `copies` times as high
    std::shared_ptr<CQorImage> mask;    ///< of the case's size; empty for `Loop::Rect`
    std::shared_ptr<IPDFTransferFunction> maskTransfer;

private:
    std::shared_ptr<const std::vector<unsigned char>> pristine_;
};

}  // namespace vantu::bench
