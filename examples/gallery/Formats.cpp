// What is left of colours that were stored in a format and read back.

#include <initializer_list>

#include "Gallery.h"

namespace examples {

using namespace vantu;

namespace {

constexpr Point<int, 2> kCell{128, 96};

Image MakeSample() {
    const Image sample = MakeSheet(kCell.x, kCell.y, ARGB_BLACK);
    Painter(sample).Draw(Photograph("chelsea.png", kCell.x, kCell.y - 24), {0, 0});
    for (int x = 0; x < kCell.x; ++x) {
        const auto grey = static_cast<unsigned int>(255 * x / (kCell.x - 1));
        ImageUtil::Clear(*sample, Rainbow((x + 0.5) / kCell.x), {x, kCell.y - 24, x + 1, kCell.y - 12});
        ImageUtil::Clear(*sample, ARGB_BLACK | grey * 0x010101, {x, kCell.y - 12, x + 1, kCell.y});
    }
    return sample;
}

// Stored with an alpha in premultiplied bytes; what is read back is shown opaque.
Image ThroughPremultiplied(const Image& sample, unsigned char alpha) {
    const Image straight = Convert(*sample, PixelFormat::Bgra32);
    ImageUtil::ClearPixelAlpha(*straight, alpha, {1, 0, 0, 0});
    return Convert(*Convert(*straight, PixelFormat::Bgra32Premultiplied), PixelFormat::Bgr24);
}

// 5-6-5 words as other programs write them, with all six bits of green: green = c * 63 / 255.
Image ThroughSixBitGreen(const Image& sample) {
    auto words = std::make_shared<CQorImage>(sample->GetWidth(), sample->GetHeight(), PixelFormat::Rgb565, 4, true);
    for (unsigned int y = 0; y < sample->GetHeight(); ++y) {
        const unsigned char* color = RowOf(*sample, y);
        unsigned char* word = RowOf(*words, y);
        for (unsigned int x = 0; x < sample->GetWidth(); ++x, color += 3, word += 2) {
            const int value = (color[2] * 31 / 255) << 11 | (color[1] * 63 / 255) << 5 | color[0] * 31 / 255;
            word[0] = static_cast<unsigned char>(value);
            word[1] = static_cast<unsigned char>(value >> 8);
        }
    }
    return Convert(*words, PixelFormat::Bgr24);
}

Image DrawFormats() {
    const Image sample = MakeSample();
    Sheet sheet(3, 2, kCell, 0xFFFFFFFF);
    sheet.Mount(sample);
    sheet.Mount(Convert(*Convert(*sample, PixelFormat::Rgb555), PixelFormat::Bgr24));
    sheet.Mount(ThroughSixBitGreen(sample));
    using Bytes = std::initializer_list<unsigned char>;
    for (const unsigned char alpha : Bytes{64, 16, 4}) sheet.Mount(ThroughPremultiplied(sample, alpha));
    return sheet.GetImage();
}

}  // namespace

std::vector<Drawing> FormatDrawings() {
    return {{"formats", DrawFormats}};
}

}  // namespace examples
