#pragma once

#include <vantu/CExponentialPDFTransferFunction.h>
#include <vantu/CIdentityPDFTransferFunction.h>
#include <vantu/CPostscriptPDFTransferFunction.h>

#include "blend/Painting.h"

namespace vantu::test {

/// An image in the middle of another one's memory.
class Window : public TestImage {
public:
    Window(std::shared_ptr<TestImage> arena, std::size_t first, const Shape& shape)
        : TestImage(shape), arena_(std::move(arena)), first_(first) {}
    const unsigned char* GetPixelData() const override { return std::as_const(*arena_).GetPixelData() + first_; }
    unsigned char* GetPixelData() override { return arena_->GetPixelData() + first_; }

private:
    std::shared_ptr<TestImage> arena_;
    std::size_t first_;
};

/// Makes runs of clear, full and mixed bytes or alphas, as pictures and stencils have them, in an image of 1 or 32
/// bits.
inline void AddRuns(TestImage& image, Random& random) {
    const bool hasAlpha = BitsPerPixel(image.GetPixelFormat()) == 32;
    const unsigned int step = hasAlpha ? 4 : 1;
    if (!hasAlpha && image.GetPixelFormat() != PixelFormat::Index1) return;
    for (unsigned int y = 0, run = 0, kind = 0; y < image.GetHeight(); ++y) {
        unsigned char* const row = image.GetPixelData() + std::size_t{image.Stride()} * y;
        for (unsigned int i = 0; i + step <= image.Stride(); i += step) {
            if (run-- == 0) {
                run = Between(random, 0, 30);
                kind = Between(random, 0, 2);
            }
            if (kind < 2) row[i + step - 1] = static_cast<unsigned char>(kind * 255);
        }
    }
}

/// A random destination and random calls that paint on it. Two scenes of one seed are equal and share nothing, so that
/// one may be painted by the blender and the other by the model.
class Scene {
public:
    enum class Memory { Apart, Overlapping };

    /// @param anySource whether sources have any of the nine formats, as surfaces take them.
    explicit Scene(std::uint32_t seed, Memory memory = Memory::Apart, bool anySource = false)
        : random_(seed), overlapping_(memory == Memory::Overlapping) {
        const bool wide = Between(random_, 0, 19) == 0;
        width_ = wide ? Between(random_, 500, 1100) : Between(random_, 1, 130);
        height_ = wide ? Between(random_, 1, 2) : Between(random_, 1, width_ < 40 ? 50 : 6);
        if (overlapping_) {
            const unsigned int bytes = (width_ + 10) * (height_ + 6) * 4 + 1024;
            arena = std::make_shared<TestImage>(Shape{bytes, 1, PixelFormat::Index8}, random_);
        }
        const auto format = static_cast<PixelFormat>(Chance(5) ? Between(random_, 1, 3) : Between(random_, 4, 9));
        destination = Make(format, width_ + 3, height_ + 3, overlapping_);
        if (Chance(4)) destination->SetPalette(RandomPalette(256, random_));
        for (unsigned int i = Between(random_, 1, 3); i > 0; --i) calls.push_back(MakeCall(anySource));
        knockout = Chance(2);
        keepBackdrop = Chance(2);
        plainResolve = Chance(2);
    }

    /// All memory that may change.
    std::vector<unsigned char> Bytes() const { return arena ? arena->Bytes() : destination->Bytes(); }
    bool GuardsIntact() const { return (arena ? arena : destination)->GuardsIntact(); }

    std::shared_ptr<TestImage> arena;
    std::shared_ptr<TestImage> destination;
    std::vector<Call> calls;
    bool knockout;
    bool keepBackdrop;
    bool plainResolve;

private:
    bool Chance(unsigned int oneIn) { return Between(random_, 1, oneIn) == 1; }
    int Signed(unsigned int below, unsigned int above) {
        return static_cast<int>(Between(random_, 0, below + above)) - static_cast<int>(below);
    }

    std::shared_ptr<TestImage> Make(PixelFormat format, unsigned int width, unsigned int height, bool inArena) {
        const Shape shape{width, height, format, kAlignments[random_() % kAlignments.size()], Chance(2)};
        if (inArena) return std::make_shared<Window>(arena, Chance(3) ? 0 : Between(random_, 0, 40), shape);
        auto image = std::make_shared<TestImage>(shape, random_);
        if (!Chance(3)) AddRuns(*image, random_);
        return image;
    }

    Call MakeCall(bool anySource) {
        Call call;
        const auto format = anySource ? Between(random_, 1, 9) : Between(random_, 5, 8);
        const auto source = Make(static_cast<PixelFormat>(format), width_ + 3, height_ + 3, overlapping_ && Chance(2));
        if (Chance(3)) source->SetPalette(RandomPalette(100, random_));
        call.source = source;
        call.offset = {Signed(3, 3), Signed(3, 3)};
        call.coverage = IPDFImageBlender::CreateCoverage();
        const int left = std::max(0, -call.offset.x), top = std::max(0, -call.offset.y);
        for (unsigned int i = Chance(20) ? 0 : Between(random_, 1, 3); i > 0; --i) {
            const unsigned int x = Chance(2) ? 0 : Between(random_, 0, width_), y = Between(random_, 0, height_);
            call.coverage->AddRange({left + static_cast<int>(x), top + static_cast<int>(y),
                                     left + static_cast<int>(Chance(2) ? width_ : Between(random_, x, width_)),
                                     top + static_cast<int>(Between(random_, y, height_))});
        }
        call.alpha = static_cast<unsigned char>(Chance(3) ? 255 : Between(random_, 1, 255));
        call.mode = static_cast<BlendMode>(Chance(5) ? 0 : Between(random_, 0, kBlendModeCount - 1));
        if (Chance(3)) return call;

        const bool stencil = Chance(3);
        const bool whole = Chance(3);
        call.maskOffset = {whole ? Signed(3, 0) : Signed(6, width_), whole ? Signed(3, 0) : Signed(3, height_)};
        const auto mask = Make(static_cast<PixelFormat>(stencil ? 1 : Between(random_, 1, 9)),
                               whole ? width_ + 6 : Between(random_, 0, width_ + 3),
                               whole ? height_ + 6 : Between(random_, 0, height_ + 3), overlapping_ && Chance(2));
        if (Chance(2)) mask->SetPalette(RandomPalette(Chance(2) ? 256 : 3, random_));
        if (!overlapping_ && Chance(20)) mask->HideMemory();
        call.mask = mask;
        call.transfer = MakeTransfer(stencil);
        return call;
    }

    std::shared_ptr<IPDFTransferFunction> MakeTransfer(bool stencil) {
        const auto source = Chance(2) ? TransferSource::Alpha : TransferSource::Luminosity;
        if (stencil) return Chance(2) ? nullptr : std::make_shared<CIdentityPDFTransferFunction>(TransferSource::Alpha);
        switch (Between(random_, 0, 12)) {
            case 0: return nullptr;
            case 1: return std::make_shared<CExponentialPDFTransferFunction>(source, 0.25, 0.75, 2.0);
            case 2: return std::make_shared<CExponentialPDFTransferFunction>(source, -0.5, 1.5, 1.0);
            case 3: return std::make_shared<CExponentialPDFTransferFunction>(source, 0.0, 0.01, -1.0);
            case 4: return std::make_shared<CPostscriptPDFTransferFunction>(source, "{ 1 exch sub }");
            case 5:
            case 6:
                // Depends on the order in which pixels are asked for, and leaves 0 to 1.
                return std::make_shared<HostFunction>([asked = 0U](const Color& color) mutable {
                    asked += 37 + color.GetAlpha() + color.GetGreen();
                    return (asked % 300) / 256.0 - 0.1;
                });
            default: return std::make_shared<CIdentityPDFTransferFunction>(source);
        }
    }

    Random random_;
    bool overlapping_;
    unsigned int width_;
    unsigned int height_;
};

}  // namespace vantu::test
