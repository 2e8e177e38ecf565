#include "blend/painting/SoftMaskReader.h"

#include <vantu/CExponentialPDFTransferFunction.h>
#include <vantu/CIdentityPDFTransferFunction.h>
#include <vantu/CPostscriptPDFTransferFunction.h>

#include <cstring>
#include <typeinfo>

#include "blend/definition/CompositeSteps.h"
#include "pixel/PixelCodec.h"

namespace vantu {
namespace {

/// Whether the truncated alphas of an opacity stay within 0 to 255. There is room for the rounding of a luminosity:
/// white may come out a little above 1, and one less that a little below 0.
bool InRange(double opacity) {
    return opacity >= -0.001 && opacity <= 1.001;
}

bool AllOpaque(const unsigned char* packed, std::size_t count) {
    std::uint32_t common = kPackedAlpha;
    for (std::size_t i = 0; i < count; ++i) {
        std::uint32_t pixel = 0;
        std::memcpy(&pixel, packed + i * kPackedBytes, kPackedBytes);
        common &= pixel;
    }
    return common == kPackedAlpha;
}

/// Entries by keys, several to a turn: the loop itself would take as long as the look-up.
template <typename T>
void LookUpKeys(const std::array<T, 256>& entries, const unsigned char* keys, std::size_t count, T* out) {
    std::size_t i = 0;
    for (; i + 4 <= count; i += 4) {
        const T a = entries[keys[i]], b = entries[keys[i + 1]], c = entries[keys[i + 2]], d = entries[keys[i + 3]];
        out[i] = a;
        out[i + 1] = b;
        out[i + 2] = c;
        out[i + 3] = d;
    }
    for (; i < count; ++i) out[i] = entries[keys[i]];
}

}  // namespace

bool IsOwnTransferFunction(const IPDFTransferFunction& transfer) {
    using SourceType = IPDFTransferFunction::SourceType;
    const SourceType source = transfer.GetSourceType();
    if (source != SourceType::Alpha && source != SourceType::Luminosity) return false;
    const std::type_info& type = typeid(transfer);
    return type == typeid(CIdentityPDFTransferFunction) || type == typeid(CExponentialPDFTransferFunction) ||
           type == typeid(CPostscriptPDFTransferFunction);
}

SoftMaskReader::SoftMaskReader(const IQorImage& mask, const IPDFTransferFunction& transfer, std::uint32_t alpha,
                               bool group, std::size_t pixels)
    : transfer_(transfer),
      palette_(mask.GetPalette()),
      format_(mask.GetPixelFormat()),
      rows_(RowsFromTop(mask, format_)),
      alpha_(alpha),
      group_(group) {
    known_.fill(Known::No);
    if (palette_ != nullptr) {
        if (BitsPerPixel(format_) <= 8) key_ = Key::Index;  // every index of a wider format is 0
    } else if (HasColors(format_)) {
        if (transfer.GetSourceType() != IPDFTransferFunction::SourceType::Alpha) {
            key_ = Key::Color;
            remembered_ = std::make_unique<Remembered[]>(kRemembered);
            const double black = transfer_.ComputeAlpha(Color(ARGB_BLACK));
            for (std::size_t i = 0; i < kRemembered; ++i) remembered_[i] = {0, black};
        } else if (HasAlpha(format_)) {
            key_ = Key::Alpha;
        }
    }
    if (key_ != Key::Color && pixels >= kManyPixels) LearnAllKeys();
}

/// A colour whose opacity all pixels of a key have.
Color SoftMaskReader::ColorOfKey(unsigned int key) const {
    Color color(ARGB_BLACK);
    if (palette_ != nullptr) {
        color = (*palette_)[key];
    } else if (key_ == Key::Alpha) {
        color.SetAlpha(static_cast<unsigned char>(key));
    }
    return color;
}

/// The keys of `count` pixels from x on: where they lie, or in the reader's buffer.
const unsigned char* SoftMaskReader::ReadKeys(const unsigned char* row, unsigned int x, std::size_t count) {
    const unsigned int bits = BitsPerPixel(format_);
    if (key_ == Key::Index && bits == 8) return row + x;
    const unsigned int inverted = AlphaByte(format_, 0);
    for (std::size_t i = 0; i < count; ++i) {
        unsigned int key = 0;
        if (key_ == Key::Index) {
            const std::size_t position = bits * (x + i);
            key = static_cast<unsigned int>(row[position >> 3]) >> (8 - (position & 7) - bits) & ((1U << bits) - 1);
        } else if (key_ == Key::Alpha) {
            key = row[(x + i) * kPackedBytes + 3] ^ inverted;
        }
        keys_[i] = static_cast<unsigned char>(key);
    }
    return keys_.data();
}

void SoftMaskReader::LearnKey(unsigned int key) {
    const double opacity = transfer_.ComputeAlpha(ColorOfKey(key));
    known_[key] = InRange(opacity) ? Known::InRange : Known::OutOfRange;
    if (known_[key] == Known::OutOfRange) return;
    opacityOfKey_[key] = opacity;
    byteOfKey_[key] = static_cast<unsigned char>(GroupMaskByte(opacity));
    effectiveOfKey_[key] = static_cast<unsigned char>(group_ ? GroupMaskOpacity(alpha_, 255, byteOfKey_[key])
                                                             : PlainMaskOpacity(alpha_, 255, opacity));
}

void SoftMaskReader::LearnAllKeys() {
    const unsigned int count = key_ == Key::Index ? 1U << BitsPerPixel(format_) : key_ == Key::Alpha ? 256 : 1;
    if (palette_ != nullptr && palette_->GetSize() < count) return;
    allInRange_ = true;
    for (unsigned int key = 0; key < count; ++key) {
        LearnKey(key);
        allInRange_ = allInRange_ && known_[key] == Known::InRange;
    }
}

bool SoftMaskReader::LearnKeys(const unsigned char* keys, std::size_t count) {
    if (allInRange_) return true;
    for (std::size_t i = 0; i < count; ++i) {
        if (known_[keys[i]] == Known::InRange) continue;
        if (known_[keys[i]] == Known::No) LearnKey(keys[i]);
        if (known_[keys[i]] == Known::OutOfRange) return false;
    }
    return true;
}

double SoftMaskReader::OpacityOfColor(const unsigned char* bgr) {
    const std::uint32_t rgb = bgr[0] | std::uint32_t{bgr[1]} << 8 | std::uint32_t{bgr[2]} << 16;
    Remembered& entry = remembered_[(rgb * 0x9E3779B1U) >> 22];
    if (entry.color != rgb) entry = {rgb, transfer_.ComputeAlpha(Color(ARGB_BLACK | rgb))};
    return entry.opacity;
}

bool SoftMaskReader::ReadOpacitiesOfColors(const unsigned char* row, unsigned int x, std::size_t count) {
    const SpanCodec& codec = ActiveSpanCodecs().Of(format_);
    codec.read({row + std::size_t{x} * codec.bytesPerPixel, 0, 1}, count, packed_.data());
    for (std::size_t i = 0; i < count; ++i) {
        unsigned char* const pixel = packed_.data() + i * kPackedBytes;
        // Only the colour counts here: a premultiplied one is made straight.
        if (codec.colors == PackedColors::Premultiplied && pixel[3] != 255) {
            for (int c = 0; c < 3; ++c) pixel[c] = Unpremultiply(pixel[c], pixel[3]);
        }
        const double opacity = OpacityOfColor(pixel);
        if (!InRange(opacity)) return false;
        opacities_[i] = opacity;
        bytes_[i] = static_cast<unsigned char>(GroupMaskByte(opacity));
    }
    return true;
}

bool SoftMaskReader::Read(unsigned int x, unsigned int y, std::size_t width, std::size_t height,
                          const unsigned char* source, unsigned char* effective) {
    for (std::size_t row = 0; row < height; ++row) {
        const std::size_t first = row * width;
        if (!ReadRow(rows_.Row(y + row), x, width, source + first * kPackedBytes, effective + first)) return false;
    }
    return true;
}

bool SoftMaskReader::ReadRow(const unsigned char* row, unsigned int x, std::size_t count, const unsigned char* source,
                             unsigned char* effective) {
    if (key_ == Key::Color) {
        if (!ReadOpacitiesOfColors(row, x, count)) return false;
    } else {
        const unsigned char* const keys = ReadKeys(row, x, count);
        if (!LearnKeys(keys, count)) return false;
        if (AllOpaque(source, count)) {
            LookUpKeys(effectiveOfKey_, keys, count, effective);
            return true;
        }
        if (group_) {
            LookUpKeys(byteOfKey_, keys, count, bytes_.data());
        } else {
            LookUpKeys(opacityOfKey_, keys, count, opacities_.data());
        }
    }
    const MaskSpan span{opacities_.data(), bytes_.data(), source, effective, count, alpha_};
    (group_ ? ActiveStages().groupMask : ActiveStages().plainMask)(span);
    return true;
}

}  // namespace vantu
