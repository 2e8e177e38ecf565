#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <vector>

#include "ColorSpaces.h"
#include "Functions.h"
#include "Images.h"
#include "Objects.h"
#include "Outlines.h"

namespace pdf {

namespace {

constexpr unsigned int kSteps = 4096;  // colours along a shading
constexpr vantu::Color kClear{0U};
constexpr unsigned char kHalf = 128;  // of a pixel's coverage

// What shadings of all types have.
struct Shading {
    QPDFObjectHandle dictionary;
    ColorSpace::Pointer space;
    Function function;

    [[nodiscard]] std::vector<double> Numbers(const char* key, std::vector<double> fallback) const {
        std::vector<double> numbers = ToNumbers(Entry(dictionary, key));
        return numbers.size() == fallback.size() ? numbers : fallback;
    }
    [[nodiscard]] vantu::Color ColorOf(std::span<const double> numbers) const {
        return space->ToColor(function(numbers));
    }
};

// The colour of a shading at a point of its space; clear where it has none.
using ColorAt = std::function<vantu::Color(const PointD&)>;

// Type 1: the colour is a function of the place.
ColorAt FunctionBased(const Shading& shading) {
    const Matrix matrix = ToMatrix(Entry(shading.dictionary, "/Matrix"));
    if (!matrix.IsInvertible()) return nullptr;
    return [shading, toDomain = matrix.Inverse(), d = shading.Numbers("/Domain", {0, 1, 0, 1})](const PointD& at) {
        const PointD p = toDomain.Map(at);
        const bool isInside = p.x >= d[0] && p.x <= d[1] && p.y >= d[2] && p.y <= d[3];
        return isInside ? shading.ColorOf(std::array{p.x, p.y}) : kClear;
    };
}

// The colours along an axis that goes from 0 to 1; each is computed once.
std::function<vantu::Color(double)> ColorsOf(const Shading& shading) {
    const std::vector<double> domain = shading.Numbers("/Domain", {0, 1});
    QPDFObjectHandle extend = Entry(shading.dictionary, "/Extend");
    const bool extendsStart = ToBool(Item(extend, 0), false);
    const bool extendsEnd = ToBool(Item(extend, 1), false);
    return [=, colors = std::vector<std::optional<vantu::Color>>(kSteps + 1)](double s) mutable {
        if (!std::isfinite(s) || (s < 0 && !extendsStart) || (s > 1 && !extendsEnd)) return kClear;
        const double step = std::round(std::clamp(s, 0.0, 1.0) * kSteps);
        std::optional<vantu::Color>& color = colors[static_cast<std::size_t>(step)];
        if (!color) color = shading.ColorOf(std::array{domain[0] + step / kSteps * (domain[1] - domain[0])});
        return *color;
    };
}

// Type 2: along a line from p0 to p1, s = (p - p0) (p1 - p0) / |p1 - p0|^2
ColorAt Axial(const Shading& shading) {
    const std::vector<double> c = shading.Numbers("/Coords", {0, 0, 0, 0});
    return [colorOf = ColorsOf(shading), x0 = c[0], y0 = c[1], dx = c[2] - c[0], dy = c[3] - c[1]](const PointD& p) {
        return colorOf(((p.x - x0) * dx + (p.y - y0) * dy) / (dx * dx + dy * dy));
    };
}

// Type 3: circles of middle c0 + s (c1 - c0) and radius r0 + s (r1 - r0). Through a point p, seen from c0, go those
// with |p - s (c1 - c0)| = r0 + s (r1 - r0), which is A s^2 - 2 B s + C = 0. The largest s whose radius is not negative
// is on top.
ColorAt Radial(const Shading& shading) {
    const std::vector<double> n = shading.Numbers("/Coords", {0, 0, 0, 0, 0, 0});
    return [colorOf = ColorsOf(shading), c0 = PointD{n[0], n[1]}, r0 = n[2], dx = n[3] - n[0], dy = n[4] - n[1],
            dr = n[5] - n[2]](const PointD& at) {
        const PointD p{at.x - c0.x, at.y - c0.y};
        const double a = dx * dx + dy * dy - dr * dr;
        const double b = p.x * dx + p.y * dy + r0 * dr;
        const double c = p.x * p.x + p.y * p.y - r0 * r0;
        const double root = std::sqrt(b * b - a * c);
        const bool isLinear = std::abs(a) <= 1e-12 * (dx * dx + dy * dy + dr * dr);
        const auto [least, most] =
            isLinear ? std::pair(c / (2 * b), c / (2 * b)) : std::minmax({(b - root) / a, (b + root) / a});
        const vantu::Color color = r0 + most * dr >= 0 ? colorOf(most) : kClear;
        return color.GetAlpha() == 0 && r0 + least * dr >= 0 ? colorOf(least) : color;
    };
}

}  // namespace

PlacedImage PaintShading(QPDFObjectHandle dictionary, QPDFObjectHandle resources, const Matrix& toDevice,
                         const Pixels& clip, bool withBackground, Notes& notes) {
    if (IsEmpty(clip) || !toDevice.IsInvertible()) return {};
    const Shading shading{dictionary, ColorSpace::Parse(Entry(dictionary, "/ColorSpace"), resources, notes),
                          ParseFunction(Entry(dictionary, "/Function"))};
    const int type = shading.function ? ToInteger(Entry(dictionary, "/ShadingType"), 0) : 0;
    const ColorAt colorAt = type == 1   ? FunctionBased(shading)
                            : type == 2 ? Axial(shading)
                            : type == 3 ? Radial(shading)
                                        : nullptr;
    if (!colorAt) notes.Add("shading that is not of type 1 to 3 or cannot be read: left out");

    Mask inside{clip, nullptr};
    if (QPDFObjectHandle box = Entry(dictionary, "/BBox"); box.isArray()) {
        Path outline;
        outline.AddRectangle(ToBox(box, {}));
        inside = FillCoverage(outline, toDevice, false, clip);
    }
    const std::vector<double> components = ToNumbers(Entry(dictionary, "/Background"));
    const bool hasBackground = withBackground && !components.empty();
    const vantu::Color background = hasBackground ? shading.space->ToColor(components) : kClear;
    PlacedImage placed{hasBackground ? Mask{clip, nullptr} : inside, nullptr};
    const Pixels& box = placed.coverage.box;
    if (IsEmpty(box)) return {};
    placed.image = MakeImage(box);
    unsigned char* out = placed.image->GetPixelData();
    const Matrix fromDevice = toDevice.Inverse();
    for (int y = box.y0; y < box.y1; ++y) {
        for (int x = box.x0; x < box.x1; ++x) {
            const bool isShaded = colorAt && (!hasBackground || SampleAt(inside, x, y) >= kHalf);
            vantu::Color color = isShaded ? colorAt(fromDevice.Map({x + 0.5, y + 0.5})) : kClear;
            if (color.GetAlpha() == 0) color = background;
            *out++ = color.GetBlue();
            *out++ = color.GetGreen();
            *out++ = color.GetRed();
            *out++ = color.GetAlpha();
        }
    }
    return placed;
}

}  // namespace pdf
