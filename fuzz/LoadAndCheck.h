#pragma once

#include <cstring>
#include <memory>
#include <new>

#include "fuzz/Fuzz.h"
#include "support/TestImage.h"

namespace vantu::fuzz {

/// A host's factory: gives images between guard bytes, and nothing that is larger than a fuzzer has memory for.
class GuardingFactory : public IGraphicsFactory {
public:
    explicit GuardingFactory(unsigned char alignment, unsigned int rowsLeftOut = 0) : factory_(alignment) {
        factory_.rowsLeftOut = rowsLeftOut;
    }

    std::shared_ptr<IQorImage> CreateImage(unsigned int width, unsigned int height, PixelFormat format, bool bottomUp,
                                           void** memory) override {
        const std::uint64_t bits = (std::uint64_t{width} + 1) * height * BitsPerPixel(format);
        if (width > 0x10000000 || bits > std::uint64_t{8} << 20) return nullptr;
        return factory_.CreateImage(width, height, format, bottomUp, memory);
    }

    [[nodiscard]] bool GuardsIntact() const { return !factory_.last || factory_.last->GuardsIntact(); }

private:
    test::TestFactory factory_;
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

/// Loads with `load(factory)` three ways: without a factory, with one of images like the library's own, and with one
/// that is contrary: other alignment, a row too few. No way may write past its image. @return what the first and the
/// second made; each may be empty.
template <typename Load>
auto LoadEachWay(Load load) {
    std::shared_ptr<IQorImage> own;
    try {
        own = load(nullptr);
    } catch (const std::bad_alloc&) {  // a header may ask for more memory than there is
    }
    GuardingFactory plain(4);
    const std::shared_ptr<IQorImage> made = load(&plain);
    GuardingFactory contrary(3, 1);
    load(&contrary);
    Require(plain.GuardsIntact() && contrary.GuardsIntact(), "a loader writes inside its image");
    return std::pair(own, made);
}

}  // namespace vantu::fuzz
