// Groups against the real-valued formulas of ISO 32000-2, 11.4: what the blender's integers say may only differ by the
// length of their truncation chains.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "blend/Painting.h"

namespace vantu::test {
namespace {

constexpr int kRowWidth = 512;

struct GroupKind {
    bool isolated;
    bool knockout;
};

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

/// A row of premultiplied pixels of one alpha. The colours keep away from both ends: where the backdrop is taken out, a
/// colour that truncation pushes below 0 or above 255 wraps.
std::shared_ptr<TestImage> RandomRow(unsigned char alpha, Random& random) {
    auto row = std::make_shared<TestImage>(Shape{kRowWidth, 1, PixelFormat::Bgra32Premultiplied});
    const auto colors = MakeAccessor(*row);
    for (unsigned int x = 0; x < kRowWidth; ++x) {
        unsigned int color = alpha;
        for (int c = 0; c < 3; ++c) color = color << 8 | Between(random, 64, 191);
        colors->SetColor(*colors, x, 0, Color(color));
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
    const auto whole = Cover({{0, 0, kRowWidth, 1}});
    Random random(7);
    double worstColor = 0;
    double worstAlpha = 0;
    for (const BlendMode mode : {BlendMode::Normal, BlendMode::Multiply, BlendMode::Screen}) {
        const auto parent = RandomRow(it.parentAlpha, random);
        const std::vector<unsigned char> before = parent->Bytes();
        const auto group = std::make_shared<TestImage>(parent->GetShape());
        std::ranges::copy(it.kind.isolated ? std::vector<unsigned char>(before.size()) : before, group->GetPixelData());
        const auto blender = BlenderOn(parent);
        blender->BeginGroup(group, nullptr, it.kind.knockout, it.keepBackdrop, false);
        std::vector<std::shared_ptr<TestImage>> sources;
        for (const unsigned char alpha : it.elementAlphas) {
            sources.push_back(RandomRow(255, random));
            Paint(*blender, {.source = sources.back(), .coverage = whole, .alpha = alpha, .mode = mode});
        }
        blender->EndGroup();
        Paint(*blender, {.source = group, .coverage = whole, .alpha = it.groupAlpha, .mode = it.groupMode});

        for (std::size_t at = 0; at < before.size(); at += 4) {
            const unsigned char* const result = parent->GetPixelData() + at;
            Sample page{};
            for (std::size_t c = at; c < at + 3; ++c) {
                const Sample initial{before[c] * 1.0 / before[at + 3], before[at + 3] / 255.0};
                std::vector<Element> elements;
                for (std::size_t i = 0; i < sources.size(); ++i)
                    elements.push_back({mode, {sources[i]->GetPixelData()[c] / 255.0, it.elementAlphas[i] / 255.0}});
                Sample own = GroupReal(it.kind, initial, elements);
                own.alpha *= it.groupAlpha / 255.0;
                page = CompositeReal(it.groupMode, initial, own);
                worstColor = std::max(worstColor, std::abs(page.color * page.alpha * 255 - result[c - at]));
            }
            worstAlpha = std::max(worstAlpha, std::abs(page.alpha * 255 - result[3]));
        }
    }
    EXPECT_LE(worstColor, it.tolerance);
    EXPECT_LE(worstAlpha, 2);
}

TEST(Groups, OnTheirParentFollowTheRealFormulas) {
    for (std::size_t number = 0; number < kGroupCases.size(); ++number) {
        SCOPED_TRACE(testing::Message() << "case " << number);
        ExpectRealFormulas(kGroupCases[number]);
    }
}

}  // namespace
}  // namespace vantu::test
