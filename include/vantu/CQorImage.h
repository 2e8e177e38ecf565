#pragma once

#include <vantu/Export.h>
#include <vantu/IQorImage.h>

#include <cstddef>
#include <memory>

namespace vantu {

/// An image that owns its palette and, unless it was made by `OnMemory`, its pixel block.
///
/// Images of 1, 4 and 8 bits are born with an opaque grey ramp of 2, 16 and 256 entries as palette, the others
/// with none. No lock: one thread at a time, unless all of them only read.
class VANTU_API CQorImage : public IQorImage {
public:
    /// Allocates `RowStride(width, format, alignment) * height` zeroed bytes.
    ///
    /// @param width, height size in pixels, 0 allowed.
    /// @param format layout of a pixel.
    /// @param alignment row alignment in bytes, 0 for none.
    /// @param bottomUp whether the first row in memory is the visually lowest.
    /// @throws std::bad_alloc if the block cannot be had, or if a row is longer than 32 bits can count.
    CQorImage(unsigned int width, unsigned int height, PixelFormat format, unsigned char alignment, bool bottomUp);
    /// An image whose pixels are memory of the caller's: a host's frame buffer, a decoder's output. Nothing is copied
    /// or cleared, and nothing is freed; such an image is not paged out.
    ///
    /// An image says its row stride by an alignment of at most 255, so not every pitch can be one: it must be the next
    /// multiple of some number up to 255 from the row's bytes on. That holds for rows without a gap, for any pitch up
    /// to 255 bytes, and for rows padded to 2, 4, 8, ... 128 bytes.
    /// For any other pitch of whole pixels say a width of pitch / bytes per pixel, and paint in the left part alone:
    /// `Painter::SetClip` holds a painter there.
    ///
    /// @param pixels `pitch * height` bytes; of the last row no more than its pixels.
    ///        REQUIRES: they stay where they are as long as the image lives. A painted image's are written.
    /// @param width, height size in pixels.
    /// @param format layout of a pixel.
    /// @param pitch bytes from the start of a row in memory to the start of the next one.
    /// @param bottomUp whether the first row in memory is the visually lowest.
    /// @return the image, or empty if a row's pixels take more than `pitch` bytes or no alignment gives that pitch.
    /// @throws std::bad_alloc if there is no memory for the image object or its palette.
    [[nodiscard]] static std::shared_ptr<CQorImage> OnMemory(void* pixels, unsigned int width, unsigned int height,
                                                             PixelFormat format, unsigned int pitch, bool bottomUp);
    ~CQorImage() override;
    CQorImage(const CQorImage&) = delete;
    CQorImage& operator=(const CQorImage&) = delete;

    /// Replaces the palette; pointers to the former one become invalid.
    /// @param palette of any size, for any format; null removes it.
    void SetPalette(std::unique_ptr<ColorMap> palette);

    bool Store() const override;
    bool Erase() override;
    bool Load() const override;
    bool Unload() const override;
    bool NeedsManagement() const override;
    bool SetStorage(std::shared_ptr<CQorStorage> storage, unsigned int key, IQorMemoryManager* manager) const override;

    unsigned int GetWidth() const override;
    unsigned int GetHeight() const override;
    PixelFormat GetPixelFormat() const override;
    unsigned char GetAlignment() const override;
    const unsigned char* GetPixelData() const override;
    unsigned char* GetPixelData() override;
    const ColorMap* GetPalette() const override;
    ColorMap* GetPalette() override;
    bool IsBottomUp() const override;

protected:
    bool Serialize(CQorStorage& storage) const override;
    bool Deserialize(CQorStorage& storage) const override;
    void FreeMemory() const override;
    unsigned int GetDataSizeImpl() const override;

private:
    struct FreeBlock {
        bool foreign;  // false for a block that says nothing else
        void operator()(unsigned char* block) const;
    };
    using Block = std::unique_ptr<unsigned char, FreeBlock>;

    static Block Allocate(std::size_t size);
    CQorImage(unsigned int width, unsigned int height, PixelFormat format, unsigned char alignment, bool bottomUp,
              Block pixels);

    unsigned int width_;
    unsigned int height_;
    PixelFormat format_;
    unsigned char alignment_;
    bool bottomUp_;
    std::size_t size_;
    // Paging moves these behind a const image, as the managed-object contract asks.
    mutable Block pixels_;
    mutable std::shared_ptr<CQorStorage> storage_;
    mutable bool stored_ = false;
    std::unique_ptr<ColorMap> palette_;
};

}  // namespace vantu
