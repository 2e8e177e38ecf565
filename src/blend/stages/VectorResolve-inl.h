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

/// Whether all group alphas of a block are at most 255.
HWY_INLINE bool AreBytes(const std::uint32_t* entries) {
    const Pixels both = hn::Or(hn::LoadU(kPixels, entries), hn::LoadU(kPixels, entries + hn::Lanes(kPixels)));
    return hn::AllTrue(kPixels, hn::Eq(hn::ShiftRight<8>(both), hn::Zero(kPixels)));
}

/// Whether no channel of a block is above its alpha.
HWY_INLINE bool IsPremultiplied(const Block& block) {
    const Words alpha = block.Alpha();
    const Words highest = hn::Max(hn::Max(block.Blue(), block.Green()), block.Red());
    return All(hn::Eq(hn::Max(highest, alpha), alpha));
}

// Each step resolves a block of a span from pixel i on, and returns false, with nothing changed, for pixels that it
// leaves to the scalar stage.

/// v = (n + t)*a with t = floor(x/a) and x = (n-o)*k, in 32 bits that wrap, is a sum or a difference of numbers of 16
/// bits, as k is at most 255 - a. With m = |n-o|*k, for
///   n >= o: v = n*a + a*q with q = floor(m/a),
///   n < o:  v = n*a - (c + a*q) with c = 2^32 mod a and q = floor((m + a-1-c) / a).
/// A v below 0 is 2^32 more, which is 255*16843009 + 1: the low byte of the quotient is that of floor((v+1) / 255) + 1,
/// where v+1 may be raised by 256*255 and is then v - 255 in 16 bits.
/// Where k is 0 there is no x to wrap. Over a snapshot that is at a = 255 alone, and c = 0 makes it so.
struct BackdropRemoval {
    static constexpr auto kScalar = &BlendStages::removeBackdrop;

    static HWY_INLINE bool Resolve(const CompositeSpan& span, std::size_t i) {
        if (!AreBytes(span.groupAlpha + i)) return false;
        unsigned char* const packed = span.target + i * kPackedBytes;
        const Words zero = hn::Zero(kWords);
        const Words full = Constant(255);
        const Words a = LoadEntries(span.groupAlpha + i);
        const WordMask painted = hn::Ne(a, zero);
        if (hn::AllFalse(kWords, painted)) {
            StoreBlock({zero, zero}, packed);
            return true;
        }
        const Block target = LoadBlock(packed);
        const Words pa = target.Alpha();
        if (All(hn::Eq(hn::And(a, pa), full))) return true;  // nothing of the snapshot is seen through opaque elements
        const Block snapshot = LoadBlock(span.snapshot + i * kPackedBytes);
        const Words ba = snapshot.Alpha();
        const Words r = Reciprocal(a);
        // 2^16 mod a is -r*a in 16 bits, or a for 0; c is what its square leaves.
        const Words root = hn::Sub(zero, hn::Mul(r, a));
        const Words c = hn::IfThenZeroElse(hn::Eq(a, full), Division(hn::Mul(root, root), a, r).remainder);
        if (All(hn::Eq(hn::And(pa, ba), full))) {
            const BackdropRemoval removal{a, hn::Sub(full, a), r, c};
            StoreWhere(painted, EachChannel(StoredChannels(target), StoredChannels(snapshot), removal), a, packed);
            return true;
        }
        if (!IsPremultiplied(target) || !IsPremultiplied(snapshot)) return false;
        const BackdropRemoval removal{a, hn::Sub(ba, Div255(hn::Mul(a, ba))), r, c};
        const auto [above, below] = UnpremultipliedPair(target, pa, snapshot, ba);
        const Channels removed = EachChannel(above, below, removal);
        // Over nothing a pixel keeps its colour. One without alpha, which has no colour, stays clear over something.
        const WordMask alone = hn::Eq(ba, zero);
        const Channels colors = EachChannel(StoredChannels(target), removed,
                                            [&](Words old, Words fresh) { return hn::IfThenElse(alone, old, fresh); });
        StoreWhere(hn::And(painted, hn::Or(alone, hn::Ne(pa, zero))), colors, a, packed);
        return true;
    }

    /// Clears the other pixels.
    static HWY_INLINE void StoreWhere(WordMask mask, const Channels& c, Words alpha, unsigned char* packed) {
        const Block block = MakeBlock(c, alpha);
        StoreBlock({hn::IfThenElseZero(mask, block.blueGreen), hn::IfThenElseZero(mask, block.redAlpha)}, packed);
    }

    HWY_INLINE Words operator()(Words n, Words o) const {
        const WordMask darker = hn::Lt(n, o);
        const Words m = hn::Mul(hn::IfThenElse(darker, hn::Sub(o, n), hn::Sub(n, o)), k);
        const Words z = hn::IfThenElse(darker, hn::Add(m, hn::Sub(hn::Sub(a, Constant(1)), c)), m);
        const Words product = hn::Sub(z, Division(z, a, r).remainder);
        const Words removed = hn::IfThenElse(darker, hn::Add(product, c), product);
        const Words na = hn::Mul(n, a);
        const Words v = hn::IfThenElse(darker, hn::Sub(na, removed), hn::Add(na, removed));
        const WordMask wraps = hn::And(darker, hn::Lt(na, removed));
        const Words quotient = Div255(hn::IfThenElse(wraps, hn::Sub(v, Constant(255)), v));
        return hn::And(hn::IfThenElse(wraps, hn::Add(quotient, Constant(1)), quotient), Constant(255));
    }

    Words a, k, r, c;
};

/// c*a / pa, cut to 8 bits.
struct GroupAlphaRescaling {
    static constexpr auto kScalar = &BlendStages::rescaleToGroupAlpha;

    static HWY_INLINE bool Resolve(const CompositeSpan& span, std::size_t i) {
        if (!AreBytes(span.groupAlpha + i)) return false;
        unsigned char* const packed = span.target + i * kPackedBytes;
        const Words a = LoadEntries(span.groupAlpha + i);
        const Block target = LoadBlock(packed);
        const Words pa = target.Alpha();
        if (All(hn::Eq(a, pa))) return true;
        const Words r = Reciprocal(pa);
        const auto rescaled = [&](Words channel) {
            return hn::And(Division(hn::Mul(channel, a), pa, r).Quotient(), Constant(255));
        };
        const Block result = MakeBlock({rescaled(target.Blue()), rescaled(target.Green()), rescaled(target.Red())}, a);
        StoreWhereNot(hn::Eq(pa, hn::Zero(kWords)), target, result, packed);
        return true;
    }
};

/// ((255-a)*b + a*p) / 255.
struct BackdropMixing {
    static constexpr auto kScalar = &BlendStages::mixWithBackdrop;

    static HWY_INLINE bool Resolve(const CompositeSpan& span, std::size_t i) {
        unsigned char* const packed = span.target + i * kPackedBytes;
        const Words full = Constant(255);
        const Words a = hn::And(LoadEntries(span.groupAlpha + i), full);
        const Words rest = hn::Sub(full, a);
        const auto mixed = [&](Words b, Words p) { return Div255(hn::Add(hn::Mul(rest, b), hn::Mul(a, p))); };
        const Block snapshot = LoadBlock(span.snapshot + i * kPackedBytes);
        StoreBlock(MakeBlock(EachChannel(StoredChannels(snapshot), StoredChannels(LoadBlock(packed)), mixed), a),
                   packed);
        return true;
    }
};

/// Resolves whole blocks of a span from pixel `first` to `end`, or to one that is left to the scalar stage.
/// @return the pixel to go on with.
template <typename Step>
HWY_NOINLINE std::size_t ResolveBlocks(const CompositeSpan& span, std::size_t first, std::size_t end) {
    while (first < end && Step::Resolve(span, first)) first += BlockPixels();
    return first;
}

template <typename Step>
void ResolveSpan(const CompositeSpan& span) {
    const auto resolve = [](const CompositeSpan& pixels, std::size_t count) {
        for (std::size_t done = ResolveBlocks<Step>(pixels, 0, count); done < count;) {
            CompositeSpan block = pixels;
            block.target += done * kPackedBytes;
            block.snapshot += done * kPackedBytes;
            block.groupAlpha += done;
            block.count = BlockPixels();
            (ScalarStages().*Step::kScalar)(block);
            done = ResolveBlocks<Step>(pixels, done + BlockPixels(), count);
        }
    };
    const std::size_t whole = span.count - span.count % BlockPixels();
    resolve(span, whole);
    if (whole < span.count) {
        const Tail<true> tail(span, whole);
        resolve(tail.Padded(), BlockPixels());
        tail.Store();
    }
}

}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
