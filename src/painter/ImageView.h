#pragma once

#include <vantu/IQorImage.h>

namespace vantu {

/// Shows memory as an image: a rectangle of another image, or pixels.
///
/// Row strides follow from width and alignment, so a view of an image is as wide as whole pixels fit into a row of its
/// image: at the same alignment that gives the same stride, as no more is then rounded up than was. What lies right of
/// the rectangle belongs to the next row and is not asked for.
class ImageView : public IQorImage {
public:
    /// Shows `image` from (x, y) on, `height` rows of it. The image outlives the use of the view, which is written
    /// only if the image may be.
    ///
    /// REQUIRES: x is at the start of a byte, and a row has less than 2^31 bits.
    /// @param palette takes the place of the image's own; may be null.
    void Show(const IQorImage& image, unsigned int x, unsigned int y, unsigned int height, const ColorMap* palette);

    /// Shows rows of pixels of format `Bgra32Premultiplied` that follow each other without gaps, from the top.
    void ShowPixels(const unsigned char* pixels, unsigned int width, unsigned int height);

    unsigned int GetWidth() const override { return width_; }
    unsigned int GetHeight() const override { return height_; }
    PixelFormat GetPixelFormat() const override { return format_; }
    unsigned char GetAlignment() const override { return alignment_; }
    const unsigned char* GetPixelData() const override { return pixels_; }
    unsigned char* GetPixelData() override { return const_cast<unsigned char*>(pixels_); }
    const ColorMap* GetPalette() const override { return palette_; }
    ColorMap* GetPalette() override { return nullptr; }
    bool IsBottomUp() const override { return bottomUp_; }

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
    unsigned int GetDataSizeImpl() const override { return 0; }

private:
    unsigned int width_ = 0;
    unsigned int height_ = 0;
    PixelFormat format_ = PixelFormat::Bgr24;
    unsigned char alignment_ = 0;
    bool bottomUp_ = false;
    const unsigned char* pixels_ = nullptr;
    const ColorMap* palette_ = nullptr;
};

}  // namespace vantu
