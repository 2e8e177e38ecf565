#include "blend/stages/MaskStages.h"

#include <gtest/gtest.h>
#include <vantu/CIdentityPDFTransferFunction.h>

#include <algorithm>
#include <array>
#include <random>
#include <vector>

#include "blend/definition/CompositeSteps.h"
#include "blend/stages/Stages.h"
#include "support/VectorTargets.h"

namespace vantu::test {
namespace {

using Bytes = std::vector<unsigned char>;

/// Rows of opaque pixels and of a mask, farther apart than they are long and between guard bytes.
struct Scene {
    Scene(std::size_t width, std::size_t height, std::mt19937& random)
        : source(AnyBytes((width + 3) * kPackedBytes * height, random)),
          target(AnyBytes((width + 5) * kPackedBytes * height, random)),
          mask(AnyBytes((width + 8) * height, random)),
          colors(AnyBytes((width + 1) * kPackedBytes * height, random)),
          rows{{target.data() + 5, static_cast<std::int64_t>((width + 5) * kPackedBytes), height},
               {source.data() + 3, static_cast<std::int64_t>((width + 3) * kPackedBytes), height},
               width,
               random() % 2 != 0},
          keys{mask.data() + 1, static_cast<std::int64_t>(width + 8), height},
          colorRows{colors.data() + 1, static_cast<std::int64_t>((width + 1) * kPackedBytes), height} {
        for (std::size_t row = 0; row < height; ++row) {
            for (std::size_t x = 0; x < width; ++x) {
                rows.target.Row(row)[x * kPackedBytes + 3] = source[OffsetInSource(row, x) + 3] = 255;
                colors[1 + (row * (width + 1) + x) * kPackedBytes + 3] = 255;
            }
        }
    }

    static Bytes AnyBytes(std::size_t count, std::mt19937& random) {
        Bytes bytes(count + 8);
        for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random());
        return bytes;
    }

    [[nodiscard]] std::size_t OffsetInSource(std::size_t row, std::size_t x) const {
        return static_cast<std::size_t>(rows.source.Row(row) - source.data()) + x * kPackedBytes;
    }

    Bytes source, target, mask, colors;
    MixedRows rows;
    PixelRows<const unsigned char> keys, colorRows;
};

/// Composites the first pixels, row by row, as the steps of Normal do. `alphaAt(row, x)` is the effective alpha of one.
template <typename AlphaAt>
Bytes Composited(const Scene& scene, std::size_t count, AlphaAt alphaAt) {
    Bytes result = scene.target;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t row = i / scene.rows.width, x = i % scene.rows.width;
        const auto opacity = static_cast<unsigned char>(alphaAt(row, x));
        CompositeSpan span{};
        span.target = result.data() + (scene.rows.target.Row(row) - scene.target.data()) + x * kPackedBytes;
        span.source = scene.rows.source.Row(row) + x * kPackedBytes;
        span.opacity = &opacity;
        span.count = 1;
        span.alpha = 255;
        ScalarStages().Of(BlendMode::Normal, CompositeForm::Plain, PackedColors::Premultiplied)(span);
    }
    return result;
}

class MaskStagesOn : public testing::TestWithParam<VectorTarget> {};

/// What a mask is made of.
enum class Mask { Keys, Bits, Colors, ColorsIfOpaque };

/// How many pixels, row by row, come before one whose bytes cannot be mixed.
std::size_t CountMixed(const Scene& scene, Mask kind) {
    const auto& [target, source, width, mixesClear] = scene.rows;
    const auto isClear = [](const unsigned char* pixel) { return std::count(pixel, pixel + kPackedBytes, 0) == 4; };
    std::size_t count = 0;
    for (; count < width * target.count; ++count) {
        const std::size_t row = count / width, at = count % width * kPackedBytes;
        const unsigned char *const onto = target.Row(row) + at, *const from = source.Row(row) + at;
        const bool isKnown = kind != Mask::ColorsIfOpaque || scene.colorRows.Row(row)[at + 3] == 255;
        const bool canMix = from[3] == 255 || (mixesClear && kind != Mask::Bits && isClear(from));
        if (!canMix || (onto[3] != 255 && !(mixesClear && isClear(onto))) || !isKnown) break;
    }
    return count;
}

/// The luminosity of a colour as a byte, in groups or of an opaque source, as the function and the steps have it.
unsigned char Luminosity(const unsigned char* bgr, bool inGroup) {
    const CIdentityPDFTransferFunction identity(IPDFTransferFunction::SourceType::Luminosity);
    const double opacity = identity.ComputeAlpha(
        Color(bgr[0] | static_cast<unsigned int>(bgr[1]) << 8 | static_cast<unsigned int>(bgr[2]) << 16));
    return static_cast<unsigned char>(inGroup ? GroupMaskByte(opacity) : PlainMaskOpacity(255, 255, opacity));
}

ByteTable LuminositiesOfGreys(bool inGroup) {
    ByteTable bytes;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const auto grey = static_cast<unsigned char>(i);
        const unsigned char bgr[] = {grey, grey, grey};
        bytes[i] = Luminosity(bgr, inGroup);
    }
    return bytes;
}

TEST_P(MaskStagesOn, MixOpaqueRowsAsTheStepsDo) {
    std::mt19937 random(9);
    const ByteTable greys = LuminositiesOfGreys(false);
    const LuminosityBytes ofOpaque{greys, false};
    for (std::size_t round = 0; round < 4000; ++round) {
        const std::size_t width = 1 + (round % 8 == 0 ? random() % 300 : random() % 70), height = 1 + random() % 7;
        const auto kind = static_cast<Mask>(random() % 4);
        Scene scene(width, height, random);
        // Runs of alphas 0 and 255, others in between; sometimes a pixel that is not opaque, and clear ones.
        ByteTable table;
        for (unsigned char& alpha : table) alpha = static_cast<unsigned char>(random());
        for (std::size_t i = 0; i < 3 * scene.mask.size() / 4; ++i) {
            if (i % 64 < 40) scene.mask[i] = static_cast<unsigned char>(i / 128 % 2 != 0 ? 0 : 255);
        }
        table[0] = 0;
        table[255] = 255;
        const std::size_t clear = random() % 4 == 0 ? random() % 30 : 0;
        for (std::size_t i = 0; i < clear; ++i) {
            const std::size_t row = random() % height, x = random() % width;
            unsigned char* const pixel = i % 3 == 0 ? scene.source.data() + scene.OffsetInSource(row, x)
                                                    : scene.rows.target.Row(row) + x * kPackedBytes;
            std::fill_n(pixel, kPackedBytes, static_cast<unsigned char>(0));
        }
        if (random() % 4 == 0) {
            const std::size_t row = random() % height, x = random() % width;
            unsigned char* const alphas[] = {&scene.source[scene.OffsetInSource(row, x) + 3],
                                             &scene.rows.target.Row(row)[x * kPackedBytes + 3],
                                             &scene.colors[1 + (row * (width + 1) + x) * kPackedBytes + 3]};
            *alphas[random() % 3] ^= 1;
        }
        for (std::size_t i = 0; i < scene.colors.size() / 3; ++i) {
            if (i % 8 < 3) scene.colors[i / 8 * 4 + 1 + i % 8] = static_cast<unsigned char>(i / 512 % 2 != 0 ? 0 : 255);
        }
        const std::size_t mixable = CountMixed(scene, kind);
        const std::size_t first = random() % 9;
        const auto alpha = static_cast<std::uint32_t>(random() % 2 != 0 ? 255 : 1 + random() % 254);
        const auto alphaAt = [&](std::size_t row, std::size_t x) -> std::uint32_t {
            const unsigned char* const mask = scene.keys.Row(row);
            if (kind == Mask::Keys) return table[mask[x]];
            if (kind == Mask::Bits) return (mask[(first + x) / 8] << (first + x) % 8 & 0x80) != 0 ? 0 : alpha;
            return Luminosity(scene.colorRows.Row(row) + x * kPackedBytes, false);
        };
        const auto expectMixed = [&](const MaskStages& stages, std::size_t least) {
            const Bytes before = scene.target;
            const std::size_t mixed = kind == Mask::Keys   ? stages.byKeys(scene.rows, scene.keys, table)
                                      : kind == Mask::Bits ? stages.byBits(scene.rows, scene.keys, first, alpha)
                                                           : stages.byColors(scene.rows, scene.colorRows,
                                                                             kind == Mask::ColorsIfOpaque, ofOpaque);
            EXPECT_LE(mixed, mixable);
            EXPECT_GE(mixed, least);
            const Bytes after = scene.target;
            std::copy(before.begin(), before.end(), scene.target.begin());
            EXPECT_EQ(Composited(scene, mixed, alphaAt), after)
                << "round " << round << ", mask " << static_cast<int>(kind);
        };
        expectMixed(ScalarMaskStages(), mixable);
        const ForcedTarget forced(GetParam());
        // Up to 64 pixels are looked at together.
        expectMixed(ActiveMaskStages(),
                    mixable == width * height ? mixable : mixable - std::min(mixable, std::size_t{64}));
        if (HasFailure()) return;
    }
}

/// All colours with a blue.
Bytes ColorsOf(unsigned int blue) {
    Bytes packed;
    packed.reserve(0x10000 * kPackedBytes);
    for (unsigned int i = 0; i < 0x10000; ++i) {
        for (const unsigned int byte : {blue, i & 255, i >> 8, 255U})
            packed.push_back(static_cast<unsigned char>(byte));
    }
    return packed;
}

/// Luminosities of packed pixels by stages.
Bytes Luminosities(const MaskStages& stages, const Bytes& packed, const LuminosityBytes& of) {
    Bytes bytes(packed.size() / kPackedBytes);
    const bool opaque = packed[3] == 255;
    EXPECT_EQ(opaque, stages.luminosities(packed.data(), bytes.size(), of, bytes.data()));
    return bytes;
}

TEST(MaskStages, TellLuminositiesOfAllColorsAsTheDoublesDo) {
    for (const bool inGroup : {false, true}) {
        const ByteTable greys = LuminositiesOfGreys(inGroup);
        for (unsigned int blue = 0; blue < 256; ++blue) {
            const Bytes packed = ColorsOf(blue);
            const Bytes bytes = Luminosities(ScalarMaskStages(), packed, {greys, inGroup});
            for (std::size_t i = 0; i < bytes.size(); ++i) {
                ASSERT_EQ(Luminosity(&packed[i * kPackedBytes], inGroup), bytes[i]) << i << ' ' << blue;
            }
        }
    }
}

TEST_P(MaskStagesOn, TellLuminositiesAsPlainLoopsDo) {
    ByteTable ofGrey;
    for (unsigned int grey = 0; grey < 256; ++grey) ofGrey[grey] = static_cast<unsigned char>(grey * 7);
    for (unsigned int blue = 0; blue < 256; blue += 5) {
        Bytes packed = ColorsOf(blue);
        packed.resize(packed.size() - blue % 70 * kPackedBytes);
        packed[3] = blue % 2 != 0 ? 255 : 254;
        const LuminosityBytes of{ofGrey, blue % 4 < 2};
        const Bytes expected = Luminosities(ScalarMaskStages(), packed, of);
        const ForcedTarget forced(GetParam());
        ASSERT_EQ(expected, Luminosities(ActiveMaskStages(), packed, of)) << blue;
    }
}

TEST_P(MaskStagesOn, KnowTheGreys) {
    std::vector<Color> colors;
    for (unsigned int grey = 0; grey < 256; ++grey) colors.emplace_back(ARGB_BLACK | grey * 0x010101);
    const ForcedTarget forced(GetParam());
    for (const MaskStages* const stages : {&ScalarMaskStages(), &ActiveMaskStages()}) {
        EXPECT_TRUE(stages->areGreys(colors.data()));
        for (unsigned int i = 0; i < 256; ++i) {
            const Color grey = colors[i];
            colors[i] = Color((ARGB_BLACK | i * 0x010101) ^ 1U << i % 32);
            EXPECT_FALSE(stages->areGreys(colors.data())) << i;
            colors[i] = grey;
        }
    }
}

TEST_P(MaskStagesOn, ScaleEveryAlphaByEveryOpacityAsTheStepDoes) {
    using SourceType = IPDFTransferFunction::SourceType;
    for (const SourceType type : {SourceType::Alpha, SourceType::Luminosity}) {
        const CIdentityPDFTransferFunction identity(type);
        std::array<double, 256> opacities;
        for (unsigned int v = 0; v < 256; ++v) opacities[v] = identity.ComputeAlpha(Color(v << 24 | v * 0x010101));
        const KeyScaling scaling(opacities);
        Bytes keys, source, expected;
        for (unsigned int i = 0; i < 0x10000; ++i) {
            const unsigned int sa = ((i >> 8) + i) & 255, key = (i * 77) & 255;
            keys.push_back(static_cast<unsigned char>(key));
            source.insert(source.end(), {1, 2, 3, static_cast<unsigned char>(sa)});
            expected.push_back(static_cast<unsigned char>(PlainMaskOpacity(255, sa, opacities[key])));
        }
        for (const std::size_t count : {keys.size(), std::size_t{77}}) {
            const auto scaled = [&](const MaskStages& stages) {
                Bytes effective(count + 1, 99);
                stages.scale({keys.data() + 1, source.data() + kPackedBytes, effective.data(), count - 1}, scaling);
                return effective;
            };
            Bytes part(expected.begin() + 1, expected.begin() + static_cast<std::ptrdiff_t>(count));
            part.insert(part.end(), {99, 99});
            ASSERT_EQ(part, scaled(ScalarMaskStages()));
            const ForcedTarget forced(GetParam());
            ASSERT_EQ(part, scaled(ActiveMaskStages()));
            ByteTable table;
            for (std::size_t i = 0; i < table.size(); ++i) table[i] = static_cast<unsigned char>(i * 7);
            Bytes found(count + 1, 99);
            ActiveMaskStages().lookUp(keys.data(), count, table, found.data());
            for (std::size_t i = 0; i < count; ++i) ASSERT_EQ(table[keys[i]], found[i]);
            ASSERT_EQ(99, found[count]);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Targets, MaskStagesOn, testing::ValuesIn(VectorTargets()),
                         [](const auto& info) { return info.param.name; });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(MaskStagesOn);

}  // namespace
}  // namespace vantu::test
