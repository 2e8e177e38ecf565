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
class ColorSpace {
public:
    using Pointer = std::shared_ptr<const ColorSpace>;
    using Converter = std::function<vantu::Color(std::span<const double>)>;

    static constexpr std::size_t kMostComponents = 32;

    // @param object a name, or an array that begins with one.
    // @param resources of the content that uses it; its entry ColorSpace gives names a meaning.
    // @return DeviceGray, with a note, for what cannot be read.
    [[nodiscard]] static Pointer Parse(QPDFObjectHandle object, QPDFObjectHandle resources, Notes& notes);

    // DeviceGray, DeviceRGB or DeviceCMYK for 1, 3 or 4 components, else null.
    [[nodiscard]] static Pointer Device(std::size_t components);

    // @param initial what a page starts from, a component each. @param toColor is given as many.
    ColorSpace(std::vector<double> initial, Converter toColor) : initial_(std::move(initial)), toColor_(toColor) {}

    // 0 to kMostComponents; 0 only for a pattern space.
    [[nodiscard]] std::size_t Components() const { return initial_.size(); }
    [[nodiscard]] const std::vector<double>& Initial() const { return initial_; }

    // The colour of some components; those that are missing count as 0, those out of range as the nearest. It is
    // opaque, or clear in a space that paints nothing.
    [[nodiscard]] vantu::Color ToColor(std::span<const double> components) const;

    // What samples of a picture of so many bits are spread over if it does not say.
    [[nodiscard]] Interval DefaultDecode(std::size_t component, unsigned int bits) const;

    // Whether colours are patterns; then Underlying() tells the space that uncoloured ones are painted in, or null.
    [[nodiscard]] bool IsPattern() const { return isPattern_; }
    [[nodiscard]] Pointer Underlying() const { return underlying_; }

private:
    friend class ColorSpaceReader;

    std::vector<double> initial_;
    Converter toColor_;
    Intervals decode_;  // none if all are from 0 to 1
    bool isIndexed_ = false;
    bool isPattern_ = false;
    Pointer underlying_;
};

}  // namespace pdf
