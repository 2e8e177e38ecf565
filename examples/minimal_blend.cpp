// Paints a half transparent sheet on paper with Multiply by a call of the blender itself, as a painter makes it.

#include <vantu/imageop.h>

#include <iostream>
#include <memory>

using namespace vantu;

namespace {

struct NoSurface : IRasterizer {  // a blender asks for a rasterizer even if it paints on an image
    std::shared_ptr<RasterSurface> GetRasterSurface() override { return nullptr; }
};

}  // namespace

int main() {
    // Bottom-up images of blue, green and red bytes, rows aligned to 4 bytes.
    const auto paper = std::make_shared<CQorImage>(200, 100, PixelFormat::Bgr24, 4, true);
    const auto sheet = std::make_shared<CQorImage>(100, 50, PixelFormat::Bgr24, 4, true);
    ImageUtil::Clear(*paper, 0xFFFFE0C0, {0, 0, 200, 100});
    ImageUtil::Clear(*sheet, 0xFF2060C0, {0, 0, 100, 50});

    std::shared_ptr<IRasterizer> rasterizer = std::make_shared<NoSurface>();
    const auto blender = IPDFImageBlender::Create(rasterizer, paper);
    const auto where = IPDFImageBlender::CreateCoverage();
    auto painted = IPDFImageBlender::CreateCoverage();
    where->AddRange({50, 25, 150, 75});  // left, top, right, bottom on the paper
    const Point<int, 2> toSheet{-50, -25};
    if (!blender->Blend(sheet, where, toSheet, nullptr, nullptr, {0, 0}, 128, BlendMode::Multiply, painted)) return 1;

    const unsigned char* const middle = paper->GetPixelData() + 50 * RowStride(200, PixelFormat::Bgr24, 4) + 100 * 3;
    std::cout << "paper 192 224 255, sheet 192 96 32, half of their product: " << int{middle[0]} << ' '
              << int{middle[1]} << ' ' << int{middle[2]} << '\n';
    return CPNGSaver().Save(*paper, "minimal_blend.png") ? 0 : 1;
}
