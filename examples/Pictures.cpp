#include "Pictures.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <new>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace examples {

using namespace vantu;
using namespace std::string_view_literals;

namespace {

using Image = std::shared_ptr<IQorImage>;

constexpr Range<int, 2> kWholeImage{1, 0, 0, 0};

[[noreturn]] void Refuse(const std::string& path, const std::string& why) {
    throw std::runtime_error("cannot read " + path + ": " + why);
}

// Where a row, counted from the top of the picture, lies in the block.
std::size_t OffsetOf(const IQorImage& image, unsigned int row) {
    const std::size_t memoryRow = image.IsBottomUp() ? image.GetHeight() - 1 - row : row;
    return memoryRow * RowStride(image.GetWidth(), image.GetPixelFormat(), image.GetAlignment());
}

// Calls change(pixel) with the four bytes of each pixel.
template <typename Change>
void ForEachPixel32(IQorImage& image, Change change) {
    for (unsigned int y = 0; y < image.GetHeight(); ++y) {
        unsigned char* const row = RowOf(image, y);
        for (std::size_t x = 0; x < image.GetWidth(); ++x) change(row + 4 * x);
    }
}

// PNG alpha is straight, but the image that comes from the loader says that its colours are premultiplied. So that
// they are: c = c * a / 255.
void Premultiply(IQorImage& image) {
    ForEachPixel32(image, [](unsigned char* pixel) {
        for (int i = 0; i < 3; ++i) pixel[i] = static_cast<unsigned char>(pixel[i] * pixel[3] / 255);
    });
}

// Most writers of 32-bit bitmaps leave the fourth byte 0 and mean an opaque picture.
void MakeOpaqueIfAlphaIsUnused(IQorImage& image) {
    bool used = false;
    ForEachPixel32(image, [&used](const unsigned char* pixel) { used = used || pixel[3] != 0; });
    if (!used) ImageUtil::ClearPixelAlpha(image, 255, kWholeImage);
}

// Why a loader gave no image; `known` is what it reads.
std::string WhyNot(LoadResult result, const std::string& known) {
    return result == LoadResult::NotRead ? "it is not " + known : TextOf(result);
}

Image ReadDib(const std::string& path) {
    LoadResult result{};
    Image image = CDIBLoader().Load(path, nullptr, result);
    if (!image) Refuse(path, WhyNot(result, "an uncompressed bitmap of 1, 4, 8, 16, 24 or 32 bits"));
    if (image->GetPixelFormat() == PixelFormat::Bgra32Premultiplied) MakeOpaqueIfAlphaIsUnused(*image);
    return image;
}

// The loader goes by bits per pixel alone, so only these kinds of PNG mean what the image then says.
bool IsPlainPng(unsigned char depth, unsigned char colourType) {
    switch (colourType) {
        case 0: return depth == 1 || depth == 4 || depth == 8;  // grey
        case 2:
        case 6: return depth == 8;  // colour, without and with alpha
        default: return false;
    }
}

Image ReadPng(const std::string& path, std::string_view head) {
    if (!IsPlainPng(static_cast<unsigned char>(head[24]), static_cast<unsigned char>(head[25])))
        Refuse(path, "it is not a PNG of 8-bit colours (with or without alpha) or of 1-, 4- or 8-bit grey");
    LoadResult result{};
    const Image onItsHead = CPNGLoader().Load(path, nullptr, result);
    if (!onItsHead) Refuse(path, TextOf(result));
    Image image = ImageUtil::Flip(*onItsHead, false, true, nullptr, nullptr);
    if (image->GetPixelFormat() == PixelFormat::Bgra32Premultiplied) Premultiply(*image);
    return image;
}

Image ReadJpeg(const std::string& path) {
    LoadResult result{};
    Image image = CJPEGLoader().Load(path, nullptr, result);
    if (!image) Refuse(path, WhyNot(result, "a JPEG of one or three components"));
    return image;
}

Image ReadAny(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::array<char, 26> bytes{};  // as far as the colour type of a PNG
    if (!file) Refuse(path, "no such file, or no right to read it");
    file.read(bytes.data(), bytes.size());
    const std::string_view head(bytes.data(), bytes.size());
    if (head.starts_with("BM"sv)) return ReadDib(path);
    if (head.starts_with("\x89PNG\r\n\x1a\n"sv)) return ReadPng(path, head);
    if (head.starts_with("\xff\xd8\xff"sv)) return ReadJpeg(path);
    Refuse(path, "it is no BMP, PNG or JPEG file");
}

// Indexed and 16-bit pixels become 24-bit colours; a blender does not paint from indices, nor `Fit` scale them.
Image WithByteColours(const Image& image) {
    if (BitsPerPixel(image->GetPixelFormat()) >= 24) return image;
    const unsigned int width = image->GetWidth();
    const unsigned int height = image->GetHeight();
    auto colours = std::make_shared<CQorImage>(width, height, PixelFormat::Bgr24, 4, true);
    ImageUtil::Copy(*image, {0, 0, static_cast<int>(width), static_cast<int>(height)}, *colours, {0, 0});
    return colours;
}

// The source positions that one target position is mixed from.
struct Taps {
    unsigned int first;
    std::vector<double> weights;  // their sum is 1
};

// A tent as wide as two steps, so that it averages when it shrinks and interpolates when it enlarges.
std::vector<Taps> MakeTaps(unsigned int sourceSize, unsigned int targetSize, double step) {
    const double radius = std::max(step, 1.0);
    const double start = (sourceSize - targetSize * step) / 2;
    std::vector<Taps> taps(targetSize);
    for (unsigned int i = 0; i < targetSize; ++i) {
        const double centre = std::clamp(start + (i + 0.5) * step - 0.5, 0.0, sourceSize - 1.0);
        const auto last = static_cast<unsigned int>(std::min(centre + radius, sourceSize - 1.0));
        taps[i].first = static_cast<unsigned int>(std::max(std::ceil(centre - radius), 0.0));
        double sum = 0;
        for (unsigned int at = taps[i].first; at <= last; ++at) {
            taps[i].weights.push_back(std::max(1 - std::abs(at - centre) / radius, 0.0));
            sum += taps[i].weights.back();
        }
        for (double& weight : taps[i].weights) weight /= sum;
    }
    return taps;
}

}  // namespace

std::shared_ptr<CQorImage> MakeSheet(int width, int height, const Color& color) {
    auto sheet = std::make_shared<CQorImage>(static_cast<unsigned int>(width), static_cast<unsigned int>(height),
                                             PixelFormat::Bgr24, 4, true);
    ImageUtil::Clear(*sheet, color, {0, 0, width, height});
    return sheet;
}

unsigned char* RowOf(IQorImage& image, unsigned int row) {
    return image.GetPixelData() + OffsetOf(image, row);
}

const unsigned char* RowOf(const IQorImage& image, unsigned int row) {
    return image.GetPixelData() + OffsetOf(image, row);
}

void Save(const IQorImage& image, const std::string& path) {
    if (!CPNGSaver().Save(image, path)) throw std::runtime_error("cannot write " + path);
}

std::shared_ptr<IQorImage> ReadPicture(const std::string& path) {
    try {
        const Image image = ReadAny(path);
        if (image->GetWidth() == 0 || image->GetHeight() == 0) Refuse(path, "it has no pixels");
        return WithByteColours(image);
    } catch (const std::bad_alloc&) {
        Refuse(path, "it is too large for this machine's memory");
    }
}

std::shared_ptr<CQorImage> Fit(const IQorImage& picture, unsigned int width, unsigned int height, Framing framing) {
    const PixelFormat format = picture.GetPixelFormat();
    const std::size_t channels = BitsPerPixel(format) / 8;
    const auto [filling, whole] = std::minmax({1.0 * picture.GetWidth() / width, 1.0 * picture.GetHeight() / height});
    const double step = framing == Framing::Fill ? filling : whole;
    const std::vector<Taps> columns = MakeTaps(picture.GetWidth(), width, step);
    const std::vector<Taps> rows = MakeTaps(picture.GetHeight(), height, step);

    auto fitted = std::make_shared<CQorImage>(width, height, format, 4, true);
    for (unsigned int y = 0; y < height; ++y) {
        unsigned char* const target = RowOf(*fitted, y);
        for (unsigned int x = 0; x < width; ++x) {
            std::array<double, 4> mixed{};
            for (unsigned int j = 0; j < rows[y].weights.size(); ++j) {
                const unsigned char* pixel = RowOf(picture, rows[y].first + j) + columns[x].first * channels;
                for (const double weight : columns[x].weights) {
                    for (std::size_t c = 0; c < channels; ++c) mixed[c] += rows[y].weights[j] * weight * *pixel++;
                }
            }
            for (std::size_t c = 0; c < channels; ++c)
                target[x * channels + c] = static_cast<unsigned char>(std::lround(mixed[c]));
        }
    }
    return fitted;
}

std::shared_ptr<CQorImage> MakeStencil(const Image& picture) {
    const unsigned int width = picture->GetWidth();
    const unsigned int height = picture->GetHeight();
    const auto paper = MakeSheet(static_cast<int>(width), static_cast<int>(height), 0xFFFFFFFF);
    Painter(paper).Draw(picture, {0, 0});
    auto stencil = std::make_shared<CQorImage>(width, height, PixelFormat::Index1, 4, true);
    for (unsigned int y = 0; y < height; ++y) {
        const unsigned char* color = RowOf(*paper, y);
        unsigned char* const bits = RowOf(*stencil, y);
        for (unsigned int x = 0; x < width; ++x, color += 3) {
            const bool light = color[0] + color[1] + color[2] > 3 * 127;
            if (light) bits[x / 8] = static_cast<unsigned char>(bits[x / 8] | (0x80 >> (x % 8)));
        }
    }
    return stencil;
}

}  // namespace examples
