// Luminosities of colours. Included once per target.

#if defined(IMAGEOP_VECTOR_LUMINOSITY_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef IMAGEOP_VECTOR_LUMINOSITY_INL_H
#undef IMAGEOP_VECTOR_LUMINOSITY_INL_H
#else
#define IMAGEOP_VECTOR_LUMINOSITY_INL_H
#endif

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "blend/stages/ExactLuminosity.h"
#include "blend/stages/MaskStages.h"
#include "blend/stages/VectorAlphas-inl.h"
#include "blend/stages/VectorBytes-inl.h"
#include "blend/stages/VectorNative-inl.h"
#include "blend/stages/VectorPixels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {

/// 11*B + 59*G + 30*R of the pixels of a block, given as its two vectors.
HWY_INLINE Words WeightedSums(Pixels first, Pixels second) {
#if IMAGEOP_HAS_PAIR_SUMS
    const Words weights = AsWords(hn::Set(kPixels, 11 | 59 << 8 | 30 << 16));
    const Pixels a = AsPixels(PairSums(AsWords(first), weights)), b = AsPixels(PairSums(AsWords(second), weights));
    return hn::Add(LowHalves(a, b), HighHalves(a, b));
#else
    const Block block{LowHalves(first, second), HighHalves(first, second)};
    const Words blueGreen = hn::Add(hn::Mul(block.Blue(), Constant(11)), hn::Mul(block.Green(), Constant(59)));
    return hn::Add(blueGreen, hn::Mul(block.Red(), Constant(30)));
#endif
}

/// What luminosities of the pixels of a block are made of: with n = 11*B + 59*G + 30*R, floor(n / 100), which is a grey
/// itself; which pixels are greys, and which are none but have a whole number for n / 100.
struct BlockLuminosities {
    /// @param hundred in each word.
    HWY_INLINE BlockLuminosities(Pixels first, Pixels second, Words hundred) {
        const auto distances = [](Pixels v) HWY_ATTR { return hn::Xor(v, hn::ShiftRight<8>(v)); };
        const Words n = WeightedSums(first, second);
        // floor(n / 100) = n * 20972 / 2^21 for n up to 25,500.
        floor = hn::ShiftRight<5>(hn::MulHigh(n, Constant(20972)));
        grey = hn::Eq(LowHalves(distances(first), distances(second)), hn::Zero(kWords));
        unknown = hn::AndNot(grey, hn::Eq(hn::Mul(floor, hundred), n));
    }

    Words floor;
    WordMask grey, unknown;
};

/// Luminosities of 64 pixels.
class PieceLuminosities {
public:
    explicit HWY_INLINE PieceLuminosities(const LuminosityBytes& of)
        : ofGrey_(of.ofGrey), inGroup_(of.inGroup), hundred_(Kept(100)) {}

    /// Stores those of 64 pixels as bytes. `at(i)` is where pixel i lies, `load` reads a vector of pixels from there
    /// on.
    /// @return what is common to all pixels.
    template <typename At, typename Load>
    HWY_INLINE Pixels Read(At at, Load load, unsigned char* bytes) const {
        Pixels common = hn::Set(kPixels, kPackedAlpha);
        const auto block = [&](std::size_t i) HWY_ATTR {
            const Pixels first = load(at(i)), second = load(at(i + hn::Lanes(kPixels)));
            common = hn::And(common, hn::And(first, second));
            return BlockLuminosities(first, second, hundred_);
        };
        const auto ask = [&](const BlockLuminosities& luminosities, std::size_t first) HWY_ATTR {
            EachPixelOf(luminosities.unknown, [&](std::size_t pixel) {
                bytes[first + pixel] = ExactLuminosity(at(first + pixel), inGroup_);
            });
        };
#if IMAGEOP_HAS_BYTE_TABLES
        const BlockLuminosities low = block(0), high = block(BlockPixels());
        const Bytes floors = JoinBytes({low.floor, high.floor});
        const Words greys =
            hn::Or(hn::IfThenElseZero(low.grey, Constant(0x00FF)), hn::IfThenElseZero(high.grey, Constant(0xFF00)));
        const auto grey = hn::MaskFromVec(hn::BitCast(kBytes, greys));
        StoreJoined(hn::IfThenElse(grey, ofGrey_.Of(floors), floors), bytes);
        ask(low, 0);
        ask(high, BlockPixels());
#else
        alignas(PieceAlphas::kPixels) unsigned char greys[PieceAlphas::kPixels];
        for (std::size_t i = 0; i < PieceAlphas::kPixels; i += BlockPixels()) {
            const BlockLuminosities luminosities = block(i);
            StoreBytes(luminosities.floor, bytes + i);
            StoreBytes(hn::IfThenElseZero(luminosities.grey, Constant(255)), greys + i);
            ask(luminosities, i);
        }
        unsigned char ofGreys[PieceAlphas::kPixels];
        ofGrey_.Read(bytes, PieceAlphas::kPixels, ofGreys);
        const hn::CappedTag<std::uint8_t, PieceAlphas::kPixels> tag;
        for (std::size_t i = 0; i < PieceAlphas::kPixels; i += hn::Lanes(tag)) {
            const auto isGrey = hn::MaskFromVec(hn::Load(tag, greys + i));
            hn::StoreU(hn::IfThenElse(isGrey, hn::LoadU(tag, ofGreys + i), hn::LoadU(tag, bytes + i)), tag, bytes + i);
        }
#endif
        return common;
    }

    /// The same of `count` packed pixels, at most 64, and of white ones behind them.
    HWY_INLINE Pixels ReadPacked(const unsigned char* packed, std::size_t count, unsigned char* bytes) const {
        unsigned char buffer[PieceAlphas::kPixels * kPackedBytes];
        if (count < PieceAlphas::kPixels) {
            std::memset(buffer, 255, sizeof buffer);
            std::memcpy(buffer, packed, count * kPackedBytes);
            packed = buffer;
        }
        const auto at = [packed](std::size_t i) { return packed + i * kPackedBytes; };
        return Read(
            at, [](const unsigned char* pixels) HWY_ATTR { return LoadPixels(pixels); }, bytes);
    }

private:
    ByteLookUp ofGrey_;
    bool inGroup_;
    Words hundred_;
};

/// Alphas by luminosities of packed pixels.
class ColorAlphas {
public:
    HWY_INLINE ColorAlphas(const LuminosityBytes& of, bool needsOpaque)
        : luminosities_(of), needsOpaque_(needsOpaque) {}

    /// Those of `count` pixels of a row from x on.
    HWY_INLINE bool Read(const unsigned char* row, std::size_t x, std::size_t count, PieceAlphas& piece) const {
        const Pixels common = luminosities_.ReadPacked(row + x * kPackedBytes, count, piece.alphas);
        piece.FindClearAndFull();
        return !needsOpaque_ || AllOpaque(common);
    }

    /// Those of `width` pixels of each of some narrow rows.
    HWY_INLINE bool ReadRows(const PixelRows<const unsigned char>& rows, std::size_t width, PieceAlphas& piece) const {
        const FirstPixels first(width);
        const auto at = [&](std::size_t i) {
            const std::size_t row = std::min(i / PieceAlphas::kNarrow, rows.count - 1);
            return rows.Row(row) + i % PieceAlphas::kNarrow * kPackedBytes;
        };
        const auto load = [&](const unsigned char* row) HWY_ATTR { return first.OpaqueBehind(first.Load(row)); };
        const Pixels common = luminosities_.Read(at, load, piece.alphas);
        return !needsOpaque_ || AllOpaque(common);
    }

private:
    PieceLuminosities luminosities_;
    bool needsOpaque_;
};

inline bool Luminosities(const unsigned char* packed, std::size_t count, const LuminosityBytes& of,
                         unsigned char* bytes) {
    constexpr std::size_t kPiece = PieceAlphas::kPixels;
    const PieceLuminosities luminosities(of);
    Pixels common = hn::Set(kPixels, kPackedAlpha);
    for (std::size_t done = 0; done < count; done += kPiece) {
        const std::size_t rest = std::min(kPiece, count - done);
        unsigned char some[kPiece];
        common = hn::And(common, luminosities.ReadPacked(packed + done * kPackedBytes, rest, some));
        std::memcpy(bytes + done, some, rest);
    }
    return AllOpaque(common);
}

}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
