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
#include "blend/stages/VectorFirst-inl.h"
#include "blend/stages/VectorLuminosity-inl.h"
#include "blend/stages/VectorMix-inl.h"
#include "blend/stages/VectorPixels-inl.h"
#include "blend/stages/VectorScale-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {
namespace {

/// Pixels, with opaque ones in the place of those of no byte but 0 if `MayBeClear`.
template <bool MayBeClear>
HWY_INLINE Pixels Seen(Pixels v) {
    if (!MayBeClear) return v;
    return hn::IfThenElse(hn::Eq(v, hn::Zero(kPixels)), hn::Set(kPixels, kPackedAlpha), v);
}

/// Whether pixels are opaque, in both images, or clear where they may be.
template <bool TargetMayBeClear, bool SourceMayBeClear>
HWY_INLINE bool AreOpaque(const unsigned char* target, const unsigned char* source, std::size_t count) {
    const std::size_t lanes = hn::Lanes(kPixels);
    const auto both = [](Pixels t, Pixels s)
                          HWY_ATTR { return hn::And(Seen<TargetMayBeClear>(t), Seen<SourceMayBeClear>(s)); };
    Pixels common = hn::Set(kPixels, kPackedAlpha);
    for (; count >= lanes; count -= lanes) {
        common = hn::And(common, both(LoadPixels(target), LoadPixels(source)));
        target += lanes * kPackedBytes;
        source += lanes * kPackedBytes;
    }
    if (count == 0) return AllOpaque(common);
    const FirstPixels last(count);
    return AllOpaque(hn::And(common, last.OpaqueBehind(both(last.Load(target), last.Load(source)))));
}

/// Where a source is clear, if it may be, the target; elsewhere what the two were mixed to.
template <bool SourceMayBeClear>
HWY_INLINE Pixels WhereSeen(Pixels source, Pixels target, Pixels mixed) {
    if (!SourceMayBeClear) return mixed;
    return hn::IfThenElse(hn::Eq(source, hn::Zero(kPixels)), target, mixed);
}

/// Mixes the first `count` pixels of a piece, whole vectors. What an alpha of 0 leaves is not touched, and what one of
/// 255 replaces is not mixed.
template <bool SourceMayBeClear>
HWY_INLINE void MixVectors(unsigned char* target, const unsigned char* source, std::size_t count,
                           const PieceAlphas& piece, const Mixing& mix) {
    const std::size_t lanes = hn::Lanes(kPixels);
    const std::uint64_t all = (std::uint64_t{1} << lanes) - 1;
    for (std::size_t i = 0; i < count; i += lanes) {
        if ((piece.clear >> i & all) == all) continue;
        const Pixels s = LoadPixels(source + i * kPackedBytes);
        unsigned char* const pixels = target + i * kPackedBytes;
        const bool replaces = (piece.full >> i & all) == all;
        const Pixels mixed = replaces ? s : mix(s, LoadPixels(pixels), piece.InEachByteFrom(i));
        StorePixels(WhereSeen<SourceMayBeClear>(s, LoadPixels(pixels), mixed), pixels);
    }
}

/// Mixes the pixels of a row from x on, as far as they are opaque, or clear where they may be.
/// @return the place behind them.
template <bool TargetMayBeClear, bool SourceMayBeClear, typename Alphas>
HWY_INLINE std::size_t MixRow(MixedRows rows, std::size_t row, std::size_t x, const unsigned char* mask,
                              const Alphas& alphas, const Mixing& mix) {
    const std::size_t width = rows.width;
    unsigned char* target = rows.target.Row(row) + x * kPackedBytes;
    const unsigned char* source = rows.source.Row(row) + x * kPackedBytes;
    PieceAlphas piece;
    for (; x + piece.kPixels <= width; x += piece.kPixels) {
        if (!AreOpaque<TargetMayBeClear, SourceMayBeClear>(target, source, piece.kPixels)) return x;
        if (!alphas.Read(mask, x, piece.kPixels, piece)) return x;
        MixVectors<SourceMayBeClear>(target, source, piece.kPixels, piece, mix);
        target += piece.kPixels * kPackedBytes;
        source += piece.kPixels * kPackedBytes;
    }
    const std::size_t count = width - x;
    if (count == 0 || !AreOpaque<TargetMayBeClear, SourceMayBeClear>(target, source, count)) return x;
    if (!alphas.Read(mask, x, count, piece)) return x;
    const std::size_t rest = count % hn::Lanes(kPixels);
    const std::size_t whole = count - rest;
    MixVectors<SourceMayBeClear>(target, source, whole, piece, mix);
    if (rest == 0) return width;
    target += whole * kPackedBytes;
    source += whole * kPackedBytes;
    const FirstPixels last(rest);
    const Pixels s = last.Load(source), t = last.Load(target);
    last.Store(WhereSeen<SourceMayBeClear>(s, t, mix(s, t, piece.InEachByteFrom(whole))), target);
    return width;
}

/// Mixes rows that fit a vector, from one on, as far as pixels are opaque, or clear where they may be.
/// @return the row behind them.
template <bool TargetMayBeClear, bool SourceMayBeClear, typename Alphas>
HWY_INLINE std::size_t MixNarrowRows(MixedRows rows, PixelRows<const unsigned char> mask, std::size_t row,
                                     const Alphas& alphas, const Mixing& mix) {
    constexpr std::size_t kTogether = PieceAlphas::kNarrowRows;
    const FirstPixels first(rows.width);
    PieceAlphas piece;
    while (row < rows.target.count) {
        const std::size_t count = std::min(kTogether, rows.target.count - row);
        if (!alphas.ReadRows({mask.Row(row), mask.step, count}, rows.width, piece)) break;
        Pixels mixed[kTogether], common = hn::Set(kPixels, kPackedAlpha);
        for (std::size_t i = 0; i < count; ++i) {
            const Pixels s = first.Load(rows.source.Row(row + i)), t = first.Load(rows.target.Row(row + i));
            common = hn::And(common, hn::And(Seen<SourceMayBeClear>(s), Seen<TargetMayBeClear>(t)));
            const Pixels all = mix(s, t, piece.InEachByteFrom(i * PieceAlphas::kNarrow));
            mixed[i] = WhereSeen<SourceMayBeClear>(s, t, all);
        }
        if (!AllOpaque(first.OpaqueBehind(common))) break;
        for (std::size_t i = 0; i < count; ++i) first.Store(mixed[i], rows.target.Row(row + i));
        row += count;
    }
    return row;
}

template <bool SourceMayBeClear, typename Alphas>
std::size_t MixRows(const MixedRows& rows, const PixelRows<const unsigned char>& mask, const Alphas& alphas) {
    const Mixing mix;
    std::size_t row = 0;
    if (rows.width <= PieceAlphas::kNarrow) {
        row = MixNarrowRows<false, false>(rows, mask, row, alphas, mix);
        if (rows.mixesClear) row = MixNarrowRows<true, SourceMayBeClear>(rows, mask, row, alphas, mix);
        return row * rows.width;
    }
    for (; row < rows.target.count; ++row) {
        std::size_t x = MixRow<false, false>(rows, row, 0, mask.Row(row), alphas, mix);
        if (x < rows.width && rows.mixesClear) {
            x = MixRow<true, SourceMayBeClear>(rows, row, x, mask.Row(row), alphas, mix);
        }
        if (x < rows.width) return row * rows.width + x;
    }
    return row * rows.width;
}

std::size_t MixByKeys(const MixedRows& rows, const PixelRows<const unsigned char>& keys, const ByteTable& alphaOfKey) {
    return MixRows<true>(rows, keys, KeyAlphas(alphaOfKey));
}

std::size_t MixByBits(const MixedRows& rows, const PixelRows<const unsigned char>& bits, std::size_t first,
                      std::uint32_t alpha) {
    return MixRows<false>(rows, bits, BitAlphas(first, alpha));  // at full alpha a stencil copies what is clear
}

std::size_t MixByColors(const MixedRows& rows, const PixelRows<const unsigned char>& colors, bool needsOpaque,
                        const LuminosityBytes& of) {
    return MixRows<true>(rows, colors, ColorAlphas(of, needsOpaque));
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
