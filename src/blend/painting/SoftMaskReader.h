#pragma once

#include <vantu/IPDFTransferFunction.h>
#include <vantu/IQorImage.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "blend/stages/Stages.h"
#include "pixel/PixelRows.h"

namespace vantu {

/// Whether the function is one of the library's own classes with a source that it names, so that its opacity depends on
/// that source alone: it may be asked once per colour. A host's class is asked once per pixel, in the pixels' order.
bool IsOwnTransferFunction(const IPDFTransferFunction& transfer);

/// Reads spans of a soft mask as effective source alphas, for a transfer function of the library's own.
class SoftMaskReader {
public:
    /// The longest span that can be read at once.
    static constexpr std::size_t kMostPixels = 512;

    /// @param mask has memory and one of the nine formats. @param alpha the constant alpha. @param group whether the
    /// opacities are those of a group. @param pixels how many will be read, about.
    SoftMaskReader(const IQorImage& mask, const IPDFTransferFunction& transfer, std::uint32_t alpha, bool group,
                   std::size_t pixels);

    /// Stores the effective source alphas of packed source pixels under `height` rows of `width` mask pixels, whose
    /// first is (x, y). @return false if an opacity leaves 0 to 1; `effective` is then of no use.
    bool Read(unsigned int x, unsigned int y, std::size_t width, std::size_t height, const unsigned char* source,
              unsigned char* effective);

private:
    /// By what the opacity of a mask pixel is known.
    enum class Key {
        Nothing,  ///< the same for every pixel
        Index,    ///< a palette index
        Alpha,    ///< the alpha byte
        Color,
    };

    /// The opacity of a colour, remembered by a few of its bits.
    struct Remembered {
        std::uint32_t color;
        double opacity;
    };
    static constexpr std::size_t kRemembered = 1024;

    /// From here on all keys are learnt at once, which saves looking for unknown ones.
    static constexpr std::size_t kManyPixels = 8192;

    bool ReadRow(const unsigned char* row, unsigned int x, std::size_t count, const unsigned char* source,
                 unsigned char* effective);
    [[nodiscard]] Color ColorOfKey(unsigned int key) const;
    const unsigned char* ReadKeys(const unsigned char* row, unsigned int x, std::size_t count);
    void LearnKey(unsigned int key);
    void LearnAllKeys();
    /// @return false if the opacity of a key leaves 0 to 1.
    bool LearnKeys(const unsigned char* keys, std::size_t count);
    bool ReadOpacitiesOfColors(const unsigned char* row, unsigned int x, std::size_t count);
    double OpacityOfColor(const unsigned char* bgr);

    const IPDFTransferFunction& transfer_;
    const ColorMap* palette_;
    PixelFormat format_;
    PixelRows<const unsigned char> rows_;
    std::uint32_t alpha_;
    bool group_;
    bool allInRange_ = false;  ///< all keys are known, and their opacities within 0 to 1
    Key key_ = Key::Nothing;

    enum class Known : unsigned char { InRange = 0, No = 1, OutOfRange = 2 };
    std::array<Known, 256> known_;
    std::array<double, 256> opacityOfKey_;
    std::array<unsigned char, 256> byteOfKey_;       ///< the opacity cut to 8 bits
    std::array<unsigned char, 256> effectiveOfKey_;  ///< the effective alpha of an opaque source
    std::unique_ptr<Remembered[]> remembered_;

    std::array<unsigned char, kMostPixels> keys_;
    std::array<double, kMostPixels> opacities_;
    std::array<unsigned char, kMostPixels> bytes_;
    std::array<unsigned char, kMostPixels * kPackedBytes> packed_;
};

}  // namespace vantu
