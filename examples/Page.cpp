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

    Painter painter(page);
    Cells cells;
    painter.Draw(background, {0, 0});
    for (unsigned int mode = 0; mode < kBlendModeCount; ++mode)
        painter.Draw(picture, cells.Next(), {.mode = static_cast<BlendMode>(mode), .alpha = kAlpha});
    const auto drawThrough = [&](const Image& mask, const Transfer& transfer) {
        const Point<int, 2> corner = cells.Next();
        painter.Draw(picture, corner, {.mask = mask, .maskAt = corner, .maskTransfer = transfer});
    };
    drawThrough(softMask, fallOff);
    drawThrough(softMask, invert);
    drawThrough(MakeStencil(drawing), nullptr);
    painter.Draw(drawing, cells.Next(), {.mode = BlendMode::Multiply, .alpha = kAlpha});
    return page;
}

}  // namespace examples
