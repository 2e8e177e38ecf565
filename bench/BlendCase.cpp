#include "BlendCase.h"

#include <array>
#include <string_view>

#include "blend/definition/ModeTable.h"

namespace vantu::bench {
namespace {

constexpr std::array kLoopNames = {"rect", "stencil", "soft"};
constexpr std::array kFormNames = {"plain", "group", "knockout"};

constexpr auto kRgb565 = PixelFormat::Rgb565;
constexpr auto kRgb555 = PixelFormat::Rgb555;
constexpr auto kBgr24 = PixelFormat::Bgr24;
constexpr auto kBgra32 = PixelFormat::Bgra32Premultiplied;
constexpr auto kInverted = PixelFormat::Bgra32Inverted;
constexpr auto kStraight = PixelFormat::Bgra32;

using Cases = std::vector<BlendCase>;

template <BlendMode Mode, PixelFormat Dst = kBgra32, PixelFormat Src = kBgra32, Loop L = Loop::Rect,
          CompositeForm F = CompositeForm::Plain>
void Add(Cases& cases, std::string_view contents, unsigned int size = 256) {
    for (const char content : contents) {
        cases.push_back({Mode, Dst, Src, Content{content}, L, F, size, PaintScalar<Mode, Dst, Src, L, F>});
    }
}

template <BlendMode Mode>
void AddFormats(Cases& cases) {
    Add<Mode, kBgra32, kInverted>(cases, "abc");
    Add<Mode, kBgra32, kBgr24>(cases, "abc");
    Add<Mode, kBgr24, kBgr24>(cases, "ab");
    Add<Mode, kBgr24, kBgra32>(cases, "ab");
    Add<Mode, kRgb565, kBgra32>(cases, "ab");
    Add<Mode, kRgb555, kRgb555>(cases, "ab");
    Add<Mode, kStraight, kBgra32>(cases, "abc");
    Add<Mode, kInverted, kInverted>(cases, "abc");
}

template <BlendMode Mode, CompositeForm F>
void AddLoops(Cases& cases) {
    if (F != CompositeForm::Plain) Add<Mode, kBgra32, kBgra32, Loop::Rect, F>(cases, "bce");
    Add<Mode, kBgra32, kBgra32, Loop::Stencil, F>(cases, "bc");
    Add<Mode, kBgra32, kBgra32, Loop::SoftMask, F>(cases, "bc");
}

template <BlendMode Mode>
void AddHotMode(Cases& cases) {
    AddFormats<Mode>(cases);
    AddLoops<Mode, CompositeForm::Plain>(cases);
    AddLoops<Mode, CompositeForm::Group>(cases);
    AddLoops<Mode, CompositeForm::Knockout>(cases);
    Add<Mode>(cases, "abcde", 16);
    Add<Mode>(cases, "abcde", 2048);
}

}  // namespace

std::string BlendCase::Name() const {
    const auto number = [](PixelFormat format) { return std::to_string(static_cast<unsigned int>(format)); };
    return std::string(kBlendModeNames[static_cast<std::size_t>(mode)]) + '/' + number(destination) + "<-" +
           number(source) + '/' + static_cast<char>(content) + '/' + kLoopNames[static_cast<std::size_t>(loop)] + '/' +
           kFormNames[static_cast<std::size_t>(form)] + '/' + std::to_string(size);
}

std::vector<BlendCase> BlendCases() {
    constexpr auto everyMode = MakeModeTable([]<BlendMode Mode>() { return +[](Cases& c) { Add<Mode>(c, "abcde"); }; });
    Cases cases;
    for (const auto add : everyMode) add(cases);
    AddHotMode<BlendMode::Normal>(cases);
    AddHotMode<BlendMode::Multiply>(cases);
    return cases;
}

}  // namespace vantu::bench
