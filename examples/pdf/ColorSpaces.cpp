#include "ColorSpaces.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "Objects.h"

namespace pdf {

namespace {

using Numbers = std::span<const double>;

constexpr int kDeepest = 8;  // spaces on spaces
constexpr std::size_t kMostComponents = 32;
constexpr unsigned int kClear = 0;

vantu::Color Opaque(double red, double green, double blue) {
    const auto byte = [](double x) { return static_cast<unsigned int>(std::max(0.0, std::min(1.0, x)) * 255 + 0.5); };
    return {vantu::ARGB_BLACK | byte(red) << 16 | byte(green) << 8 | byte(blue)};
}

// CIE 1976 L*a*b* with the white point as the white of the screen.
// M = (L + 16) / 116, L = M + a / 500, N = M - b / 200; X, Y, Z = g(L), g(M), g(N) in parts of the white
vantu::Color LabToColor(Numbers c) {
    const auto g = [](double x) { return x >= 6.0 / 29 ? x * x * x : 108.0 / 841 * (x - 4.0 / 29); };
    const double m = (c[0] + 16) / 116;
    const double x = 0.9505 * g(m + c[1] / 500);
    const double y = g(m);
    const double z = 1.089 * g(m - c[2] / 200);
    const auto gamma = [](double v) { return v <= 0.0031308 ? 12.92 * v : 1.055 * std::pow(v, 1 / 2.4) - 0.055; };
    return Opaque(gamma(3.2406 * x - 1.5372 * y - 0.4986 * z), gamma(-0.9689 * x + 1.8758 * y + 0.0415 * z),
                  gamma(0.0557 * x - 0.2040 * y + 1.0570 * z));
}

ColorSpace::Pointer Make(const ColorSpace& space) {
    return std::make_shared<ColorSpace>(space);
}

// Reads spaces that may stand on other ones; null for what is damaged or unknown.
class ColorSpaceReader {
public:
    explicit ColorSpaceReader(const QPDFObjectHandle& resources) : named_(Entry(resources, "/ColorSpace")) {}

    ColorSpace::Pointer Read(QPDFObjectHandle object) {
        if (--left_ < 0) return nullptr;
        if (object.isName()) return ReadName(object.getName());
        const std::string family = ToName(Item(object, 0));
        QPDFObjectHandle second = Item(object, 1);
        if (family == "/ICCBased") return ReadIcc(second);
        if (family == "/Lab") return ReadLab(second);
        if (family == "/Indexed" || family == "/I") return ReadIndexed(object);
        if (family == "/Separation" || family == "/DeviceN") return ReadTints(object);
        if (family == "/Pattern") return MakePattern(second.isNull() ? nullptr : Read(second));
        return family.empty() ? nullptr : ReadName(family);
    }

private:
    ColorSpace::Pointer ReadName(const std::string& name) {
        if (name == "/DeviceGray" || name == "/CalGray") return ColorSpace::Device(1);
        if (name == "/DeviceRGB" || name == "/CalRGB") return ColorSpace::Device(3);
        if (name == "/DeviceCMYK") return ColorSpace::Device(4);
        if (name == "/Pattern") return MakePattern(nullptr);
        if (QPDFObjectHandle named = Entry(named_, name); !named.isNull()) return Read(named);
        // inline pictures shorten the names
        return ColorSpace::Device(name == "/G" ? 1 : name == "/RGB" ? 3 : name == "/CMYK" ? 4 : 0);
    }
    ColorSpace::Pointer ReadIcc(QPDFObjectHandle profile) {
        const auto device = ColorSpace::Device(static_cast<std::size_t>(ToInteger(Entry(profile, "/N"), 0)));
        return device ? device : Read(Entry(profile, "/Alternate"));
    }
    static ColorSpace::Pointer ReadLab(QPDFObjectHandle dictionary) {
        Intervals range = ToIntervals(Entry(dictionary, "/Range"));
        if (range.size() != 2) range = {{-100, 100}, {-100, 100}};
        return Make({{0, 0, 0}, LabToColor, {{0, 100}, range[0], range[1]}});
    }
    ColorSpace::Pointer ReadIndexed(QPDFObjectHandle array) {
        const ColorSpace::Pointer base = Read(Item(array, 1));
        const int highest = std::min(ToInteger(Item(array, 2), -1), 255);
        if (!base || base->isPattern || highest < 0) return nullptr;
        QPDFObjectHandle table = Item(array, 3);
        std::string bytes = table.isString() ? table.getStringValue() : ToBytes(table);
        std::vector<vantu::Color> palette(static_cast<std::size_t>(highest) + 1);
        std::vector<double> components(base->Components());
        bytes.resize(palette.size() * components.size());
        for (std::size_t i = 0; i < palette.size(); ++i) {
            for (std::size_t j = 0; j < components.size(); ++j) {
                const Interval decode = base->DefaultDecode(j, 8);
                const double part = static_cast<unsigned char>(bytes[i * components.size() + j]) / 255.0;
                components[j] = decode.low + part * (decode.high - decode.low);
            }
            palette[i] = base->ToColor(components);
        }
        const auto convert = [palette](Numbers c) {
            const double last = static_cast<double>(palette.size() - 1);
            return palette[static_cast<std::size_t>(std::max(0.0, std::min(last, c[0])))];
        };
        return Make({.initial = {0}, .convert = convert, .isIndexed = true});
    }
    // Separation and DeviceN: a function makes the colour of another space from the tints.
    ColorSpace::Pointer ReadTints(QPDFObjectHandle array) {
        const QPDFObjectHandle second = Item(array, 1);
        std::vector<QPDFObjectHandle> names = Items(second);
        if (names.empty()) names = {second};
        if (names.size() > kMostComponents) return nullptr;
        const std::vector<double> initial(names.size(), 1.0);
        if (std::ranges::all_of(names, [](QPDFObjectHandle name) { return ToName(name) == "/None"; }))
            return Make({initial, [](Numbers) { return vantu::Color(kClear); }});
        const ColorSpace::Pointer alternate = Read(Item(array, 2));
        const Function function = ParseFunction(Item(array, 3));
        if (!alternate || alternate->isPattern || !function) return nullptr;
        return Make({initial, [=](Numbers c) { return alternate->ToColor(function(c)); }});
    }
    static ColorSpace::Pointer MakePattern(const ColorSpace::Pointer& underlying) {
        ColorSpace space = underlying ? *underlying : ColorSpace{{}, [](Numbers) { return vantu::Color(); }};
        space.isPattern = true;
        space.underlying = underlying;
        return Make(space);
    }

    QPDFObjectHandle named_;
    int left_ = kDeepest;
};

}  // namespace

vantu::Color ColorSpace::ToColor(std::span<const double> components) const {
    if (components.size() >= Components()) return convert(components.first(Components()));
    std::vector<double> all(components.begin(), components.end());
    all.resize(Components());
    return convert(all);
}

Interval ColorSpace::DefaultDecode(std::size_t component, unsigned int bits) const {
    if (isIndexed) return {0, std::exp2(bits) - 1};
    return decode.empty() ? Interval() : decode[component];
}

ColorSpace::Pointer ColorSpace::Device(std::size_t components) {
    static const auto gray = Make({{0}, [](Numbers c) { return Opaque(c[0], c[0], c[0]); }});
    static const auto rgb = Make({{0, 0, 0}, [](Numbers c) { return Opaque(c[0], c[1], c[2]); }});
    // red = 1 - min(1, cyan + black), and so on
    static const auto cmyk =
        Make({{0, 0, 0, 1}, [](Numbers c) { return Opaque(1 - c[0] - c[3], 1 - c[1] - c[3], 1 - c[2] - c[3]); }});
    return components == 1 ? gray : components == 3 ? rgb : components == 4 ? cmyk : nullptr;
}

ColorSpace::Pointer ColorSpace::Parse(QPDFObjectHandle object, QPDFObjectHandle resources, Notes& notes) {
    if (auto space = ColorSpaceReader(resources).Read(object)) return space;
    notes.Add("colour space that cannot be read: gray instead");
    return Device(1);
}

}  // namespace pdf
