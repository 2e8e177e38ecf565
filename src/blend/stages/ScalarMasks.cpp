#include "blend/stages/MaskStages.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "blend/stages/ExactLuminosity.h"
#include "pixel/Spans.h"

namespace vantu {
namespace {

/// (s*a + t*(255-a)) / 255 of each byte.
void MixPixel(unsigned char* target, const unsigned char* source, std::uint32_t alpha) {
    for (std::size_t c = 0; c < kPackedBytes; ++c) {
        target[c] = static_cast<unsigned char>((source[c] * alpha + target[c] * (255 - alpha)) / 255);
    }
}

bool IsClear(const unsigned char* pixel) {
    return std::count(pixel, pixel + kPackedBytes, 0) == kPackedBytes;
}

/// Mixes rows by `alphaAt(row, x)` as long as `isKnown(row, x)`. @param fromClear whether the source may be clear.
template <typename IsKnown, typename AlphaAt>
std::size_t MixRows(const MixedRows& rows, bool fromClear, IsKnown isKnown, AlphaAt alphaAt) {
    for (std::size_t row = 0; row < rows.target.count; ++row) {
        for (std::size_t x = 0; x < rows.width; ++x) {
            unsigned char* const target = rows.target.Row(row) + x * kPackedBytes;
            const unsigned char* const source = rows.source.Row(row) + x * kPackedBytes;
            const bool leaves = fromClear && rows.mixesClear && IsClear(source);
            const bool isOnOpaque = target[3] == 255 || (rows.mixesClear && IsClear(target));
            const bool canMix = (leaves || source[3] == 255) && isOnOpaque && isKnown(row, x);
            if (!canMix) return row * rows.width + x;
            if (!leaves) MixPixel(target, source, alphaAt(row, x));
        }
    }
    return rows.target.count * rows.width;
}

bool Always(std::size_t /*row*/, std::size_t /*x*/) {
    return true;
}

std::size_t MixByKeys(const MixedRows& rows, const PixelRows<const unsigned char>& keys, const ByteTable& alphaOfKey) {
    return MixRows(rows, true, Always,
                   [&](std::size_t row, std::size_t x) -> std::uint32_t { return alphaOfKey[keys.Row(row)[x]]; });
}

std::size_t MixByBits(const MixedRows& rows, const PixelRows<const unsigned char>& bits, std::size_t first,
                      std::uint32_t alpha) {
    return MixRows(rows, false, Always, [&](std::size_t row, std::size_t x) {
        const bool guarded = (bits.Row(row)[(first + x) / 8] & 0x80U >> (first + x) % 8) != 0;
        return guarded ? 0 : alpha;
    });
}

/// 255 * luminosity is (30*R + 59*G + 11*B) / 100, but for roundings.
unsigned char LuminosityOf(const unsigned char* bgr, const LuminosityBytes& of) {
    const std::uint32_t n = 11U * bgr[0] + 59U * bgr[1] + 30U * bgr[2];
    if (bgr[0] == bgr[1] && bgr[1] == bgr[2]) return of.ofGrey[bgr[0]];
    return n % 100 == 0 ? ExactLuminosity(bgr, of.inGroup) : static_cast<unsigned char>(n / 100);
}

std::size_t MixByColors(const MixedRows& rows, const PixelRows<const unsigned char>& colors, bool needsOpaque,
                        const LuminosityBytes& of) {
    const auto pixel = [&](std::size_t row, std::size_t x) { return colors.Row(row) + x * kPackedBytes; };
    return MixRows(
        rows, true, [&](std::size_t row, std::size_t x) { return !needsOpaque || pixel(row, x)[3] == 255; },
        [&](std::size_t row, std::size_t x) -> std::uint32_t { return LuminosityOf(pixel(row, x), of); });
}

bool Luminosities(const unsigned char* packed, std::size_t count, const LuminosityBytes& of, unsigned char* bytes) {
    bool opaque = true;
    for (std::size_t i = 0; i < count; ++i) {
        bytes[i] = LuminosityOf(packed + i * kPackedBytes, of);
        opaque = opaque && packed[i * kPackedBytes + 3] == 255;
    }
    return opaque;
}

/// Grey i is 0xFF000000 + 0x010101 * i.
bool AreGreys(const Color* colors) {
    static constexpr std::array<Color, 256> greys = [] {
        std::array<Color, 256> made{};
        for (unsigned int i = 0; i < made.size(); ++i) made[i] = Color(ARGB_BLACK | i * 0x010101);
        return made;
    }();
    return std::memcmp(colors, greys.data(), sizeof greys) == 0;
}

void LookUp(const unsigned char* keys, std::size_t count, const ByteTable& table, unsigned char* bytes) {
    for (std::size_t i = 0; i < count; ++i) bytes[i] = table[keys[i]];
}

void ScaleAlphas(const KeyedSpan& span, const KeyScaling& scaling) {
    for (std::size_t i = 0; i < span.count; ++i) {
        span.effective[i] =
            static_cast<unsigned char>(scaling.Exactly(span.source[i * kPackedBytes + 3], span.keys[i]));
    }
}

constexpr MaskStages kScalarMaskStages{MixByKeys, MixByBits, MixByColors, Luminosities, AreGreys, LookUp, ScaleAlphas};

}  // namespace

const MaskStages& ScalarMaskStages() {
    return kScalarMaskStages;
}

}  // namespace vantu
