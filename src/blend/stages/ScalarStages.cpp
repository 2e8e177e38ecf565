#include "blend/definition/CompositeSteps.h"
#include "blend/definition/ModeTable.h"
#include "blend/definition/ResolveSteps.h"
#include "blend/stages/Stages.h"
#include "pixel/PixelCodec.h"

namespace vantu {
namespace {

/// The format that packed pixels have in memory.
constexpr PixelFormat FormatOf(PackedColors colors) {
    return colors == PackedColors::Straight ? PixelFormat::Bgra32 : PixelFormat::Bgra32Premultiplied;
}

template <PackedColors Colors>
Color ReadPacked(const unsigned char* pixel) {
    Color color;
    ReadPixel<FormatOf(Colors)>(pixel, color);
    return color;
}

/// Calls `step(row, i, cs, as)` for each painted pixel i of a row of pixels.
template <typename Step>
void EachPixelOfRow(const CompositeSpan& row, Step step) {
    for (std::size_t i = 0; i < row.count; ++i) {
        if (row.select != nullptr && row.select[i] == 0) continue;
        const Color cs = ReadPacked<PackedColors::Premultiplied>(row.source + i * kPackedBytes);
        step(row, i, cs, row.opacity != nullptr ? row.opacity[i] : ConstantOpacity(row.alpha, cs.GetAlpha()));
    }
}

/// The same of all rows. The first one, often of a single pixel, is not worth a copy of the span.
template <typename Step>
void EachPixel(const CompositeSpan& span, Step step) {
    EachPixelOfRow(span, step);
    for (std::size_t row = 1; row < span.rows; ++row) EachPixelOfRow(span.FromRow(row), step);
}

template <BlendMode Mode, PackedColors Colors>
void Plain(const CompositeSpan& span) {
    EachPixel(span, [](const CompositeSpan& row, std::size_t i, const Color& cs, std::uint32_t as) {
        if (cs.GetAlpha() == 0) return;
        unsigned char* const pixel = row.target + i * kPackedBytes;
        Color cd = ReadPacked<Colors>(pixel);
        const std::uint32_t ar = CompositePlain<Mode>(cs, cd, as);
        if (ar != 0 || !row.keepClear) WritePixel<FormatOf(Colors)>(pixel, cd);
    });
}

template <BlendMode Mode, PackedColors Colors, bool Knockout>
void InGroup(const CompositeSpan& span) {
    EachPixel(span, [](const CompositeSpan& row, std::size_t i, const Color& cs, std::uint32_t as) {
        unsigned char* const pixel = row.target + i * kPackedBytes;
        Color cd = ReadPacked<Colors>(pixel);
        const Color c0 = ReadPacked<Colors>(row.snapshot + i * kPackedBytes);
        if (StepInGroup<Mode, Knockout>(cs, cd, c0, row.groupAlpha[i], as, row.stencil)) {
            WritePixel<FormatOf(Colors)>(pixel, cd);
        }
    });
}

void PlainMask(const MaskSpan& span) {
    for (std::size_t i = 0; i < span.count; ++i) {
        const std::uint32_t sa = span.source[i * kPackedBytes + 3];
        span.effective[i] = static_cast<unsigned char>(PlainMaskOpacity(span.alpha, sa, span.opacity[i]));
    }
}

void GroupMask(const MaskSpan& span) {
    for (std::size_t i = 0; i < span.count; ++i) {
        const std::uint32_t sa = span.source[i * kPackedBytes + 3];
        span.effective[i] = static_cast<unsigned char>(GroupMaskOpacity(span.alpha, sa, span.maskByte[i]));
    }
}

template <void (*Step)(unsigned char* p, const unsigned char* b, std::uint32_t a)>
void Resolve(const CompositeSpan& span) {
    for (std::size_t i = 0; i < span.count; ++i) {
        Step(span.target + i * kPackedBytes, span.snapshot + i * kPackedBytes, span.groupAlpha[i]);
    }
}

constexpr BlendStages kScalarStages{MakeModeTable([]<BlendMode Mode>() {
                                        constexpr PackedColors premultiplied = PackedColors::Premultiplied;
                                        constexpr PackedColors straight = PackedColors::Straight;
                                        return std::array<std::array<CompositeStage, 2>, 3>{{
                                            {Plain<Mode, premultiplied>, Plain<Mode, straight>},
                                            {InGroup<Mode, premultiplied, false>, InGroup<Mode, straight, false>},
                                            {InGroup<Mode, premultiplied, true>, InGroup<Mode, straight, true>},
                                        }};
                                    }),
                                    PlainMask,
                                    GroupMask,
                                    Resolve<RemoveBackdrop>,
                                    Resolve<RescaleToGroupAlpha>,
                                    Resolve<MixWithBackdrop>};

}  // namespace

const BlendStages& ScalarStages() {
    return kScalarStages;
}

}  // namespace vantu
