#include "blend/stages/Stages.h"

#include "pixel/VectorTargets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "blend/stages/VectorStages.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "blend/definition/ModeTable.h"

#if IMAGEOP_HAS_VECTORS
#include "blend/stages/VectorPainting-inl.h"
#include "blend/stages/VectorPixels-inl.h"
#include "blend/stages/VectorResolve-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {
namespace {

/// trunc(k * (sa * t) / 255) as floor(trunc(k * (sa * t)) / 255), which is the same: the product is formed in double
/// precision in this order, and floor(n / 255) is (m + m/256) / 256 with m = n + 1 for n below 2^16.
void PlainMask(const MaskSpan& span) {
    const hn::ScalableTag<double> doubles;
    const hn::Rebind<std::int32_t, decltype(doubles)> ints;
    const hn::Rebind<std::uint32_t, decltype(doubles)> pixels;
    const hn::Repartition<std::uint8_t, decltype(pixels)> pixelBytes;
    const hn::Rebind<std::uint8_t, decltype(doubles)> bytes;
    const auto k = hn::Set(doubles, static_cast<double>(span.alpha));
    std::size_t i = 0;
    for (; i + hn::Lanes(doubles) <= span.count; i += hn::Lanes(doubles)) {
        const auto packed = hn::BitCast(pixels, hn::LoadU(pixelBytes, span.source + i * kPackedBytes));
        const auto sa = hn::PromoteTo(doubles, hn::BitCast(ints, hn::ShiftRight<24>(packed)));
        const auto product = hn::Mul(k, hn::Mul(sa, hn::LoadU(doubles, span.opacity + i)));
        const auto whole = hn::BitCast(pixels, hn::DemoteTo(ints, hn::Max(product, hn::Zero(doubles))));
        const auto m = hn::Add(whole, hn::Set(pixels, 1));
        const auto quotient = hn::ShiftRight<8>(hn::Add(m, hn::ShiftRight<8>(m)));
        hn::StoreU(hn::DemoteTo(bytes, hn::BitCast(ints, quotient)), bytes, span.effective + i);
    }
    MaskSpan tail = span;
    tail.opacity += i;
    tail.source += i * kPackedBytes;
    tail.effective += i;
    tail.count -= i;
    ScalarStages().plainMask(tail);
}

/// k*sa*m / 65025 with k*sa = 255*x1 + x0: (x1*m + x0*m/255) / 255.
void GroupMask(const MaskSpan& span) {
    const TagByte bytes;
    const Words k = Constant(span.alpha);
    const Words zero = hn::Zero(kWords);
    const std::size_t block = BlockPixels();
    std::size_t i = 0;
    for (; i + block <= span.count; i += block) {
        const Product x(k, LoadBlock(span.source + i * kPackedBytes).Alpha());
        const Words m = LoadBytes(span.maskByte + i);
        const Words as = Div255(hn::Add(hn::Mul(x.v1, m), Div255(hn::Mul(x.v0, m))));
        const auto store = [&](Pixels lanes, std::size_t first) {
            hn::StoreU(hn::DemoteTo(bytes, hn::BitCast(TagInt(), lanes)), bytes, span.effective + i + first);
        };
        store(FirstLanes(as, zero), 0);
        store(SecondLanes(as, zero), block / 2);
    }
    MaskSpan tail = span;
    tail.maskByte += i;
    tail.source += i * kPackedBytes;
    tail.effective += i;
    tail.count -= i;
    ScalarStages().groupMask(tail);
}

constexpr BlendStages kStages{
    MakeModeTable([]<BlendMode Mode>() {
        constexpr PackedColors premultiplied = PackedColors::Premultiplied;
        constexpr PackedColors straight = PackedColors::Straight;
        return std::array<std::array<CompositeStage, 2>, 3>{{
            {PaintSpan<Mode, PlainStage<Mode, premultiplied>, false>,
             PaintSpan<Mode, PlainStage<Mode, straight>, false>},
            {PaintSpan<Mode, GroupStage<Mode, premultiplied>, true>, PaintSpan<Mode, GroupStage<Mode, straight>, true>},
            {PaintSpan<Mode, KnockoutStage<Mode, premultiplied>, true>,
             PaintSpan<Mode, KnockoutStage<Mode, straight>, true>},
        }};
    }),
    PlainMask,
    GroupMask,
    ResolveSpan<BackdropRemoval>,
    ResolveSpan<GroupAlphaRescaling>,
    ResolveSpan<BackdropMixing>};

const BlendStages* Stages() {
    return &kStages;
}

}  // namespace
}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#else  // no vectors: the steps that define the arithmetic run

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {
namespace {
const BlendStages* Stages() {
    return &ScalarStages();
}
}  // namespace
}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif

#if HWY_ONCE
namespace vantu {

HWY_EXPORT(Stages);

const BlendStages& ActiveStages() {
    return *HWY_DYNAMIC_DISPATCH(Stages)();
}

}  // namespace vantu
#endif
