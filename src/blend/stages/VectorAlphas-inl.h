// The alphas that a mask gives to pixels, 64 at a time. Included once per target.

#if defined(IMAGEOP_VECTOR_ALPHAS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef IMAGEOP_VECTOR_ALPHAS_INL_H
#undef IMAGEOP_VECTOR_ALPHAS_INL_H
#else
#define IMAGEOP_VECTOR_ALPHAS_INL_H
#endif

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "blend/stages/MaskStages.h"
#include "blend/stages/VectorBytes-inl.h"
#include "blend/stages/VectorMix-inl.h"
#include "blend/stages/VectorNative-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {

#if IMAGEOP_HAS_BYTE_TABLES

/// Which of 64 pixels a byte belongs to.
alignas(64) inline constexpr auto kPixelOfByte = [] {
    std::array<std::uint8_t, 64 * kPackedBytes> pixels{};
    for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<std::uint8_t>(i / kPackedBytes);
    return pixels;
}();

#endif

/// Alphas of 64 pixels: of a part of a row, or of several rows that are so narrow that each fits a vector.
struct PieceAlphas {
    static constexpr std::size_t kPixels = 64;
    static constexpr std::size_t kNarrow = HWY_MAX_BYTES / kPackedBytes;  ///< pixels from one narrow row to the next
    static constexpr std::size_t kNarrowRows = kPixels / kNarrow;

    /// The alphas of the vector that starts with a pixel, in all bytes of their pixels.
    [[nodiscard]] HWY_INLINE Words InEachByteFrom(std::size_t pixel) const {
#if IMAGEOP_HAS_BYTE_TABLES
        const Bytes places = hn::Load(kBytes, kPixelOfByte.data() + pixel * kPackedBytes);
        return hn::BitCast(kWords, LookUp64(hn::Load(kBytes, alphas), places));
#else
        return InEachByte(alphas + pixel);
#endif
    }

    /// Sets `clear` and `full`.
    HWY_INLINE void FindClearAndFull() {
#if IMAGEOP_HAS_BYTE_TABLES
        const Bytes bytes = hn::Load(kBytes, alphas);
        clear = Bits(hn::Eq(bytes, hn::Zero(kBytes)));
        full = Bits(hn::Eq(bytes, hn::Set(kBytes, 255)));
#else
        clear = full = 0;
        for (std::size_t i = 0; i < kPixels; i += 8) {
            std::uint64_t eight = 0;
            std::memcpy(&eight, alphas + i, sizeof eight);
            // No branches: compilers may follow them up to each set of bits and there write all that comes behind.
            clear |= std::uint64_t{eight == 0} * 255 << i;
            full |= std::uint64_t{~eight == 0} * 255 << i;
        }
#endif
    }

    alignas(kPixels) unsigned char alphas[kPixels];
    /// Of a part of a row, which pixels they leave or replace: a bit for each, the first pixel's lowest. The bits need
    /// not tell of all such pixels.
    /// @{
    std::uint64_t clear;  ///< alpha 0
    std::uint64_t full;   ///< alpha 255
    /// @}
};

/// Bytes looked up by keys.
class ByteLookUp {
public:
    explicit HWY_INLINE ByteLookUp(const ByteTable& table) : table_(table) {}

#if IMAGEOP_HAS_BYTE_TABLES

    HWY_INLINE Bytes Of(Bytes keys) const {
        return ByteIndices(keys).In(table_);
    }

    /// Stores the bytes of `count` keys, at most 64, and zeros behind them up to 64.
    HWY_INLINE void Read(const unsigned char* keys, std::size_t count, unsigned char* bytes) const {
        const auto present = hn::FirstN(kBytes, count);
        hn::StoreU(hn::IfThenElseZero(present, Of(hn::MaskedLoad(present, kBytes, keys))), kBytes, bytes);
    }

    /// Stores the bytes of `width` keys of each of some narrow rows. What lies behind those is of no use.
    HWY_INLINE void ReadRows(const PixelRows<const unsigned char>& keys, std::size_t width,
                             unsigned char* bytes) const {
        const hn::Half<TagBytes> half;
        const hn::Half<decltype(half)> quarter;
        const auto present = hn::FirstN(quarter, width);
        const auto row = [&](std::size_t i) HWY_ATTR {
            return hn::MaskedLoad(present, quarter, keys.Row(std::min(i, keys.count - 1)));
        };
        const auto low = hn::Combine(half, row(1), row(0)), high = hn::Combine(half, row(3), row(2));
        hn::StoreU(Of(hn::Combine(kBytes, high, low)), kBytes, bytes);
    }

#else

    /// Stores the bytes of `count` keys, at most 64, and zeros behind them up to 64: eight at once as a word.
    void Read(const unsigned char* keys, std::size_t count, unsigned char* bytes) const {
        for (std::size_t i = 0; i < PieceAlphas::kPixels; i += 8) {
            std::uint64_t eight = 0;
            for (std::size_t j = std::min<std::size_t>(count - std::min(count, i), 8); j-- > 0;) {
                eight = eight << 8 | table_[keys[i + j]];
            }
            std::memcpy(bytes + i, &eight, sizeof eight);
        }
    }

    /// Stores the bytes of `width` keys of each of some narrow rows.
    void ReadRows(const PixelRows<const unsigned char>& keys, std::size_t width, unsigned char* bytes) const {
        for (std::size_t row = 0; row < keys.count; ++row, bytes += PieceAlphas::kNarrow) {
            for (std::size_t i = 0; i < width; ++i) bytes[i] = table_[keys.Row(row)[i]];
        }
    }

#endif

private:
#if IMAGEOP_HAS_BYTE_TABLES
    TableQuarters table_;
#else
    const ByteTable& table_;
#endif
};

// What reads alphas returns whether it could. Only colours may fail: those that are premultiplied and not opaque.

/// Alphas by keys, a byte a pixel.
class KeyAlphas {
public:
    explicit HWY_INLINE KeyAlphas(const ByteTable& table) : lookUp_(table) {}

    /// Those of `count` pixels of a row from x on; zeros behind them.
    HWY_INLINE bool Read(const unsigned char* row, std::size_t x, std::size_t count, PieceAlphas& piece) const {
        lookUp_.Read(row + x, count, piece.alphas);
        piece.FindClearAndFull();
        return true;
    }

    /// Those of `width` pixels of each of some narrow rows.
    HWY_INLINE bool ReadRows(const PixelRows<const unsigned char>& rows, std::size_t width, PieceAlphas& piece) const {
        lookUp_.ReadRows(rows, width, piece.alphas);
        return true;
    }

private:
    ByteLookUp lookUp_;
};

/// One alpha where the bit of a row is 0, from its bit `first` on, the most significant bit of a byte first.
class BitAlphas {
public:
    BitAlphas(std::size_t first, std::uint32_t alpha) : first_(first), alpha_(static_cast<unsigned char>(alpha)) {}

    /// Those of `count` pixels of a row from x on; zeros behind them.
    HWY_INLINE bool Read(const unsigned char* row, std::size_t x, std::size_t count, PieceAlphas& piece) const {
        const std::uint64_t painted = PaintedFrom(row, first_ + x, count);
        piece.clear = ~painted;
        piece.full = alpha_ == 255 ? painted : 0;
        Spread(painted, piece);
        return true;
    }

    /// Those of `width` pixels of each of some narrow rows.
    HWY_INLINE bool ReadRows(const PixelRows<const unsigned char>& rows, std::size_t width, PieceAlphas& piece) const {
        std::uint64_t painted = 0;
        for (std::size_t row = rows.count; row-- > 0;) {
            painted = painted << PieceAlphas::kNarrow | PaintedFrom(rows.Row(row), first_, width);
        }
        Spread(painted, piece);
        return true;
    }

private:
    /// Gives the alpha to pixels whose bits are set.
    HWY_INLINE void Spread(std::uint64_t painted, PieceAlphas& piece) const {
        const hn::CappedTag<std::uint8_t, PieceAlphas::kPixels> bytes;
        unsigned char memory[sizeof painted];
        std::memcpy(memory, &painted, sizeof painted);
        for (std::size_t i = 0; i < PieceAlphas::kPixels; i += hn::Lanes(bytes)) {
            const auto mask = hn::LoadMaskBits(bytes, memory + i / 8);
            hn::Store(hn::IfThenElseZero(mask, hn::Set(bytes, alpha_)), bytes, piece.alphas + i);
        }
    }

    /// Which of `count` pixels of a row are painted: a bit for each, the first pixel's lowest.
    static HWY_INLINE std::uint64_t PaintedFrom(const unsigned char* row, std::size_t first, std::size_t count) {
        return ~BitsFrom(row, first, count) & ~std::uint64_t{0} >> (64 - count);
    }

    /// `count` bits, the first one lowest; what lies above them is of no use.
    static HWY_INLINE std::uint64_t BitsFrom(const unsigned char* row, std::size_t first, std::size_t count) {
        const unsigned char* const bytes = row + first / 8;
        const std::size_t shift = first % 8;
        const std::size_t present = (shift + count + 7) / 8;
        std::uint64_t eight = 0;
        if (present >= sizeof eight) {
            std::memcpy(&eight, bytes, sizeof eight);
        } else {
            for (std::size_t i = present; i-- > 0;) eight = eight << 8 | bytes[i];
        }
        eight = Mirrored(eight) >> shift;
        return present <= sizeof eight ? eight : eight | Mirrored(bytes[8]) << (64 - shift);
    }

    /// The bits of each byte the other way round.
    static HWY_INLINE std::uint64_t Mirrored(std::uint64_t v) {
        v = (v >> 1 & 0x5555555555555555) | (v & 0x5555555555555555) << 1;
        v = (v >> 2 & 0x3333333333333333) | (v & 0x3333333333333333) << 2;
        return (v >> 4 & 0x0F0F0F0F0F0F0F0F) | (v & 0x0F0F0F0F0F0F0F0F) << 4;
    }

    std::size_t first_;
    unsigned char alpha_;
};

}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
