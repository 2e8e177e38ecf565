#pragma once

#include <vantu/IPDFTransferFunction.h>
#include <vantu/IQorImage.h>

#include <array>
#include <cstddef>
#include <cstdint>

#include "pixel/Accessor.h"

namespace vantu {

/// Whether the function is one of the library's own classes, whose opacity depends on the colour alone: it may be asked
/// once per colour. A host's class is asked once per pixel, in the pixels' order.
bool IsOwnTransferFunction(const IPDFTransferFunction& transfer);

/// Reads spans of a soft mask as effective source alphas, for a transfer function of the library's own.
class SoftMaskReader {
public:
    /// @param mask has memory and one of the nine formats. @param alpha the constant alpha. @param group whether the
    /// opacities are those of a group.
    SoftMaskReader(const IQorImage& mask, const IPDFTransferFunction& transfer, unsigned int alpha, bool group);

    /// Stores the effective source alpha of `count` packed source pixels under the mask pixels from (x, y) on.
    /// @return false if an opacity leaves 0 to 1; `opacity` is then of no use.
    bool Read(unsigned int x, unsigned int y, std::size_t count, const unsigned char* source, unsigned char* opacity);

private:
    /// By what the opacity of a mask pixel is known.
    enum class Key {
        Nothing,  ///< the same for every pixel
        Index,    ///< a palette index
        Alpha,    ///< the alpha byte
        Color,
    };

    Color KeyColor(unsigned int key) const;
    Color PixelColor(const unsigned char* row, unsigned int x) const;
    unsigned int KeyOf(const unsigned char* row, unsigned int x) const;
    double Opacity(unsigned int key);
    unsigned char Effective(double t, std::uint32_t sourceAlpha) const;

    const IPDFTransferFunction& transfer_;
    const ColorMap* palette_;
    PixelFormat format_;
    RowsFromTop<const unsigned char> rows_;
    std::uint32_t alpha_;
    bool group_;
    Key key_;
    std::array<double, 256> opacityOfKey_;
    std::array<bool, 256> known_{};
};

}  // namespace vantu
