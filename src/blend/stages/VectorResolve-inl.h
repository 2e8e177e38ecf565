// What the end of a group makes of its pixels, in blocks. Included once per target.

#if defined(IMAGEOP_VECTOR_RESOLVE_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef IMAGEOP_VECTOR_RESOLVE_INL_H
#undef IMAGEOP_VECTOR_RESOLVE_INL_H
#else
#define IMAGEOP_VECTOR_RESOLVE_INL_H
#endif

#include <cstddef>

#include "blend/stages/Stages.h"
#include "blend/stages/VectorDivision-inl.h"
#include "blend/stages/VectorPainting-inl.h"
#include "blend/stages/VectorPixels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {

/// Whether all group alphas of a step are at most 255.
HWY_INLINE bool AreBytes(const std::uint32_t* entries) {
    Pixels any = hn::LoadU(kPixels, entries);
    for (std::size_t v = 1; v < kStepVectors; ++v) {
        any = hn::Or(any, hn::LoadU(kPixels, entries + v * hn::Lanes(kPixels)));
    }
    return hn::AllTrue(kPixels, hn::Eq(hn::ShiftRight<8>(any), hn::Zero(kPixels)));
}

/// Whether all channels of a step are at most 255.
HWY_INLINE bool AreBytes(const Blocks<Channels>& colors) {
    const auto any = EachBlock([&](std::size_t j) { return hn::Or3(colors[j].blue, colors[j].green, colors[j].red); });
    return All(hn::Eq(hn::ShiftRight<8>(OrOfBlocks(any)), hn::Zero(kWords)));
}

/// The group alphas of a step that starts with a pixel.
HWY_INLINE Blocks<Words> GroupAlphas(const CompositeSpan& span, std::size_t i) {
    return EachBlock([&](std::size_t j) { return LoadEntries(span.groupAlpha + i + j * BlockPixels()); });
}

// Each stage resolves a step of a span from pixel i on, and returns false, with nothing changed, for pixels that it
// leaves to the scalar stage.

/// v = (n + t)*a with t = floor(x/a) and x = (n-o)*k, in 32 bits that wrap. With y = n*a + x, which is n*(a+k) - o*k:
///   n >= o:  v = y - y mod a,
///   n < o:   v = y - (y + 2^32) mod a.
/// 16 bits hold y, or y + 2^16 for a y below 0. To have the remainder of y + 2^32 in them c = 2^32 mod a is added where
/// n < o, and where y < 0 also -(2^16 mod a) - a, which leaves the sum above 0 as y is at least -254*255.
/// A v below 0 may stay v + 2^16: floor(v/255) then has the low byte that it has in 32 bits.
/// Where k is 0 there is no x to wrap. Over a snapshot that is at a = 255 alone, and c = 0 makes it so. Where a is 0
/// the remainder comes out as y itself, and v as 0.
class BackdropRemoval {
public:
    static constexpr auto kScalar = &BlendStages::removeBackdrop;

    static HWY_INLINE bool Resolve(const CompositeSpan& span, std::size_t i) {
        if (!AreBytes(span.groupAlpha + i)) return false;
        unsigned char* const packed = span.target + i * kPackedBytes;
        const Words zero = hn::Zero(kWords);
        const Words full = Constant(255);
        const Blocks<Words> a = GroupAlphas(span, i);
        if (All(hn::Eq(OrOfBlocks(a), zero))) {
            ForEachBlock([&](std::size_t j) { StoreBlock({zero, zero}, BlockAt(packed, j)); });
            return true;
        }
        const Blocks<Block> target = LoadBlocks(packed);
        const Blocks<Words> pa = Alphas(target);
        // Nothing of the snapshot is seen through opaque elements.
        if (All(hn::Eq(hn::And(AndOfBlocks(a), AndOfBlocks(pa)), full))) return true;
        const Blocks<Block> snapshot = LoadBlocks(span.snapshot + i * kPackedBytes);
        const Blocks<Words> ba = Alphas(snapshot);
        const Blocks<Words> r = Reciprocals(a);
        if (All(hn::Eq(hn::And(AndOfBlocks(pa), AndOfBlocks(ba)), full))) {
            ForEachBlock([&](std::size_t j) {
                const BackdropRemoval removal(a[j], full, r[j]);
                const Channels colors = EachChannel(StoredChannels(target[j]), StoredChannels(snapshot[j]), removal);
                StoreBlock(MakeBlock(colors, a[j]), BlockAt(packed, j));
            });
            return true;
        }
        const Blocks<Channels> above = Straight(target, pa);
        const Blocks<Channels> below = Straight(snapshot, ba);
        if (!AreBytes(above) || !AreBytes(below)) return false;
        ForEachBlock([&](std::size_t j) {
            const BackdropRemoval removal(a[j], UniteAlpha(a[j], ba[j]), r[j]);
            // Over nothing a pixel keeps its colour. One without alpha, which has no colour, stays as it is over
            // something.
            const WordMask alone = hn::Eq(ba[j], zero);
            const WordMask clear = hn::Eq(pa[j], zero);
            const WordMask keep = hn::And(hn::Or(alone, clear), hn::Ne(a[j], zero));
            const Words alpha = hn::IfThenZeroElse(hn::AndNot(alone, clear), a[j]);
            const Channels colors =
                EachChannel(StoredChannels(target[j]), EachChannel(above[j], below[j], removal),
                            [&](Words old, Words fresh) { return hn::IfThenElse(keep, old, fresh); });
            StoreBlock(MakeBlock(colors, alpha), BlockAt(packed, j));
        });
        return true;
    }

    HWY_INLINE Words operator()(Words n, Words o) const {
        const Words up = hn::Mul(n, united_), down = hn::Mul(o, rest_);
        const Words y = hn::Sub(up, down);
        const Words wrapped = hn::IfThenElse(hn::Lt(n, o), hn::Add(y, wrap_), y);
        const Words z = hn::IfThenElse(hn::Lt(up, down), hn::Add(wrapped, wrapBelow_), wrapped);
        const Words v = hn::Sub(y, Division(z, a_, r_).remainder);
        return hn::And(hn::ShiftRight<7>(hn::MulHigh(v, Constant(0x8081))), Constant(255));
    }

private:
    /// `united` is a + k.
    HWY_INLINE BackdropRemoval(Words a, Words united, Words r)
        : a_(a), united_(united), r_(r), rest_(hn::Sub(united, a)) {
        const Words product = hn::Mul(r, a);
        const Words root = hn::Sub(hn::Zero(kWords), product);  // 2^16 mod a, or a for 0; c is what its square leaves
        const Words c = Division(hn::Mul(root, root), a, r).remainder;
        wrap_ = hn::IfThenZeroElse(hn::Eq(a, Constant(255)), c);
        wrapBelow_ = hn::Sub(product, a);
    }

    /// The straight channels, above 255 where one is above its pixel's alpha.
    static HWY_INLINE Blocks<Channels> Straight(const Blocks<Block>& block, const Blocks<Words>& alpha) {
        const Blocks<Factor> factor = UnpremultiplyFactors(alpha);
        return EachBlock([&](std::size_t j) { return Scaled(block[j], factor[j]); });
    }

    Words a_, united_, r_, rest_, wrap_, wrapBelow_;
};

/// c*a / pa, cut to 8 bits.
struct GroupAlphaRescaling {
    static constexpr auto kScalar = &BlendStages::rescaleToGroupAlpha;

    static HWY_INLINE bool Resolve(const CompositeSpan& span, std::size_t i) {
        if (!AreBytes(span.groupAlpha + i)) return false;
        unsigned char* const packed = span.target + i * kPackedBytes;
        const Blocks<Words> a = GroupAlphas(span, i);
        const Blocks<Block> target = LoadBlocks(packed);
        const Blocks<Words> pa = Alphas(target);
        if (EveryBlock([&](std::size_t j) { return All(hn::Eq(a[j], pa[j])); })) return true;
        const Blocks<Words> r = Reciprocals(pa);
        ForEachBlock([&](std::size_t j) {
            const auto rescaled = [&](Words channel) {
                return hn::And(Division(hn::Mul(channel, a[j]), pa[j], r[j]).Quotient(), Constant(255));
            };
            const Channels c = StoredChannels(target[j]);
            const Block result = MakeBlock({rescaled(c.blue), rescaled(c.green), rescaled(c.red)}, a[j]);
            StoreWhereNot(hn::Eq(pa[j], hn::Zero(kWords)), target[j], result, BlockAt(packed, j));
        });
        return true;
    }
};

/// ((255-a)*b + a*p) / 255.
struct BackdropMixing {
    static constexpr auto kScalar = &BlendStages::mixWithBackdrop;

    static HWY_INLINE bool Resolve(const CompositeSpan& span, std::size_t i) {
        unsigned char* const packed = span.target + i * kPackedBytes;
        const Words full = Constant(255);
        const Blocks<Words> entries = GroupAlphas(span, i);
        const Blocks<Block> target = LoadBlocks(packed);
        const Blocks<Block> snapshot = LoadBlocks(span.snapshot + i * kPackedBytes);
        ForEachBlock([&](std::size_t j) {
            const Words a = hn::And(entries[j], full);
            const Words rest = hn::Sub(full, a);
            const auto mixed = [&](Words b, Words p) { return Div255(hn::Add(hn::Mul(rest, b), hn::Mul(a, p))); };
            const Channels colors = EachChannel(StoredChannels(snapshot[j]), StoredChannels(target[j]), mixed);
            StoreBlock(MakeBlock(colors, a), BlockAt(packed, j));
        });
        return true;
    }
};

/// Resolves whole steps of a span from pixel `first` to `end`, or to one that is left to the scalar stage.
/// @return the pixel to go on with.
template <typename Stage>
HWY_NOINLINE std::size_t ResolveSteps(const CompositeSpan& span, std::size_t first, std::size_t end) {
    while (first < end && Stage::Resolve(span, first)) first += StepPixels();
    return first;
}

template <typename Stage>
void ResolveSpan(const CompositeSpan& span) {
    const auto resolve = [](const CompositeSpan& pixels, std::size_t count) {
        for (std::size_t done = ResolveSteps<Stage>(pixels, 0, count); done < count;) {
            CompositeSpan step = pixels;
            step.target += done * kPackedBytes;
            step.snapshot += done * kPackedBytes;
            step.groupAlpha += done;
            step.count = StepPixels();
            (ScalarStages().*Stage::kScalar)(step);
            done = ResolveSteps<Stage>(pixels, done + StepPixels(), count);
        }
    };
    const std::size_t whole = span.count - span.count % StepPixels();
    resolve(span, whole);
    if (whole < span.count) {
        const Tail<true> tail(span, whole);
        resolve(tail.Padded(), StepPixels());
        tail.Store();
    }
}

}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
