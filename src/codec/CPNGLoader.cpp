#include <vantu/CPNGLoader.h>

#include <array>
#include <cstring>
#include <optional>
#include <vector>

#include "codec/Loading.h"
#include "codec/PngFile.h"
#include "codec/WritableRows.h"
#include "pixel/Formats.h"
#include "pixel/MakeImage.h"

namespace vantu {
namespace {

constexpr std::size_t kSignatureSize = 8;

/// Zeros that may be given out for a file that has ended. A whole picture never needs them, and libpng would go on
/// reading them for as long as a chunk or a picture claims to be.
constexpr std::size_t kMostPastEnd = 65536;

/// One file being read.
class PngReader : public PngFile {
public:
    explicit PngReader(int fd) : PngFile(fd) {}
    ~PngReader() { png_destroy_read_struct(&png_, &info_, nullptr); }

    /// Whether the file begins with the signature of PNG, which is read.
    bool ReadSignature() {
        std::array<unsigned char, kSignatureSize> signature{};
        QorReadFile(signature.data(), signature.size(), fd_);
        return png_sig_cmp(signature.data(), 0, signature.size()) == 0;
    }

    /// Reads up to the first row. @return false if the file is broken.
    bool ReadHeader() {
        return Run([this] {
            MakeStructures(png_create_read_struct_2);
            png_set_sig_bytes(png_, kSignatureSize);
            png_set_read_fn(png_, this, Read);
            png_read_info(png_, info_);
        });
    }

    /// Reads the rows to where `rows` points, red and blue exchanged.
    bool ReadRows(unsigned char** rows) {
        return Run([this, rows] {
            png_set_bgr(png_);
            png_read_image(png_, rows);
        });
    }

    /// @return none for pixels that no format holds.
    [[nodiscard]] std::optional<PixelFormat> Format() const {
        return LoadedFormat(unsigned{png_get_bit_depth(png_, info_)} * png_get_channels(png_, info_));
    }
    [[nodiscard]] unsigned int Width() const { return png_get_image_width(png_, info_); }
    [[nodiscard]] unsigned int Height() const { return png_get_image_height(png_, info_); }
    [[nodiscard]] std::size_t RowBytes() const { return png_get_rowbytes(png_, info_); }

private:
    /// A short read is no error by itself: the rest reads as zero, which no checksum forgives.
    static void Read(png_structp png, png_bytep buffer, std::size_t size) {
        auto& self = *static_cast<PngReader*>(png_get_io_ptr(png));
        const std::size_t count = QorReadFile(buffer, static_cast<unsigned int>(size), self.fd_);
        if (count >= size) return;
        std::memset(buffer + count, 0, size - count);
        self.pastEnd_ += size - count;
        if (self.pastEnd_ > kMostPastEnd) png_error(png, "unexpected end of file");
    }

    std::size_t pastEnd_ = 0;
};

std::vector<unsigned char*> AddressesOf(const PixelRows<unsigned char>& rows) {
    std::vector<unsigned char*> addresses(rows.count);
    for (std::size_t i = 0; i < rows.count; ++i) addresses[i] = rows.Row(i);
    return addresses;
}

/// Why libpng gave up.
LoadResult Broken(const PngReader& reader) {
    return reader.OutOfMemory() ? LoadResult::NoMemory : LoadResult::Damaged;
}

}  // namespace

bool CPNGLoader::GetImageSize(const std::string& path, unsigned int& width, unsigned int& height,
                              IQorImage::PixelFormat& format) const {
    return WithFile(path, QOR_OPEN_READ, [&](int fd) { return GetImageSize(fd, width, height, format); });
}

bool CPNGLoader::GetImageSize(const std::wstring& path, unsigned int& width, unsigned int& height,
                              IQorImage::PixelFormat& format) const {
    return WithFile(path, QOR_OPEN_READ, [&](int fd) { return GetImageSize(fd, width, height, format); });
}

bool CPNGLoader::GetImageSize(int fd, unsigned int& width, unsigned int& height, IQorImage::PixelFormat& format) const {
    PngReader reader(fd);
    if (!reader.ReadSignature() || !reader.ReadHeader()) return false;
    const auto readAs = reader.Format();
    if (!readAs) return false;
    width = reader.Width();
    height = reader.Height();
    format = *readAs;
    return true;
}

std::shared_ptr<IQorImage> CPNGLoader::Load(const std::string& path, void** memory) const {
    LoadResult unused{};
    return Load(path, memory, unused);
}

std::shared_ptr<IQorImage> CPNGLoader::Load(const std::wstring& path, void** memory) const {
    LoadResult unused{};
    return Load(path, memory, unused);
}

std::shared_ptr<IQorImage> CPNGLoader::Load(int fd, void** memory) const {
    LoadResult unused{};
    return Load(fd, memory, unused);
}

std::shared_ptr<IQorImage> CPNGLoader::Load(const std::string& path, void** memory, LoadResult& result) const {
    return LoadFile(path, result, [&](int fd) { return Load(fd, memory, result); });
}

std::shared_ptr<IQorImage> CPNGLoader::Load(const std::wstring& path, void** memory, LoadResult& result) const {
    return LoadFile(path, result, [&](int fd) { return Load(fd, memory, result); });
}

std::shared_ptr<IQorImage> CPNGLoader::Load(int fd, void** memory, LoadResult& result) const {
    if (fd == -1) return Refuse(result, LoadResult::NotThisKind);
    PngReader reader(fd);
    if (!reader.ReadSignature()) return Refuse(result, LoadResult::NotThisKind);
    if (!reader.ReadHeader()) return Refuse(result, Broken(reader));
    const auto format = reader.Format();
    if (!format) return Refuse(result, LoadResult::NotRead);

    auto image = MakeImage(reader.Width(), reader.Height(), *format, 4, false, factory_, memory);
    if (!image) return Refuse(result, LoadResult::NoImage);
    const auto rows = WritableRows(*image);
    if (rows.count < reader.Height() || rows.Stride() < reader.RowBytes()) return Refuse(result, LoadResult::NoImage);
    // The picture's top row is the last one in memory.
    if (!reader.ReadRows(AddressesOf(rows.Reversed()).data())) return Refuse(result, Broken(reader));
    result = LoadResult::Loaded;
    return image;
}

}  // namespace vantu
