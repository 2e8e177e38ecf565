// What soft masks, their transfer functions and stencils let through.

#include "Gallery.h"

namespace examples {

using namespace vantu;

namespace {

using Source = IPDFTransferFunction::SourceType;

constexpr Point<int, 2> kCell{132, 84};

// The mask itself, then the photograph through it by one transfer function after the other.
Image DrawSoftMasks() {
    const Image vignette = Photograph("vignette.bmp", kCell.x, kCell.y);
    const Image photograph = Photograph("chelsea.png", kCell.x, kCell.y);
    Sheet sheet(5, 1, kCell, 0xFFFFFFFF);
    sheet.Mount(vignette);
    for (const Transfer& transfer : {
             Transfer(std::make_shared<CIdentityPDFTransferFunction>(Source::Luminosity)),
             Transfer(std::make_shared<CExponentialPDFTransferFunction>(Source::Luminosity, 0.0, 1.0, 4.0)),
             Transfer(std::make_shared<CExponentialPDFTransferFunction>(Source::Luminosity, 0.25, 1.0, 1.0)),
             Transfer(std::make_shared<CPostscriptPDFTransferFunction>(Source::Luminosity, "{ 1 exch sub }")),
         })
        PaintThrough(sheet.GetBlender(), photograph, vignette, transfer, sheet.NextCell(), 255, BlendMode::Normal);
    return sheet.GetImage();
}

// A range of the whole picture and a mask on a part of it only: beside its rectangle a mask has no effect.
Image DrawMaskRectangle() {
    const Image sheet = Photograph("coffee.png", 240, 160);
    const Image ink = MakeSheet(240, 160, 0xFF203060);
    const Image mask = Photograph("vignette.bmp", 160, 100);
    const Transfer identity = std::make_shared<CIdentityPDFTransferFunction>(Source::Luminosity);
    const auto coverage = IPDFImageBlender::CreateCoverage();
    coverage->AddRange({0, 0, 240, 160});
    auto painted = IPDFImageBlender::CreateCoverage();
    MakeBlender(sheet)->Blend(ink, coverage, {0, 0}, mask, identity, {40, 30}, 216, BlendMode::Normal, painted);
    return sheet;
}

// The 1-bit mask, a colour painted through it, and the same with Multiply at half opacity.
Image DrawStencils() {
    constexpr int kWidth = 180;
    constexpr int kHeight = 120;
    const Image paper = MakeSheet(kWidth, kHeight, 0xFFFFFFFF);
    const Image horse = Fit(*ReadPicture(IMAGEOP_EXAMPLE_DATA "/horse.png"), kWidth, kHeight, Framing::Whole);
    PaintAt(*MakeBlender(paper), horse, {0, 0}, 255, BlendMode::Normal);
    const Image stencil = MakeStencil(*paper);

    Sheet sheet(3, 1, {kWidth, kHeight}, 0xFFFFFFFF);
    sheet.Mount(Convert(*stencil, PixelFormat::Bgr24));
    const Image photograph = Photograph("coffee.png", kWidth, kHeight);
    const Image ink = MakeSheet(kWidth, kHeight, 0xFFF0D020);
    for (const BlendMode mode : {BlendMode::Normal, BlendMode::Multiply}) {
        const Point<int, 2> corner = sheet.NextCell();
        PaintAt(sheet.GetBlender(), photograph, corner, 255, BlendMode::Normal);
        PaintThrough(sheet.GetBlender(), ink, stencil, nullptr, corner, 255, mode);
    }
    return sheet.GetImage();
}

}  // namespace

std::vector<Drawing> MaskDrawings() {
    return {{"soft-masks", DrawSoftMasks}, {"mask-rectangle", DrawMaskRectangle}, {"stencils", DrawStencils}};
}

}  // namespace examples
