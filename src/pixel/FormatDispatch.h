#pragma once

#include <vantu/IQorImage.h>

#include <array>

namespace vantu {

inline constexpr std::array kPixelFormats = {
    PixelFormat::Index1,
    PixelFormat::Index4,
    PixelFormat::Index8,
    PixelFormat::Rgb565,
    PixelFormat::Rgb555,
    PixelFormat::Bgr24,
    PixelFormat::Bgra32Premultiplied,
    PixelFormat::Bgra32Inverted,
    PixelFormat::Bgra32,
};
static_assert(kPixelFormats.size() == 9);

/// Calls `function.template operator()<F>()` for the format that `format` names and returns its result; `otherwise` if
/// it names none. The one place where a run-time format becomes a compile-time one.
template <typename Result, typename Function>
Result DispatchFormat(PixelFormat format, Result otherwise, Function function) {
    switch (format) {
        case PixelFormat::Index1: return function.template operator()<PixelFormat::Index1>();
        case PixelFormat::Index4: return function.template operator()<PixelFormat::Index4>();
        case PixelFormat::Index8: return function.template operator()<PixelFormat::Index8>();
        case PixelFormat::Rgb565: return function.template operator()<PixelFormat::Rgb565>();
        case PixelFormat::Rgb555: return function.template operator()<PixelFormat::Rgb555>();
        case PixelFormat::Bgr24: return function.template operator()<PixelFormat::Bgr24>();
        case PixelFormat::Bgra32Premultiplied: return function.template operator()<PixelFormat::Bgra32Premultiplied>();
        case PixelFormat::Bgra32Inverted: return function.template operator()<PixelFormat::Bgra32Inverted>();
        case PixelFormat::Bgra32: return function.template operator()<PixelFormat::Bgra32>();
    }
    return otherwise;
}

}  // namespace vantu
