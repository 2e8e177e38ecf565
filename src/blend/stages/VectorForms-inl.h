// The compositing forms: each paints a block of a span. Included once per target.

#if defined(IMAGEOP_VECTOR_FORMS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef IMAGEOP_VECTOR_FORMS_INL_H
#undef IMAGEOP_VECTOR_FORMS_INL_H
#else
#define IMAGEOP_VECTOR_FORMS_INL_H
#endif

#include <vantu/BlendMode.h>

#include <cstddef>

#include "blend/stages/Stages.h"
#include "blend/stages/VectorBlend-inl.h"
#include "blend/stages/VectorComposite-inl.h"
#include "blend/stages/VectorDivision-inl.h"
#include "blend/stages/VectorMix-inl.h"
#include "blend/stages/VectorPixels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {

/// (B*as + cb*(255-as)) / 255: the result on an opaque backdrop.
template <BlendMode Mode>
struct OnOpaque {
    HWY_INLINE Words operator()(Words cb, Words cs) const {
        return Div255(hn::Add(hn::Mul(blend(cb, cs), as), hn::Mul(cb, hn::Sub(Constant(255), as))));
    }

    Words as;
    const Blend<Mode>& blend;
};

/// (B*ab + cs*(255-ab)) / 255: the result of an opaque source.
template <BlendMode Mode>
struct OfOpaque {
    HWY_INLINE Words operator()(Words cb, Words cs) const {
        return Div255(hn::Add(hn::Mul(blend(cb, cs), ab), hn::Mul(cs, hn::Sub(Constant(255), ab))));
    }

    Words ab;
    const Blend<Mode>& blend;
};

/// Normal of opaque pixels on opaque ones at a constant alpha below 255: every byte, the alpha's too, is
/// (source*alpha + target*(255-alpha)) / 255. In a high byte floor(n / 255) is (m + m/256) / 256 with m = n + 1.
HWY_INLINE Pixels MixedBytes(Pixels source, Pixels target, std::uint32_t alpha) {
    const Words low = Constant(0x00FF);
    const Words high = Constant(0xFF00);
    const Words s = AsWords(source);
    const Words t = AsWords(target);
    const Words even =
        Div255(hn::Add(hn::Mul(hn::And(s, low), Constant(alpha)), hn::Mul(hn::And(t, low), Constant(255 - alpha))));
    const Words m = hn::Add(hn::Add(hn::MulHigh(hn::And(s, high), Constant(alpha << 8)),
                                    hn::MulHigh(hn::And(t, high), Constant((255 - alpha) << 8))),
                            Constant(1));
    return AsPixels(hn::OrAnd(even, hn::Add(m, hn::ShiftRight<8>(m)), high));
}

/// Paints a block of which all pixels are opaque that way.
/// @return false if they are not.
HWY_INLINE bool PaintOpaqueBytes(const CompositeSpan& span, std::size_t i) {
    const unsigned char* const source = span.source + i * kPackedBytes;
    unsigned char* const target = span.target + i * kPackedBytes;
    const std::size_t half = kPackedBytes * hn::Lanes(kPixels);
    const Pixels s0 = LoadPixels(source), s1 = LoadPixels(source + half);
    const Pixels t0 = LoadPixels(target), t1 = LoadPixels(target + half);
    if (!AllOpaque(hn::And(hn::And(s0, s1), hn::And(t0, t1)))) return false;
    StorePixels(MixedBytes(s0, t0, span.alpha), target);
    StorePixels(MixedBytes(s1, t1, span.alpha), target + half);
    return true;
}

// Each form paints a block of a span from pixel i on, and says whether it would pay to gather the pixels that need
// painting: whether many, but not all, stay as they are.

template <BlendMode Mode, PackedColors Colors>
struct PlainStage {
    static HWY_INLINE bool Paint(const CompositeSpan& span, std::size_t i, const Blend<Mode>& blend) {
        if (Mode == BlendMode::Normal && span.alpha != 255 && span.opacity == nullptr && span.select == nullptr &&
            PaintOpaqueBytes(span, i)) {
            return false;
        }
        if (span.opacity != nullptr && span.select == nullptr && PaintOpaqueThroughOpacities<Mode>(span, i))
            return false;
        const Words zero = hn::Zero(kWords);
        const Words full = Constant(255);
        const Source source(span, i);
        WordMask keep = hn::Eq(source.alpha, zero);
        if (All(keep)) return false;
        unsigned char* const packed = span.target + i * kPackedBytes;
        const Words as = source.opacity;
        const bool opaqueSource = All(hn::Eq(hn::And(source.alpha, as), full));
        const bool replaces = Mode == BlendMode::Normal && opaqueSource;
        if (replaces && span.select == nullptr) {
            StoreBlock(source.block, packed);
            return false;
        }
        keep = hn::Or(keep, Unselected(span, i));
        const bool sparse = hn::CountTrue(kWords, keep) > BlockPixels() / 4;
        const Block target = LoadBlock(packed);
        if (replaces) {
            StoreWhereNot(keep, target, source.block, packed);
            return sparse;
        }
        const Words ab = target.Alpha();
        const Channels cs = source.Colors();
        if (All(hn::Eq(ab, full))) {
            const Channels result = EachChannel(StoredChannels(target), cs, OnOpaque<Mode>{as, blend});
            StoreWhereNot(keep, target, MakeBlock(result, full), packed);
            return sparse;
        }
        const Channels cb =
            Colors == PackedColors::Straight ? StoredChannels(target) : UnpremultipliedWhereSeen(target, ab);
        if (opaqueSource) {
            StoreWhereNot(keep, target, MakeBlock(EachChannel(cb, cs, OfOpaque<Mode>{ab, blend}), full), packed);
            return sparse;
        }
        const Product v(as, ab);
        const Words ar = hn::Add(hn::Sub(ab, v.v1), as);
        const PlainNumerator<Mode> numerator{as, ab, v.v1, v.v0, blend};
        const Channels result =
            EachChannel(cb, cs, Divided<Colors, PlainNumerator<Mode>>{numerator, ar, Reciprocal(ar)});
        // A straight pixel of result alpha 0 keeps its colour; a premultiplied one is cleared unless told otherwise.
        if (Colors == PackedColors::Straight || span.keepClear) keep = hn::Or(keep, hn::Eq(ar, zero));
        StoreWhereNot(keep, target, MakeBlock(result, ar), packed);
        return sparse;
    }
};

/// Whether all of a block is painted by Normal with pixels that are opaque.
template <BlendMode Mode>
HWY_INLINE bool Replaces(const CompositeSpan& span, const Source& source) {
    return Mode == BlendMode::Normal && span.select == nullptr &&
           All(hn::Eq(hn::And(source.alpha, source.opacity), Constant(255)));
}

template <BlendMode Mode, PackedColors Colors>
struct GroupStage {
    static HWY_INLINE bool Paint(const CompositeSpan& span, std::size_t i, const Blend<Mode>& blend) {
        const Words zero = hn::Zero(kWords);
        const Words full = Constant(255);
        WordMask keep = Unselected(span, i);
        if (All(keep)) return false;
        const Source source(span, i);
        const Words as = source.opacity;
        unsigned char* const packed = span.target + i * kPackedBytes;
        if (Replaces<Mode>(span, source)) {
            StoreEntries(full, span.groupAlpha + i);
            StoreBlock(source.block, packed);
            return false;
        }
        const Words raise = span.stencil ? source.alpha : as;
        const Words before = LoadEntries(span.groupAlpha + i);
        const Words g = hn::IfThenElse(keep, before, UniteAlpha(before, raise));
        const Block target = LoadBlock(packed);
        const Words a0 = LoadBlock(span.snapshot + i * kPackedBytes).Alpha();
        const Words ab = target.Alpha();
        const WordMask opaque = hn::Eq(hn::And(ab, hn::Max(a0, g)), full);  // and ai is 255
        // A clear source leaves opaque pixels as they are, and those that stay clear.
        if (All(hn::Eq(raise, zero)) && All(hn::Or(opaque, hn::Eq(hn::Or(a0, g), zero)))) return false;
        StoreEntries(g, span.groupAlpha + i);
        const Channels cs = source.Colors();
        if (All(opaque)) {
            const Channels result = EachChannel(StoredChannels(target), cs, OnOpaque<Mode>{as, blend});
            StoreWhereNot(keep, target, MakeBlock(result, full), packed);
            return false;
        }
        const Words ai = UniteAlpha(a0, g);
        const Product v(as, ab);
        const Words r = Reciprocal(ai);
        const GroupNumerator<Mode> numerator{as, hn::Sub(ai, as), v.v1, v.v0, blend};
        const Channels result = EachChannel(StraightChannels<Colors>(target, ab), cs,
                                            Divided<Colors, GroupNumerator<Mode>>{numerator, ai, r});
        keep = hn::Or(keep, hn::Eq(ai, zero));
        StoreWhereNot(keep, target, MakeBlock(result, ai), packed);
        return false;
    }
};

template <BlendMode Mode, PackedColors Colors>
struct KnockoutStage {
    static HWY_INLINE bool Paint(const CompositeSpan& span, std::size_t i, const Blend<Mode>& blend) {
        const WordMask keep = Unselected(span, i);
        if (All(keep)) return false;
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
        // Where as is 0 the group's own colour stays; the alpha is new all the same, but under a stencil.
        const WordMask unpainted = hn::Eq(as, hn::Zero(kWords));
        const Words full = Constant(255);
        if (All(hn::Eq(hn::And(ad, a0), full))) {
            const Channels painted = EachChannel(StoredChannels(snapshot), source.Colors(), OnOpaque<Mode>{as, blend});
            const Channels result = EachChannel(StoredChannels(target), painted, [&](Words old, Words fresh) {
                return hn::IfThenElse(unpainted, old, fresh);
            });
            StoreWhereNot(keep, target, MakeBlock(result, full), packed);
            return false;
        }
        const Product v(as, a0);
        const Words ar = hn::Add(hn::Sub(a0, v.v1), as);
        const Words r = Reciprocal(ar);
        const PlainNumerator<Mode> numerator{as, a0, v.v1, v.v0, blend};
        const Channels painted = EachChannel(StraightChannels<Colors>(snapshot, a0), source.Colors(),
                                             Divided<PackedColors::Straight, PlainNumerator<Mode>>{numerator, ar, r});

        const Words alpha = span.stencil ? ad : ar;
        const Channels result = EachChannel(StraightChannels<Colors>(target, ad), painted, [&](Words old, Words fresh) {
            const Words channel = hn::IfThenElse(unpainted, old, fresh);
            return Colors == PackedColors::Premultiplied ? Div255(hn::Mul(channel, alpha)) : channel;
        });
        StoreWhereNot(keep, target, MakeBlock(result, alpha), packed);
        return false;
    }
};

}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
