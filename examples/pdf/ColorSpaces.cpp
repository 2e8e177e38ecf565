#include "ColorSpaces.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "Functions.h"
#include "Objects.h"

namespace pdf {

namespace {

constexpr int kDeepest = 8;  // spaces on spaces

double At(std::span<const double> components, std::size_t i) {
    return i < components.size() ? components[i] : 0;
}

unsigned int ToByte(double value) {
    return static_cast<unsigned int>(std::max(0.0, std::min(1.0, value)) * 255 + 0.5);
}

vantu::Color Opaque(double red, double green, double blue) {
    return {0xFF000000U | ToByte(red) << 16 | ToByte(green) << 8 | ToByte(blue)};
}

struct DeviceGray final : ColorSpace {
    DeviceGray() : ColorSpace(1) {}
    vantu::Color ToColor(std::span<const double> c) const override { return Opaque(At(c, 0), At(c, 0), At(c, 0)); }
};

struct DeviceRgb final : ColorSpace {
    DeviceRgb() : ColorSpace(3) {}
    vantu::Color ToColor(std::span<const double> c) const override { return Opaque(At(c, 0), At(c, 1), At(c, 2)); }
};

struct DeviceCmyk final : ColorSpace {
    DeviceCmyk() : ColorSpace(4) {}
    // red = 1 - min(1, cyan + black), and so on
    vantu::Color ToColor(std::span<const double> c) const override {
        const double black = At(c, 3);
        return Opaque(1 - At(c, 0) - black, 1 - At(c, 1) - black, 1 - At(c, 2) - black);
    }
    std::vector<double> Initial() const override { return {0, 0, 0, 1}; }
};

// CIE 1976 L*a*b* with the white point as the white of the screen.
struct Lab final : ColorSpace {
    std::array<Decode, 3> range{{{0, 100}, {-100, 100}, {-100, 100}}};

    explicit Lab(const std::vector<double>& ab) : ColorSpace(3) {
        if (ab.size() != 4) return;
        range[1] = {ab[0], ab[1]};
        range[2] = {ab[2], ab[3]};
    }
    // M = (L + 16) / 116, L = M + a / 500, N = M - b / 200; X, Y, Z = g(L), g(M), g(N) in parts of the white
    vantu::Color ToColor(std::span<const double> c) const override {
        const auto g = [](double x) { return x >= 6.0 / 29 ? x * x * x : 108.0 / 841 * (x - 4.0 / 29); };
        const double m = (At(c, 0) + 16) / 116;
        const double x = 0.9505 * g(m + At(c, 1) / 500);
        const double y = g(m);
        const double z = 1.089 * g(m - At(c, 2) / 200);
        const auto gamma = [](double v) { return v <= 0.0031308 ? 12.92 * v : 1.055 * std::pow(v, 1 / 2.4) - 0.055; };
        return Opaque(gamma(3.2406 * x - 1.5372 * y - 0.4986 * z), gamma(-0.9689 * x + 1.8758 * y + 0.0415 * z),
                      gamma(0.0557 * x - 0.2040 * y + 1.0570 * z));
    }
    Decode DefaultDecode(std::size_t component, unsigned int) const override { return range[component]; }
};

struct Indexed final : ColorSpace {
    std::vector<vantu::Color> palette;

    Indexed(const ColorSpace& base, const std::string& table, int highest) : ColorSpace(1) {
        const std::size_t count = base.Components();
        std::vector<double> components(count);
        for (std::size_t i = 0; i <= static_cast<std::size_t>(highest); ++i) {
            for (std::size_t j = 0; j < count; ++j) {
                const std::size_t at = i * count + j;
                const double part = at < table.size() ? static_cast<unsigned char>(table[at]) / 255.0 : 0;
                const Decode decode = base.DefaultDecode(j, 8);
                components[j] = decode.low + part * (decode.high - decode.low);
            }
            palette.push_back(base.ToColor(components));
        }
    }
    vantu::Color ToColor(std::span<const double> c) const override {
        const double index = std::max(0.0, std::min(static_cast<double>(palette.size() - 1), At(c, 0)));
        return palette[static_cast<std::size_t>(index)];
    }
    Decode DefaultDecode(std::size_t, unsigned int bits) const override { return {0, std::exp2(bits) - 1}; }
};

// Separation and DeviceN: a function makes the colour of another space from the tints.
struct Tints final : ColorSpace {
    Pointer alternate;
    std::shared_ptr<const Function> function;

    Tints(std::size_t count, Pointer space, std::shared_ptr<const Function> tintsToSpace)
        : ColorSpace(count), alternate(std::move(space)), function(std::move(tintsToSpace)) {}

    vantu::Color ToColor(std::span<const double> c) const override {
        std::array<double, Function::kMost> out{};
        function->Evaluate(c, out);
        return alternate->ToColor({out.data(), std::min(function->Outputs(), alternate->Components())});
    }
    std::vector<double> Initial() const override { return std::vector<double>(Components(), 1.0); }
};

struct PatternSpace final : ColorSpace {
    Pointer underlying;

    explicit PatternSpace(Pointer space) : ColorSpace(space ? space->Components() : 0), underlying(std::move(space)) {}
    vantu::Color ToColor(std::span<const double> c) const override {
        return underlying ? underlying->ToColor(c) : vantu::Color();
    }
    bool IsPattern() const override { return true; }
    Pointer Underlying() const override { return underlying; }
};

// The bytes of a string or of a stream.
std::string TableOf(QPDFObjectHandle object) {
    return object.isString() ? object.getStringValue() : ToBytes(object);
}

// Reads spaces that may stand on other ones; null for what is damaged or unknown.
class Reader {
public:
    explicit Reader(const QPDFObjectHandle& resources) : named_(Entry(resources, "/ColorSpace")) {}

    ColorSpace::Pointer Read(QPDFObjectHandle object) {
        if (--left_ < 0) return nullptr;
        if (object.isName()) return ReadName(object.getName());
        const std::string family = ToName(Item(object, 0));
        QPDFObjectHandle second = Item(object, 1);
        if (family == "/ICCBased") return ReadIcc(second);
        if (family == "/CalGray") return ColorSpace::Device(1);
        if (family == "/CalRGB") return ColorSpace::Device(3);
        if (family == "/Lab") return std::make_shared<Lab>(ToNumbers(Entry(second, "/Range")));
        if (family == "/Indexed" || family == "/I") return ReadIndexed(object);
        if (family == "/Separation" || family == "/DeviceN") return ReadTints(object);
        if (family == "/Pattern") return std::make_shared<PatternSpace>(second.isNull() ? nullptr : Read(second));
        return Item(object, 0).isName() ? ReadName(family) : nullptr;
    }

private:
    ColorSpace::Pointer ReadName(const std::string& name) {
        if (name == "/DeviceGray") return ColorSpace::Device(1);
        if (name == "/DeviceRGB") return ColorSpace::Device(3);
        if (name == "/DeviceCMYK") return ColorSpace::Device(4);
        if (name == "/Pattern") return std::make_shared<PatternSpace>(nullptr);
        if (QPDFObjectHandle named = Entry(named_, name); !named.isNull()) return Read(named);
        // inline pictures shorten the names
        if (name == "/G" || name == "/CalGray") return ColorSpace::Device(1);
        if (name == "/RGB" || name == "/CalRGB") return ColorSpace::Device(3);
        if (name == "/CMYK") return ColorSpace::Device(4);
        return nullptr;
    }
    ColorSpace::Pointer ReadIcc(QPDFObjectHandle profile) {
        const int count = ToInteger(Entry(profile, "/N"), 0);
        if (auto device = ColorSpace::Device(static_cast<std::size_t>(std::max(count, 0)))) return device;
        return Read(Entry(profile, "/Alternate"));
    }
    ColorSpace::Pointer ReadIndexed(QPDFObjectHandle array) {
        const ColorSpace::Pointer base = Read(Item(array, 1));
        const int highest = ToInteger(Item(array, 2), -1);
        if (!base || base->IsPattern() || highest < 0 || highest > 255) return nullptr;
        return std::make_shared<Indexed>(*base, TableOf(Item(array, 3)), highest);
    }
    ColorSpace::Pointer ReadTints(QPDFObjectHandle array) {
        QPDFObjectHandle names = Item(array, 1);
        const auto count = static_cast<std::size_t>(names.isArray() ? names.getArrayNItems() : 1);
        const ColorSpace::Pointer alternate = Read(Item(array, 2));
        const auto function = Function::Parse(Item(array, 3));
        if (!alternate || alternate->IsPattern() || !function || count < 1 || count > ColorSpace::kMostComponents)
            return nullptr;
        return std::make_shared<Tints>(count, alternate, function);
    }

    QPDFObjectHandle named_;
    int left_ = kDeepest;
};

}  // namespace

ColorSpace::Decode ColorSpace::DefaultDecode(std::size_t, unsigned int) const {
    return {};
}

ColorSpace::Pointer ColorSpace::Device(std::size_t components) {
    static const Pointer gray = std::make_shared<DeviceGray>();
    static const Pointer rgb = std::make_shared<DeviceRgb>();
    static const Pointer cmyk = std::make_shared<DeviceCmyk>();
    switch (components) {
        case 1: return gray;
        case 3: return rgb;
        case 4: return cmyk;
        default: return nullptr;
    }
}

ColorSpace::Pointer ColorSpace::Parse(QPDFObjectHandle object, QPDFObjectHandle resources, Notes& notes) {
    if (auto space = Reader(resources).Read(object)) return space;
    notes.Add("colour space that cannot be read: gray instead");
    return Device(1);
}

}  // namespace pdf
