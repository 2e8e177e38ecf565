#include <vantu/CJPEGLoader.h>

#include <algorithm>
#include <cstdio>

// The C headers of libjpeg lean on <cstdio>.
#include <jpeglib.h>

#include <jerror.h>

#include "codec/CatchJump.h"
#include "codec/Loading.h"
#include "codec/WritableRows.h"
#include "pixel/MakeImage.h"

namespace vantu {
namespace {

/// libjpeg's input, read from a descriptor.
struct FileSource : jpeg_source_mgr {
    int fd;
    bool startOfFile;
    bool ended;
    unsigned char buffer[4096];
};

FileSource& SourceOf(j_decompress_ptr decompressor) {
    return *static_cast<FileSource*>(decompressor->src);
}

void StartInput(j_decompress_ptr decompressor) {
    SourceOf(decompressor).startOfFile = true;
}

/// A file that ends early goes on as an end-of-image marker, so that what came before it is kept.
boolean FillInput(j_decompress_ptr decompressor) {
    FileSource& source = SourceOf(decompressor);
    unsigned int count = QorReadFile(source.buffer, sizeof source.buffer, source.fd);
    source.ended = count == 0;
    if (source.ended) {
        if (source.startOfFile) ERREXIT(decompressor, JERR_INPUT_EMPTY);
        WARNMS(decompressor, JWRN_JPEG_EOF);
        source.buffer[0] = 0xFF;
        source.buffer[1] = JPEG_EOI;
        count = 2;
    }
    source.next_input_byte = source.buffer;
    source.bytes_in_buffer = count;
    source.startOfFile = false;
    return TRUE;
}

void SkipInput(j_decompress_ptr decompressor, long count) {
    if (count <= 0) return;
    FileSource& source = SourceOf(decompressor);
    auto left = static_cast<std::size_t>(count);
    while (left > source.bytes_in_buffer) {
        left -= source.bytes_in_buffer;
        FillInput(decompressor);
        if (source.ended) return;  // at the marker that stands for the end
    }
    source.next_input_byte += left;
    source.bytes_in_buffer -= left;
}

struct ErrorContext : jpeg_error_mgr {
    std::jmp_buf onError;
};

[[noreturn]] void OnError(j_common_ptr decompressor) {
    std::longjmp(static_cast<ErrorContext*>(decompressor->err)->onError, 1);
}

/// Writes a decoded scanline of one or three components as blue, green and red.
void StoreScanline(const unsigned char* from, int components, std::size_t columns, unsigned char* to) {
    for (std::size_t i = 0; i < columns; ++i, to += 3) {
        if (components == 3) {
            to[0] = from[3 * i + 2];
            to[1] = from[3 * i + 1];
            to[2] = from[3 * i];
        } else {
            to[0] = to[1] = to[2] = from[i];
        }
    }
}

/// One file being decoded. Every call that may end in a fatal error of libjpeg runs under `CatchJump`.
class JpegReader {
public:
    explicit JpegReader(int fd) {
        decompressor_.err = jpeg_std_error(&errors_);
        errors_.error_exit = OnError;
        errors_.output_message = [](j_common_ptr) {};
        source_.init_source = StartInput;
        source_.fill_input_buffer = FillInput;
        source_.skip_input_data = SkipInput;
        source_.resync_to_restart = jpeg_resync_to_restart;
        source_.term_source = [](j_decompress_ptr) {};
        source_.fd = fd;
    }
    ~JpegReader() { jpeg_destroy_decompress(&decompressor_); }
    JpegReader(const JpegReader&) = delete;
    JpegReader& operator=(const JpegReader&) = delete;

    bool ReadHeader() {
        return CatchJump(errors_.onError, [this] {
            jpeg_create_decompress(&decompressor_);
            decompressor_.src = &source_;
            jpeg_read_header(&decompressor_, TRUE);
        });
    }

    /// Decodes to rows of `width` pixels, the picture's from the top, no further than they reach.
    bool ReadRows(const PixelRows<unsigned char>& rows, std::size_t width) {
        return CatchJump(errors_.onError, [this, &rows, width] {
            jpeg_start_decompress(&decompressor_);
            const int components = decompressor_.num_components;
            const JSAMPARRAY scanline =
                decompressor_.mem->alloc_sarray(reinterpret_cast<j_common_ptr>(&decompressor_), JPOOL_IMAGE,
                                                decompressor_.image_width * static_cast<unsigned int>(components), 1);
            const std::size_t columns = std::min<std::size_t>({decompressor_.image_width, width, rows.Stride() / 3});
            const std::size_t count = std::min<std::size_t>(decompressor_.image_height, rows.count);
            for (std::size_t y = 0; y < count; ++y) {
                jpeg_read_scanlines(&decompressor_, scanline, 1);
                StoreScanline(scanline[0], components, columns, rows.Row(y));
            }
        });
    }

    /// Why the last step ended in a fatal error.
    [[nodiscard]] LoadResult Failure() const {
        switch (errors_.msg_code) {
            case JERR_INPUT_EMPTY:
            case JERR_NO_SOI: return LoadResult::NotThisKind;
            case JERR_ARITH_NOTIMPL:
            case JERR_BAD_PRECISION:
            case JERR_CONVERSION_NOTIMPL:
            case JERR_IMAGE_TOO_BIG:
            case JERR_SOF_UNSUPPORTED: return LoadResult::NotRead;
            case JERR_OUT_OF_MEMORY: return LoadResult::NoMemory;
            default: return LoadResult::Damaged;
        }
    }

    [[nodiscard]] int Components() const { return decompressor_.num_components; }
    [[nodiscard]] unsigned int Width() const { return decompressor_.image_width; }
    [[nodiscard]] unsigned int Height() const { return decompressor_.image_height; }

private:
    jpeg_decompress_struct decompressor_{};
    ErrorContext errors_{};
    FileSource source_{};
};

}  // namespace

bool CJPEGLoader::GetImageSize(const std::string& path, unsigned int& width, unsigned int& height,
                               IQorImage::PixelFormat& format) const {
    return WithFile(path, QOR_OPEN_READ, [&](int fd) { return GetImageSize(fd, width, height, format); });
}

bool CJPEGLoader::GetImageSize(const std::wstring& path, unsigned int& width, unsigned int& height,
                               IQorImage::PixelFormat& format) const {
    return WithFile(path, QOR_OPEN_READ, [&](int fd) { return GetImageSize(fd, width, height, format); });
}

bool CJPEGLoader::GetImageSize(int fd, unsigned int& width, unsigned int& height,
                               IQorImage::PixelFormat& format) const {
    JpegReader reader(fd);
    if (!reader.ReadHeader()) return false;
    width = reader.Width();
    height = reader.Height();
    format = PixelFormat::Bgr24;
    return true;
}

std::shared_ptr<IQorImage> CJPEGLoader::Load(const std::string& path, void** memory) const {
    LoadResult unused{};
    return Load(path, memory, unused);
}

std::shared_ptr<IQorImage> CJPEGLoader::Load(const std::wstring& path, void** memory) const {
    LoadResult unused{};
    return Load(path, memory, unused);
}

std::shared_ptr<IQorImage> CJPEGLoader::Load(int fd, void** memory) const {
    LoadResult unused{};
    return Load(fd, memory, unused);
}

std::shared_ptr<IQorImage> CJPEGLoader::Load(const std::string& path, void** memory, LoadResult& result) const {
    return LoadFile(path, result, [&](int fd) { return Load(fd, memory, result); });
}

std::shared_ptr<IQorImage> CJPEGLoader::Load(const std::wstring& path, void** memory, LoadResult& result) const {
    return LoadFile(path, result, [&](int fd) { return Load(fd, memory, result); });
}

std::shared_ptr<IQorImage> CJPEGLoader::Load(int fd, void** memory, LoadResult& result) const {
    JpegReader reader(fd);
    if (!reader.ReadHeader()) return Refuse(result, reader.Failure());
    if (reader.Components() != 1 && reader.Components() != 3) return Refuse(result, LoadResult::NotRead);
    auto image = MakeImage(reader.Width(), reader.Height(), PixelFormat::Bgr24, 4, true, factory_, memory);
    if (!image) return Refuse(result, LoadResult::NoImage);
    const auto rows = WritableRows(*image);
    if (rows.count == 0) return Refuse(result, LoadResult::NoImage);
    if (!reader.ReadRows(rows.Reversed(), image->GetWidth())) return Refuse(result, reader.Failure());
    result = LoadResult::Loaded;
    return image;
}

}  // namespace vantu
