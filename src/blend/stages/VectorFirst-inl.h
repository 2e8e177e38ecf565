// Vectors of which all pixels belong to a row, or the first. Included once per target.

#if defined(IMAGEOP_VECTOR_FIRST_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef IMAGEOP_VECTOR_FIRST_INL_H
#undef IMAGEOP_VECTOR_FIRST_INL_H
#else
#define IMAGEOP_VECTOR_FIRST_INL_H
#endif

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "blend/stages/VectorPixels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {

/// All pixels of a vector.
struct AllPixels {
    static HWY_INLINE std::size_t Count() { return hn::Lanes(kPixels); }
    static HWY_INLINE Pixels Load(const unsigned char* packed) { return LoadPixels(packed); }
    static HWY_INLINE Pixels LoadBytes(const unsigned char* bytes) {
        return hn::PromoteTo(kPixels, hn::LoadU(TagByte(), bytes));
    }
    static HWY_INLINE void Store(Pixels v, unsigned char* packed) { StorePixels(v, packed); }
    static HWY_INLINE void StoreWhere(PixelMask mask, Pixels v, unsigned char* packed) {
#if HWY_MAX_BYTES == 64
        hn::BlendedStore(v, mask, kPixels, reinterpret_cast<std::uint32_t*>(packed));
#else
        StorePixels(hn::IfThenElse(mask, v, LoadPixels(packed)), packed);
#endif
    }
};

/// The first pixels of a vector, or all.
class FirstPixels {
public:
    explicit HWY_INLINE FirstPixels(std::size_t count) : count_(count), present_(hn::FirstN(kPixels, count)) {}

    [[nodiscard]] HWY_INLINE std::size_t Count() const { return count_; }
    /// With zeros behind them.
    HWY_INLINE Pixels Load(const unsigned char* packed) const {
#if HWY_MAX_BYTES == 64
        return hn::MaskedLoad(present_, kPixels, reinterpret_cast<const std::uint32_t*>(packed));
#else
        unsigned char buffer[HWY_MAX_BYTES] = {};
        std::memcpy(buffer, packed, count_ * kPackedBytes);
        return LoadPixels(buffer);
#endif
    }
    HWY_INLINE Pixels LoadBytes(const unsigned char* bytes) const {
        std::uint8_t buffer[HWY_MAX_BYTES / kPackedBytes] = {};
        std::memcpy(buffer, bytes, count_);
        return hn::PromoteTo(kPixels, hn::LoadU(TagByte(), buffer));
    }
    HWY_INLINE void Store(Pixels v, unsigned char* packed) const {
#if HWY_MAX_BYTES == 64
        hn::BlendedStore(v, present_, kPixels, reinterpret_cast<std::uint32_t*>(packed));
#else
        unsigned char buffer[HWY_MAX_BYTES];
        StorePixels(v, buffer);
        std::memcpy(packed, buffer, count_ * kPackedBytes);
#endif
    }
    HWY_INLINE void StoreWhere(PixelMask mask, Pixels v, unsigned char* packed) const {
#if HWY_MAX_BYTES == 64
        hn::BlendedStore(v, hn::And(mask, present_), kPixels, reinterpret_cast<std::uint32_t*>(packed));
#else
        Store(hn::IfThenElse(mask, v, Load(packed)), packed);
#endif
    }
    /// Pixels with opaque ones behind the first.
    HWY_INLINE Pixels OpaqueBehind(Pixels v) const {
        return hn::Or(v, hn::IfThenZeroElse(present_, hn::Set(kPixels, kPackedAlpha)));
    }

private:
    std::size_t count_;
    PixelMask present_;
};

}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
