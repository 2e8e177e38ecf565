#include "blend/kernels/SoftMaskReader.h"

#include <vantu/CExponentialPDFTransferFunction.h>
#include <vantu/CIdentityPDFTransferFunction.h>
#include <vantu/CPostscriptPDFTransferFunction.h>

#include <typeinfo>

#include "blend/kernels/CompositeSteps.h"
#include "pixel/FormatDispatch.h"
#include "pixel/Spans.h"

namespace vantu {
namespace {

// Between these the truncated alphas stay within 0 to 255. They leave room for the rounding of a luminosity: white may
// come out a little above 1, and one less that a little below 0.
constexpr double kLeastOpacity = -0.001;
constexpr double kGreatestOpacity = 1.001;

}  // namespace

bool IsOwnTransferFunction(const IPDFTransferFunction& transfer) {
    const std::type_info& type = typeid(transfer);
    return type == typeid(CIdentityPDFTransferFunction) || type == typeid(CExponentialPDFTransferFunction) ||
           type == typeid(CPostscriptPDFTransferFunction);
}

SoftMaskReader::SoftMaskReader(const IQorImage& mask, const IPDFTransferFunction& transfer, unsigned int alpha,
                               bool group)
    : transfer_(transfer),
      palette_(mask.GetPalette()),
      format_(mask.GetPixelFormat()),
      rows_(mask.GetPixelData(), mask.GetWidth(), mask.GetHeight(), format_, mask.GetAlignment(), mask.IsBottomUp()),
      alpha_(alpha),
      group_(group) {
    if (palette_ != nullptr) {
        key_ = BitsPerPixel(format_) > 8 ? Key::Nothing : Key::Index;  // indices of wide formats are all 0
    } else if (!HasColors(format_)) {
        key_ = Key::Nothing;
    } else if (transfer.GetSourceType() == IPDFTransferFunction::SourceType::Alpha) {
        key_ = HasAlpha(format_) ? Key::Alpha : Key::Nothing;
    } else {
        key_ = Key::Color;
    }
}

/// A colour that has the opacity of a key.
Color SoftMaskReader::KeyColor(unsigned int key) const {
    Color color(ARGB_BLACK);
    if (palette_ != nullptr) {
        color = (*palette_)[key];
    } else if (key_ == Key::Alpha) {
        color.SetAlpha(static_cast<unsigned char>(key));
    }
    return color;
}

Color SoftMaskReader::PixelColor(const unsigned char* row, unsigned int x) const {
    Color color(ARGB_BLACK);
    DispatchFormat(format_, 0, [&]<PixelFormat F>() {
        ReadPixel<F>(row + std::size_t{x} * (BitsPerPixel(F) / 8), color);
        return 0;
    });
    return color;
}

unsigned int SoftMaskReader::KeyOf(const unsigned char* row, unsigned int x) const {
    switch (key_) {
        case Key::Index: {
            const unsigned int bits = BitsPerPixel(format_);
            const unsigned int position = bits * x;
            return static_cast<unsigned int>(row[position >> 3]) >> (8 - (position & 7) - bits) & ((1U << bits) - 1);
        }
        case Key::Alpha: {
            const unsigned int alpha = row[std::size_t{x} * 4 + 3];
            return format_ == PixelFormat::Bgra32Inverted ? 255 - alpha : alpha;
        }
        default: return 0;
    }
}

double SoftMaskReader::Opacity(unsigned int key) {
    if (!known_[key]) {
        opacityOfKey_[key] = transfer_.ComputeAlpha(KeyColor(key));
        known_[key] = true;
    }
    return opacityOfKey_[key];
}

unsigned char SoftMaskReader::Effective(double t, std::uint32_t sourceAlpha) const {
    const std::uint32_t as =
        group_ ? GroupMaskOpacity(alpha_, sourceAlpha, GroupMaskByte(t)) : PlainMaskOpacity(alpha_, sourceAlpha, t);
    return static_cast<unsigned char>(as);
}

bool SoftMaskReader::Read(unsigned int x, unsigned int y, std::size_t count, const unsigned char* source,
                          unsigned char* opacity) {
    const unsigned char* const row = rows_.Row(y);
    for (std::size_t i = 0; i < count; ++i) {
        const unsigned int at = x + static_cast<unsigned int>(i);
        const double t = key_ == Key::Color ? transfer_.ComputeAlpha(PixelColor(row, at)) : Opacity(KeyOf(row, at));
        if (!(t >= kLeastOpacity && t <= kGreatestOpacity)) return false;
        opacity[i] = Effective(t, source[i * kPackedBytes + 3]);
    }
    return true;
}

}  // namespace vantu
