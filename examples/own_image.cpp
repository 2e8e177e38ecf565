// A host with an image class of its own: pixels in an arena, which a factory hands out to the loaders and utilities.

#include <cstddef>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <vector>

#include "Pictures.h"

using namespace examples;
using namespace vantu;

namespace {

// One run of memory from which all images of a page are cut and which is freed as a whole.
class Arena {
public:
    explicit Arena(std::size_t bytes) : bytes_(bytes) {}

    // Null if the arena is full.
    unsigned char* Take(std::size_t size) {
        if (size > bytes_.size() - used_) return nullptr;
        unsigned char* const block = bytes_.data() + used_;
        used_ += size;
        return block;
    }
    [[nodiscard]] std::size_t GetUsed() const { return used_; }

private:
    std::vector<unsigned char> bytes_;
    std::size_t used_ = 0;
};

// The library asks for what IQorImage has to say; paging is the host's affair, and this host does not page.
class ArenaImage : public IQorImage {
public:
    static constexpr unsigned char kAlignment = 4;  // the bitmap loader needs it

    ArenaImage(unsigned char* block, unsigned int width, unsigned int height, PixelFormat format, bool bottomUp)
        : block_(block), width_(width), height_(height), format_(format), bottomUp_(bottomUp) {}

    unsigned int GetWidth() const override { return width_; }
    unsigned int GetHeight() const override { return height_; }
    PixelFormat GetPixelFormat() const override { return format_; }
    unsigned char GetAlignment() const override { return kAlignment; }
    const unsigned char* GetPixelData() const override { return block_; }
    unsigned char* GetPixelData() override { return block_; }
    const ColorMap* GetPalette() const override { return nullptr; }
    ColorMap* GetPalette() override { return nullptr; }
    bool IsBottomUp() const override { return bottomUp_; }

    bool Store() const override { return false; }
    bool Erase() override { return false; }
    bool Load() const override { return true; }
    bool Unload() const override { return false; }
    bool NeedsManagement() const override { return false; }
    bool SetStorage(std::shared_ptr<CQorStorage>, unsigned int, IQorMemoryManager*) const override { return false; }

protected:
    bool Serialize(CQorStorage&) const override { return false; }
    bool Deserialize(CQorStorage&) const override { return false; }
    void FreeMemory() const override {}
    unsigned int GetDataSizeImpl() const override { return RowStride(width_, format_, kAlignment) * height_; }

private:
    unsigned char* block_;
    unsigned int width_;
    unsigned int height_;
    PixelFormat format_;
    bool bottomUp_;
};

// The opaque pointer of the loaders and utilities comes through as it was given: here it leads to the arena.
class ArenaFactory : public IGraphicsFactory {
public:
    std::shared_ptr<IQorImage> CreateImage(unsigned int width, unsigned int height, PixelFormat format, bool bottomUp,
                                           void** memory) override {
        auto& arena = *static_cast<Arena*>(*memory);
        const std::size_t size = std::size_t{RowStride(width, format, ArenaImage::kAlignment)} * height;
        unsigned char* const block = arena.Take(size);
        if (block == nullptr) return nullptr;  // the caller reports it as its own failure
        ++made_;
        return std::make_shared<ArenaImage>(block, width, height, format, bottomUp);
    }
    [[nodiscard]] int GetMade() const { return made_; }

private:
    int made_ = 0;
};

void LoadAndTurn() {
    Arena arena(2'000'000);
    void* memory = &arena;
    ArenaFactory factory;
    const auto photograph = CJPEGLoader(&factory).Load(IMAGEOP_EXAMPLE_DATA "/rocket.jpg", &memory);
    if (!photograph) throw std::runtime_error("the photograph was not loaded");
    const auto turned = ImageUtil::Rotate(*photograph, 1, &factory, &memory);
    if (!turned) throw std::runtime_error("the photograph was not turned");
    std::cout << factory.GetMade() << " images, " << turned->GetWidth() << 'x' << turned->GetHeight() << " the last, "
              << arena.GetUsed() << " bytes of the arena\n";
    Save(*turned, "own_image.png");

    // The third does not fit any more, and says so by an empty result.
    if (ImageUtil::Clone(*turned, &factory, &memory)) throw std::runtime_error("the arena has grown");
}

}  // namespace

int main() {
    try {
        LoadAndTurn();
    } catch (const std::exception& error) {
        std::cerr << "own_image: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
