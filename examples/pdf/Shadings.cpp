#include "Shadings.h"

#include <vantu/CQorImage.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <vector>

#include "ColorSpaces.h"
#include "Functions.h"
#include "Objects.h"
#include "Outlines.h"

namespace pdf {

namespace {

constexpr double kSteps = 4096;  // colours along a shading

using MaybeColor = std::optional<vantu::Color>;

// What shadings of all types have.
struct Shading {
    std::shared_ptr<const ColorSpace> space;
    std::shared_ptr<const Function> function;
    QPDFObjectHandle dictionary;

    [[nodiscard]] vantu::Color ColorOf(std::span<const double> numbers) const {
        std::array<double, Function::kMost> components{};
        function->Evaluate(numbers, components);
        return space->ToColor({components.data(), function->Outputs()});
    }
};

// The colours along an axis; each is computed once.
class Ramp {
public:
    explicit Ramp(const Shading& shading) : shading_(shading), colors_(static_cast<std::size_t>(kSteps) + 1) {
        const std::vector<double> domain = ToNumbers(Entry(shading.dictionary, "/Domain"));
        if (domain.size() == 2) {
            low_ = domain[0];
            high_ = domain[1];
        }
        QPDFObjectHandle extend = Entry(shading.dictionary, "/Extend");
        extendStart_ = ToBool(Item(extend, 0), false);
        extendEnd_ = ToBool(Item(extend, 1), false);
    }

    // Whether there is a colour at a place; the axis goes from 0 to 1.
    [[nodiscard]] bool Has(double s) const { return (s >= 0 || extendStart_) && (s <= 1 || extendEnd_); }

    vantu::Color At(double s) {
        const double step = std::round(std::max(0.0, std::min(1.0, s)) * kSteps);
        MaybeColor& color = colors_[static_cast<std::size_t>(step)];
        const double number = low_ + step / kSteps * (high_ - low_);
        if (!color) color = shading_.ColorOf({&number, 1});
        return *color;
    }

private:
    const Shading& shading_;
    std::vector<MaybeColor> colors_;
    double low_ = 0;
    double high_ = 1;
    bool extendStart_;
    bool extendEnd_;
};

// Type 1: the colour is a function of the place.
struct FunctionBased {
    const Shading& shading;
    Matrix toDomain;
    Box domain;

    explicit FunctionBased(const Shading& of) : shading(of) {
        const Matrix matrix = ToMatrix(Entry(of.dictionary, "/Matrix"));
        const std::vector<double> d = ToNumbers(Entry(of.dictionary, "/Domain"));
        domain = d.size() == 4 ? Box{d[0], d[2], d[1], d[3]} : Box{0, 0, 1, 1};
        if (matrix.IsInvertible())
            toDomain = matrix.Inverse();
        else
            domain = {};
    }
    MaybeColor operator()(const PointD& at) const {
        const PointD p = toDomain.Map(at);
        if (domain.IsEmpty() || p.x < domain.x0 || p.x > domain.x1 || p.y < domain.y0 || p.y > domain.y1) return {};
        const std::array<double, 2> numbers{p.x, p.y};
        return shading.ColorOf(numbers);
    }
};

// Type 2: along a line from p0 to p1, s = (p - p0) (p1 - p0) / |p1 - p0|^2
struct Axial {
    Ramp ramp;
    std::vector<double> coords;

    explicit Axial(const Shading& of) : ramp(of), coords(ToNumbers(Entry(of.dictionary, "/Coords"))) {}
    MaybeColor operator()(const PointD& at) {
        if (coords.size() != 4) return {};
        const double dx = coords[2] - coords[0];
        const double dy = coords[3] - coords[1];
        const double s = ((at.x - coords[0]) * dx + (at.y - coords[1]) * dy) / (dx * dx + dy * dy);
        return std::isfinite(s) && ramp.Has(s) ? MaybeColor(ramp.At(s)) : MaybeColor();
    }
};

// Type 3: circles of middle c0 + s (c1 - c0) and radius r0 + s (r1 - r0). Through a point p, seen from c0, go those
// with |p - s (c1 - c0)| = r0 + s (r1 - r0), which is A s^2 - 2 B s + C = 0. The largest s whose radius is not negative
// is on top.
struct Radial {
    Ramp ramp;
    std::vector<double> coords;

    explicit Radial(const Shading& of) : ramp(of), coords(ToNumbers(Entry(of.dictionary, "/Coords"))) {}
    MaybeColor operator()(const PointD& at) {
        if (coords.size() != 6) return {};
        const double dx = coords[3] - coords[0];
        const double dy = coords[4] - coords[1];
        const double r0 = coords[2];
        const double dr = coords[5] - r0;
        const PointD p{at.x - coords[0], at.y - coords[1]};
        const double a = dx * dx + dy * dy - dr * dr;
        const double b = p.x * dx + p.y * dy + r0 * dr;
        const double c = p.x * p.x + p.y * p.y - r0 * r0;
        std::array<double, 2> roots{};
        if (std::abs(a) <= 1e-12 * (dx * dx + dy * dy + dr * dr)) {
            roots = {c / (2 * b), c / (2 * b)};
        } else {
            const double root = std::sqrt(b * b - a * c);
            roots = {(b + root) / a, (b - root) / a};
            if (roots[0] < roots[1]) std::swap(roots[0], roots[1]);
        }
        for (const double s : roots) {
            if (std::isfinite(s) && r0 + s * dr >= 0 && ramp.Has(s)) return ramp.At(s);
        }
        return {};
    }
};

// Paints where `colorAt`, given the middle of a pixel in the shading's space, has a colour, as far as `inside` covers;
// what is left shows the background, if there is one.
template <typename ColorAt>
ShadedImage Paint(ColorAt colorAt, const Matrix& fromDevice, const Pixels& box, const Mask& inside,
                  const MaybeColor& background) {
    const auto image = std::make_shared<vantu::CQorImage>(
        static_cast<unsigned int>(Width(box)), static_cast<unsigned int>(Height(box)),
        vantu::PixelFormat::Bgra32Premultiplied, static_cast<unsigned char>(0), false);
    unsigned char* out = image->GetPixelData();
    for (int y = box.y0; y < box.y1; ++y) {
        for (int x = box.x0; x < box.x1; ++x) {
            const MaybeColor color = colorAt(fromDevice.Map({x + 0.5, y + 0.5}));
            const unsigned int alpha = color ? SampleAt(inside, x, y) : 0U;
            const vantu::Color above = color.value_or(vantu::Color());
            const vantu::Color below = background.value_or(vantu::Color());
            const unsigned int alphaBelow = background ? 255 - alpha : 0;
            const auto mix = [&](unsigned int a, unsigned int b) {
                return static_cast<unsigned char>((a * alpha + b * alphaBelow + 127) / 255);
            };
            *out++ = mix(above.GetBlue(), below.GetBlue());
            *out++ = mix(above.GetGreen(), below.GetGreen());
            *out++ = mix(above.GetRed(), below.GetRed());
            *out++ = mix(255, 255);
        }
    }
    return {box, image};
}

}  // namespace

ShadedImage PaintShading(QPDFObjectHandle dictionary, QPDFObjectHandle resources, const Matrix& toDevice,
                         const Pixels& clip, bool withBackground, Notes& notes) {
    if (IsEmpty(clip) || !toDevice.IsInvertible()) return {};
    const Shading shading{ColorSpace::Parse(Entry(dictionary, "/ColorSpace"), resources, notes),
                          Function::Parse(Entry(dictionary, "/Function")), dictionary};
    MaybeColor background;
    if (const std::vector<double> components = ToNumbers(Entry(dictionary, "/Background"));
        withBackground && !components.empty())
        background = shading.space->ToColor(components);
    Mask inside{clip, nullptr};
    if (QPDFObjectHandle box = Entry(dictionary, "/BBox"); box.isArray()) {
        Path outline;
        outline.AddRectangle(ToBox(box, {}));
        inside = FillCoverage(outline, toDevice, false, clip);
    }
    const Pixels area = background ? clip : inside.box;
    if (IsEmpty(area)) return {};
    const auto paint = [&](auto colorAt) { return Paint(colorAt, toDevice.Inverse(), area, inside, background); };
    const int type = shading.function ? ToInteger(Entry(dictionary, "/ShadingType"), 0) : 0;
    switch (type) {
        case 1: return paint(FunctionBased(shading));
        case 2: return paint(Axial(shading));
        case 3: return paint(Radial(shading));
        default: break;
    }
    notes.Add("shading that is not of type 1 to 3 or cannot be read: left out");
    return paint([](const PointD&) { return MaybeColor(); });
}

}  // namespace pdf
