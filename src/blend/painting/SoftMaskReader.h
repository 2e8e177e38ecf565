#pragma once

#include <vantu/IPDFTransferFunction.h>
#include <vantu/IQorImage.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "blend/painting/KeyOpacities.h"
#include "blend/stages/Stages.h"
#include "pixel/PixelRows.h"

namespace vantu {

/// Reads spans of a soft mask as effective source alphas, for a transfer function of the library's own.
class SoftMaskReader {
public:
    /// The longest span that can be read at once.
    static constexpr std::size_t kMostPixels = 512;

    /// @param mask has memory and one of the nine formats. @param alpha the constant alpha. @param group whether the
    /// opacities are those of a group.
    SoftMaskReader(const MaskPixels& mask, const IPDFTransferFunction& transfer, std::uint32_t alpha, bool group);

    /// Says that `height` rows of `width` pixels, whose first is (x, y), will be read, or mixed as far as they can be.
    void Expect(unsigned int x, unsigned int y, std::size_t width, std::size_t height, bool mixes);

    /// Stores the effective source alphas of packed source pixels under `height` rows of `width` mask pixels, whose
    /// first is (x, y). @return false if an opacity leaves 0 to 1; `effective` is then of no use.
    bool Read(unsigned int x, unsigned int y, std::size_t width, std::size_t height, const unsigned char* source,
              unsigned char* effective);

    /// Mixes the first pixels of rows under the mask's pixels from (x, y) on, which were expected to be mixed, as far
    /// as their bytes can be mixed and the stages for that can read the mask: outside groups. @return how many, row by
    /// row.
    std::size_t Mix(const MixedRows& rows, unsigned int x, unsigned int y);

private:
    /// The opacity of a colour, remembered by a few of its bits.
    struct Remembered {
        std::uint32_t color;
        double opacity;
    };
    static constexpr std::size_t kRemembered = 1024;

    /// From here on all keys are learnt at once, which saves looking for unknown ones.
    static constexpr std::size_t kManyPixels = 8192;

    /// Whether a pixel is a byte, which is its key.
    [[nodiscard]] bool IsOfBytes() const { return key_ == MaskKey::Index && BitsPerPixel(format_) == 8; }
    bool LearnKeys(const PixelRows<const unsigned char>& keys, std::size_t width);
    std::size_t MixByColors(const MixedRows& rows, unsigned int x, unsigned int y);
    const unsigned char* ReadColors(unsigned int x, unsigned int y, std::size_t width, std::size_t height);
    bool Straighten(const unsigned char*& packed, std::size_t count);
    [[nodiscard]] LuminosityBytes Luminosities() const;
    void ReadLuminosities(const unsigned char* packed, std::size_t count, unsigned char* bytes);
    const unsigned char* ReadKeys(unsigned int x, unsigned int y, std::size_t width, std::size_t height);
    void ReadKeysOfRow(const unsigned char* row, unsigned int x, std::size_t count, unsigned char* keys) const;
    bool ReadByColors(const unsigned char* packed, const unsigned char* source, std::size_t count,
                      unsigned char* effective);
    bool ReadByKeys(const unsigned char* keys, const unsigned char* source, std::size_t count,
                    unsigned char* effective);
    void Scale(const unsigned char* source, std::size_t count, unsigned char* effective) const;
    double OpacityOfColor(const unsigned char* bgr);

    const IPDFTransferFunction& transfer_;
    PixelFormat format_;
    PixelRows<const unsigned char> rows_;
    std::uint32_t alpha_;
    bool group_;
    MaskKey key_;
    KeyOpacities opacities_;
    bool mixesByKeys_ = false;
    std::unique_ptr<Remembered[]> remembered_;

    std::array<unsigned char, kMostPixels> keys_;
    std::array<double, kMostPixels> opacity_;
    std::array<unsigned char, kMostPixels> bytes_;
    std::array<unsigned char, kMostPixels * kPackedBytes> packed_;
};

}  // namespace vantu
