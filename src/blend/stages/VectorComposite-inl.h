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
#include "blend/stages/VectorPixels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {

/// What all forms need of a block: the source, its effective alpha, and which pixels are left as they are.
struct Source {
    HWY_INLINE Source(const CompositeSpan& span, std::size_t i)
        : block(LoadBlock(span.source + i * kPackedBytes)),
          alpha(block.Alpha()),
          opacity(span.opacity != nullptr ? LoadBytes(span.opacity + i)
                                          : Div255(hn::Mul(alpha, Constant(span.alpha)))) {}

    [[nodiscard]] HWY_INLINE Channels Colors() const {
        const Words full = Constant(255);
        if (All(hn::Eq(alpha, full))) return StoredChannels(block);
        if (!AllExtreme()) return UnpremultipliedWhereSeen(block, alpha);
        const auto channel = [&](Words c) { return hn::IfThenElseZero(hn::Eq(c, alpha), full); };
        return {channel(block.Blue()), channel(block.Green()), channel(block.Red())};
    }

    Block block;
    Words alpha;
    Words opacity;

private:
    /// Whether every channel is 0 or its pixel's alpha, which stand for 0 and 255 without a division: those of shadows,
    /// and of all else in black, white or a primary colour. min(c, alpha - c) is 0 there; a difference below 0 wraps.
    [[nodiscard]] HWY_INLINE bool AllExtreme() const {
        const hn::Repartition<std::uint8_t, Tag16> bytes;
        const auto most = hn::BitCast(bytes, hn::Or(alpha, hn::ShiftLeft<8>(alpha)));
        const auto distance = [&](Words two) {
            const auto channels = hn::BitCast(bytes, two);
            return hn::Min(channels, hn::Sub(most, channels));
        };
        const auto farthest = hn::Or(distance(block.blueGreen), distance(block.redAlpha));
        return hn::AllTrue(bytes, hn::Eq(farthest, hn::Zero(bytes)));
    }
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

template <PackedColors Colors>
HWY_INLINE Channels StraightChannels(const Block& block, Words alpha) {
    return Colors == PackedColors::Straight ? StoredChannels(block) : Unpremultiplied(block, alpha);
}

/// floor(M / a) with R = floor(65535 / a). A premultiplied channel is floor(a * quotient / 255), and a * quotient is M
/// less its remainder; 0 for a = 0.
template <PackedColors Colors, typename Numerator>
struct Divided {
    HWY_INLINE Words operator()(Words cb, Words cs) const {
        const Words m = numerator(cb, cs);
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
    HWY_INLINE Words operator()(Words cb, Words cs) const {
        const Words s = hn::Sub(hn::Add(cs, cb), blend(cb, cs));
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
    const Blend<Mode>& blend;
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

/// M = floor(N/255) of N = ((255-ab)*cs + B*ab)*as + (ai-as)*cb*255. With as*ab = 255*v1 + v0:
/// M = cs*as + cb*(ai-as) - v1*(cs-B) - ceil(v0*(cs-B)/255), where the last is -floor(v0*(B-cs)/255) for B above cs.
template <BlendMode Mode>
struct GroupNumerator {
    HWY_INLINE Words operator()(Words cb, Words cs) const {
        const Words b = blend(cb, cs);
        const Words base = hn::Add(hn::Mul(cs, as), hn::Mul(cb, rest));
        const Words down = hn::Add(hn::Mul(v1, hn::Sub(cs, b)), CeilDiv255(hn::Mul(v0, hn::SaturatedSub(cs, b))));
        return hn::Add(hn::Sub(base, down), Div255(hn::Mul(v0, hn::SaturatedSub(b, cs))));
    }

    Words as, rest, v1, v0;
    const Blend<Mode>& blend;
};

}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
