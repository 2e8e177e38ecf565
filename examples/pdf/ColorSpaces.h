#pragma once

#include <vantu/Color.h>

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

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

    static constexpr std::size_t kMostComponents = 32;

    // The values that samples of a picture are spread over.
    struct Decode {
        double low = 0;
        double high = 1;
    };

    // @param object a name, or an array that begins with one.
    // @param resources of the content that uses it; its entry ColorSpace gives names a meaning.
    // @return DeviceGray, with a note, for what cannot be read.
    [[nodiscard]] static Pointer Parse(QPDFObjectHandle object, QPDFObjectHandle resources, Notes& notes);

    // DeviceGray, DeviceRGB or DeviceCMYK for 1, 3 or 4 components, else null.
    [[nodiscard]] static Pointer Device(std::size_t components);

    ColorSpace(const ColorSpace&) = delete;
    ColorSpace& operator=(const ColorSpace&) = delete;
    virtual ~ColorSpace() = default;

    // 0 to kMostComponents; 0 only for a pattern space.
    [[nodiscard]] std::size_t Components() const { return components_; }

    // The opaque colour of some components; those that are missing count as 0, those out of range as the nearest.
    [[nodiscard]] virtual vantu::Color ToColor(std::span<const double> components) const = 0;

    // What a page starts from in this space.
    [[nodiscard]] virtual std::vector<double> Initial() const { return std::vector<double>(components_, 0.0); }

    // What samples of so many bits mean if a picture does not say.
    [[nodiscard]] virtual Decode DefaultDecode(std::size_t component, unsigned int bits) const;

    // Whether colours are patterns; then Underlying() tells the space that uncoloured ones are painted in, or null.
    [[nodiscard]] virtual bool IsPattern() const { return false; }
    [[nodiscard]] virtual Pointer Underlying() const { return nullptr; }

protected:
    explicit ColorSpace(std::size_t components) : components_(components) {}

private:
    std::size_t components_;
};

}  // namespace pdf
