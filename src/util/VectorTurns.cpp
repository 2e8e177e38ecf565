#include "pixel/VectorTargets.h"
#include "util/TurnSteps.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "util/VectorTurns.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "util/TurnLoops.h"

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;

#if IMAGEOP_HAS_VECTORS

using Block = hn::FixedTag<std::uint8_t, 16>;

/// Where each byte of a block comes from when its pixels are reversed. Of three bytes they are five: at the block's end
/// before, at its start after.
template <unsigned int Bits>
constexpr auto MakeReverseOrder() {
    constexpr unsigned int size = Bits < 8 ? 1 : Bits / 8;
    std::array<std::uint8_t, 16> order{};
    for (unsigned int i = 0; i < 16 / size * size; ++i) {
        order[i] = static_cast<std::uint8_t>(16 - (i / size + 1) * size + i % size);
    }
    return order;
}
template <unsigned int Bits>
alignas(16) constexpr std::array<std::uint8_t, 16> kReverseOrder = MakeReverseOrder<Bits>();

/// What the low and the high four bits of a byte become when its fields are reversed.
template <unsigned int Bits>
struct ReversedHalves {
    constexpr ReversedHalves() {
        for (unsigned int i = 0; i < 16; ++i) {
            ofLow[i] = static_cast<std::uint8_t>(ReverseFieldsOfByte<Bits>(i));
            ofHigh[i] = static_cast<std::uint8_t>(ReverseFieldsOfByte<Bits>(i << 4));
        }
    }
    alignas(16) std::uint8_t ofLow[16]{};
    alignas(16) std::uint8_t ofHigh[16]{};
};
template <unsigned int Bits>
constexpr ReversedHalves<Bits> kReversedHalves;

/// A vector of pixels that end `shift` bits into `end`, in reverse order.
template <unsigned int Bits, class D>
HWY_INLINE hn::Vec<D> ReversedBefore(D d, const unsigned char* end, unsigned int shift) {
    auto v = hn::LoadU(d, end - hn::Lanes(d));
    if (Bits < 8 && shift > 0) {
        // byte << shift | next >> (8 - shift)
        const auto next = hn::LoadU(d, end - hn::Lanes(d) + 1);
        v = hn::Or(hn::ShiftLeftSame(v, static_cast<int>(shift)),
                   hn::ShiftRightSame(next, static_cast<int>(8 - shift)));
    }
    if constexpr (Bits < 8) {
        const auto low =
            hn::TableLookupBytes(hn::LoadDup128(d, kReversedHalves<Bits>.ofLow), hn::And(v, hn::Set(d, 0x0F)));
        const auto high = hn::TableLookupBytes(hn::LoadDup128(d, kReversedHalves<Bits>.ofHigh), hn::ShiftRight<4>(v));
        v = hn::Or(low, high);
    }
    return hn::ReverseBlocks(d, hn::TableLookupBytes(v, hn::LoadDup128(d, kReverseOrder<Bits>.data())));
}

/// Of each 2 s bits, the low s of `a` and the high s of `b` change places:
/// t = (a ^ b >> s) & m; a ^= t; b ^= t << s, where m has the low s of each 2 s bits.
template <int Shift, class V>
HWY_INLINE void Exchange(V& a, V& b) {
    const hn::DFromV<V> d;
    const auto lower = hn::Set(d, ~std::uint64_t{0} / ((1U << Shift) + 1));
    const auto t = hn::And(hn::Xor(a, hn::ShiftRight<Shift>(b)), lower);
    a = hn::Xor(a, t);
    b = hn::Xor(b, hn::ShiftLeft<Shift>(t));
}

/// Transposes the square of fields that each byte of as many rows makes: rows i and i + distance exchange the fields
/// that are in each other's half of the square, of its quarters, of its eighths.
template <unsigned int Bits, unsigned int Distance = 4 / Bits, class V>
HWY_INLINE void TransposeFields(V (&rows)[8 / Bits]) {
    for (unsigned int i = 0; i < 8 / Bits; ++i) {
        if ((i & Distance) == 0) Exchange<Distance * Bits>(rows[i], rows[i + Distance]);
    }
    if constexpr (Distance > 1) TransposeFields<Bits, Distance / 2>(rows);
}

/// Transposes a square of n × n cells, n of which fill a block.
///
/// With the bits of a cell's row number before those of its column number, interleaving rows i and i + n/2 rotates
/// these bits by one: after log2(n) rounds row and column have changed places.
template <typename Cell>
HWY_INLINE void TransposeCells(hn::Vec<Block> (&rows)[16 / sizeof(Cell)]) {
    constexpr std::size_t n = 16 / sizeof(Cell);
    const hn::FixedTag<Cell, n> d;
    for (std::size_t round = 1; round < n; round *= 2) {
        hn::Vec<Block> mixed[n];
        for (std::size_t i = 0; i < n / 2; ++i) {
            const auto a = hn::BitCast(d, rows[i]), b = hn::BitCast(d, rows[i + n / 2]);
            mixed[2 * i] = hn::BitCast(Block(), hn::InterleaveLower(d, a, b));
            mixed[2 * i + 1] = hn::BitCast(Block(), hn::InterleaveUpper(d, a, b));
        }
        for (std::size_t i = 0; i < n; ++i) rows[i] = mixed[i];
    }
}

template <unsigned int Bits>
struct VectorTurn {
    static void Reverse(const unsigned char* end, unsigned int shift, unsigned char* target, std::size_t count) {
        const hn::ScalableTag<std::uint8_t> wide;
        std::size_t done = 0;
        if constexpr (Bits == 24) {
            for (; done + kSquareBytes <= count; done += 15) {
                hn::StoreU(ReversedBefore<Bits>(Block(), end - done, shift), Block(), target + done);
            }
        } else if (count >= hn::Lanes(wide)) {
            return ReverseVectors(wide, end, shift, target, count);
        } else if (count >= kSquareBytes) {
            return ReverseVectors(Block(), end, shift, target, count);
        }
        ScalarTurn<Bits>::Reverse(end - done, shift, target + done, count - done);
    }

    /// Tile by tile: rows of the source are copied to one place, from which squares go straight to the target. So rows
    /// a power of two apart, which compete for the same few cache lines, do no harm.
    static void Transpose(const PixelRows<const unsigned char>& source, const PixelRows<unsigned char>& target,
                          std::size_t across, std::size_t down) {
        alignas(64) unsigned char tile[kTileSquares * kSide * kRun + kOverhang];
        for (std::size_t top = 0; top < down; top += kTileSquares) {
            const std::size_t rows = std::min(kTileSquares, down - top);
            for (std::size_t left = 0; left < across; left += kTileSquares) {
                const std::size_t columns = std::min(kTileSquares, across - left);
                for (std::size_t x = 0; x < columns * kSide; x += kPerByte) {
                    CopyRuns(source.Row(left * kSide + x) + top * kSideBytes, source.step, tile + x * kRun, rows);
                }
                for (std::size_t i = 0; i < rows * kPerByte; ++i) {
                    const std::size_t row = i / kPerByte, field = i % kPerByte;
                    unsigned char* const to = target.Row((top + row) * kSide + field) + left * kSideBytes;
                    for (std::size_t column = 0; column < columns; ++column) {
                        TransposeSquare(tile + (column * kSide + field) * kRun + row * kSideBytes,
                                        to + column * kSideBytes, target.step, left + column + 1 < across);
                    }
                }
            }
        }
    }

private:
    static constexpr std::size_t kSide = SquareSide(Bits);       // pixels
    static constexpr std::size_t kSideBytes = kSide * Bits / 8;  // 16, or 12 of three-byte pixels
    static constexpr std::size_t kOverhang = kSquareBytes - kSideBytes;
    static constexpr std::size_t kPerByte = Bits < 8 ? 8 / Bits : 1;
    static constexpr std::size_t kTileSquares = Bits == 1 ? 4 : Bits <= 8 ? 8 : 16;  // as large as stays in the cache
    static constexpr std::size_t kRun = kTileSquares * kSideBytes;                   // from row to row of a tile

    /// Reverses at least one vector, the last one maybe over pixels that are done already. Not inlined, so that rows
    /// too short for wide registers do not touch them: narrow code waits after that.
    template <class D>
    static HWY_NOINLINE void ReverseVectors(D d, const unsigned char* end, unsigned int shift, unsigned char* target,
                                            std::size_t count) {
        const std::size_t lanes = hn::Lanes(d);
        std::size_t i = 0;
        for (; i + lanes <= count; i += lanes) hn::StoreU(ReversedBefore<Bits>(d, end - i, shift), d, target + i);
        if (i == count) return;
        i = count - lanes;
        hn::StoreU(ReversedBefore<Bits>(d, end - i, shift), d, target + i);
    }

    /// Copies a run of `squares` squares from as many rows as a byte has fields, or from one. The fields are transposed
    /// byte by byte on the way, so that whole bytes remain to be transposed: of each field's rows those of one field.
    static HWY_INLINE void CopyRuns(const unsigned char* from, std::int64_t step, unsigned char* to,
                                    std::size_t squares) {
        const std::size_t bytes = squares * kSideBytes;
        std::size_t i = 0;
        if constexpr (Bits < 8) {
            const hn::ScalableTag<std::uint8_t> wide;
            for (; i + hn::Lanes(wide) <= bytes; i += hn::Lanes(wide)) CopyFields(wide, from + i, step, to + i);
            for (; i < bytes; i += kSideBytes) CopyFields(Block(), from + i, step, to + i);
        } else {
            for (; i < bytes; i += kSideBytes) std::memcpy(to + i, from + i, kSideBytes);
        }
    }

    template <class D>
    static HWY_INLINE void CopyFields(D d, const unsigned char* from, std::int64_t step, unsigned char* to) {
        const hn::Repartition<std::uint64_t, D> words;
        hn::Vec<decltype(words)> rows[kPerByte];
        for (std::size_t i = 0; i < kPerByte; ++i, from += step) rows[i] = hn::BitCast(words, hn::LoadU(d, from));
        TransposeFields<Bits>(rows);
        for (std::size_t i = 0; i < kPerByte; ++i) hn::StoreU(hn::BitCast(d, rows[i]), d, to + i * kRun);
    }

    /// Every `kPerByte`-th row of a tile to every `kPerByte`-th of the target. `followed` says that there is a square
    /// to the right, which is written later.
    static HWY_INLINE void TransposeSquare(const unsigned char* from, unsigned char* to, std::int64_t step,
                                           bool followed) {
        using Small = std::conditional_t<(Bits <= 8), std::uint8_t, std::uint16_t>;
        using Cell = std::conditional_t<(Bits >= 24), std::uint32_t, Small>;
        constexpr std::size_t n = 16 / sizeof(Cell);
        hn::Vec<Block> rows[n];
        for (std::size_t i = 0; i < n; ++i) rows[i] = LoadCells(from + i * kPerByte * kRun);
        TransposeCells<Cell>(rows);
        for (std::size_t i = 0; i < n; ++i, to += step * static_cast<std::int64_t>(kPerByte)) {
            StoreCells(rows[i], to, followed);
        }
    }

    /// Pixels of three bytes become cells of four.
    static HWY_INLINE hn::Vec<Block> LoadCells(const unsigned char* from) {
        alignas(16) static constexpr std::uint8_t kSpread[16] = {0, 1, 2, 0, 3, 4, 5, 0, 6, 7, 8, 0, 9, 10, 11, 0};
        const auto v = hn::LoadU(Block(), from);
        if constexpr (Bits != 24) return v;
        return hn::TableLookupBytes(v, hn::Load(Block(), kSpread));
    }

    /// Cells of four bytes become pixels of three; what is too much goes where the square to the right will be.
    static HWY_INLINE void StoreCells(hn::Vec<Block> v, unsigned char* to, bool followed) {
        alignas(16) static constexpr std::uint8_t kGather[16] = {0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 0, 0, 0, 0};
        if constexpr (Bits == 24) v = hn::TableLookupBytes(v, hn::Load(Block(), kGather));
        if (kOverhang == 0 || followed) return hn::StoreU(v, Block(), to);
        alignas(16) unsigned char pixels[16];
        hn::Store(v, Block(), pixels);
        std::memcpy(to, pixels, kSideBytes);
    }
};

TurnSteps Steps(unsigned int bits) {
    return TurnStepsOf<VectorTurn>(bits);
}

#else

TurnSteps Steps(unsigned int bits) {
    return TurnStepsOf<ScalarTurn>(bits);
}

#endif

}  // namespace
}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vantu {

HWY_EXPORT(Steps);

TurnSteps ActiveTurnSteps(unsigned int bits) {
    return HWY_DYNAMIC_DISPATCH(Steps)(bits);
}

}  // namespace vantu
#endif
