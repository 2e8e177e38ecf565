#pragma once

namespace vantu {

/// Opaque black, packed 0xAARRGGBB. Every `Color` that the library reads pixels into starts from it.
inline constexpr unsigned int ARGB_BLACK = 0xFF000000U;

/// One straight (not premultiplied) colour of four 8-bit components, held in one word.
///
/// Alpha 255 is opaque, 0 is transparent. Setters take 8 bits: a wider value is cut to its low 8 bits by the
/// conversion at the call. A plain value; distinct objects may be used on distinct threads.
class Color {
public:
    /// Opaque black.
    constexpr Color() = default;

    /// @param packed the colour as 0xAARRGGBB.
    constexpr Color(unsigned int packed) : packed_(packed) {}  // NOLINT: a packed word is a colour

    /// One component, 0 to 255.
    /// @{
    [[nodiscard]] constexpr unsigned char GetRed() const { return Byte(16); }
    [[nodiscard]] constexpr unsigned char GetGreen() const { return Byte(8); }
    [[nodiscard]] constexpr unsigned char GetBlue() const { return Byte(0); }
    [[nodiscard]] constexpr unsigned char GetAlpha() const { return Byte(24); }
    /// @}

    /// Replaces one component, 0 to 255, and leaves the others.
    /// @{
    constexpr void SetRed(unsigned char red) { SetByte(16, red); }
    constexpr void SetGreen(unsigned char green) { SetByte(8, green); }
    constexpr void SetBlue(unsigned char blue) { SetByte(0, blue); }
    constexpr void SetAlpha(unsigned char alpha) { SetByte(24, alpha); }
    /// @}

private:
    [[nodiscard]] constexpr unsigned char Byte(unsigned int shift) const {
        return static_cast<unsigned char>(packed_ >> shift);
    }
    constexpr void SetByte(unsigned int shift, unsigned int value) {
        packed_ = (packed_ & ~(0xFFU << shift)) | (value << shift);
    }

    unsigned int packed_ = ARGB_BLACK;
};

static_assert(sizeof(Color) == sizeof(unsigned int), "a Color is one word");

}  // namespace vantu
