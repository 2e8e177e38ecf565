// Groups against the real-valued formulas of ISO 32000-2, 11.4: what the blender's integers say may only differ by the
// length of their truncation chains.

#include "../../examples/GroupFigure.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "../../examples/Pictures.h"
#include "support/TestImage.h"

namespace vantu::test {
namespace {

using examples::GroupKind;
using Image = std::shared_ptr<IQorImage>;

constexpr int kRowWidth = 512;

/// A channel and an opacity, 0 to 1.
struct Sample {
    double color;
    double alpha;
};

struct Element {
    BlendMode mode;
    Sample sample;
};

double BlendReal(BlendMode mode, double backdrop, double source) {
    switch (mode) {
        case BlendMode::Multiply: return backdrop * source;
        case BlendMode::Screen: return backdrop + source - backdrop * source;
        default: return source;
    }
}

double Union(double a, double b) {
    return a + b - a * b;
}

/// Basic compositing: c = (1 - as/ar)*cb + as/ar*((1 - ab)*cs + ab*B(cb, cs)).
Sample CompositeReal(BlendMode mode, const Sample& backdrop, const Sample& source) {
    const double alpha = Union(backdrop.alpha, source.alpha);
    if (alpha == 0) return {0, 0};
    const double mixed =
        (1 - backdrop.alpha) * source.color + backdrop.alpha * BlendReal(mode, backdrop.color, source.color);
    return {backdrop.color + (mixed - backdrop.color) * source.alpha / alpha, alpha};
}

/// The result of a group whose elements have shape 1, on its own: the backdrop is taken out again.
Sample GroupReal(GroupKind kind, const Sample& parent, const std::vector<Element>& elements) {
    const Sample initial = kind.isolated ? Sample{0, 0} : parent;
    Sample held = initial;
    double groupAlpha = 0;
    for (const Element& element : elements) {
        held = CompositeReal(element.mode, kind.knockout ? initial : held, element.sample);
        groupAlpha = kind.knockout ? element.sample.alpha : Union(groupAlpha, element.sample.alpha);
    }
    if (groupAlpha == 0) return {0, 0};
    const double own = held.color + (held.color - initial.color) * (initial.alpha / groupAlpha - initial.alpha);
    return {own, groupAlpha};
}

const unsigned char* Pixel(const IQorImage& image, int x, int y) {
    const int row = image.IsBottomUp() ? static_cast<int>(image.GetHeight()) - 1 - y : y;
    return image.GetPixelData() +
           std::size_t{RowStride(image.GetWidth(), image.GetPixelFormat(), image.GetAlignment())} *
               static_cast<unsigned int>(row) +
           static_cast<unsigned int>(x) * BitsPerPixel(image.GetPixelFormat()) / 8;
}

TEST(GroupFigure, EachPixelFollowsTheRealFormulas) {
    // Each Multiply cuts off less than 1 and scales what the ones before it cut off: 1, 1.75, 2.31, 2.73 with n discs.
    constexpr std::array<double, 5> kTolerances{0, 1, 1.75, 2.32, 2.74};
    const examples::FigureSize size(10);
    const Image before = examples::MakeGradients(size);
    const Image after = examples::MakeGradients(size);
    examples::PaintGroups(after, size);

    for (std::size_t number = 0; number < examples::kGroupKinds.size(); ++number) {
        const Range<int, 2> cell = size.CellOf(number);
        std::array<int, 5> pixelsUnder{};
        std::array<double, 5> worst{};
        for (int y = cell.y0; y < cell.y1; ++y) {
            for (int x = cell.x0; x < cell.x1; ++x) {
                std::vector<Element> elements;
                bool onAnEdge = false;
                for (const Point<int, 2>& middle : size.Discs()) {
                    const double distance = std::hypot(x + 0.5 - cell.x0 - middle.x, y + 0.5 - cell.y0 - middle.y);
                    onAnEdge = onAnEdge || std::abs(distance - size.radius) < 1;
                    if (distance < size.radius)
                        elements.push_back({BlendMode::Multiply, {examples::kDiscColor.GetRed() / 255.0, 1}});
                }
                if (onAnEdge) continue;
                ++pixelsUnder[elements.size()];
                for (int c = 0; c < 3; ++c) {
                    const Sample parent{Pixel(*before, x, y)[c] / 255.0, 1};
                    const Sample group = GroupReal(examples::kGroupKinds[number], parent, elements);
                    const Sample page = CompositeReal(BlendMode::Normal, parent, group);
                    double& distance = worst[elements.size()];
                    distance = std::max(distance, std::abs(page.color * 255 - Pixel(*after, x, y)[c]));
                }
            }
        }
        for (std::size_t discs = 0; discs < worst.size(); ++discs) {
            SCOPED_TRACE(testing::Message() << "cell " << number << " under " << discs << " discs");
            EXPECT_GT(pixelsUnder[discs], 20);
            EXPECT_LE(worst[discs],
                      kTolerances[examples::kGroupKinds[number].knockout ? std::min<std::size_t>(discs, 1) : discs]);
        }
    }
}

/// A group of some elements, painted on its parent.
struct GroupCase {
    GroupKind kind;
    bool keepBackdrop;
    unsigned char parentAlpha;
    std::vector<unsigned char> elementAlphas;
    BlendMode groupMode;
    unsigned char groupAlpha;
    double tolerance;  ///< of the parent's stored bytes
};

/// A row of pixels of one alpha. The colours keep away from both ends: where the backdrop is taken out, a colour that
/// truncation pushes below 0 or above 255 wraps.
std::shared_ptr<CQorImage> RandomRow(PixelFormat format, unsigned char alpha, Random& random) {
    auto row = std::make_shared<CQorImage>(kRowWidth, 1, format, 4, false);
    for (int x = 0; x < kRowWidth; ++x) {
        unsigned int color = alpha;
        for (int c = 0; c < 3; ++c) color = color << 8 | Between(random, 64, 191);
        ImageUtil::Clear(*row, color, {x, 0, x + 1, 1});
    }
    return row;
}

constexpr GroupKind kIsolated{true, false};
constexpr GroupKind kIsolatedKnockout{true, true};
constexpr GroupKind kNonIsolated{false, false};
constexpr GroupKind kNonIsolatedKnockout{false, true};

// 2 where the elements of a pixel are opaque or one alone counts. Otherwise truncation adds up: each translucent pixel
// is divided by its alpha, composited and multiplied again, in the group, at its end and on the parent.
const std::vector<GroupCase> kGroupCases{
    {kIsolated, true, 255, {255}, BlendMode::Normal, 255, 2},
    {kIsolated, true, 255, {200, 128}, BlendMode::Normal, 255, 5},
    {kIsolated, false, 255, {200, 128}, BlendMode::Normal, 255, 5},
    {kIsolated, true, 255, {200, 128, 60}, BlendMode::Multiply, 128, 3},
    {kIsolated, true, 128, {200, 128}, BlendMode::Normal, 200, 5.5},
    {kIsolatedKnockout, true, 255, {255, 128}, BlendMode::Normal, 255, 2},
    {kIsolatedKnockout, true, 255, {200, 128, 60}, BlendMode::Multiply, 128, 2},
    {kIsolatedKnockout, true, 128, {200, 128}, BlendMode::Normal, 200, 3},
    {kNonIsolated, false, 255, {255, 255}, BlendMode::Normal, 255, 2},
    {kNonIsolated, false, 255, {200, 128}, BlendMode::Normal, 255, 5.5},
    {kNonIsolated, true, 255, {200, 128}, BlendMode::Normal, 255, 3},
    {kNonIsolated, false, 255, {200, 128, 60}, BlendMode::Multiply, 128, 3},
    {kNonIsolated, false, 128, {200, 128}, BlendMode::Normal, 200, 7},
    {kNonIsolatedKnockout, false, 255, {255, 255}, BlendMode::Multiply, 128, 2},
    {kNonIsolatedKnockout, false, 255, {200, 128}, BlendMode::Normal, 200, 4},
    {kNonIsolatedKnockout, true, 255, {200, 128, 60}, BlendMode::Normal, 255, 2},
};

void ExpectRealFormulas(const GroupCase& it) {
    const Range<int, 2> whole{0, 0, kRowWidth, 1};
    Random random(7);
    double worstColor = 0;
    double worstAlpha = 0;
    for (const BlendMode mode : {BlendMode::Normal, BlendMode::Multiply, BlendMode::Screen}) {
        const auto parent = RandomRow(PixelFormat::Bgra32Premultiplied, it.parentAlpha, random);
        const auto before = ImageUtil::Clone(*parent, nullptr, nullptr);
        const auto blender = examples::MakeBlender(parent);
        const auto group = examples::MakeGroupImage(*parent, whole, it.kind.isolated);
        blender->BeginGroup(group, nullptr, it.kind.knockout, it.keepBackdrop, false);
        std::vector<std::shared_ptr<CQorImage>> sources;
        for (const unsigned char alpha : it.elementAlphas) {
            sources.push_back(RandomRow(PixelFormat::Bgr24, 255, random));
            examples::Paint(*blender, sources.back(), whole, {0, 0}, alpha, mode);
        }
        blender->EndGroup();
        examples::Paint(*blender, group, whole, {0, 0}, it.groupAlpha, it.groupMode);

        for (int x = 0; x < kRowWidth; ++x) {
            const unsigned char* const result = Pixel(*parent, x, 0);
            Sample page{};
            for (int c = 0; c < 3; ++c) {
                const unsigned char* const old = Pixel(*before, x, 0);
                const Sample initial{old[c] * 1.0 / old[3], old[3] / 255.0};
                std::vector<Element> elements;
                for (std::size_t i = 0; i < sources.size(); ++i)
                    elements.push_back({mode, {Pixel(*sources[i], x, 0)[c] / 255.0, it.elementAlphas[i] / 255.0}});
                Sample own = GroupReal(it.kind, initial, elements);
                own.alpha *= it.groupAlpha / 255.0;
                page = CompositeReal(it.groupMode, initial, own);
                worstColor = std::max(worstColor, std::abs(page.color * page.alpha * 255 - result[c]));
            }
            worstAlpha = std::max(worstAlpha, std::abs(page.alpha * 255 - result[3]));
        }
    }
    EXPECT_LE(worstColor, it.tolerance);
    EXPECT_LE(worstAlpha, 2);
}

TEST(GroupOnParent, FollowsTheRealFormulas) {
    for (std::size_t number = 0; number < kGroupCases.size(); ++number) {
        SCOPED_TRACE(testing::Message() << "case " << number);
        ExpectRealFormulas(kGroupCases[number]);
    }
}

}  // namespace
}  // namespace vantu::test
