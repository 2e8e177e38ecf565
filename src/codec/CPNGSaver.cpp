#include <vantu/CPNGSaver.h>

#include <png.h>

#include <array>
#include <cstdlib>
#include <new>
#include <optional>
#include <vector>

#include "codec/CatchJump.h"
#include "codec/WithFile.h"
#include "pixel/FormatDispatch.h"
#include "pixel/PixelCodec.h"

namespace vantu {
namespace {

/// What a PNG file says of its samples.
struct Samples {
    int depth;
    int colorType;
};

/// @return none for an image that no PNG file can hold.
std::optional<Samples> SamplesOf(const IQorImage& image) {
    const unsigned int bits = BitsPerPixel(image.GetPixelFormat());
    const std::uint64_t rowBytes = (std::uint64_t{image.GetWidth()} * bits + 7) / 8;
    // A row whose length wraps in 32 bits is longer than the image's stride.
    if (rowBytes == 0 || image.GetHeight() == 0 || image.GetPixelData() == nullptr ||
        rowBytes > RowStride(image.GetWidth(), image.GetPixelFormat(), image.GetAlignment())) {
        return std::nullopt;
    }
    switch (bits) {
        case 1:
        case 4:
        case 8:
            return Samples{static_cast<int>(bits),
                           image.GetPalette() == nullptr ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_PALETTE};
        case 24: return Samples{8, PNG_COLOR_TYPE_RGB};
        case 32: return Samples{8, PNG_COLOR_TYPE_RGB_ALPHA};
        default: return std::nullopt;
    }
}

/// An entry for each index of an image.
struct PngPalette {
    PngPalette(const ColorMap& palette, unsigned int bits) : count(1 << bits) {
        for (unsigned int i = 0; i < 1U << bits; ++i) {
            const Color color = i < palette.GetSize() ? palette[i] : Color(ARGB_BLACK);
            colors[i] = {color.GetRed(), color.GetGreen(), color.GetBlue()};
            alphas[i] = color.GetAlpha();
            if (alphas[i] != 255) alphaCount = static_cast<int>(i) + 1;
        }
    }

    std::array<png_color, 256> colors{};
    std::array<png_byte, 256> alphas{};
    int count;
    int alphaCount = 0;  ///< those after them are opaque
};

/// The rows of an image from the top of the picture; colours with alpha as `Bgra32`.
class StraightRows {
public:
    explicit StraightRows(const IQorImage& image)
        : image_(image), stride_(RowStride(image.GetWidth(), image.GetPixelFormat(), image.GetAlignment())) {
        const PixelFormat format = image.GetPixelFormat();
        if (HasAlpha(format) && format != PixelFormat::Bgra32) converted_.resize(std::size_t{image.GetWidth()} * 4);
    }

    /// A row, valid until the next call.
    const unsigned char* Row(unsigned int y) {
        const std::size_t memoryRow = image_.IsBottomUp() ? image_.GetHeight() - 1 - y : y;
        const unsigned char* const row = image_.GetPixelData() + memoryRow * stride_;
        if (converted_.empty()) return row;
        return DispatchFormat(image_.GetPixelFormat(), row, [&]<PixelFormat F>() -> const unsigned char* {
            for (std::size_t i = 0; i < converted_.size(); i += 4) {
                Color color;
                ReadPixel<F>(row + i, color);
                WritePixel<PixelFormat::Bgra32>(&converted_[i], color);
            }
            return converted_.data();
        });
    }

private:
    const IQorImage& image_;
    std::size_t stride_;
    std::vector<unsigned char> converted_;
};

/// One file being written. Every call that may end in a fatal error of libpng runs under `CatchJump`.
class PngWriter {
public:
    explicit PngWriter(int fd) : fd_(fd) {}
    ~PngWriter() { png_destroy_write_struct(&png_, &info_); }
    PngWriter(const PngWriter&) = delete;
    PngWriter& operator=(const PngWriter&) = delete;

    /// @param palette null for samples that are no indices.
    /// @return false if not all of the file was written. @throws std::bad_alloc
    bool Write(const Samples& samples, unsigned int width, unsigned int height, const PngPalette* palette,
               StraightRows& rows) {
        const bool written = CatchJump(onError_, [&] {
            png_ = png_create_write_struct_2(
                PNG_LIBPNG_VER_STRING, this, OnError, [](png_structp, png_const_charp) {}, this, Allocate, nullptr);
            if (png_ != nullptr) info_ = png_create_info_struct(png_);
            if (info_ == nullptr) std::longjmp(onError_, 1);
            png_set_write_fn(png_, this, WriteBytes, [](png_structp) {});
            png_set_user_limits(png_, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
            png_set_IHDR(png_, info_, width, height, samples.depth, samples.colorType, PNG_INTERLACE_NONE,
                         PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
            if (palette != nullptr) {
                png_set_PLTE(png_, info_, palette->colors.data(), palette->count);
                if (palette->alphaCount > 0)
                    png_set_tRNS(png_, info_, palette->alphas.data(), palette->alphaCount, nullptr);
            }
            png_write_info(png_, info_);
            png_set_bgr(png_);
            for (unsigned int y = 0; y < height; ++y) png_write_row(png_, rows.Row(y));
            png_write_end(png_, info_);
        });
        if (outOfMemory_) throw std::bad_alloc();
        return written;
    }

private:
    [[noreturn]] static void OnError(png_structp png, png_const_charp /*message*/) {
        std::longjmp(static_cast<PngWriter*>(png_get_error_ptr(png))->onError_, 1);
    }

    static png_voidp Allocate(png_structp png, png_alloc_size_t size) {
        void* const block = std::malloc(size);
        if (block == nullptr) static_cast<PngWriter*>(png_get_mem_ptr(png))->outOfMemory_ = true;
        return block;
    }

    static void WriteBytes(png_structp png, png_bytep bytes, std::size_t size) {
        const PngWriter& self = *static_cast<PngWriter*>(png_get_io_ptr(png));
        if (QorWriteFile(bytes, static_cast<unsigned int>(size), self.fd_) < size) png_error(png, "write error");
    }

    int fd_;
    bool outOfMemory_ = false;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
    std::jmp_buf onError_{};
};

/// Leaves the file alone if it could not hold the image.
template <typename Path>
bool SaveAt(const Path& path, const IQorImage& image) {
    return SamplesOf(image) && WithFile(path, QOR_OPEN_CREATE, [&](int fd) { return CPNGSaver().Save(image, fd); });
}

}  // namespace

bool CPNGSaver::Save(const IQorImage& image, const std::string& path) const {
    return SaveAt(path, image);
}

bool CPNGSaver::Save(const IQorImage& image, const std::wstring& path) const {
    return SaveAt(path, image);
}

bool CPNGSaver::Save(const IQorImage& image, int fd) const {
    const auto samples = SamplesOf(image);
    if (!samples) return false;
    std::optional<PngPalette> palette;
    if (samples->colorType == PNG_COLOR_TYPE_PALETTE) {
        palette.emplace(*image.GetPalette(), static_cast<unsigned int>(samples->depth));
    }
    StraightRows rows(image);
    return PngWriter(fd).Write(*samples, image.GetWidth(), image.GetHeight(), palette ? &*palette : nullptr, rows);
}

}  // namespace vantu
