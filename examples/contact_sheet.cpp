// contact_sheet [PICTURE]: lays out a photograph as the image utilities change it, one cell each, and writes
// contact.bmp in the current directory. A red tab marks the photograph's top left corner, so that it can be followed
// through flips and turns. The file may be BMP, PNG or JPEG.

#include <cstdlib>
#include <exception>
#include <iostream>
#include <stdexcept>

#include "Pictures.h"

using namespace examples;
using namespace vantu;

namespace {

constexpr int kColumns = 4;
constexpr int kRows = 2;
constexpr int kCell = 240;
constexpr int kGap = 20;
constexpr int kPhotoWidth = 240;
constexpr int kPhotoHeight = 160;
constexpr int kSheetWidth = kColumns * (kCell + kGap) + kGap;
constexpr int kSheetHeight = kRows * (kCell + kGap) + kGap;
constexpr Range<int, 2> kPhoto{0, 0, kPhotoWidth, kPhotoHeight};
constexpr Range<int, 2> kWindow{60, 40, 180, 120};

using Image = std::shared_ptr<IQorImage>;

// A grey sheet with a chequered mat for each picture, filled in reading order.
class Sheet {
public:
    Sheet() : image_(std::make_shared<CQorImage>(kSheetWidth, kSheetHeight, PixelFormat::Bgr24, 4, true)) {
        ImageUtil::Clear(*image_, 0xFF404448, {0, 0, kSheetWidth, kSheetHeight});
        blender_ = MakeBlender(image_);
    }

    void Mount(const Image& picture) {
        if (!picture) throw std::runtime_error("an image could not be made");
        const int left = kGap + mounted_ % kColumns * (kCell + kGap);
        const int top = kGap + mounted_ / kColumns * (kCell + kGap);
        ++mounted_;
        PaintMat(left, top);

        const int width = static_cast<int>(picture->GetWidth());
        const int height = static_cast<int>(picture->GetHeight());
        const Point<int, 2> corner{left + (kCell - width) / 2, top + (kCell - height) / 2};
        const auto coverage = IPDFImageBlender::CreateCoverage();
        coverage->AddRange({corner.x, corner.y, corner.x + width, corner.y + height});
        auto blended = IPDFImageBlender::CreateCoverage();
        if (!blender_->Blend(picture, coverage, {-corner.x, -corner.y}, nullptr, nullptr, {0, 0}, 255,
                             BlendMode::Normal, blended))
            throw std::runtime_error("the blender refused a picture");
    }

    void Save(const std::string& path) const {
        if (!CDIBSaver().Save(*image_, path)) throw std::runtime_error("cannot write " + path);
    }

private:
    void PaintMat(int left, int top) {
        constexpr int square = 12;
        for (int y = 0; y < kCell; y += square) {
            for (int x = 0; x < kCell; x += square) {
                const unsigned int grey = (x + y) / square % 2 == 0 ? 0xFFD0D0D0 : 0xFFB8B8B8;
                ImageUtil::Clear(*image_, grey, {left + x, top + y, left + x + square, top + y + square});
            }
        }
    }

    std::shared_ptr<CQorImage> image_;
    std::shared_ptr<IPDFImageBlender> blender_;
    int mounted_ = 0;
};

// The same picture in another format.
Image Convert(const IQorImage& picture, PixelFormat format) {
    auto converted = std::make_shared<CQorImage>(picture.GetWidth(), picture.GetHeight(), format, 4, true);
    if (!ImageUtil::Copy(picture, kPhoto, *converted, {0, 0})) throw std::runtime_error("a picture was not copied");
    return converted;
}

void WriteSheet(const std::string& path) {
    const Image photo = Convert(*Fit(*ReadPicture(path), kPhotoWidth, kPhotoHeight, Framing::Fill), PixelFormat::Bgr24);
    ImageUtil::Clear(*photo, 0xFFE01010, {0, 0, 32, 16});

    Sheet sheet;
    sheet.Mount(ImageUtil::Clone(*photo, nullptr, nullptr));
    sheet.Mount(ImageUtil::Flip(*photo, true, false, nullptr, nullptr));
    sheet.Mount(ImageUtil::Flip(*photo, false, true, nullptr, nullptr));
    sheet.Mount(ImageUtil::Rotate(*photo, 2, nullptr, nullptr));
    sheet.Mount(ImageUtil::Rotate(*photo, 1, nullptr, nullptr));
    sheet.Mount(ImageUtil::Rotate(*photo, -1, nullptr, nullptr));
    sheet.Mount(Convert(*photo, PixelFormat::Rgb555));
    const Image window = Convert(*photo, PixelFormat::Bgra32);
    ImageUtil::ClearPixelAlpha(*window, 96, kWindow);
    sheet.Mount(Convert(*window, PixelFormat::Bgra32Premultiplied));  // blenders take no straight colours
    sheet.Save("contact.bmp");
}

}  // namespace

int main(int argc, char** argv) {
    try {
        WriteSheet(argc > 1 ? argv[1] : IMAGEOP_EXAMPLE_DATA "/coffee.png");
    } catch (const std::exception& error) {
        std::cerr << "contact_sheet: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
    std::cout << "contact.bmp: as it is, flipped horizontally, flipped vertically, a half turn / a quarter turn "
                 "counter-clockwise, one clockwise, copied to 15-bit colour, with a see-through window\n";
    return EXIT_SUCCESS;
}
