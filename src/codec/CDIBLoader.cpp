#include <vantu/CDIBLoader.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "codec/DibHeader.h"
#include "codec/Loading.h"
#include "codec/WritableRows.h"
#include "pixel/Formats.h"
#include "pixel/MakeImage.h"
#include "pixel/PixelCodec.h"

namespace vantu {
namespace {

constexpr unsigned int kCoreHeaderSize = 12;

/// What the headers of a file say.
struct DibPicture {
    [[nodiscard]] bool TopDown() const { return (header.biHeight >> 31) != 0; }
    [[nodiscard]] unsigned int Rows() const { return TopDown() ? 0U - header.biHeight : header.biHeight; }

    DibInfoHeader header{};
    PixelFormat format{};
    std::uint32_t rowOffset = 0;  ///< from the start of the file; 0 if the rows follow the palette
};

/// Reads the file header. @return `Loaded` if it is one.
LoadResult ReadFileHeader(int fd, DibPicture& picture) {
    std::array<unsigned char, kDibFileHeaderSize> bytes{};
    const bool whole = QorReadFile(bytes.data(), bytes.size(), fd) == bytes.size();
    if (LoadWord16(bytes.data()) != kDibType) return LoadResult::NotThisKind;
    picture.rowOffset = LoadWord32(&bytes[10]);
    return whole ? LoadResult::Loaded : LoadResult::Damaged;
}

/// Reads the info header. @return `Loaded` if this loader reads what it says.
LoadResult ReadInfoHeader(int fd, DibPicture& picture) {
    std::array<unsigned char, sizeof(DibInfoHeader)> bytes{};
    if (QorReadFile(bytes.data(), bytes.size(), fd) < bytes.size()) return LoadResult::Damaged;
    DibInfoHeader& header = picture.header;
    header.biSize = LoadWord32(&bytes[0]);
    header.biWidth = LoadWord32(&bytes[4]);
    header.biHeight = LoadWord32(&bytes[8]);
    header.biBitCount = static_cast<std::uint16_t>(LoadWord16(&bytes[14]));
    header.biCompression = LoadWord32(&bytes[16]);
    header.biClrUsed = LoadWord32(&bytes[32]);
    if (header.biSize == kCoreHeaderSize || header.biCompression != 0) return LoadResult::NotRead;
    const auto format = LoadedFormat(header.biBitCount);
    if (!format) return LoadResult::NotRead;
    picture.format = *format;
    return LoadResult::Loaded;
}

/// Reads the headers of a file that stands at its start.
LoadResult ReadHeaders(int fd, bool skipFileHeader, DibPicture& picture) {
    const LoadResult result = skipFileHeader ? LoadResult::Loaded : ReadFileHeader(fd, picture);
    return result == LoadResult::Loaded ? ReadInfoHeader(fd, picture) : result;
}

/// Number of palette entries in the file. Only 16 bits of it count, so that 16-bit files have none by default.
unsigned int PaletteCount(const DibInfoHeader& header) {
    const unsigned int used = header.biClrUsed & 0xFFFF;
    if (used != 0 || header.biBitCount >= 24) return used;
    return (1U << header.biBitCount) & 0xFFFF;
}

/// Reads the palette, which is there to be skipped even when the image has none to fill.
void ReadPalette(int fd, unsigned int count, ColorMap* palette) {
    std::vector<unsigned char> entries(std::size_t{count} * kDibEntrySize);
    QorReadFile(entries.data(), count * kDibEntrySize, fd);
    if (palette == nullptr) return;
    for (unsigned int i = 0; i < count; ++i) {
        const unsigned char* const entry = &entries[std::size_t{i} * kDibEntrySize];
        Color& color = (*palette)[i];
        color.SetRed(entry[2]);
        color.SetGreen(entry[1]);
        color.SetBlue(entry[0]);
        color.SetAlpha(255);
    }
}

/// Reads `count` rows in one run, as they lie in the file, whose stride is a multiple of 4.
void ReadRows(int fd, const DibInfoHeader& header, unsigned int count, const PixelRows<unsigned char>& rows) {
    const std::uint64_t fileStride = (std::uint64_t{header.biWidth} * header.biBitCount + 31) / 32 * 4;
    const bool tooLarge = count != 0 && fileStride > rows.Size() / count;
    std::uint64_t left = tooLarge ? rows.Size() : fileStride * count;
    unsigned char* data = rows.first;
    while (left > 0) {
        const auto size = static_cast<unsigned int>(std::min<std::uint64_t>(left, 1U << 30));
        if (QorReadFile(data, size, fd) < size) return;
        data += size;
        left -= size;
    }
}

/// Puts the first `count` rows in opposite order, `rowBytes` bytes of each: the spare bytes at their ends stay.
void ReverseRows(std::size_t count, unsigned int rowBytes, const PixelRows<unsigned char>& rows) {
    count = std::min(count, rows.count);
    const auto size = static_cast<std::ptrdiff_t>(std::min<std::size_t>(rowBytes, rows.Stride()));
    for (std::size_t i = 0; i < count / 2; ++i) {
        std::swap_ranges(rows.Row(i), rows.Row(i) + size, rows.Row(count - 1 - i));
    }
}

}  // namespace

bool CDIBLoader::GetImageSize(const std::string& path, unsigned int& width, unsigned int& height,
                              IQorImage::PixelFormat& format) const {
    return WithFile(path, QOR_OPEN_READ, [&](int fd) { return GetImageSize(fd, width, height, format, false); });
}

bool CDIBLoader::GetImageSize(const std::wstring& path, unsigned int& width, unsigned int& height,
                              IQorImage::PixelFormat& format) const {
    return WithFile(path, QOR_OPEN_READ, [&](int fd) { return GetImageSize(fd, width, height, format, false); });
}

bool CDIBLoader::GetImageSize(int fd, unsigned int& width, unsigned int& height, IQorImage::PixelFormat& format,
                              bool skipFileHeader) const {
    QorSeekFile(fd, 0, 0);
    DibPicture picture;
    if (ReadHeaders(fd, skipFileHeader, picture) != LoadResult::Loaded) return false;
    width = picture.header.biWidth;
    height = picture.Rows();
    format = picture.format;
    return true;
}

std::shared_ptr<IQorImage> CDIBLoader::Load(const std::string& path, void** memory) const {
    LoadResult unused{};
    return Load(path, memory, unused);
}

std::shared_ptr<IQorImage> CDIBLoader::Load(const std::wstring& path, void** memory) const {
    LoadResult unused{};
    return Load(path, memory, unused);
}

std::shared_ptr<IQorImage> CDIBLoader::Load(int fd, void** memory, bool skipFileHeader) const {
    LoadResult unused{};
    return Load(fd, memory, skipFileHeader, unused);
}

std::shared_ptr<IQorImage> CDIBLoader::Load(const std::string& path, void** memory, LoadResult& result) const {
    return LoadFile(path, result, [&](int fd) { return Load(fd, memory, false, result); });
}

std::shared_ptr<IQorImage> CDIBLoader::Load(const std::wstring& path, void** memory, LoadResult& result) const {
    return LoadFile(path, result, [&](int fd) { return Load(fd, memory, false, result); });
}

std::shared_ptr<IQorImage> CDIBLoader::Load(int fd, void** memory, bool skipFileHeader, LoadResult& result) const {
    const long long base = QorSeekFile(fd, 0, 0);
    DibPicture picture;
    const LoadResult read = ReadHeaders(fd, skipFileHeader, picture);
    if (read != LoadResult::Loaded) return Refuse(result, read);

    const DibInfoHeader& header = picture.header;
    const unsigned int rows = picture.Rows();
    // A factory's image is always bottom-up; without one the image says which way the file's rows lie.
    const bool bottomUp = factory_ != nullptr || (!picture.TopDown() && rows != 0);
    auto image = MakeImage(header.biWidth, rows, picture.format, 4, bottomUp, factory_, memory);
    if (!image) return Refuse(result, LoadResult::NoImage);

    if (const unsigned int count = PaletteCount(header); count != 0) ReadPalette(fd, count, image->GetPalette());
    if (picture.rowOffset != 0) QorSeekFile(fd, base + picture.rowOffset, 0);
    const auto target = WritableRows(*image);
    ReadRows(fd, header, rows, target);
    if (picture.TopDown() && factory_ != nullptr) {
        ReverseRows(rows, RowStride(image->GetWidth(), image->GetPixelFormat(), 0), target);
    }
    result = LoadResult::Loaded;
    return image;
}

}  // namespace vantu
