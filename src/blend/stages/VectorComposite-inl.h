// What compositing forms are made of, on blocks of pixels. Included once per target.

#if defined(IMAGEOP_VECTOR_COMPOSITE_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef IMAGEOP_VECTOR_COMPOSITE_INL_H
#undef IMAGEOP_VECTOR_COMPOSITE_INL_H
#else
#define IMAGEOP_VECTOR_COMPOSITE_INL_H
#endif

#include <vantu/BlendMode.h>

#include <cstddef>
#include <cstdint>

#include "blend/stages/Stages.h"
#include "blend/stages/VectorBlend-inl.h"
#include "blend/stages/VectorDivision-inl.h"
#include "blend/stages/VectorMix-inl.h"
#include "blend/stages/VectorPixels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {

/// What all forms need of the blocks of a step: the source, its alpha and its effective alpha.
struct Source {
    HWY_INLINE Source(const CompositeSpan& span, std::size_t i)
        : packed(span.source + i * kPackedBytes),
          block(LoadBlocks(packed)),
          alpha(Alphas(block)),
          opacity(EachBlock([&](std::size_t j) { return Opacity(span, i + j * BlockPixels(), alpha[j]); })),
          isOpaque(All(hn::Eq(AndOfBlocks(alpha), Constant(255)))) {}

    /// Whether all pixels are opaque and stay so.
    [[nodiscard]] HWY_INLINE bool PaintsOpaque() const {
        return isOpaque && All(hn::Eq(AndOfBlocks(opacity), Constant(255)));
    }

    /// The straight colours. @param mayBeExtreme whether it is worth asking if all are black, white or primary.
    [[nodiscard]] HWY_INLINE Blocks<Channels> Colors(bool mayBeExtreme = true) const {
        if (isOpaque) return StoredChannels(block);
        if (!mayBeExtreme || !IsExtreme(packed)) return UnpremultipliedWhereSeen(block, alpha);
        return EachBlock([&](std::size_t j) {
            const auto channel = [&](Words c) { return hn::IfThenElseZero(hn::Eq(c, alpha[j]), Constant(255)); };
            return Channels{channel(block[j].Blue()), channel(block[j].Green()), channel(block[j].Red())};
        });
    }

    const unsigned char* packed;
    Blocks<Block> block;
    Blocks<Words> alpha;
    Blocks<Words> opacity;
    bool isOpaque;

private:
    static HWY_INLINE Words Opacity(const CompositeSpan& span, std::size_t i, Words alpha) {
        if (span.opacity != nullptr) return LoadBytes(span.opacity + i);
        return span.alpha == 255 ? alpha : Div255(hn::Mul(alpha, Constant(span.alpha)));
    }
};

HWY_INLINE Blocks<WordMask> Unselected(const CompositeSpan& span, std::size_t i) {
    const Words zero = hn::Zero(kWords);
    return EachBlock([&](std::size_t j) {
        if (span.select == nullptr) return hn::Ne(zero, zero);
        return hn::Eq(LoadBytes(span.select + i + j * BlockPixels()), zero);
    });
}

/// Words of pixels that are selected, and 0 of others.
HWY_INLINE Blocks<Words> OfSelected(const CompositeSpan& span, std::size_t i, const Blocks<Words>& words) {
    return EachBlock([&](std::size_t j) {
        if (span.select == nullptr) return words[j];
        const Words selected = LoadBytes(span.select + i + j * BlockPixels());
        return hn::IfThenElseZero(hn::Ne(selected, hn::Zero(kWords)), words[j]);
    });
}

/// Which pixels stay as they are outside groups: those that are not selected, and those that the source is clear at.
HWY_INLINE Blocks<WordMask> Unpainted(const CompositeSpan& span, std::size_t i, const Blocks<Words>& sourceAlpha) {
    const Blocks<WordMask> unselected = Unselected(span, i);
    return EachBlock([&](std::size_t j) { return hn::Or(hn::Eq(sourceAlpha[j], hn::Zero(kWords)), unselected[j]); });
}

/// Whether it pays to gather the pixels of a span, from a step on of which many are kept: not through opacities, nor
/// for a few pixels.
HWY_INLINE bool PaysToGather(const CompositeSpan& span, std::size_t i, const Blocks<WordMask>& keep) {
    if (span.opacity != nullptr || i + 2 * StepPixels() > span.count * span.rows) return false;
    std::size_t kept = 0;
    ForEachBlock([&](std::size_t j) { kept += hn::CountTrue(kWords, keep[j]); });
    return kept > StepPixels() / 4;
}

/// Whether a mode costs so much that it pays to gather pixels also on an opaque target.
template <BlendMode Mode>
constexpr bool kCostly = Mode == BlendMode::ColorDodge || Mode == BlendMode::ColorBurn || Mode == BlendMode::SoftLight;

/// Whether it pays on an opaque target: where a mode is costly, and where Normal replaces pixels by opaque ones.
template <BlendMode Mode>
HWY_INLINE bool PaysToGatherOnOpaque(const CompositeSpan& span, std::size_t i, const Blocks<WordMask>& keep,
                                     const Blocks<Words>& sourceAlpha) {
    if constexpr (Mode == BlendMode::Normal) {
        const auto copied =
            EachBlock([&](std::size_t j) { return hn::Or(keep[j], hn::Eq(sourceAlpha[j], Constant(255))); });
        return span.alpha == 255 && PaysToGather(span, i, copied);
    }
    return kCostly<Mode> && PaysToGather(span, i, keep);
}

HWY_INLINE void StoreWhereNot(WordMask keep, const Block& before, const Block& after, unsigned char* packed) {
    StoreBlock({hn::IfThenElse(keep, before.blueGreen, after.blueGreen),
                hn::IfThenElse(keep, before.redAlpha, after.redAlpha)},
               packed);
}

template <PackedColors Colors>
HWY_INLINE Blocks<Channels> StraightChannels(const Blocks<Block>& block, const Blocks<Words>& alpha) {
    if constexpr (Colors == PackedColors::Premultiplied) return Unpremultiplied(block, alpha);
    return StoredChannels(block);
}

/// floor(M / a) with R = floor(65535 / a). A premultiplied channel is floor(a * quotient / 255), and a * quotient is M
/// less its remainder; 0 for a = 0.
template <PackedColors Colors, typename Numerator>
struct Divided {
    HWY_INLINE Words operator()(Words cb, Words cs, Words b) const {
        const Words m = numerator(cb, cs, b);
        const Division division(m, a, r);
        if constexpr (Colors == PackedColors::Premultiplied) return Div255(hn::Sub(m, division.remainder));
        return division.Quotient();
    }

    const Numerator& numerator;
    Words a, r;
};

/// M = floor(N/255) of N = B*ab*as + (255-ab)*cs*as + (255-as)*cb*ab. With S = cs + cb - B and as*ab = 255*v1 + v0:
/// M = cs*as + cb*ab - v1*S - ceil(v0*S/255). The terms wrap in 16 bits, M is at most 65,025. S is at most 256, and to
/// 510 where B may be as small as |cs-cb|: there 255*v0 is taken out of v0*S first.
template <BlendMode Mode>
struct PlainNumerator {
    HWY_INLINE Words operator()(Words cb, Words cs, Words b) const {
        if constexpr (Mode == BlendMode::Normal) {  // S is cb
            const Words base = hn::Add(hn::Mul(cs, as), hn::Mul(cb, hn::Sub(ab, v1)));
            return hn::Sub(base, CeilDiv255(hn::Mul(v0, cb)));
        }
        const Words s = hn::Sub(hn::Add(cs, cb), b);
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

/// Whether a mode's B is never above cs, and whether it is never below.
template <BlendMode Mode>
constexpr bool kDarkens = Mode == BlendMode::Multiply || Mode == BlendMode::Darken;
template <BlendMode Mode>
constexpr bool kLightens = Mode == BlendMode::Screen || Mode == BlendMode::Lighten;

/// M = floor(N/255) of N = ((255-ab)*cs + B*ab)*as + (ai-as)*cb*255. With as*ab = 255*v1 + v0:
/// M = cs*as + cb*(ai-as) - v1*(cs-B) - ceil(v0*(cs-B)/255), where the last is -floor(v0*(B-cs)/255) for B above cs.
template <BlendMode Mode>
struct GroupNumerator {
    HWY_INLINE Words operator()(Words cb, Words cs, Words b) const {
        const Words base = hn::Add(hn::Mul(cs, as), hn::Mul(cb, rest));
        if constexpr (Mode == BlendMode::Normal) return base;  // B is cs
        Words m = hn::Sub(base, hn::Mul(v1, hn::Sub(cs, b)));
        if constexpr (!kLightens<Mode>) m = hn::Sub(m, CeilDiv255(hn::Mul(v0, hn::SaturatedSub(cs, b))));
        if constexpr (!kDarkens<Mode>) m = hn::Add(m, Div255(hn::Mul(v0, hn::SaturatedSub(b, cs))));
        return m;
    }

    Words as, rest, v1, v0;
};

}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
