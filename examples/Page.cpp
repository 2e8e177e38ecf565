#include "Page.h"

#include "Pictures.h"

namespace examples {

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

using Image = std::shared_ptr<IQorImage>;
using Transfer = std::shared_ptr<IPDFTransferFunction>;

Image ReadForCell(const std::string& path, Framing framing) {
    return Fit(*ReadPicture(path), kCellWidth, kCellHeight, framing);
}

// The corners of the cells in reading order.
class Cells {
public:
    Point<int, 2> Next() {
        const int column = used_ % kColumns;
        const int row = used_ / kColumns;
        ++used_;
        return {kGap + column * (kCellWidth + kGap), kGap + row * (kCellHeight + kGap)};
    }

private:
    int used_ = 0;
};

Image MakeStencilOnPaper(const Image& drawing) {
    const Image paper = MakeSheet(kCellWidth, kCellHeight, 0xFFFFFFFF);
    PaintAt(*MakeBlender(paper), drawing, {0, 0}, 255, BlendMode::Normal);
    return MakeStencil(*paper);
}

}  // namespace

std::shared_ptr<IQorImage> PaintPage(const std::string& backgroundPath, const std::string& picturePath,
                                     const std::string& stencilPath) {
    const Image page = MakeSheet(kPageWidth, kPageHeight, 0xFFFFFFFF);
    const Image background = Fit(*ReadPicture(backgroundPath), kPageWidth, kPageHeight, Framing::Fill);
    const Image picture = ReadForCell(picturePath, Framing::Fill);
    const Image drawing = ReadForCell(stencilPath, Framing::Whole);
    const Image softMask = ReadForCell(IMAGEOP_EXAMPLE_DATA "/vignette.bmp", Framing::Fill);

    using Source = IPDFTransferFunction::SourceType;
    const Transfer fallOff = std::make_shared<CExponentialPDFTransferFunction>(Source::Luminosity, 0.0, 1.0, 2.0);
    const Transfer invert = std::make_shared<CPostscriptPDFTransferFunction>(Source::Luminosity, "{ 1 exch sub }");

    const auto blender = MakeBlender(page);
    Cells cells;
    PaintAt(*blender, background, {0, 0}, 255, BlendMode::Normal);
    for (unsigned int mode = 0; mode < kBlendModeCount; ++mode)
        PaintAt(*blender, picture, cells.Next(), kAlpha, static_cast<BlendMode>(mode));
    PaintThrough(*blender, picture, softMask, fallOff, cells.Next(), 255, BlendMode::Normal);
    PaintThrough(*blender, picture, softMask, invert, cells.Next(), 255, BlendMode::Normal);
    PaintThrough(*blender, picture, MakeStencilOnPaper(drawing), nullptr, cells.Next(), 255, BlendMode::Normal);
    PaintAt(*blender, drawing, cells.Next(), kAlpha, BlendMode::Multiply);
    return page;
}

}  // namespace examples
