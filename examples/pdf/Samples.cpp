#include "Samples.h"

#include <vantu/CJPEGLoader.h>
#include <vantu/QorIo.h>

#include <algorithm>

#include "Objects.h"

namespace pdf {

namespace {

// An entry that is one object or an array of them, as an array.
QPDFObjectHandle ToArray(QPDFObjectHandle object) {
    if (object.isArray()) return object;
    QPDFObjectHandle array = QPDFObjectHandle::newArray();
    if (!object.isNull()) array.appendItem(object);
    return array;
}

// The bytes of a stream with all filters undone but the last.
std::string BytesBeforeLastFilter(QPDFObjectHandle stream) {
    QPDFObjectHandle filters = ToArray(Entry(stream, "/Filter")).shallowCopy();
    QPDFObjectHandle parameters = ToArray(Entry(stream, "/DecodeParms")).shallowCopy();
    filters.eraseItem(filters.getArrayNItems() - 1);
    if (parameters.getArrayNItems() > filters.getArrayNItems()) parameters.eraseItem(filters.getArrayNItems());
    QPDFObjectHandle inner = QPDFObjectHandle::newStream(stream.getOwningQPDF(), stream.getRawStreamData());
    inner.getDict().replaceKey("/Filter", filters);
    inner.getDict().replaceKey("/DecodeParms", parameters);
    return ToBytes(inner);
}

// The library reads gray and RGB; other JPEG files are left to qpdf, which gives their components as they are.
bool ReadJpeg(QPDFObjectHandle stream, Samples& samples) {
    const std::string bytes = BytesBeforeLastFilter(stream);
    int file = 0;
    if (samples.components == 4 || vantu::QorOpenMemory(bytes.data(), bytes.size(), &file) == 0) {
        const auto raw = stream.getStreamData(qpdf_dl_all);
        samples.bytes.assign(reinterpret_cast<const char*>(raw->getBuffer()), raw->getSize());
        return samples.bytes.size() == samples.width * samples.height * samples.components;
    }
    const auto image = vantu::CJPEGLoader().Load(file, nullptr);
    vantu::QorCloseFile(file);
    if (!image) return false;
    samples.width = image->GetWidth();
    samples.height = image->GetHeight();
    const std::size_t stride = vantu::RowStride(image->GetWidth(), image->GetPixelFormat(), image->GetAlignment());
    for (std::size_t y = samples.height; y-- > 0;) {  // bottom-up
        const unsigned char* pixel = image->GetPixelData() + y * stride;
        for (std::size_t x = 0; x < samples.width; ++x, pixel += 3) {
            if (samples.components == 1)
                samples.bytes += static_cast<char>(pixel[1]);
            else
                for (const int channel : {2, 1, 0}) samples.bytes += static_cast<char>(pixel[channel]);
        }
    }
    return samples.components == 1 || samples.components == 3;
}

}  // namespace

void Samples::ReadRow(std::size_t y, std::vector<unsigned int>& row) const {
    row.resize(width * components);
    const auto byteAt = [&, start = y * RowBytes()](std::size_t i) {
        return start + i < bytes.size() ? static_cast<unsigned char>(bytes[start + i]) : 0U;
    };
    for (std::size_t i = 0; i < row.size(); ++i) {
        const std::size_t bit = i * bits;
        row[i] =
            bits == 16 ? byteAt(2 * i) << 8 | byteAt(2 * i + 1) : byteAt(bit / 8) >> (8 - bits - bit % 8) & Greatest();
    }
}

std::optional<Samples> ReadSamples(QPDFObjectHandle picture, std::size_t components, Notes& notes) {
    const int width = ToInteger(Entry(picture, "/Width"), 0);
    const int height = ToInteger(Entry(picture, "/Height"), 0);
    const bool isStencil = ToBool(Entry(picture, "/ImageMask"), false);
    const int bits = isStencil ? 1 : ToInteger(Entry(picture, "/BitsPerComponent"), 8);
    if (width < 1 || height < 1 ||
        static_cast<std::size_t>(width) > kMostPicturePixels / static_cast<std::size_t>(height)) {
        notes.Add("picture of no size or of more than 2^26 pixels: left out");
        return std::nullopt;
    }
    if (bits != 1 && bits != 2 && bits != 4 && bits != 8 && bits != 16) {
        notes.Add("picture with samples of a size that is none: left out");
        return std::nullopt;
    }
    Samples samples{static_cast<std::size_t>(width),
                    static_cast<std::size_t>(height),
                    components,
                    static_cast<unsigned int>(bits),
                    {}};
    QPDFObjectHandle filters = ToArray(Entry(picture, "/Filter"));
    const std::string last = ToName(Item(filters, filters.getArrayNItems() - 1));
    bool isRead = true;
    if (last == "/DCTDecode" || last == "/DCT") {
        samples.bits = 8;
        try {
            isRead = ReadJpeg(picture, samples);
        } catch (const std::exception&) {
            isRead = false;
        }
    } else {
        samples.bytes = ToBytes(picture);
        isRead = !samples.bytes.empty();
    }
    if (isRead) return samples;
    notes.Add("picture that cannot be read (" + (last.empty() ? "no filter" : last.substr(1)) + "): left out");
    return std::nullopt;
}

}  // namespace pdf
