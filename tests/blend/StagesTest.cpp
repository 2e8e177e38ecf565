#include "blend/stages/Stages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <random>
#include <tuple>
#include <vector>

#include "blend/definition/CompositeSteps.h"
#include "support/VectorTargets.h"

namespace vantu::test {
namespace {

using Bytes = std::vector<unsigned char>;
using Random = std::mt19937;

std::uint32_t AnyAlpha(Random& random) {
    return static_cast<std::uint32_t>(random() % 255 + 1);
}

constexpr std::uint32_t kAlphas[] = {1, 127, 128, 254, 255, 255, 255};

/// A span's arrays, each between guard bytes and at an odd place.
struct Scene {
    static constexpr std::size_t kGuard = 67;

    /// Alphas of the kinds that stages treat apart: any, all opaque, all clear, extremes, runs of opaque.
    static unsigned char Alpha(int kind, Random& random) {
        switch (kind) {
            case 0: return static_cast<unsigned char>(random());
            case 1: return 255;
            case 2: return 0;
            case 3: return static_cast<unsigned char>(random() % 3 * 127 + random() % 2);
            default: return static_cast<unsigned char>(random() % 4 != 0 ? 255 : random());
        }
    }

    Scene(std::size_t pixels, Random& random) : count(pixels), groupAlpha(2 * kGuard + pixels) {
        int kind = 0;
        for (Bytes* image : {&source, &target, &snapshot}) {
            image->resize(2 * kGuard + count * kPackedBytes);
            for (unsigned char& byte : *image) byte = static_cast<unsigned char>(random());
            // Snapshots mostly are of the kind of their targets.
            if (image != &snapshot || random() % 4 == 0) kind = static_cast<int>(random() % 5);
            for (std::size_t i = 0; i < count; ++i) (*image)[kGuard + i * kPackedBytes + 3] = Alpha(kind, random);
            if (random() % 4 == 0) MakeExtreme(*image, random);
        }
        opacity.resize(2 * kGuard + count);
        select.resize(2 * kGuard + count);
        const int groupKind = static_cast<int>(random() % 5);
        for (std::size_t i = 0; i < opacity.size(); ++i) {
            select[i] = static_cast<unsigned char>(random() % 2);
            opacity[i] = static_cast<unsigned char>(random());
        }
        // An effective alpha is never above the source's.
        for (std::size_t i = 0; i < count; ++i) {
            const unsigned char sa = source[kGuard + i * kPackedBytes + 3];
            opacity[kGuard + i] = random() % 3 == 0 ? sa : std::min(opacity[kGuard + i], sa);
        }
        for (std::uint32_t& g : groupAlpha) g = Alpha(groupKind, random);
    }

    /// Makes each channel 0 or its pixel's alpha, but for one of them.
    void MakeExtreme(Bytes& image, Random& random) const {
        const std::size_t other = kGuard + random() % (8 * count * kPackedBytes);
        for (std::size_t i = kGuard; i < kGuard + count * kPackedBytes; ++i) {
            const std::size_t channel = (i - kGuard) % kPackedBytes;
            if (channel != 3 && i != other) image[i] = random() % 2 != 0 ? image[i + 3 - channel] : 0;
        }
    }

    /// Cuts the channels of target and snapshot to their alphas.
    void Premultiply() {
        for (Bytes* image : {&target, &snapshot}) {
            for (std::size_t i = kGuard; i < kGuard + count * kPackedBytes; ++i) {
                (*image)[i] = std::min((*image)[i], (*image)[i + 3 - (i - kGuard) % kPackedBytes]);
            }
        }
    }

    CompositeSpan Span(std::uint32_t alpha, bool masked, bool selected, bool keepClear, bool stencil) {
        CompositeSpan span{};
        span.target = target.data() + kGuard;
        span.source = source.data() + kGuard;
        span.opacity = masked && !stencil ? opacity.data() + kGuard : nullptr;
        span.select = selected ? select.data() + kGuard : nullptr;
        span.snapshot = snapshot.data() + kGuard;
        span.groupAlpha = groupAlpha.data() + kGuard;
        span.count = count;
        span.alpha = alpha;
        span.keepClear = keepClear;
        span.stencil = stencil;
        return span;
    }

    /// Makes a span of all pixels one of rows, those of the source from the last one on.
    static void SplitIntoRows(CompositeSpan& span, std::size_t rows, std::size_t gap) {
        const std::size_t pixels = span.count / rows;
        span.rows = rows;
        span.count = pixels - std::min(gap, pixels - 1);
        span.targetStep = static_cast<std::int64_t>(pixels * kPackedBytes);
        span.sourceStep = -span.targetStep;
        span.groupAlphaStep = pixels;
        span.source += (rows - 1) * pixels * kPackedBytes;
    }

    std::size_t count;
    Bytes source, target, snapshot, opacity, select;
    std::vector<std::uint32_t> groupAlpha;
};

class StagesOn : public testing::TestWithParam<VectorTarget> {};

TEST_P(StagesOn, CompositeAsTheStepsDo) {
    Random random(20);
    for (std::size_t round = 0; round < 30000; ++round) {
        const auto mode = static_cast<BlendMode>(round % kBlendModeCount);
        const auto form = static_cast<CompositeForm>(round / kBlendModeCount % 3);
        const auto packed = static_cast<PackedColors>(round / kBlendModeCount / 3 % 2);
        const std::size_t step = round / (kBlendModeCount * 6);
        const std::size_t width =
            step % 50 == 49 ? 900 + 3 * step : 1 + step % 130;  // also more than is gathered at once
        Scene expected(width, random);
        Scene actual = expected;
        const std::uint32_t alpha = random() % 4 != 0 ? kAlphas[random() % std::size(kAlphas)] : AnyAlpha(random);
        const bool masked = random() % 2 != 0, selected = random() % 2 != 0;
        const bool keepClear = random() % 2 != 0, stencil = random() % 4 == 0;
        const bool inRows = !masked && !selected;
        const std::size_t rows = inRows ? 1 + random() % std::min<std::size_t>(width, 70) : 1, gap = random() % 3;
        const auto composite = [&](const BlendStages& stages, Scene& scene) {
            CompositeSpan span = scene.Span(alpha, masked, selected, keepClear, stencil);
            if (rows != 1) Scene::SplitIntoRows(span, rows, gap);
            stages.Of(mode, form, packed)(span);
        };

        composite(ScalarStages(), expected);
        {
            const ForcedTarget forced(GetParam());
            composite(ActiveStages(), actual);
        }
        ASSERT_EQ(expected.target, actual.target) << "round " << round;
        ASSERT_EQ(expected.groupAlpha, actual.groupAlpha) << "round " << round;
        ASSERT_EQ(expected.source, actual.source) << "round " << round;
    }
}

constexpr CompositeStage BlendStages::*kResolveStages[] = {
    &BlendStages::removeBackdrop, &BlendStages::rescaleToGroupAlpha, &BlendStages::mixWithBackdrop};

TEST_P(StagesOn, ResolveGroupsAsTheStepsDo) {
    Random random(6);
    for (std::size_t round = 0; round < 3000; ++round) {
        const auto stage = kResolveStages[round % 3];
        Scene expected(1 + round % 130, random);
        if (random() % 8 != 0) expected.Premultiply();
        if (random() % 8 == 0) expected.groupAlpha[Scene::kGuard + random() % expected.count] += 256 * AnyAlpha(random);
        Scene actual = expected;
        (ScalarStages().*stage)(expected.Span(255, false, false, false, false));
        {
            const ForcedTarget forced(GetParam());
            (ActiveStages().*stage)(actual.Span(255, false, false, false, false));
        }
        ASSERT_EQ(expected.target, actual.target) << "round " << round;
        ASSERT_EQ(expected.groupAlpha, actual.groupAlpha) << "round " << round;
        ASSERT_EQ(expected.snapshot, actual.snapshot) << "round " << round;
    }
}

using StageSets = std::vector<const BlendStages*>;

/// The scalar stages, then those of vector targets.
StageSets StagesOf(const std::vector<VectorTarget>& targets) {
    StageSets sets = {&ScalarStages()};
    for (const VectorTarget& target : targets) {
        const ForcedTarget forced(target);
        sets.push_back(&ActiveStages());
    }
    return sets;
}

/// Composites `source` over `backdrop` by the first stages and by the others and compares the bytes. In a group the
/// backdrop is the snapshot, too, and the group has any alpha.
void CompareStages(const StageSets& sets, BlendMode mode, CompositeForm form, PackedColors packed, const Bytes& source,
                   const Bytes& backdrop, std::uint32_t alpha) {
    Bytes expected;
    for (std::size_t i = 0; i < sets.size(); ++i) {
        Bytes result = backdrop;
        std::vector<std::uint32_t> groupAlpha(result.size() / kPackedBytes, (source[3] + backdrop[3]) % 256);
        CompositeSpan span{};
        span.source = source.data();
        span.target = result.data();
        span.snapshot = backdrop.data();
        span.groupAlpha = groupAlpha.data();
        span.count = groupAlpha.size();
        span.alpha = alpha;
        sets[i]->Of(mode, form, packed)(span);
        if (i == 0) expected = result;
        ASSERT_EQ(expected, result) << "stages " << i << " mode " << static_cast<unsigned int>(mode) << " form "
                                    << static_cast<unsigned int>(form) << " alpha " << alpha << ", first source alpha "
                                    << int{source[3]} << ", first backdrop alpha " << int{backdrop[3]};
    }
}

/// Compares all source bytes over all backdrop bytes, with alphas `sa` and `ab`.
void CompareBytes(const StageSets& sets, BlendMode mode, CompositeForm form, PackedColors packed, unsigned int sa,
                  unsigned int ab, std::uint32_t alpha) {
    Bytes source, backdrop;
    const auto add = [](Bytes& bytes, unsigned int byte) { bytes.push_back(static_cast<unsigned char>(byte)); };
    for (unsigned int s = 0; s < 256; ++s) {
        // A pixel has three channels: three backdrop bytes at once.
        for (unsigned int b = 0; b < 256; b += 3) {
            for (unsigned int c = 0; c < 3; ++c) {
                add(source, s);
                add(backdrop, std::min(b + c, 255U));
            }
            add(source, sa);
            add(backdrop, ab);
        }
    }
    CompareStages(sets, mode, form, packed, source, backdrop, alpha);
}

TEST_P(StagesOn, BlendEveryPairOfChannels) {
    const StageSets sets = StagesOf({GetParam()});
    for (unsigned int m = 0; m < kBlendModeCount; ++m) {
        // Opaque over opaque at full alpha gives B itself, over nearly opaque the general quotient of it.
        const auto mode = static_cast<BlendMode>(m);
        CompareBytes(sets, mode, CompositeForm::Plain, PackedColors::Straight, 255, 255, 255);
        CompareBytes(sets, mode, CompositeForm::Plain, PackedColors::Straight, 255, 254, 200);
        CompareBytes(sets, mode, CompositeForm::Group, PackedColors::Straight, 255, 254, 200);
    }
}

class AllBytes : public testing::TestWithParam<std::tuple<BlendMode, CompositeForm>> {};

// Takes minutes: scripts/check-all-bytes runs it.
TEST_P(AllBytes, DISABLED_CompositeAsTheStepsDoOnEveryVectorTarget) {
    const StageSets sets = StagesOf(VectorTargets());
    for (unsigned int alphas = 0; alphas < 0x10000 && !HasFailure(); ++alphas) {
        const auto [mode, form] = GetParam();
        CompareBytes(sets, mode, form, PackedColors::Premultiplied, alphas >> 8, alphas & 255, 255);
    }
}

/// Takes snapshots of alpha `ba` out of opaque pixels of group alpha `a`, of all channels there are, by the first
/// stages and by the others, and compares the bytes.
void CompareRemoved(const StageSets& sets, std::uint32_t a, unsigned int ba) {
    Bytes image, snapshot, expected;
    const auto add = [](Bytes& bytes, unsigned int byte) { bytes.push_back(static_cast<unsigned char>(byte)); };
    for (unsigned int p = 0; p < 256; ++p) {
        for (unsigned int b = 0; b <= ba; b += 3) {
            for (unsigned int c = 0; c < 3; ++c) {
                add(image, p);
                add(snapshot, std::min(b + c, ba));
            }
            add(image, 255);
            add(snapshot, ba);
        }
    }
    std::vector<std::uint32_t> groupAlpha(image.size() / kPackedBytes, a);
    for (std::size_t i = 0; i < sets.size(); ++i) {
        Bytes result = image;
        CompositeSpan span{};
        span.target = result.data();
        span.snapshot = snapshot.data();
        span.groupAlpha = groupAlpha.data();
        span.count = groupAlpha.size();
        sets[i]->removeBackdrop(span);
        if (i == 0) expected = result;
        ASSERT_EQ(expected, result) << "stages " << i << " group alpha " << a << " snapshot's alpha " << ba;
    }
}

TEST_P(StagesOn, RemoveEveryBackdropFromEveryChannel) {
    const StageSets sets = StagesOf({GetParam()});
    for (unsigned int a = 1; a < 256; a += 6) CompareRemoved(sets, a, a % 4 == 1 ? 255 : 77 * a % 256);
}

// Takes a minute: scripts/check-all-bytes runs it.
TEST(AllBackdrops, DISABLED_AreRemovedAsTheStepDoesOnEveryVectorTarget) {
    const StageSets sets = StagesOf(VectorTargets());
    for (unsigned int alphas = 0; alphas < 0x10000 && !testing::Test::HasFailure(); ++alphas) {
        CompareRemoved(sets, alphas >> 8, alphas & 255);
    }
}

TEST_P(StagesOn, MakeEffectiveAlphasOfSoftMasks) {
    Random random(4);
    constexpr std::size_t kCount = 257;
    Bytes source(kCount * kPackedBytes), maskBytes(kCount), expected(kCount), actual(kCount);
    std::vector<double> opacities(kCount);
    for (unsigned int round = 0; round < 600; ++round) {
        for (std::size_t i = 0; i < kCount; ++i) {
            source[i * kPackedBytes + 3] = static_cast<unsigned char>(round % 3 == 0 ? 255 : random());
            maskBytes[i] = static_cast<unsigned char>(i);
            // Opacities at which the product comes close to a whole number, and the ends of what a stage is given.
            const double steps[] = {static_cast<double>(i % 256) / 255.0, static_cast<double>(random()) / 4294967295.0,
                                    -0.0009, 1.0009};
            opacities[i] = steps[i % 7 < 3 ? 0 : i % 7 < 5 ? 1 : i % 7 - 3];
        }
        const std::uint32_t alpha = round < 255 ? round + 1 : AnyAlpha(random);
        MaskSpan span{opacities.data(), maskBytes.data(), source.data(), expected.data(), kCount, alpha};
        for (const auto mask : {&BlendStages::plainMask, &BlendStages::groupMask}) {
            span.effective = expected.data();
            (ScalarStages().*mask)(span);
            const ForcedTarget forced(GetParam());
            span.effective = actual.data();
            (ActiveStages().*mask)(span);
            ASSERT_EQ(expected, actual) << "round " << round;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Targets, StagesOn, testing::ValuesIn(VectorTargets()),
                         [](const auto& info) { return info.param.name; });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(StagesOn);

INSTANTIATE_TEST_SUITE_P(Modes, AllBytes,
                         testing::Combine(testing::Values(BlendMode::Normal, BlendMode::Multiply, BlendMode::ColorBurn,
                                                          BlendMode::Exclusion),
                                          testing::Values(CompositeForm::Plain, CompositeForm::Group,
                                                          CompositeForm::Knockout)));

}  // namespace
}  // namespace vantu::test
