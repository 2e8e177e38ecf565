#include <vantu/CDIBSaver.h>

#include <vector>

#include "codec/DibHeader.h"
#include "codec/WithFile.h"

namespace vantu {
namespace {

std::vector<unsigned char> PaletteEntries(const ColorMap* palette) {
    const unsigned int count = palette == nullptr ? 0 : palette->GetSize();
    std::vector<unsigned char> entries;
    entries.reserve(std::size_t{count} * kDibEntrySize);
    for (unsigned int i = 0; i < count; ++i) {
        const Color& color = (*palette)[i];
        entries.insert(entries.end(), {color.GetBlue(), color.GetGreen(), color.GetRed(), 0});
    }
    return entries;
}

}  // namespace

bool CDIBSaver::Save(const IQorImage& image, const std::string& path) const {
    return WithFile(path, QOR_OPEN_CREATE, [&](int fd) { return Save(image, fd); });
}

bool CDIBSaver::Save(const IQorImage& image, const std::wstring& path) const {
    return WithFile(path, QOR_OPEN_CREATE, [&](int fd) { return Save(image, fd); });
}

bool CDIBSaver::Save(const IQorImage& image, int fd) const {
    const std::vector<unsigned char> palette = PaletteEntries(image.GetPalette());
    const auto paletteBytes = static_cast<unsigned int>(palette.size());

    DibInfoHeader header{};
    header.biSize = sizeof header;
    header.biWidth = image.GetWidth();
    header.biHeight = image.IsBottomUp() ? image.GetHeight() : 0U - image.GetHeight();
    header.biPlanes = 1;
    header.biBitCount = static_cast<std::uint16_t>(BitsPerPixel(image.GetPixelFormat()));
    header.biSizeImage = image.GetHeight() * RowStride(image.GetWidth(), image.GetPixelFormat(), image.GetAlignment());
    header.biClrUsed = paletteBytes / kDibEntrySize;
    header.biClrImportant = header.biClrUsed;

    const unsigned int rowOffset = kDibFileHeaderSize + header.biSize + paletteBytes;
    QorWriteIntelInt(fd, kDibType);
    QorWriteIntelLong(fd, rowOffset + header.biSizeImage);
    QorWriteIntelInt(fd, 0);
    QorWriteIntelInt(fd, 0);
    QorWriteIntelLong(fd, rowOffset);
    QorWriteIntelStruct(fd, &header, sizeof header, "P1,L3,I2,L6");
    if (paletteBytes != 0) QorWriteFile(palette.data(), paletteBytes, fd);
    if (image.GetPixelData() != nullptr) QorWriteFile(image.GetPixelData(), header.biSizeImage, fd);
    return true;
}

}  // namespace vantu
