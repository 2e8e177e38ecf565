#include "blend/stages/MaskStages.h"
#include "pixel/VectorTargets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "blend/stages/VectorMasks.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#if IMAGEOP_HAS_VECTORS
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "blend/stages/VectorAlphas-inl.h"
#include "blend/stages/VectorLuminosity-inl.h"
#include "blend/stages/VectorMix-inl.h"
#include "blend/stages/VectorPixels-inl.h"
#include "blend/stages/VectorScale-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {
namespace {

/// Pixels with opaque ones in the place of those of no byte but 0.
HWY_INLINE Pixels OpaqueWhereClear(Pixels v) {
    return hn::IfThenElse(hn::Eq(v, hn::Zero(kPixels)), hn::Set(kPixels, kPackedAlpha), v);
}

/// Whether pixels are opaque, in the source and in `seen` of the target.
template <typename Seen>
HWY_INLINE bool BothOpaque(const unsigned char* target, const unsigned char* source, std::size_t count, Seen seen) {
    const std::size_t lanes = hn::Lanes(kPixels);
    Pixels common = hn::Set(kPixels, kPackedAlpha);
    for (; count >= lanes; count -= lanes) {
        common = hn::And(common, hn::And(seen(LoadPixels(target)), LoadPixels(source)));
        target += lanes * kPackedBytes;
        source += lanes * kPackedBytes;
    }
    if (count == 0) return AllOpaque(common);
    const FirstPixels last(count);
    return AllOpaque(hn::And(common, last.OpaqueBehind(hn::And(seen(last.Load(target)), last.Load(source)))));
}

HWY_INLINE Pixels AsItIs(Pixels v) {
    return v;
}

/// Whether the bytes of pixels can be mixed. Nearly all targets are opaque: others are looked at again.
HWY_INLINE bool CanMix(const unsigned char* target, const unsigned char* source, std::size_t count, bool mixesClear) {
    return BothOpaque(target, source, count, AsItIs) ||
           (mixesClear && BothOpaque(target, source, count, OpaqueWhereClear));
}

/// Mixes the first `count` pixels of a piece, whole vectors. What an alpha of 0 leaves is not touched, and what one of
/// 255 replaces is not mixed.
HWY_INLINE void MixVectors(unsigned char* target, const unsigned char* source, std::size_t count,
                           const PieceAlphas& piece, const Mixing& mix) {
    const std::size_t lanes = hn::Lanes(kPixels);
    const std::uint64_t all = (std::uint64_t{1} << lanes) - 1;
    for (std::size_t i = 0; i < count; i += lanes) {
        if ((piece.clear >> i & all) == all) continue;
        const Pixels s = LoadPixels(source + i * kPackedBytes);
        unsigned char* const pixels = target + i * kPackedBytes;
        const bool replaces = (piece.full >> i & all) == all;
        StorePixels(replaces ? s : mix(s, LoadPixels(pixels), piece.InEachByteFrom(i)), pixels);
    }
}

/// Mixes the pixels of a row. @return how many, from the first on.
template <typename Alphas>
HWY_INLINE std::size_t MixRow(unsigned char* target, const unsigned char* source, const unsigned char* mask,
                              std::size_t width, bool mixesClear, const Alphas& alphas, const Mixing& mix) {
    PieceAlphas piece;
    std::size_t x = 0;
    for (; x + piece.kPixels <= width; x += piece.kPixels) {
        if (!CanMix(target, source, piece.kPixels, mixesClear)) return x;
        if (!alphas.Read(mask, x, piece.kPixels, piece)) return x;
        MixVectors(target, source, piece.kPixels, piece, mix);
        target += piece.kPixels * kPackedBytes;
        source += piece.kPixels * kPackedBytes;
    }
    const std::size_t count = width - x;
    if (count == 0 || !CanMix(target, source, count, mixesClear)) return x;
    if (!alphas.Read(mask, x, count, piece)) return x;
    const std::size_t rest = count % hn::Lanes(kPixels);
    const std::size_t whole = count - rest;
    MixVectors(target, source, whole, piece, mix);
    if (rest == 0) return width;
    target += whole * kPackedBytes;
    source += whole * kPackedBytes;
    const FirstPixels last(rest);
    last.Store(mix(last.Load(source), last.Load(target), piece.InEachByteFrom(whole)), target);
    return width;
}

/// Mixes rows that fit a vector, from one on, as far as pixels are opaque, in the source and in `seen` of the target.
/// @return the row behind them.
template <typename Alphas, typename Seen>
HWY_INLINE std::size_t MixNarrowRows(MixedRows rows, PixelRows<const unsigned char> mask, std::size_t row,
                                     const Alphas& alphas, const Mixing& mix, Seen seen) {
    constexpr std::size_t kTogether = PieceAlphas::kNarrowRows;
    const FirstPixels first(rows.width);
    PieceAlphas piece;
    while (row < rows.target.count) {
        const std::size_t count = std::min(kTogether, rows.target.count - row);
        if (!alphas.ReadRows({mask.Row(row), mask.step, count}, rows.width, piece)) break;
        Pixels mixed[kTogether], common = hn::Set(kPixels, kPackedAlpha);
        for (std::size_t i = 0; i < count; ++i) {
            const Pixels s = first.Load(rows.source.Row(row + i)), t = first.Load(rows.target.Row(row + i));
            common = hn::And(common, hn::And(s, seen(t)));
            mixed[i] = mix(s, t, piece.InEachByteFrom(i * PieceAlphas::kNarrow));
        }
        if (!AllOpaque(first.OpaqueBehind(common))) break;
        for (std::size_t i = 0; i < count; ++i) first.Store(mixed[i], rows.target.Row(row + i));
        row += count;
    }
    return row;
}

template <typename Alphas>
std::size_t MixRows(const MixedRows& rows, const PixelRows<const unsigned char>& mask, const Alphas& alphas) {
    const Mixing mix;
    std::size_t row = 0;
    if (rows.width <= PieceAlphas::kNarrow) {
        row = MixNarrowRows(rows, mask, row, alphas, mix, AsItIs);
        if (rows.mixesClear) row = MixNarrowRows(rows, mask, row, alphas, mix, OpaqueWhereClear);
        return row * rows.width;
    }
    for (; row < rows.target.count; ++row) {
        const std::size_t mixed =
            MixRow(rows.target.Row(row), rows.source.Row(row), mask.Row(row), rows.width, rows.mixesClear, alphas, mix);
        if (mixed < rows.width) return row * rows.width + mixed;
    }
    return row * rows.width;
}

std::size_t MixByKeys(const MixedRows& rows, const PixelRows<const unsigned char>& keys, const ByteTable& alphaOfKey) {
    return MixRows(rows, keys, KeyAlphas(alphaOfKey));
}

std::size_t MixByBits(const MixedRows& rows, const PixelRows<const unsigned char>& bits, std::size_t first,
                      std::uint32_t alpha) {
    return MixRows(rows, bits, BitAlphas(first, alpha));
}

std::size_t MixByColors(const MixedRows& rows, const PixelRows<const unsigned char>& colors, bool needsOpaque,
                        const LuminosityBytes& of) {
    return MixRows(rows, colors, ColorAlphas(of, needsOpaque));
}

/// Grey i is 0xFF000000 + 0x010101 * i.
bool AreGreys(const Color* colors) {
    const std::size_t lanes = hn::Lanes(kPixels);
    const Pixels step = hn::Set(kPixels, static_cast<std::uint32_t>(lanes * 0x010101));
    Pixels grey = hn::Add(hn::Set(kPixels, ARGB_BLACK), hn::Mul(hn::Iota(kPixels, 0), hn::Set(kPixels, 0x010101)));
    Pixels differences = hn::Zero(kPixels);
    for (std::size_t i = 0; i < 256; i += lanes, grey = hn::Add(grey, step)) {
        const Pixels color = LoadPixels(reinterpret_cast<const unsigned char*>(colors + i));
        differences = hn::Or(differences, hn::Xor(color, grey));
    }
    return hn::AllTrue(kPixels, hn::Eq(differences, hn::Zero(kPixels)));
}

void LookUp(const unsigned char* keys, std::size_t count, const ByteTable& table, unsigned char* bytes) {
    const ByteLookUp lookUp(table);
    std::size_t i = 0;
    for (; i + PieceAlphas::kPixels <= count; i += PieceAlphas::kPixels) {
        lookUp.Read(keys + i, PieceAlphas::kPixels, bytes + i);
    }
    for (; i < count; ++i) bytes[i] = table[keys[i]];
}

constexpr MaskStages kMaskStages{MixByKeys, MixByBits, MixByColors, Luminosities, AreGreys, LookUp, ScaleAlphas};

const MaskStages* MaskStagesOfTarget() {
    return &kMaskStages;
}

}  // namespace
}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#else  // no vectors: the plain loops run

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {
namespace {
const MaskStages* MaskStagesOfTarget() {
    return &ScalarMaskStages();
}
}  // namespace
}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif

#if HWY_ONCE
namespace vantu {

HWY_EXPORT(MaskStagesOfTarget);

const MaskStages& ActiveMaskStages() {
    return *HWY_DYNAMIC_DISPATCH(MaskStagesOfTarget)();
}

}  // namespace vantu
#endif
