#pragma once

#include <vantu/IGraphicsFactory.h>
#include <vantu/IQorImage.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <ostream>
#include <random>
#include <utility>
#include <vector>

#include "support/Sanitizers.h"

namespace vantu::test {

using Random = std::mt19937;

/// A number from `low` to `high`, both included; the same on every platform for a seed.
inline unsigned int Between(Random& random, unsigned int low, unsigned int high) {
    return low + static_cast<unsigned int>(random() % (std::uint64_t{high} - low + 1));
}

/// Row alignments worth trying: none, a prime, powers of two.
inline constexpr std::array<unsigned char, 5> kAlignments{0, 1, 3, 4, 8};

/// What an image is made of, apart from its pixels.
struct Shape {
    unsigned int width;
    unsigned int height;
    PixelFormat format;
    unsigned char alignment = 4;
    bool bottomUp = false;
};

inline std::ostream& operator<<(std::ostream& out, const Shape& shape) {
    return out << shape.width << 'x' << shape.height << " format " << static_cast<unsigned int>(shape.format)
               << " alignment " << static_cast<unsigned int>(shape.alignment)
               << (shape.bottomUp ? " bottom-up" : " top-down");
}

/// An image of a shape, for tests to give a block of pixels. Without a palette until it is given one.
class ShapedImage : public IQorImage {
public:
    explicit ShapedImage(const Shape& shape) : shape_(shape) {}

    void SetPalette(std::unique_ptr<ColorMap> palette) { palette_ = std::move(palette); }
    [[nodiscard]] const Shape& GetShape() const { return shape_; }
    [[nodiscard]] unsigned int Stride() const { return RowStride(shape_.width, shape_.format, shape_.alignment); }
    /// Bytes of the block.
    [[nodiscard]] std::size_t Size() const { return std::size_t{Stride()} * shape_.height; }

    unsigned int GetWidth() const override { return shape_.width; }
    unsigned int GetHeight() const override { return shape_.height; }
    PixelFormat GetPixelFormat() const override { return shape_.format; }
    unsigned char GetAlignment() const override { return shape_.alignment; }
    const ColorMap* GetPalette() const override { return palette_.get(); }
    ColorMap* GetPalette() override { return palette_.get(); }
    bool IsBottomUp() const override { return shape_.bottomUp; }

    bool Store() const override { return false; }
    bool Erase() override { return false; }
    bool Load() const override { return false; }
    bool Unload() const override { return false; }
    bool NeedsManagement() const override { return false; }
    bool SetStorage(std::shared_ptr<CQorStorage>, unsigned int, IQorMemoryManager*) const override { return false; }

protected:
    bool Serialize(CQorStorage&) const override { return false; }
    bool Deserialize(CQorStorage&) const override { return false; }
    void FreeMemory() const override {}
    unsigned int GetDataSizeImpl() const override { return static_cast<unsigned int>(Size()); }

private:
    Shape shape_;
    std::unique_ptr<ColorMap> palette_;
};

/// An image over a block with guard bytes on both sides, or one that a sanitizer guards, reads too. Its pixels start as
/// the byte 0xCD, so that what an operation leaves alone can be told from what it clears.
class TestImage : public ShapedImage {
public:
    explicit TestImage(const Shape& shape)
        : ShapedImage(shape), memory_(new unsigned char[Size() + 2 * kGuard]), pixels_(&memory_[kGuard]) {
        std::fill_n(memory_.get(), Size() + 2 * kGuard, kGuardByte);
        std::fill_n(pixels_, Size(), kFreshByte);
    }
    TestImage(const Shape& shape, Random& random) : TestImage(shape) { Randomize(random); }
    /// A window in the memory of another image, from its byte `first` on.
    TestImage(const Shape& shape, std::shared_ptr<TestImage> arena, std::size_t first)
        : ShapedImage(shape), arena_(std::move(arena)), pixels_(arena_->GetPixelData() + first) {}

    /// Fills the whole block, bytes between rows included.
    void Randomize(Random& random) {
        std::generate_n(pixels_, Size(), [&] { return static_cast<unsigned char>(random()); });
    }
    /// From now on the image reports null pixel data.
    void HideMemory() { hidden_ = true; }

    /// A copy of the whole block.
    [[nodiscard]] std::vector<unsigned char> Bytes() const { return {pixels_, pixels_ + Size()}; }
    [[nodiscard]] bool GuardsIntact() const {
        if (arena_) return arena_->GuardsIntact();
        const auto isGuard = [](unsigned char byte) { return byte == kGuardByte; };
        return std::all_of(memory_.get(), memory_.get() + kGuard, isGuard) &&
               std::all_of(pixels_ + Size(), pixels_ + Size() + kGuard, isGuard);
    }

    const unsigned char* GetPixelData() const override { return hidden_ ? nullptr : pixels_; }
    unsigned char* GetPixelData() override { return hidden_ ? nullptr : pixels_; }

    static constexpr unsigned char kFreshByte = 0xCD;

private:
    static constexpr std::size_t kGuard = IMAGEOP_SANITIZED != 0 ? 0 : 64;
    static constexpr unsigned char kGuardByte = 0xA7;

    std::unique_ptr<unsigned char[]> memory_;  ///< empty for a window
    std::shared_ptr<TestImage> arena_;         ///< of a window
    unsigned char* pixels_;
    bool hidden_ = false;
};

/// Makes `TestImage`s of a chosen alignment and keeps the last one.
class TestFactory : public IGraphicsFactory {
public:
    explicit TestFactory(unsigned char alignment = 4) : alignment(alignment) {}

    std::shared_ptr<IQorImage> CreateImage(unsigned int width, unsigned int height, PixelFormat format, bool bottomUp,
                                           void** memory) override {
        lastMemory = memory;
        if (refuse) return nullptr;
        last = std::make_shared<TestImage>(
            Shape{width, height - std::min(height, rowsLeftOut), format, alignment, bottomUp});
        if (withoutMemory) last->HideMemory();
        return last;
    }

    unsigned char alignment;
    bool refuse = false;           ///< make nothing
    bool withoutMemory = false;    ///< make images with null pixel data
    unsigned int rowsLeftOut = 0;  ///< break the contract: make images that are too low
    void** lastMemory = nullptr;
    std::shared_ptr<TestImage> last;
};

/// A palette of random colours, alpha included.
inline std::unique_ptr<ColorMap> RandomPalette(unsigned int size, Random& random) {
    auto palette = std::make_unique<ColorMap>(size);
    for (unsigned int i = 0; i < size; ++i) (*palette)[i] = Color(static_cast<unsigned int>(random()));
    return palette;
}

/// The darkest greys.
inline std::unique_ptr<ColorMap> GreyPalette(unsigned int size) {
    auto palette = std::make_unique<ColorMap>(size);
    for (unsigned int i = 0; i < size; ++i) (*palette)[i] = Color(ARGB_BLACK | i * 0x010101);
    return palette;
}

}  // namespace vantu::test
