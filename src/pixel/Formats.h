#pragma once

#include <vantu/IQorImage.h>

#include <array>
#include <cstddef>
#include <optional>
#include <utility>

// What the pixel formats are. All that goes by a format follows from its row here; how a pixel is read and written
// stands in PixelCodec.h.

namespace vantu {

/// What pixels hold.
enum class PixelColors {
    None,           ///< indices or bare samples
    Opaque,         ///< colours alone
    Premultiplied,  ///< an alpha, and colours multiplied by it
    Straight,       ///< an alpha, and colours as they are
};

struct FormatFacts {
    PixelFormat format{};
    PixelColors colors = PixelColors::None;
    bool inverted = false;  ///< the alpha byte is 255 - alpha
    bool lossy = false;     ///< a pixel that is read as a colour and written again may have other bytes
    bool source = false;    ///< images of it can be painted onto images
    bool loaded = false;    ///< files of as many bits a pixel become images of it
};

inline constexpr auto kFormatFacts = std::to_array<FormatFacts>({
    {.format = PixelFormat::Index1, .loaded = true},
    {.format = PixelFormat::Index4, .loaded = true},
    {.format = PixelFormat::Index8, .loaded = true},
    {.format = PixelFormat::Rgb565, .colors = PixelColors::Opaque, .lossy = true},
    {.format = PixelFormat::Rgb555, .colors = PixelColors::Opaque, .lossy = true, .source = true, .loaded = true},
    {.format = PixelFormat::Bgr24, .colors = PixelColors::Opaque, .source = true, .loaded = true},
    {.format = PixelFormat::Bgra32Premultiplied, .colors = PixelColors::Premultiplied, .source = true, .loaded = true},
    {.format = PixelFormat::Bgra32Inverted, .colors = PixelColors::Premultiplied, .inverted = true, .source = true},
    {.format = PixelFormat::Bgra32, .colors = PixelColors::Straight},
});

/// The row of a format; one without a format for any other value.
constexpr FormatFacts FactsOf(PixelFormat format) {
    const std::size_t row = static_cast<std::size_t>(format) - 1;
    return row < kFormatFacts.size() ? kFormatFacts[row] : FormatFacts{};
}

/// All formats.
inline constexpr auto kPixelFormats = [] {
    std::array<PixelFormat, kFormatFacts.size()> formats{};
    for (std::size_t i = 0; i < formats.size(); ++i) formats[i] = kFormatFacts[i].format;
    return formats;
}();
static_assert(
    [] {
        for (const PixelFormat format : kPixelFormats) {
            if (FactsOf(format).format != format) return false;
        }
        return BitsPerPixel(static_cast<PixelFormat>(kPixelFormats.size() + 1)) == 0;
    }(),
    "a row for each format, in the order of their values");

/// Whether pixels hold colours by themselves.
constexpr bool HasColors(PixelFormat format) {
    return FactsOf(format).colors != PixelColors::None;
}

/// Whether pixels hold an alpha, in their last byte.
constexpr bool HasAlpha(PixelFormat format) {
    return HasColors(format) && FactsOf(format).colors != PixelColors::Opaque;
}

/// Whether pixels lie in memory as the blending stages take them: blue, green, red, alpha.
constexpr bool IsPacked(PixelFormat format) {
    return HasAlpha(format) && !FactsOf(format).inverted;
}

/// The alpha byte that a format with alpha stores for an alpha, and back.
constexpr unsigned char AlphaByte(PixelFormat format, unsigned int alpha) {
    return static_cast<unsigned char>(FactsOf(format).inverted ? 255 - alpha : alpha);
}

/// The format that files of `bits` bits a pixel are loaded as.
constexpr std::optional<PixelFormat> LoadedFormat(unsigned int bits) {
    for (const FormatFacts& facts : kFormatFacts) {
        if (facts.loaded && BitsPerPixel(facts.format) == bits) return facts.format;
    }
    return std::nullopt;
}

/// Calls `function.template operator()<F>()` for the format that `format` names and returns its result; `result` as it
/// stands if it names none. The one place where a run-time format becomes a compile-time one.
template <typename Result, typename Function>
Result DispatchFormat(PixelFormat format, Result result, Function function) {
    const auto tryFormat = [&]<PixelFormat F>() {
        if (format == F) result = function.template operator()<F>();
        return format == F;
    };
    [&]<std::size_t... I>(std::index_sequence<I...>) {
        static_cast<void>((tryFormat.template operator()<kPixelFormats[I]>() || ...));
    }
    (std::make_index_sequence<kPixelFormats.size()>());
    return result;
}

}  // namespace vantu
