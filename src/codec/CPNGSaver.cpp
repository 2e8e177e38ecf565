#include <vantu/CPNGSaver.h>

#include <array>
#include <new>
#include <optional>
#include <vector>

#include "codec/PngFile.h"
#include "codec/WithFile.h"
#include "pixel/Formats.h"
#include "pixel/PixelCodec.h"
#include "pixel/PixelRows.h"

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
    if (image.GetWidth() == 0 || image.GetHeight() == 0 || image.GetPixelData() == nullptr ||
        !RowIsCounted(image.GetWidth(), image.GetPixelFormat())) {
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
        : format_(image.GetPixelFormat()), rows_(RowsFromTop(image, format_)) {
        if (FactsOf(format_).colors == PixelColors::Premultiplied) converted_.resize(std::size_t{image.GetWidth()} * 4);
    }

    [[nodiscard]] std::size_t Count() const { return rows_.count; }

    /// A row, valid until the next call.
    const unsigned char* Row(std::size_t index) {
        const unsigned char* const row = rows_.Row(index);
        if (converted_.empty()) return row;
        return DispatchFormat(format_, row, [&]<PixelFormat F>() -> const unsigned char* {
            for (std::size_t i = 0; i < converted_.size(); i += 4) {
                Color color;
                ReadPixel<F>(row + i, color);
                WritePixel<PixelFormat::Bgra32>(&converted_[i], color);
            }
            return converted_.data();
        });
    }

private:
    PixelFormat format_;
    PixelRows<const unsigned char> rows_;
    std::vector<unsigned char> converted_;
};

/// One file being written.
class PngWriter : public PngFile {
public:
    explicit PngWriter(int fd) : PngFile(fd) {}
    ~PngWriter() { png_destroy_write_struct(&png_, &info_); }

    /// @param palette null for samples that are no indices.
    /// @return false if not all of the file was written.
    bool Write(const Samples& samples, unsigned int width, const PngPalette* palette, StraightRows& rows) {
        return Run([&] {
            MakeStructures(png_create_write_struct_2);
            png_set_write_fn(png_, this, WriteBytes, [](png_structp) {});
            png_set_user_limits(png_, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
            png_set_IHDR(png_, info_, width, static_cast<png_uint_32>(rows.Count()), samples.depth, samples.colorType,
                         PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
            if (palette != nullptr) {
                png_set_PLTE(png_, info_, palette->colors.data(), palette->count);
                if (palette->alphaCount > 0)
                    png_set_tRNS(png_, info_, palette->alphas.data(), palette->alphaCount, nullptr);
            }
            png_write_info(png_, info_);
            png_set_bgr(png_);
            for (std::size_t y = 0; y < rows.Count(); ++y) png_write_row(png_, rows.Row(y));
            png_write_end(png_, info_);
        });
    }

private:
    static void WriteBytes(png_structp png, png_bytep bytes, std::size_t size) {
        const PngWriter& self = *static_cast<PngWriter*>(png_get_io_ptr(png));
        if (QorWriteFile(bytes, static_cast<unsigned int>(size), self.fd_) < size) png_error(png, "write error");
    }
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
    PngWriter writer(fd);
    const bool written = writer.Write(*samples, image.GetWidth(), palette ? &*palette : nullptr, rows);
    if (writer.OutOfMemory()) throw std::bad_alloc();
    return written;
}

}  // namespace vantu
