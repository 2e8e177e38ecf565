#pragma once

#include <cstring>
#include <memory>

#include "fuzz/Fuzz.h"
#include "support/TestImage.h"

namespace vantu::fuzz {

/// A host's factory: gives images whose surroundings are watched, and none that would take a fuzzer long.
class GuardingFactory : public IGraphicsFactory {
public:
    explicit GuardingFactory(unsigned char alignment, unsigned int rowsLeftOut = 0) : factory_(alignment) {
        factory_.rowsLeftOut = rowsLeftOut;
    }

    std::shared_ptr<IQorImage> CreateImage(unsigned int width, unsigned int height, PixelFormat format, bool bottomUp,
                                           void** memory) override {
        const std::uint64_t bits = (std::uint64_t{width} + 1) * height * BitsPerPixel(format);
        refused_ = width > 0x1000000 || bits > 1U << 20;  // no row is longer than 32 bits can count
        if (refused_) return nullptr;
        return factory_.CreateImage(width, height, format, bottomUp, memory);
    }

    /// Whether the last image asked for was too large.
    [[nodiscard]] bool Refused() const { return refused_; }
    [[nodiscard]] bool GuardsIntact() const { return !factory_.last || factory_.last->GuardsIntact(); }

private:
    test::TestFactory factory_;
    bool refused_ = false;
};

/// Whether two images of one shape hold the same whole bytes in each row.
inline bool SameRows(const IQorImage& a, const IQorImage& b) {
    if (a.GetWidth() != b.GetWidth() || a.GetHeight() != b.GetHeight() || a.GetPixelFormat() != b.GetPixelFormat() ||
        a.IsBottomUp() != b.IsBottomUp()) {
        return false;
    }
    const auto stride = [](const IQorImage& i) {
        return std::size_t{RowStride(i.GetWidth(), i.GetPixelFormat(), i.GetAlignment())};
    };
    const std::size_t bytes = std::size_t{a.GetWidth()} * BitsPerPixel(a.GetPixelFormat()) / 8;
    for (std::size_t y = 0; bytes != 0 && y < a.GetHeight(); ++y) {
        if (std::memcmp(a.GetPixelData() + y * stride(a), b.GetPixelData() + y * stride(b), bytes) != 0) return false;
    }
    return true;
}

/// Requires that `getSize(width, height, format)` told what was then loaded.
template <typename GetSize>
void RequireToldSize(const std::shared_ptr<IQorImage>& image, GetSize getSize) {
    unsigned int width = 0, height = 0;
    auto format = PixelFormat::Index1;
    const bool told = getSize(width, height, format);
    Require(!image || (told && image->GetWidth() == width && image->GetHeight() == height &&
                       image->GetPixelFormat() == format),
            "an image has the size that its header tells");
}

/// Loads with `load(factory)` three ways: with a factory of images like the library's own, without one unless that
/// refused, and with one that is contrary: other alignment, a row too few. No way may write past its image.
/// @return what the second and the first made; each may be empty.
template <typename Load>
auto LoadEachWay(Load load) {
    GuardingFactory plain(4);
    const std::shared_ptr<IQorImage> made = load(&plain);
    const std::shared_ptr<IQorImage> own = plain.Refused() ? nullptr : load(nullptr);
    GuardingFactory contrary(3, 1);
    load(&contrary);
    Require(plain.GuardsIntact() && contrary.GuardsIntact(), "a loader writes inside its image");
    return std::pair(own, made);
}

}  // namespace vantu::fuzz
