#include "Samples.h"

#include <vantu/CJPEGLoader.h>
#include <vantu/QorIo.h>

#include <algorithm>
#include <set>

#include "Objects.h"

namespace pdf {

namespace {

std::string ToString(const std::shared_ptr<Buffer>& buffer) {
    return {reinterpret_cast<const char*>(buffer->getBuffer()), buffer->getSize()};
}

// The library reads gray and RGB; JPEG files of other components or inside other filters are left to qpdf.
bool ReadJpeg(QPDFObjectHandle stream, bool isAlone, Samples& samples) {
    if (!isAlone || (samples.components != 1 && samples.components != 3)) {
        samples.bytes = ToString(stream.getStreamData(qpdf_dl_all));
        return samples.bytes.size() == samples.width * samples.height * samples.components;
    }
    const std::string bytes = ToString(stream.getRawStreamData());
    int file = 0;
    if (vantu::QorOpenMemory(bytes.data(), bytes.size(), &file) == 0) return false;
    const auto image = vantu::CJPEGLoader().Load(file, nullptr);
    vantu::QorCloseFile(file);
    if (!image) return false;
    samples.width = image->GetWidth();
    samples.height = image->GetHeight();
    const std::size_t stride = vantu::RowStride(image->GetWidth(), image->GetPixelFormat(), image->GetAlignment());
    for (std::size_t y = samples.height; y-- > 0;) {  // bottom-up
        const unsigned char* pixel = image->GetPixelData() + y * stride;
        for (std::size_t x = 0; x < samples.width; ++x, pixel += 3)
            for (std::size_t i = 0; i < samples.components; ++i) samples.bytes += static_cast<char>(pixel[2 - i]);
    }
    return true;
}

}  // namespace

unsigned int BitsAt(const std::string& bytes, std::size_t bit, unsigned int count) {
    unsigned long long value = 0;
    std::size_t byte = bit / 8;
    for (; byte * 8 < bit + count; ++byte)
        value = value << 8 | (byte < bytes.size() ? static_cast<unsigned char>(bytes[byte]) : 0U);
    return static_cast<unsigned int>(value >> (byte * 8 - bit - count) & ((1ULL << count) - 1));
}

unsigned int Samples::At(std::size_t x, std::size_t y, std::size_t component) const {
    const std::size_t rowBits = (width * components * bits + 7) / 8 * 8;
    return BitsAt(bytes, y * rowBits + (x * components + component) * bits, bits);
}

std::optional<Samples> ReadSamples(QPDFObjectHandle picture, std::size_t components, Notes& notes) {
    const auto width = static_cast<std::size_t>(std::max(ToInteger(Entry(picture, "/Width"), 0), 0));
    const auto height = static_cast<std::size_t>(std::max(ToInteger(Entry(picture, "/Height"), 0), 0));
    std::vector<QPDFObjectHandle> filters = Items(Entry(picture, "/Filter"));
    if (filters.empty()) filters = {Entry(picture, "/Filter")};
    const std::string last = ToName(filters.back());
    const bool isJpeg = last == "/DCTDecode" || last == "/DCT";
    const bool isStencil = ToBool(Entry(picture, "/ImageMask"), false);
    const int bits = isJpeg ? 8 : isStencil ? 1 : ToInteger(Entry(picture, "/BitsPerComponent"), 8);
    const bool hasDepth = std::set{1, 2, 4, 8, 16}.contains(bits);
    if (width == 0 || height == 0 || width > kMostPicturePixels / height || !hasDepth) {
        notes.Add("picture of no size or depth, or of more than 2^26 pixels: left out");
        return std::nullopt;
    }
    Samples samples{width, height, components, static_cast<unsigned int>(bits), {}};
    try {
        if (!isJpeg) samples.bytes = ToBytes(picture);
        if (isJpeg ? ReadJpeg(picture, filters.size() == 1, samples) : !samples.bytes.empty()) return samples;
    } catch (const std::exception&) {  // damaged
    }
    notes.Add("picture that cannot be read (" + (last.empty() ? "no filter" : last.substr(1)) + "): left out");
    return std::nullopt;
}

}  // namespace pdf
