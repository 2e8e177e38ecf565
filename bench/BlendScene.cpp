#include "BlendScene.h"

#include <vantu/CIdentityPDFTransferFunction.h>

#include <algorithm>
#include <map>
#include <random>
#include <tuple>

#include "pixel/Formats.h"

namespace vantu::bench {
namespace {

/// Pixels between two looks at the clock, at least.
constexpr unsigned int kBatchPixels = 8192;

using Random = std::mt19937;

unsigned int Between(Random& random, unsigned int low, unsigned int high) {
    return low + static_cast<unsigned int>(random()) % (high - low + 1);
}

/// Source alphas of a sprite: runs of about 24 transparent, 2 edge, 12 opaque and 2 edge pixels.
class SpriteAlphas {
public:
    unsigned char Next(Random& random) {
        while (left_ == 0) {
            run_ = (run_ + 1) % 4;
            left_ = run_ == 0 ? Between(random, 12, 36) : run_ == 2 ? Between(random, 6, 18) : 2;
        }
        --left_;
        if (run_ == 0) return 0;
        return static_cast<unsigned char>(run_ == 2 ? 255 : Between(random, 1, 254));
    }

private:
    unsigned int run_ = 3;
    unsigned int left_ = 0;
};

using Pixels = std::vector<unsigned char>;

Alphas SourceAlphas(Content content) {
    switch (content) {
        case Content::ConstantOverOpaque: return Alphas::Opaque;
        case Content::AlphaOverOpaque:
        case Content::AlphaOverAlpha: return Alphas::Random;
        default: return Alphas::Sprite;
    }
}

Alphas TargetAlphas(Content content) {
    switch (content) {
        case Content::AlphaOverAlpha: return Alphas::Random;
        case Content::SpriteOverHalf: return Alphas::Half;
        default: return Alphas::Opaque;
    }
}

std::shared_ptr<CQorImage> MakeImage(unsigned int width, unsigned int height, PixelFormat format,
                                     const Pixels& pixels) {
    auto image = std::make_shared<CQorImage>(width, height, format, static_cast<unsigned char>(0), false);
    std::copy(pixels.begin(), pixels.end(), image->GetPixelData());
    return image;
}

/// Runs of 8 to 40 painted and as many protected pixels, as of letters and lines.
std::shared_ptr<CQorImage> MakeStencil(unsigned int size) {
    Pixels bits(std::size_t{size} * size / 8);
    Random random(7);
    bool protects = false;
    unsigned int left = 0;
    for (std::size_t i = 0; i < bits.size() * 8; ++i) {
        for (; left == 0; protects = !protects) left = Between(random, 8, 40);
        --left;
        if (protects) bits[i >> 3] = static_cast<unsigned char>(bits[i >> 3] | 0x80U >> (i & 7));
    }
    return MakeImage(size, size, PixelFormat::Index1, bits);
}

/// A vignette, 255 * (1 - x^2 - y^2) with x and y from -1 to 1, nothing outside the circle.
std::shared_ptr<CQorImage> MakeSoftMask(unsigned int size) {
    Pixels levels(std::size_t{size} * size);
    const auto scaled = [size](std::size_t v) { return 2.0 * (static_cast<double>(v) + 0.5) / size - 1.0; };
    for (std::size_t i = 0; i < levels.size(); ++i) {
        const double x = scaled(i % size);
        const double y = scaled(i / size);
        levels[i] = static_cast<unsigned char>(255.0 * std::max(0.0, 1.0 - x * x - y * y));
    }
    return MakeImage(size, size, PixelFormat::Index8, levels);
}

/// Blenders want a rasterizer even when they paint on an image; this one has no surface.
class NoSurface : public IRasterizer {
public:
    std::shared_ptr<RasterSurface> GetRasterSurface() override { return nullptr; }
};

}  // namespace

std::shared_ptr<const Pixels> MakePixels(PixelFormat format, Alphas alphas, std::size_t count, unsigned int seed) {
    static std::map<std::tuple<PixelFormat, Alphas, std::size_t, unsigned int>, std::shared_ptr<const Pixels>> made;
    auto& entry = made[{format, alphas, count, seed}];
    if (entry) return entry;
    Random random(seed);
    SpriteAlphas sprite;
    const std::size_t pixelBytes = BitsPerPixel(format) / 8;
    auto pixels = std::make_shared<Pixels>(count * pixelBytes);
    DispatchFormat(format, 0, [&]<PixelFormat F>() {
        for (std::size_t i = 0; i < count; ++i) {
            Color color(static_cast<unsigned int>(random()));
            if (alphas == Alphas::Opaque) color.SetAlpha(255);
            if (alphas == Alphas::Half) color.SetAlpha(128);
            if (alphas == Alphas::Sprite) color.SetAlpha(sprite.Next(random));
            WritePixel<F>(pixels->data() + i * pixelBytes, color);
        }
        return 0;
    });
    entry = std::move(pixels);
    return entry;
}

std::shared_ptr<IPDFImageBlender> MakeBlender(const std::shared_ptr<IQorImage>& image) {
    std::shared_ptr<IRasterizer> rasterizer = std::make_shared<NoSurface>();
    return IPDFImageBlender::Create(rasterizer, image);
}

BlendScene::BlendScene(const BlendCase& c) : copies(std::max(1U, kBatchPixels / (c.size * c.size))) {
    const std::size_t pixels = std::size_t{c.size} * c.size;
    source = MakeImage(c.size, c.size, c.source, *MakePixels(c.source, SourceAlphas(c.content), pixels, 1));
    pristine_ = MakePixels(c.destination, TargetAlphas(c.content), pixels * copies, 2);
    target = MakeImage(c.size, c.size * copies, c.destination, *pristine_);
    if (c.loop == Loop::Stencil) mask = MakeStencil(c.size);
    if (c.loop == Loop::SoftMask) {
        mask = MakeSoftMask(c.size);
        maskTransfer = std::make_shared<CIdentityPDFTransferFunction>(IPDFTransferFunction::SourceType::Luminosity);
    }
}

}  // namespace vantu::bench
