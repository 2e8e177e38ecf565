#include <vantu/CPNGLoader.h>

#include <png.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "codec/CatchJump.h"
#include "codec/WithFile.h"
#include "codec/WritableRows.h"
#include "pixel/MakeImage.h"

namespace vantu {
namespace {

constexpr std::size_t kSignatureSize = 8;

/// Zeros that may be given out for a file that has ended. A whole picture never needs them, and libpng would go on
/// reading them for as long as a chunk or a picture claims to be.
constexpr std::size_t kMostPastEnd = 65536;

struct PixelBitsFormat {
    int bits;  ///< bit depth times channels
    PixelFormat format;
};
constexpr std::array kFormats = {
    PixelBitsFormat{1, PixelFormat::Index1}, PixelBitsFormat{4, PixelFormat::Index4},
    PixelBitsFormat{8, PixelFormat::Index8}, PixelBitsFormat{16, PixelFormat::Rgb555},
    PixelBitsFormat{24, PixelFormat::Bgr24}, PixelBitsFormat{32, PixelFormat::Bgra32Premultiplied},
};

/// One file being read. Every call that may end in a fatal error of libpng runs under `CatchJump`.
class PngReader {
public:
    explicit PngReader(int fd) : fd_(fd) {}
    ~PngReader() { png_destroy_read_struct(&png_, &info_, nullptr); }
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;

    /// Reads up to the first row. @return false if this is no PNG file or a broken one.
    bool ReadHeader() {
        std::array<unsigned char, kSignatureSize> signature{};
        QorReadFile(signature.data(), signature.size(), fd_);
        if (png_sig_cmp(signature.data(), 0, signature.size()) != 0) return false;
        return CatchJump(onError_, [this] {
            png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, OnError, [](png_structp, png_const_charp) {});
            if (png_ != nullptr) info_ = png_create_info_struct(png_);
            if (info_ == nullptr) std::longjmp(onError_, 1);
            png_set_sig_bytes(png_, kSignatureSize);
            png_set_read_fn(png_, this, Read);
            png_read_info(png_, info_);
        });
    }

    /// Reads the rows to where `rows` points, red and blue exchanged.
    bool ReadRows(unsigned char** rows) {
        return CatchJump(onError_, [this, rows] {
            png_set_bgr(png_);
            png_read_image(png_, rows);
        });
    }

    [[nodiscard]] int PixelBits() const { return png_get_bit_depth(png_, info_) * png_get_channels(png_, info_); }
    [[nodiscard]] unsigned int Width() const { return png_get_image_width(png_, info_); }
    [[nodiscard]] unsigned int Height() const { return png_get_image_height(png_, info_); }
    [[nodiscard]] std::size_t RowBytes() const { return png_get_rowbytes(png_, info_); }

private:
    [[noreturn]] static void OnError(png_structp png, png_const_charp /*message*/) {
        std::longjmp(static_cast<PngReader*>(png_get_error_ptr(png))->onError_, 1);
    }

    /// A short read is no error by itself: the rest reads as zero, which no checksum forgives.
    static void Read(png_structp png, png_bytep buffer, std::size_t size) {
        auto& self = *static_cast<PngReader*>(png_get_io_ptr(png));
        const std::size_t count = QorReadFile(buffer, static_cast<unsigned int>(size), self.fd_);
        if (count >= size) return;
        std::memset(buffer + count, 0, size - count);
        self.pastEnd_ += size - count;
        if (self.pastEnd_ > kMostPastEnd) png_error(png, "unexpected end of file");
    }

    int fd_;
    std::size_t pastEnd_ = 0;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
    std::jmp_buf onError_{};
};

std::vector<unsigned char*> AddressesOf(const PixelRows<unsigned char>& rows) {
    std::vector<unsigned char*> addresses(rows.count);
    for (std::size_t i = 0; i < rows.count; ++i) addresses[i] = rows.Row(i);
    return addresses;
}

}  // namespace

std::shared_ptr<IQorImage> CPNGLoader::Load(const std::string& path, void** memory) const {
    return WithFile(path, QOR_OPEN_READ, [&](int fd) { return Load(fd, memory); });
}

std::shared_ptr<IQorImage> CPNGLoader::Load(const std::wstring& path, void** memory) const {
    return WithFile(path, QOR_OPEN_READ, [&](int fd) { return Load(fd, memory); });
}

std::shared_ptr<IQorImage> CPNGLoader::Load(int fd, void** memory) const {
    if (fd == -1) return nullptr;
    PngReader reader(fd);
    if (!reader.ReadHeader()) return nullptr;
    const auto* const row =
        std::find_if(kFormats.begin(), kFormats.end(), [&](const auto& f) { return f.bits == reader.PixelBits(); });
    if (row == kFormats.end()) return nullptr;

    auto image = MakeImage(reader.Width(), reader.Height(), row->format, 4, false, factory_, memory);
    if (!image) return nullptr;
    const auto rows = WritableRows(*image);
    if (rows.count < reader.Height() || rows.Stride() < reader.RowBytes()) return nullptr;
    // The picture's top row is the last one in memory.
    if (!reader.ReadRows(AddressesOf(rows.Reversed()).data())) return nullptr;
    return image;
}

}  // namespace vantu
