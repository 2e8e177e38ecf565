// The compositing forms: each paints a block of a span. Included once per target.

#if defined(IMAGEOP_VECTOR_FORMS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef IMAGEOP_VECTOR_FORMS_INL_H
#undef IMAGEOP_VECTOR_FORMS_INL_H
#else
#define IMAGEOP_VECTOR_FORMS_INL_H
#endif

#include <vantu/BlendMode.h>

#include <cstddef>
#include <cstdint>

#include "blend/stages/Stages.h"
#include "blend/stages/VectorBlend-inl.h"
#include "blend/stages/VectorComposite-inl.h"
#include "blend/stages/VectorDivision-inl.h"
#include "blend/stages/VectorMix-inl.h"
#include "blend/stages/VectorOpaque-inl.h"
#include "blend/stages/VectorPixels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {

/// Whether Normal replaces all pixels of a step by opaque ones.
template <BlendMode Mode>
HWY_INLINE bool Replaces(const CompositeSpan& span, const Source& source) {
    return Mode == BlendMode::Normal && span.select == nullptr && source.PaintsOpaque();
}

// Each form paints the blocks of a step, from pixel i of a span on. Where it pays to gather the pixels that need
// painting from there on it paints nothing and returns false.

template <BlendMode Mode, PackedColors Colors>
struct PlainStage {
    /// Paints steps from pixel i on for as long as their pixels are so opaque that Normal needs little.
    /// @return the pixel behind them.
    static HWY_INLINE std::size_t PaintWhileOpaque(const CompositeSpan& span, std::size_t i,
                                                   std::size_t end) requires(Mode == BlendMode::Normal) {
        if (span.select != nullptr) return i;
        if (span.opacity != nullptr) return PaintOnOpaqueThroughOpacities(span, i, end);
        return span.alpha == 255 ? PaintOnOpaque<CompositeForm::Plain>(span, i, end) : PaintOpaqueBytes(span, i, end);
    }

    static HWY_INLINE bool Paint(const CompositeSpan& span, std::size_t i, const Blend<Mode>& blend) {
        // What is opaque stays so through opacities of 0.
        if (span.opacity != nullptr && AreZero(Opacities(span, i)) && IsOpaque(span.target + i * kPackedBytes)) {
            return true;
        }
        const Words zero = hn::Zero(kWords);
        const Words full = Constant(255);
        const Source source(span, i);
        if (All(hn::Eq(OrOfBlocks(source.alpha), zero))) return true;
        const Blocks<Words>& as = source.opacity;
        unsigned char* const packed = span.target + i * kPackedBytes;
        if (Replaces<Mode>(span, source)) {
            ForEachBlock([&](std::size_t j) { StoreBlock(source.block[j], BlockAt(packed, j)); });
            return true;
        }
        const Blocks<Block> target = LoadBlocks(packed);
        const Blocks<Words> ab = Alphas(target);
        const auto store = [&](std::size_t j, WordMask unchanged, const Block& result) {
            StoreWhereNot(unchanged, target[j], result, BlockAt(packed, j));
        };
        const bool opaqueSource = source.PaintsOpaque();
        if (Mode == BlendMode::Normal && opaqueSource) {
            const Blocks<WordMask> keep = Unselected(span, i);
            if (PaysToGather(span, i, keep)) return false;
            ForEachBlock([&](std::size_t j) { store(j, keep[j], source.block[j]); });
            return true;
        }
        const bool onOpaque = All(hn::Eq(AndOfBlocks(ab), full));
        const Blocks<WordMask> keep = Unpainted(span, i, source.alpha);
        const bool gathers =
            onOpaque ? PaysToGatherOnOpaque<Mode>(span, i, keep, source.alpha) : PaysToGather(span, i, keep);
        if (gathers) return false;
        const Blocks<Channels> cs = source.Colors(Mode != BlendMode::Normal);
        if (onOpaque) {
            // Where as is 0, as it is where the source is clear, the result is the target.
            const Blocks<Words> seen = OfSelected(span, i, as);
            const Blocks<Channels> cb = StoredChannels(target);
            const Blocks<Channels> b = Blended(blend, cb, cs);
            ForEachBlock([&](std::size_t j) {
                StoreBlock(MakeBlock(EachChannel(cb[j], b[j], OnOpaque{seen[j]}), full), BlockAt(packed, j));
            });
            return true;
        }
        const Blocks<Channels> cb =
            Colors == PackedColors::Straight ? StoredChannels(target) : UnpremultipliedWhereSeen(target, ab);
        const Blocks<Channels> b = Blended(blend, cb, cs);
        if (opaqueSource) {
            ForEachBlock(
                [&](std::size_t j) { store(j, keep[j], MakeBlock(EachChannel(cs[j], b[j], OfOpaque{ab[j]}), full)); });
            return true;
        }
        const auto v = EachBlock([&](std::size_t j) { return Product(as[j], ab[j]); });
        const auto ar = EachBlock([&](std::size_t j) { return hn::Add(hn::Sub(ab[j], v[j].v1), as[j]); });
        const Blocks<Words> r = Reciprocals(ar);
        ForEachBlock([&](std::size_t j) {
            using Numerator = PlainNumerator<Mode>;
            const Numerator numerator{as[j], ab[j], v[j].v1, v[j].v0};
            const Channels result = EachChannel(cb[j], cs[j], b[j], Divided<Colors, Numerator>{numerator, ar[j], r[j]});
            // A straight pixel of result alpha 0 keeps its colour; a premultiplied one is cleared unless told
            // otherwise.
            const bool keepsClear = Colors == PackedColors::Straight || span.keepClear;
            store(j, keepsClear ? hn::Or(keep[j], hn::Eq(ar[j], zero)) : keep[j], MakeBlock(result, ar[j]));
        });
        return true;
    }
};

template <BlendMode Mode, PackedColors Colors>
struct GroupStage {
    static HWY_INLINE std::size_t PaintWhileOpaque(const CompositeSpan& span, std::size_t i,
                                                   std::size_t end) requires(Mode == BlendMode::Normal) {
        return PaintWhileOpaqueInGroup<CompositeForm::Group>(span, i, end);
    }

    static HWY_INLINE bool Paint(const CompositeSpan& span, std::size_t i, const Blend<Mode>& blend) {
        const Words zero = hn::Zero(kWords);
        const Words full = Constant(255);
        const Blocks<WordMask> keep = Unselected(span, i);
        if (All(AndOfBlocks(keep))) return true;
        const Source source(span, i);
        const Blocks<Words>& as = source.opacity;
        unsigned char* const packed = span.target + i * kPackedBytes;
        std::uint32_t* const entries = span.groupAlpha + i;
        if (Replaces<Mode>(span, source)) {
            ForEachBlock([&](std::size_t j) {
                StoreEntries(full, entries + j * BlockPixels());
                StoreBlock(source.block[j], BlockAt(packed, j));
            });
            return true;
        }
        const Blocks<Words>& raise = span.stencil ? source.alpha : as;
        const auto g = EachBlock([&](std::size_t j) {
            const Words before = LoadEntries(entries + j * BlockPixels());
            return hn::IfThenElse(keep[j], before, UniteAlpha(before, raise[j]));
        });
        const Blocks<Block> target = LoadBlocks(packed);
        const Blocks<Words> a0 = Alphas(LoadBlocks(span.snapshot + i * kPackedBytes));
        const Blocks<Words> ab = Alphas(target);
        // Where these are opaque ai is 255, too. A clear source leaves opaque pixels as they are, and those that stay
        // clear.
        const auto opaque =
            EachBlock([&](std::size_t j) { return hn::Eq(hn::And(ab[j], hn::Max(a0[j], g[j])), full); });
        const auto stays =
            EachBlock([&](std::size_t j) { return hn::Or(opaque[j], hn::Eq(hn::Or(a0[j], g[j]), zero)); });
        if (All(hn::Eq(OrOfBlocks(raise), zero)) && All(AndOfBlocks(stays))) return true;
        ForEachBlock([&](std::size_t j) { StoreEntries(g[j], entries + j * BlockPixels()); });
        const Blocks<Channels> cs = source.Colors();
        const auto store = [&](std::size_t j, WordMask unchanged, const Channels& result, Words alpha) {
            StoreWhereNot(unchanged, target[j], MakeBlock(result, alpha), BlockAt(packed, j));
        };
        if (All(AndOfBlocks(opaque))) {
            const Blocks<Channels> cb = StoredChannels(target);
            const Blocks<Channels> b = Blended(blend, cb, cs);
            ForEachBlock([&](std::size_t j) { store(j, keep[j], EachChannel(cb[j], b[j], OnOpaque{as[j]}), full); });
            return true;
        }
        const auto ai = EachBlock([&](std::size_t j) { return UniteAlpha(a0[j], g[j]); });
        const Blocks<Words> r = Reciprocals(ai);
        const Blocks<Channels> cb = StraightChannels<Colors>(target, ab);
        const Blocks<Channels> b = Blended(blend, cb, cs);
        ForEachBlock([&](std::size_t j) {
            const Product v(as[j], ab[j]);
            using Numerator = GroupNumerator<Mode>;
            const Numerator numerator{as[j], hn::Sub(ai[j], as[j]), v.v1, v.v0};
            const Divided<Colors, Numerator> divided{numerator, ai[j], r[j]};
            const Channels result = EachChannel(cb[j], cs[j], b[j], divided);
            store(j, hn::Or(keep[j], hn::Eq(ai[j], zero)), result, ai[j]);
        });
        return true;
    }
};

template <BlendMode Mode, PackedColors Colors>
struct KnockoutStage {
    static HWY_INLINE std::size_t PaintWhileOpaque(const CompositeSpan& span, std::size_t i,
                                                   std::size_t end) requires(Mode == BlendMode::Normal) {
        return PaintWhileOpaqueInGroup<CompositeForm::Knockout>(span, i, end);
    }

    static HWY_INLINE bool Paint(const CompositeSpan& span, std::size_t i, const Blend<Mode>& blend) {
        const Blocks<WordMask> keep = Unselected(span, i);
        if (All(AndOfBlocks(keep))) return true;
        const Source source(span, i);
        const Blocks<Words>& as = source.opacity;
        if (!span.stencil) {
            ForEachBlock([&](std::size_t j) {
                std::uint32_t* const entries = span.groupAlpha + i + j * BlockPixels();
                const Words before = LoadEntries(entries);
                StoreEntries(hn::IfThenElse(keep[j], before, UniteAlpha(before, as[j])), entries);
            });
        }

        unsigned char* const packed = span.target + i * kPackedBytes;
        const Blocks<Block> target = LoadBlocks(packed);
        const Blocks<Block> snapshot = LoadBlocks(span.snapshot + i * kPackedBytes);
        const Blocks<Words> ad = Alphas(target);
        const Blocks<Words> a0 = Alphas(snapshot);
        const Blocks<Channels> cs = source.Colors();
        // Where as is 0 the group's own colour stays; the alpha is new all the same, but under a stencil.
        const auto paintedOr = [&](std::size_t j, Words old, Words fresh) {
            return hn::IfThenElse(hn::Eq(as[j], hn::Zero(kWords)), old, fresh);
        };
        const auto store = [&](std::size_t j, const Channels& result, Words alpha) {
            StoreWhereNot(keep[j], target[j], MakeBlock(result, alpha), BlockAt(packed, j));
        };
        const Words full = Constant(255);
        if (All(hn::Eq(hn::And(AndOfBlocks(ad), AndOfBlocks(a0)), full))) {
            const Blocks<Channels> c0 = StoredChannels(snapshot);
            const Blocks<Channels> b = Blended(blend, c0, cs);
            ForEachBlock([&](std::size_t j) {
                const Channels painted = EachChannel(c0[j], b[j], OnOpaque{as[j]});
                store(j,
                      EachChannel(StoredChannels(target[j]), painted,
                                  [&](Words old, Words fresh) { return paintedOr(j, old, fresh); }),
                      full);
            });
            return true;
        }
        const auto v = EachBlock([&](std::size_t j) { return Product(as[j], a0[j]); });
        const auto ar = EachBlock([&](std::size_t j) { return hn::Add(hn::Sub(a0[j], v[j].v1), as[j]); });
        const Blocks<Words> r = Reciprocals(ar);
        const Blocks<Channels> c0 = StraightChannels<Colors>(snapshot, a0);
        const bool colorsStay = !EveryBlock([&](std::size_t j) { return All(hn::Ne(as[j], hn::Zero(kWords))); });
        const Blocks<Channels> cd = colorsStay ? StraightChannels<Colors>(target, ad) : StoredChannels(target);
        const Blocks<Channels> b = Blended(blend, c0, cs);
        ForEachBlock([&](std::size_t j) {
            using Numerator = PlainNumerator<Mode>;
            const Numerator numerator{as[j], a0[j], v[j].v1, v[j].v0};
            const Divided<PackedColors::Straight, Numerator> divided{numerator, ar[j], r[j]};
            const Channels painted = EachChannel(c0[j], cs[j], b[j], divided);
            const Words alpha = span.stencil ? ad[j] : ar[j];
            const Channels result = EachChannel(cd[j], painted, [&](Words old, Words fresh) {
                const Words channel = paintedOr(j, old, fresh);
                return Colors == PackedColors::Premultiplied ? Div255(hn::Mul(channel, alpha)) : channel;
            });
            store(j, result, alpha);
        });
        return true;
    }
};

}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
