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

// The first pixels of a vector, fewer than it has, and back.

#if HWY_MAX_BYTES == 64

HWY_INLINE Pixels LoadFirst(const unsigned char* packed, std::size_t count) {
    return hn::MaskedLoad(hn::FirstN(kPixels, count), kPixels, reinterpret_cast<const std::uint32_t*>(packed));
}
HWY_INLINE void StoreFirst(Pixels v, unsigned char* packed, std::size_t count) {
    hn::BlendedStore(v, hn::FirstN(kPixels, count), kPixels, reinterpret_cast<std::uint32_t*>(packed));
}

#else

HWY_INLINE Pixels LoadFirst(const unsigned char* packed, std::size_t count) {
    unsigned char buffer[HWY_MAX_BYTES] = {};
    std::memcpy(buffer, packed, count * kPackedBytes);
    return LoadPixels(buffer);
}
HWY_INLINE void StoreFirst(Pixels v, unsigned char* packed, std::size_t count) {
    unsigned char buffer[HWY_MAX_BYTES];
    StorePixels(v, buffer);
    std::memcpy(packed, buffer, count * kPackedBytes);
}

#endif

/// Whether pixels are opaque, in both images.
HWY_INLINE bool AllOpaque(const unsigned char* target, const unsigned char* source, std::size_t count) {
    const std::size_t lanes = hn::Lanes(kPixels);
    const Pixels opaque = hn::Set(kPixels, 0xFF000000);
    Pixels common = opaque;
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        common = hn::And(common, hn::And(LoadPixels(target + i * kPackedBytes), LoadPixels(source + i * kPackedBytes)));
    }
    if (!hn::AllTrue(kPixels, hn::Eq(common, opaque))) return false;
    for (; i < count; ++i) {
        if ((target[i * kPackedBytes + 3] & source[i * kPackedBytes + 3]) != 255) return false;
    }
    return true;
}

/// Mixes the first `count` pixels of a piece, whole vectors. What an alpha of 0 leaves is not touched, and what one of
/// 255 replaces is not mixed.
HWY_INLINE void MixVectors(unsigned char* target, const unsigned char* source, std::size_t count,
                           const PieceAlphas& piece) {
    const std::size_t lanes = hn::Lanes(kPixels);
    const std::uint64_t all = (std::uint64_t{1} << lanes) - 1;
    for (std::size_t i = 0; i < count; i += lanes) {
        if ((piece.clear >> i & all) == all) continue;
        const Pixels s = LoadPixels(source + i * kPackedBytes);
        unsigned char* const pixels = target + i * kPackedBytes;
        const bool replaces = (piece.full >> i & all) == all;
        StorePixels(replaces ? s : Mixed(s, LoadPixels(pixels), piece.alphas + i), pixels);
    }
}

/// Mixes the pixels of a row. @return how many, from the first on.
template <typename Alphas>
HWY_INLINE std::size_t MixRow(unsigned char* target, const unsigned char* source, const unsigned char* mask,
                              std::size_t width, const Alphas& alphas) {
    PieceAlphas piece;
    std::size_t x = 0;
    for (; x + piece.kPixels <= width; x += piece.kPixels) {
        if (!AllOpaque(target, source, piece.kPixels)) return x;
        alphas.Read(mask, x, piece.kPixels, piece);
        MixVectors(target, source, piece.kPixels, piece);
        target += piece.kPixels * kPackedBytes;
        source += piece.kPixels * kPackedBytes;
    }
    const std::size_t count = width - x;
    if (count == 0 || !AllOpaque(target, source, count)) return x;
    alphas.Read(mask, x, count, piece);
    const std::size_t rest = count % hn::Lanes(kPixels);
    const std::size_t whole = count - rest;
    MixVectors(target, source, whole, piece);
    if (rest == 0) return width;
    target += whole * kPackedBytes;
    source += whole * kPackedBytes;
    StoreFirst(Mixed(LoadFirst(source, rest), LoadFirst(target, rest), piece.alphas + whole), target, rest);
    return width;
}

template <typename Alphas>
std::size_t MixRows(const MixedRows& rows, const PixelRows<const unsigned char>& mask, const Alphas& alphas) {
    for (std::size_t row = 0; row < rows.target.count; ++row) {
        const std::size_t mixed = MixRow(rows.target.Row(row), rows.source.Row(row), mask.Row(row), rows.width, alphas);
        if (mixed < rows.width) return row * rows.width + mixed;
    }
    return rows.target.count * rows.width;
}

std::size_t MixByKeys(const MixedRows& rows, const PixelRows<const unsigned char>& keys, const ByteTable& alphaOfKey) {
    return MixRows(rows, keys, KeyAlphas(alphaOfKey));
}

std::size_t MixByBits(const MixedRows& rows, const PixelRows<const unsigned char>& bits, std::size_t first,
                      std::uint32_t alpha) {
    return MixRows(rows, bits, BitAlphas(first, alpha));
}

void LookUp(const unsigned char* keys, std::size_t count, const ByteTable& table, unsigned char* bytes) {
    const ByteLookUp lookUp(table);
    std::size_t i = 0;
    for (; i + PieceAlphas::kPixels <= count; i += PieceAlphas::kPixels) {
        lookUp.Read(keys + i, PieceAlphas::kPixels, bytes + i);
    }
    for (; i < count; ++i) bytes[i] = table[keys[i]];
}

constexpr MaskStages kMaskStages{MixByKeys, MixByBits, Luminosities, LookUp, ScaleAlphas};

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
