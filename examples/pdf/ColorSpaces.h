#pragma once

#include <vantu/Color.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "Functions.h"
#include "Notes.h"
#include "Qpdf.h"

namespace pdf {

// A way to say colours by numbers. It never changes: threads may share one.
//
// Colours are as a screen shows them: calibrated and ICC spaces count as the device space of as many components, and
// CMYK is turned into RGB by the simple formula.
struct ColorSpace {
    using Pointer = std::shared_ptr<const ColorSpace>;

    // @param object a name, or an array that begins with one.
    // @param resources of the content that uses it; its entry ColorSpace gives names a meaning.
    // @return DeviceGray, with a note, for what cannot be read.
    [[nodiscard]] static Pointer Parse(QPDFObjectHandle object, QPDFObjectHandle resources, Notes& notes);

    // DeviceGray, DeviceRGB or DeviceCMYK for 1, 3 or 4 components, else null.
    [[nodiscard]] static Pointer Device(std::size_t components);

    // 0 to 32; 0 only for a pattern space.
    [[nodiscard]] std::size_t Components() const { return initial.size(); }

    // The colour of some components; those that are missing count as 0, those out of range as the nearest. It is
    // opaque, or clear in a space that paints nothing.
    [[nodiscard]] vantu::Color ToColor(std::span<const double> components) const;

    // What samples of a picture of so many bits are spread over if it does not say.
    [[nodiscard]] Interval DefaultDecode(std::size_t component, unsigned int bits) const;

    std::vector<double> initial;                                   // what a page starts from, a component each
    std::function<vantu::Color(std::span<const double>)> convert;  // as many components
    Intervals decode = {};                                         // none if all are from 0 to 1
    bool isIndexed = false;
    bool isPattern = false;   // whether colours are patterns
    Pointer underlying = {};  // that uncoloured patterns are painted in, or null
};

}  // namespace pdf
