#include "blend/kernels/Stages.h"

#include <cstring>
#include <optional>

#include "pixel/VectorTargets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "blend/kernels/VectorStages.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "blend/kernels/ModeTable.h"

#if HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128
#include "blend/kernels/VectorBlend-inl.h"
#include "blend/kernels/VectorWords-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {
namespace {

/// What all forms need of a block: the source, its effective alpha, and which pixels are left as they are.
struct Source {
    HWY_INLINE Source(const CompositeSpan& span, std::size_t i)
        : block(LoadBlock(span.source + i * kPackedBytes)),
          alpha(block.Alpha()),
          opacity(span.opacity != nullptr ? LoadBytes(span.opacity + i)
                                          : Div255(hn::Mul(alpha, Constant(span.alpha)))) {}

    [[nodiscard]] HWY_INLINE Channels Colors() const {
        return All(hn::Eq(alpha, Constant(255))) ? StoredChannels(block) : Unpremultiplied(block, alpha);
    }

    Block block;
    Words alpha;
    Words opacity;
};

HWY_INLINE WordMask Unselected(const CompositeSpan& span, std::size_t i) {
    const Words zero = hn::Zero(kWords);
    if (span.select == nullptr) return hn::Ne(zero, zero);
    return hn::Eq(LoadBytes(span.select + i), zero);
}

HWY_INLINE void StoreWhereNot(WordMask keep, const Block& before, const Block& after, unsigned char* packed) {
    StoreBlock({hn::IfThenElse(keep, before.blueGreen, after.blueGreen),
                hn::IfThenElse(keep, before.redAlpha, after.redAlpha)},
               packed);
}

template <PackedForm Form>
HWY_INLINE Channels StraightChannels(const Block& block, Words alpha) {
    return Form == PackedForm::Straight ? StoredChannels(block) : Unpremultiplied(block, alpha);
}

/// floor(M / a) with R = floor(65535 / a): e = M*R / 65536 is the quotient or one less. A premultiplied channel is
/// floor(a * quotient / 255), and a * quotient is M less its remainder; 0 for a = 0.
template <PackedForm Form>
HWY_INLINE Words DividedChannel(Words m, Words a, Words r) {
    const Words e = hn::MulHigh(m, r);
    const Words rest = hn::Sub(m, hn::Mul(e, a));
    const Words smaller = hn::Min(rest, hn::Sub(rest, a));  // the remainder: rest - a wraps to a large value below a
    if constexpr (Form == PackedForm::Premultiplied) return Div255(hn::Sub(m, smaller));
    return hn::Sub(e, hn::VecFromMask(kWords, hn::Ne(rest, smaller)));
}

/// B*as + cb*(255-as) over 255: the result on an opaque backdrop.
template <BlendMode Mode>
HWY_INLINE Channels OnOpaque(const Channels& cb, const Channels& cs, Words as, const SoftLightTable* table) {
    const Words rest = hn::Sub(Constant(255), as);
    return EachChannel(cb, cs, [&](Words b, Words s) {
        return Div255(hn::Add(hn::Mul(Blend<Mode>(b, s, table), as), hn::Mul(b, rest)));
    });
}

/// M = floor(N/255) of N = B*ab*as + (255-ab)*cs*as + (255-as)*cb*ab. With S = cs + cb - B and as*ab = 255*v1 + v0:
/// M = cs*as + cb*ab - v1*S - ceil(v0*S/255). The terms wrap in 16 bits, M is at most 65,025. S is at most 256, and to
/// 510 where B may be as small as |cs-cb|: there 255*v0 is taken out of v0*S first.
template <BlendMode Mode>
struct PlainNumerator {
    HWY_INLINE Words operator()(Words cb, Words cs) const {
        const Words s = hn::Sub(hn::Add(cs, cb), Blend<Mode>(cb, cs, table));
        const Words base = hn::Sub(hn::Add(hn::Mul(cs, as), hn::Mul(cb, ab)), hn::Mul(v1, s));
        if constexpr (Mode == BlendMode::Difference || Mode == BlendMode::Exclusion) {
            const Words full = Constant(255);
            const Words less = hn::Min(s, hn::Sub(s, full));  // s, or s - 255 from 255 on
            const Words taken = hn::IfThenElseZero(hn::Ne(s, less), v0);
            return hn::Sub(base, hn::Add(taken, CeilDiv255(hn::Mul(v0, less))));
        }
        return hn::Sub(base, CeilDiv255(hn::Mul(v0, s)));
    }

    Words as, ab, v1, v0;
    const SoftLightTable* table;
};

/// as*ab as 255*v1 + v0.
struct Product {
    HWY_INLINE Product(Words as, Words ab) {
        const Words v = hn::Mul(as, ab);
        v1 = Div255(v);
        v0 = hn::Sub(v, hn::Mul(v1, Constant(255)));
    }
    Words v1, v0;
};

template <BlendMode Mode, PackedForm Form>
struct PlainStage {
    static HWY_INLINE void Paint(const CompositeSpan& span, std::size_t i, const SoftLightTable* table) {
        const Words zero = hn::Zero(kWords);
        const Words full = Constant(255);
        const Source source(span, i);
        WordMask keep = hn::Eq(source.alpha, zero);
        if (All(keep)) return;
        keep = hn::Or(keep, Unselected(span, i));
        unsigned char* const packed = span.target + i * kPackedBytes;
        const Block target = LoadBlock(packed);
        const Words as = source.opacity;
        const bool opaqueSource = All(hn::Eq(hn::And(source.alpha, as), full));

        if (Mode == BlendMode::Normal && opaqueSource) {
            StoreWhereNot(keep, target, source.block, packed);
            return;
        }
        const Words ab = target.Alpha();
        const Channels cs = source.Colors();
        if (All(hn::Eq(ab, full))) {
            const Channels result = OnOpaque<Mode>(StoredChannels(target), cs, as, table);
            StoreWhereNot(keep, target, MakeBlock(result, full), packed);
            return;
        }
        const Channels cb = StraightChannels<Form>(target, ab);
        if (opaqueSource) {
            // (B*ab + (255-ab)*cs) / 255 on any backdrop.
            const Words rest = hn::Sub(full, ab);
            const Channels result = EachChannel(cb, cs, [&](Words b, Words s) {
                return Div255(hn::Add(hn::Mul(Blend<Mode>(b, s, table), ab), hn::Mul(s, rest)));
            });
            StoreWhereNot(keep, target, MakeBlock(result, full), packed);
            return;
        }
        const Product v(as, ab);
        const Words ar = hn::Add(hn::Sub(ab, v.v1), as);
        const Words r = Reciprocal(ar);
        const PlainNumerator<Mode> numerator{as, ab, v.v1, v.v0, table};
        const Channels result =
            EachChannel(cb, cs, [&](Words b, Words s) { return DividedChannel<Form>(numerator(b, s), ar, r); });
        // A straight pixel of result alpha 0 keeps its colour; a premultiplied one is cleared unless told otherwise.
        if (Form == PackedForm::Straight || span.keepClear) keep = hn::Or(keep, hn::Eq(ar, zero));
        StoreWhereNot(keep, target, MakeBlock(result, ar), packed);
    }
};

/// M = floor(N/255) of N = ((255-ab)*cs + B*ab)*as + (ai-as)*cb*255. With as*ab = 255*v1 + v0:
/// M = cs*as + cb*(ai-as) - v1*(cs-B) - ceil(v0*(cs-B)/255), where the last is -floor(v0*(B-cs)/255) for B above cs.
template <BlendMode Mode>
struct GroupNumerator {
    HWY_INLINE Words operator()(Words cb, Words cs) const {
        const Words b = Blend<Mode>(cb, cs, table);
        const Words base = hn::Add(hn::Mul(cs, as), hn::Mul(cb, rest));
        const Words down = hn::Add(hn::Mul(v1, hn::Sub(cs, b)), CeilDiv255(hn::Mul(v0, hn::SaturatedSub(cs, b))));
        return hn::Add(hn::Sub(base, down), Div255(hn::Mul(v0, hn::SaturatedSub(b, cs))));
    }

    Words as, rest, v1, v0;
    const SoftLightTable* table;
};

template <BlendMode Mode, PackedForm Form>
struct GroupStage {
    static HWY_INLINE void Paint(const CompositeSpan& span, std::size_t i, const SoftLightTable* table) {
        const Words zero = hn::Zero(kWords);
        const Words full = Constant(255);
        WordMask keep = Unselected(span, i);
        if (All(keep)) return;
        const Source source(span, i);
        const Words as = source.opacity;
        const Words before = LoadEntries(span.groupAlpha + i);
        const Words g = hn::IfThenElse(keep, before, UniteAlpha(before, span.stencil ? source.alpha : as));
        StoreEntries(g, span.groupAlpha + i);

        unsigned char* const packed = span.target + i * kPackedBytes;
        const Block target = LoadBlock(packed);
        const Words a0 = LoadBlock(span.snapshot + i * kPackedBytes).Alpha();
        const Words ab = target.Alpha();
        const Channels cs = source.Colors();
        if (All(hn::Eq(hn::And(ab, a0), full))) {
            const Channels result = OnOpaque<Mode>(StoredChannels(target), cs, as, table);
            StoreWhereNot(keep, target, MakeBlock(result, full), packed);
            return;
        }
        const Words ai = UniteAlpha(a0, g);
        const Product v(as, ab);
        const Words r = Reciprocal(ai);
        const GroupNumerator<Mode> numerator{as, hn::Sub(ai, as), v.v1, v.v0, table};
        const Channels result = EachChannel(StraightChannels<Form>(target, ab), cs, [&](Words b, Words s) {
            return DividedChannel<Form>(numerator(b, s), ai, r);
        });
        keep = hn::Or(keep, hn::Eq(ai, zero));
        StoreWhereNot(keep, target, MakeBlock(result, ai), packed);
    }
};

template <BlendMode Mode, PackedForm Form>
struct KnockoutStage {
    static HWY_INLINE void Paint(const CompositeSpan& span, std::size_t i, const SoftLightTable* table) {
        const WordMask keep = Unselected(span, i);
        if (All(keep)) return;
        const Source source(span, i);
        const Words as = source.opacity;
        if (!span.stencil) {
            const Words before = LoadEntries(span.groupAlpha + i);
            StoreEntries(hn::IfThenElse(keep, before, UniteAlpha(before, as)), span.groupAlpha + i);
        }

        unsigned char* const packed = span.target + i * kPackedBytes;
        const Block target = LoadBlock(packed);
        const Block snapshot = LoadBlock(span.snapshot + i * kPackedBytes);
        const Words ad = target.Alpha();
        const Words a0 = snapshot.Alpha();
        const Product v(as, a0);
        const Words ar = hn::Add(hn::Sub(a0, v.v1), as);
        const Words r = Reciprocal(ar);
        const PlainNumerator<Mode> numerator{as, a0, v.v1, v.v0, table};
        const Channels painted =
            EachChannel(StraightChannels<Form>(snapshot, a0), source.Colors(),
                        [&](Words b, Words s) { return DividedChannel<PackedForm::Straight>(numerator(b, s), ar, r); });

        // Where as is 0 the group's own colour stays; the alpha is new all the same, but under a stencil.
        const WordMask unpainted = hn::Eq(as, hn::Zero(kWords));
        const Words alpha = span.stencil ? ad : ar;
        const Channels result = EachChannel(StraightChannels<Form>(target, ad), painted, [&](Words old, Words fresh) {
            const Words channel = hn::IfThenElse(unpainted, old, fresh);
            return Form == PackedForm::Premultiplied ? Div255(hn::Mul(channel, alpha)) : channel;
        });
        StoreWhereNot(keep, target, MakeBlock(result, alpha), packed);
    }
};

/// The pixels of a span behind its last whole block, in buffers of a whole block.
template <bool Group>
class Tail {
public:
    Tail(const CompositeSpan& span, std::size_t first) : span_(span), first_(first), padded_(span) {
        padded_.source = Copy(span.source, source_, kPackedBytes);
        padded_.target = Copy(span.target, target_, kPackedBytes);
        padded_.opacity = Copy(span.opacity, opacity_, 1);
        padded_.select = Copy(span.select, select_, 1);
        if constexpr (Group) {
            padded_.snapshot = Copy(span.snapshot, snapshot_, kPackedBytes);
            padded_.groupAlpha = Copy(span.groupAlpha, groupAlpha_, 1);
        }
    }

    [[nodiscard]] const CompositeSpan& Padded() const { return padded_; }

    void Store() const {
        const std::size_t rest = span_.count - first_;
        std::memcpy(span_.target + first_ * kPackedBytes, target_, rest * kPackedBytes);
        if constexpr (Group) std::memcpy(span_.groupAlpha + first_, groupAlpha_, rest * sizeof *groupAlpha_);
    }

private:
    static constexpr std::size_t kMostPixels = HWY_MAX_BYTES / 2;

    template <typename T>
    T* Copy(const T* from, T* to, std::size_t perPixel) const {
        if (from == nullptr) return nullptr;
        std::memcpy(to, from + first_ * perPixel, (span_.count - first_) * perPixel * sizeof *to);
        return to;
    }

    const CompositeSpan& span_;
    std::size_t first_;
    CompositeSpan padded_;
    unsigned char source_[kMostPixels * kPackedBytes] = {};
    unsigned char target_[kMostPixels * kPackedBytes] = {};
    unsigned char snapshot_[Group ? kMostPixels * kPackedBytes : 1] = {};
    unsigned char opacity_[kMostPixels] = {};
    unsigned char select_[kMostPixels] = {};
    std::uint32_t groupAlpha_[Group ? kMostPixels : 1] = {};
};

/// Runs a stage over a span in blocks. There is one place that paints a block, whole or padded: the code is large.
template <BlendMode Mode, typename Stage, bool Group>
void Run(const CompositeSpan& span) {
    const SoftLightTable* const table = Mode == BlendMode::SoftLight ? &GetSoftLightTable() : nullptr;
    const std::size_t block = BlockPixels();
    std::optional<Tail<Group>> tail;
    const CompositeSpan* at = &span;
    std::size_t first = 0;
    for (std::size_t done = 0; done < span.count; done += block) {
        first = done;
        if (span.count - done < block) {
            at = &tail.emplace(span, done).Padded();
            first = 0;
        }
        Stage::Paint(*at, first, table);
    }
    if (tail) tail->Store();
}

/// trunc(k * (sa * t) / 255) as floor(trunc(k * (sa * t)) / 255), which is the same: the product is formed in double
/// precision in this order, and floor(n / 255) is n * 32897 >> 23 below 2^16.
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
        const auto quotient = hn::ShiftRight<23>(hn::Mul(whole, hn::Set(pixels, 32897)));
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
        constexpr PackedForm premultiplied = PackedForm::Premultiplied;
        constexpr PackedForm straight = PackedForm::Straight;
        return std::array<std::array<CompositeStage, 2>, 3>{{
            {Run<Mode, PlainStage<Mode, premultiplied>, false>, Run<Mode, PlainStage<Mode, straight>, false>},
            {Run<Mode, GroupStage<Mode, premultiplied>, true>, Run<Mode, GroupStage<Mode, straight>, true>},
            {Run<Mode, KnockoutStage<Mode, premultiplied>, true>, Run<Mode, KnockoutStage<Mode, straight>, true>},
        }};
    }),
    PlainMask, GroupMask};

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
