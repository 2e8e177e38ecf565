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
         }) {
        const Point<int, 2> corner = sheet.NextCell();
        sheet.GetPainter().Draw(photograph, corner, {.mask = vignette, .maskAt = corner, .maskTransfer = transfer});
    }
    return sheet.GetImage();
}

// The whole picture is painted, through a mask on a part of it: beside its rectangle a mask has no effect.
Image DrawMaskRectangle() {
    const Image sheet = Photograph("coffee.png", 240, 160);
    const Transfer identity = std::make_shared<CIdentityPDFTransferFunction>(Source::Luminosity);
    Painter(sheet).Fill({0, 0, 240, 160}, 0xFF203060,
                        {.alpha = 216,
                         .mask = Photograph("vignette.bmp", 160, 100),
                         .maskAt = {40, 30},
                         .maskTransfer = identity,
                         .outsideMask = true});
    return sheet;
}

// The 1-bit mask, a colour painted through it, and the same with Multiply at half opacity.
Image DrawStencils() {
    constexpr int kWidth = 180;
    constexpr int kHeight = 120;
    const Image stencil =
        MakeStencil(Fit(*ReadPicture(IMAGEOP_EXAMPLE_DATA "/horse.png"), kWidth, kHeight, Framing::Whole));

    Sheet sheet(3, 1, {kWidth, kHeight}, 0xFFFFFFFF);
    sheet.Mount(Convert(*stencil, PixelFormat::Bgr24));
    const Image photograph = Photograph("coffee.png", kWidth, kHeight);
    for (const BlendMode mode : {BlendMode::Normal, BlendMode::Multiply}) {
        const Point<int, 2> corner = sheet.NextCell();
        const auto [x, y] = corner;
        sheet.GetPainter().Draw(photograph, corner);
        sheet.GetPainter().Fill({x, y, x + kWidth, y + kHeight}, 0xFFF0D020,
                                {.mode = mode, .mask = stencil, .maskAt = corner});
    }
    return sheet.GetImage();
}

}  // namespace

std::vector<Drawing> MaskDrawings() {
    return {{"soft-masks", DrawSoftMasks}, {"mask-rectangle", DrawMaskRectangle}, {"stencils", DrawStencils}};
}

}  // namespace examples
