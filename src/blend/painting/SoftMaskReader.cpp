#include "blend/painting/SoftMaskReader.h"

#include <algorithm>
#include <cstring>

#include "blend/definition/CompositeSteps.h"
#include "pixel/PixelCodec.h"

namespace vantu {
namespace {

bool AllOpaque(const unsigned char* packed, std::size_t count) {
    constexpr std::size_t together = 32;
    std::uint32_t common = kPackedAlpha;
    for (std::size_t i = 0; i < count && common == kPackedAlpha;) {
        for (const std::size_t end = std::min(count, i + together); i < end; ++i) {
            std::uint32_t pixel = 0;
            std::memcpy(&pixel, packed + i * kPackedBytes, kPackedBytes);
            common &= pixel;
        }
    }
    return common == kPackedAlpha;
}

std::uint32_t PackedRgb(const unsigned char* bgr) {
    return bgr[0] | std::uint32_t{bgr[1]} << 8 | std::uint32_t{bgr[2]} << 16;
}

MaskKey KeyOf(const MaskPixels& mask, const IPDFTransferFunction& transfer) {
    // Every index of a format with more than 8 bits is 0.
    if (mask.palette != nullptr) return BitsPerPixel(mask.format) <= 8 ? MaskKey::Index : MaskKey::Nothing;
    if (!HasColors(mask.format)) return MaskKey::Nothing;
    if (transfer.GetSourceType() != IPDFTransferFunction::SourceType::Alpha) return MaskKey::Color;
    return HasAlpha(mask.format) ? MaskKey::Alpha : MaskKey::Nothing;
}

}  // namespace

SoftMaskReader::SoftMaskReader(const MaskPixels& mask, const IPDFTransferFunction& transfer, std::uint32_t alpha,
                               bool group)
    : transfer_(transfer),
      format_(mask.format),
      rows_(mask.rows),
      alpha_(alpha),
      group_(group),
      key_(KeyOf(mask, transfer)),
      opacities_(mask, key_, transfer, alpha, group) {}

void SoftMaskReader::Expect(unsigned int x, unsigned int y, std::size_t width, std::size_t height, bool mixes) {
    if (key_ != MaskKey::Color && width * height >= kManyPixels) opacities_.LearnAll();
    mixesByKeys_ = mixes && IsOfBytes() && LearnKeys({rows_.Row(y) + x, rows_.step, height}, width);
}

/// @return false if an opacity leaves 0 to 1.
bool SoftMaskReader::LearnKeys(const PixelRows<const unsigned char>& keys, std::size_t width) {
    for (std::size_t row = 0; row < keys.count && !opacities_.KnowsAll(); ++row) {
        if (!opacities_.Learn(keys.Row(row), width)) return false;
    }
    return true;
}

/// The keys of `count` pixels of a row from x on.
void SoftMaskReader::ReadKeysOfRow(const unsigned char* row, unsigned int x, std::size_t count,
                                   unsigned char* keys) const {
    const unsigned int bits = BitsPerPixel(format_);
    if (IsOfBytes()) {
        std::memcpy(keys, row + x, count);
        return;
    }
    const unsigned int inverted = AlphaByte(format_, 0);
    for (std::size_t i = 0; i < count; ++i) {
        unsigned int key = 0;
        if (key_ == MaskKey::Index) {
            const std::size_t position = bits * (x + i);
            key = static_cast<unsigned int>(row[position >> 3]) >> (8 - (position & 7) - bits) & ((1U << bits) - 1);
        } else if (key_ == MaskKey::Alpha) {
            key = row[(x + i) * kPackedBytes + 3] ^ inverted;
        }
        keys[i] = static_cast<unsigned char>(key);
    }
}

std::size_t SoftMaskReader::Mix(const MixedRows& rows, unsigned int x, unsigned int y) {
    if (mixesByKeys_) {
        const PixelRows<const unsigned char> keys{rows_.Row(y) + x, rows_.step, rows.target.count};
        return ActiveMaskStages().byKeys(rows, keys, opacities_.OfOpaque());
    }
    const bool byColors = key_ == MaskKey::Color && alpha_ == 255 && IsIdentity(transfer_);
    return byColors ? MixByColors(rows, x, y) : 0;
}

/// Mixes by the luminosities of a mask's colours, at full constant alpha.
std::size_t SoftMaskReader::MixByColors(const MixedRows& rows, unsigned int x, unsigned int y) {
    const SpanCodec& codec = ActiveSpanCodecs().Of(format_);
    const auto mix = [&](const MixedRows& some, const PixelRows<const unsigned char>& packed) {
        return ActiveMaskStages().byColors(some, packed, codec.colors == PackedColors::Premultiplied, Luminosities());
    };
    const auto at = [&](std::size_t i, std::size_t row, std::size_t height) {
        return PixelRows<const unsigned char>{rows_.Row(y + row) + (x + i) * codec.bytesPerPixel, rows_.step, height};
    };
    if (codec.inPlace) return mix(rows, at(0, 0, rows.target.count));
    const std::size_t together = std::max<std::size_t>(kMostPixels / rows.width, 1);
    for (std::size_t row = 0; row < rows.target.count; row += together) {
        const std::size_t height = std::min(together, rows.target.count - row);
        for (std::size_t i = 0; i < rows.width; i += kMostPixels) {
            const std::size_t width = std::min(kMostPixels, rows.width - i);
            codec.read(at(i, row, height), width, packed_.data());
            const std::size_t offset = i * kPackedBytes;
            const std::size_t mixed = mix({{rows.target.Row(row) + offset, rows.target.step, height},
                                           {rows.source.Row(row) + offset, rows.source.step, height},
                                           width,
                                           rows.mixesClear},
                                          {packed_.data(), static_cast<std::int64_t>(width * kPackedBytes), height});
            if (mixed < width * height) return row * rows.width + i + mixed;
        }
    }
    return rows.target.count * rows.width;
}

double SoftMaskReader::OpacityOfColor(const unsigned char* bgr) {
    const std::uint32_t rgb = PackedRgb(bgr);
    if (!remembered_) {
        remembered_ = std::make_unique<Remembered[]>(kRemembered);
        const double black = transfer_.ComputeAlpha(Color(ARGB_BLACK));
        for (std::size_t i = 0; i < kRemembered; ++i) remembered_[i] = {0, black};
    }
    Remembered& entry = remembered_[(rgb * 0x9E3779B1U) >> 22];
    if (entry.color != rgb) entry = {rgb, transfer_.ComputeAlpha(Color(ARGB_BLACK | rgb))};
    return entry.opacity;
}

/// The packed pixels of `height` rows of `width` pixels, whose first is (x, y): where they lie, if they lie packed in
/// one row.
const unsigned char* SoftMaskReader::ReadColors(unsigned int x, unsigned int y, std::size_t width, std::size_t height) {
    const SpanCodec& codec = ActiveSpanCodecs().Of(format_);
    const PixelRows<const unsigned char> rows{rows_.Row(y) + std::size_t{x} * codec.bytesPerPixel, rows_.step, height};
    if (codec.inPlace && height == 1) return rows.first;
    codec.read(rows, width, packed_.data());
    return packed_.data();
}

/// Makes the colours of packed pixels of the mask straight, in a buffer. @return whether they were not.
bool SoftMaskReader::Straighten(const unsigned char*& packed, std::size_t count) {
    if (ActiveSpanCodecs().Of(format_).colors == PackedColors::Straight || AllOpaque(packed, count)) return false;
    for (std::size_t i = 0; i < count * kPackedBytes; ++i) {
        const unsigned char alpha = packed[i | 3];
        packed_[i] = i % kPackedBytes == 3 ? alpha : Unpremultiply(packed[i], alpha);
    }
    packed = packed_.data();
    return true;
}

/// The keys of such rows: where they lie, if they are bytes of one row.
const unsigned char* SoftMaskReader::ReadKeys(unsigned int x, unsigned int y, std::size_t width, std::size_t height) {
    if (IsOfBytes() && height == 1) return rows_.Row(y) + x;
    for (std::size_t row = 0; row < height; ++row) {
        ReadKeysOfRow(rows_.Row(y + row), x, width, keys_.data() + row * width);
    }
    return keys_.data();
}

bool SoftMaskReader::Read(unsigned int x, unsigned int y, std::size_t width, std::size_t height,
                          const unsigned char* source, unsigned char* effective) {
    const std::size_t count = width * height;
    if (key_ != MaskKey::Color) return ReadByKeys(ReadKeys(x, y, width, height), source, count, effective);
    return ReadByColors(ReadColors(x, y, width, height), source, count, effective);
}

bool SoftMaskReader::ReadByColors(const unsigned char* packed, const unsigned char* source, std::size_t count,
                                  unsigned char* effective) {
    if (IsIdentity(transfer_) && group_) {
        ReadLuminosities(packed, count, bytes_.data());
    } else if (IsIdentity(transfer_) && alpha_ == 255 && AllOpaque(source, count)) {
        ReadLuminosities(packed, count, effective);
        return true;
    } else {
        Straighten(packed, count);
        for (std::size_t i = 0; i < count; ++i) {
            const double opacity = OpacityOfColor(packed + i * kPackedBytes);
            if (!InRange(opacity)) return false;
            opacity_[i] = opacity;
            bytes_[i] = static_cast<unsigned char>(GroupMaskByte(opacity));
        }
    }
    Scale(source, count, effective);
    return true;
}

/// How luminosities become bytes: what groups cut them to, and the effective alphas of an opaque source outside.
LuminosityBytes SoftMaskReader::Luminosities() const {
    const IdentityOpacities& identity = IdentityOf(transfer_.GetSourceType());
    return {group_ ? identity.bytes : identity.ofOpaque, group_};
}

/// The luminosities of packed pixels of the mask.
void SoftMaskReader::ReadLuminosities(const unsigned char* packed, std::size_t count, unsigned char* bytes) {
    const auto luminosities = ActiveMaskStages().luminosities;
    if (luminosities(packed, count, Luminosities(), bytes)) return;
    if (Straighten(packed, count)) luminosities(packed, count, Luminosities(), bytes);
}

bool SoftMaskReader::ReadByKeys(const unsigned char* keys, const unsigned char* source, std::size_t count,
                                unsigned char* effective) {
    if (!opacities_.Learn(keys, count)) return false;
    if (AllOpaque(source, count)) {
        ActiveMaskStages().lookUp(keys, count, opacities_.OfOpaque(), effective);
    } else if (const KeyScaling* const scaling = opacities_.Scaling()) {
        ActiveMaskStages().scale({keys, source, effective, count}, *scaling);
    } else {
        if (group_) {
            ActiveMaskStages().lookUp(keys, count, opacities_.Bytes(), bytes_.data());
        } else {
            for (std::size_t i = 0; i < count; ++i) opacity_[i] = opacities_.Opacities()[keys[i]];
        }
        Scale(source, count, effective);
    }
    return true;
}

/// The effective alphas of pixels by their opacities.
void SoftMaskReader::Scale(const unsigned char* source, std::size_t count, unsigned char* effective) const {
    const MaskSpan span{opacity_.data(), bytes_.data(), source, effective, count, alpha_};
    (group_ ? ActiveStages().groupMask : ActiveStages().plainMask)(span);
}

}  // namespace vantu
