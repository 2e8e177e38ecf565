// page [BACKGROUND [PICTURE [STENCIL]]]: paints PICTURE on BACKGROUND in every way the blender knows, one cell each,
// and writes page.bmp in the current directory. The files may be BMP, PNG or JPEG.

#include <cstdlib>
#include <exception>
#include <iostream>
#include <stdexcept>

#include "Pictures.h"

using namespace examples;
using namespace vantu;

namespace {

constexpr int kColumns = 4;
constexpr int kRows = 4;
constexpr int kCellWidth = 220;
constexpr int kCellHeight = 140;
constexpr int kGap = 16;
constexpr int kPageWidth = kColumns * kCellWidth + (kColumns + 1) * kGap;
constexpr int kPageHeight = kRows * kCellHeight + (kRows + 1) * kGap;
constexpr unsigned char kAlpha = 217;  // 85 %
constexpr Range<int, 2> kCell{0, 0, kCellWidth, kCellHeight};

using Image = std::shared_ptr<IQorImage>;
using Transfer = std::shared_ptr<IPDFTransferFunction>;

Image ReadForCell(const std::string& path, Framing framing) {
    return Fit(*ReadPicture(path), kCellWidth, kCellHeight, framing);
}

// A sheet of paper and the blender that paints on it, cell by cell in reading order.
class Page {
public:
    Page() : image_(std::make_shared<CQorImage>(kPageWidth, kPageHeight, PixelFormat::Bgr24, 4, true)) {
        ImageUtil::Clear(*image_, 0xFFFFFFFF, {0, 0, kPageWidth, kPageHeight});
        blender_ = MakeBlender(image_);
    }

    void PaintBackground(const Image& picture) {
        Paint(picture, {0, 0, kPageWidth, kPageHeight}, {0, 0}, nullptr, nullptr, 255, BlendMode::Normal);
    }

    // Without a mask a range is a place on the page, and the offset leads from there to the source.
    void PaintCell(const Image& picture, unsigned char alpha, BlendMode mode) {
        const Point<int, 2> corner = NextCell();
        Paint(picture, {corner.x, corner.y, corner.x + kCellWidth, corner.y + kCellHeight}, {-corner.x, -corner.y},
              nullptr, nullptr, alpha, mode);
    }

    // With a mask a range is a place in the source and the mask, and the offset leads from there to the page.
    void PaintMaskedCell(const Image& picture, const Image& mask, const Transfer& transfer) {
        Paint(picture, kCell, NextCell(), mask, transfer, 255, BlendMode::Normal);
    }

    void Save(const std::string& path) const {
        if (!CDIBSaver().Save(*image_, path)) throw std::runtime_error("cannot write " + path);
    }

private:
    Point<int, 2> NextCell() {
        const int column = painted_ % kColumns;
        const int row = painted_ / kColumns;
        ++painted_;
        return {kGap + column * (kCellWidth + kGap), kGap + row * (kCellHeight + kGap)};
    }

    void Paint(const Image& picture, const Range<int, 2>& range, const Point<int, 2>& offset, const Image& mask,
               const Transfer& transfer, unsigned char alpha, BlendMode mode) {
        const auto coverage = IPDFImageBlender::CreateCoverage();
        coverage->AddRange(range);
        auto blended = IPDFImageBlender::CreateCoverage();
        if (!blender_->Blend(picture, coverage, offset, mask, transfer, {0, 0}, alpha, mode, blended))
            throw std::runtime_error("the blender refused a picture");
    }

    std::shared_ptr<CQorImage> image_;
    std::shared_ptr<IPDFImageBlender> blender_;
    int painted_ = 0;
};

// A 1-bit mask of a picture laid on white paper: what is dark paints (sample 0), what is light protects (sample 1).
Image MakeStencil(const Image& picture) {
    auto paper = std::make_shared<CQorImage>(kCellWidth, kCellHeight, PixelFormat::Bgr24, 4, true);
    ImageUtil::Clear(*paper, 0xFFFFFFFF, kCell);
    const auto coverage = IPDFImageBlender::CreateCoverage();
    coverage->AddRange(kCell);
    auto blended = IPDFImageBlender::CreateCoverage();
    MakeBlender(paper)->Blend(picture, coverage, {0, 0}, nullptr, nullptr, {0, 0}, 255, BlendMode::Normal, blended);

    auto stencil = std::make_shared<CQorImage>(kCellWidth, kCellHeight, PixelFormat::Index1, 4, true);
    const unsigned char* colourRow = paper->GetPixelData();
    unsigned char* bits = stencil->GetPixelData();
    for (int y = 0; y < kCellHeight; ++y) {
        const unsigned char* colour = colourRow;
        for (int x = 0; x < kCellWidth; ++x, colour += 3) {
            const bool light = colour[0] + colour[1] + colour[2] > 3 * 127;
            if (light) bits[x / 8] = static_cast<unsigned char>(bits[x / 8] | (0x80 >> (x % 8)));
        }
        colourRow += RowStride(kCellWidth, PixelFormat::Bgr24, 4);
        bits += RowStride(kCellWidth, PixelFormat::Index1, 4);
    }
    return stencil;
}

void PaintPage(const std::string& backgroundPath, const std::string& picturePath, const std::string& stencilPath) {
    const Image background = Fit(*ReadPicture(backgroundPath), kPageWidth, kPageHeight, Framing::Fill);
    const Image picture = ReadForCell(picturePath, Framing::Fill);
    const Image drawing = ReadForCell(stencilPath, Framing::Whole);
    const Image softMask = ReadForCell(IMAGEOP_EXAMPLE_DATA "/vignette.bmp", Framing::Fill);

    using Source = IPDFTransferFunction::SourceType;
    const Transfer fallOff = std::make_shared<CExponentialPDFTransferFunction>(Source::Luminosity, 0.0, 1.0, 2.0);
    const Transfer invert = std::make_shared<CPostscriptPDFTransferFunction>(Source::Luminosity, "{ 1 exch sub }");

    Page page;
    page.PaintBackground(background);
    for (unsigned int mode = 0; mode < kBlendModeCount; ++mode)
        page.PaintCell(picture, kAlpha, static_cast<BlendMode>(mode));
    page.PaintMaskedCell(picture, softMask, fallOff);
    page.PaintMaskedCell(picture, softMask, invert);
    page.PaintMaskedCell(picture, MakeStencil(drawing), nullptr);
    page.PaintCell(drawing, kAlpha, BlendMode::Multiply);
    page.Save("page.bmp");
}

}  // namespace

int main(int argc, char** argv) {
    try {
        PaintPage(argc > 1 ? argv[1] : IMAGEOP_EXAMPLE_DATA "/rocket.jpg",
                  argc > 2 ? argv[2] : IMAGEOP_EXAMPLE_DATA "/chelsea.png",
                  argc > 3 ? argv[3] : IMAGEOP_EXAMPLE_DATA "/horse.png");
    } catch (const std::exception& error) {
        std::cerr << "page: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
    std::cout << "page.bmp: Normal, Multiply, Screen, Overlay / Darken, Lighten, ColorDodge, ColorBurn / HardLight, "
                 "SoftLight, Difference, Exclusion / soft mask, inverted mask, stencil, the stencil's own picture\n";
    return EXIT_SUCCESS;
}
