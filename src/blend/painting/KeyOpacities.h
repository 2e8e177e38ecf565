#pragma once

#include <vantu/IPDFTransferFunction.h>
#include <vantu/IQorImage.h>

#include <array>
#include <cstddef>
#include <cstdint>

#include "blend/painting/ImageMemory.h"
#include "blend/stages/MaskStages.h"

namespace vantu {

/// Whether the function is one of the library's own classes with a source that it names, so that its opacity depends on
/// that source alone: it may be asked once per colour. A host's class is asked once per pixel, in the pixels' order.
bool IsOwnTransferFunction(const IPDFTransferFunction& transfer);

/// Whether the truncated alphas of an opacity stay within 0 to 255. There is room for the rounding of a luminosity:
/// white may come out a little above 1, and one less that a little below 0.
inline bool InRange(double opacity) {
    return opacity >= -0.001 && opacity <= 1.001;
}

/// By what the opacity of a mask pixel is known.
enum class MaskKey {
    Nothing,  ///< the same for every pixel
    Index,    ///< a palette index
    Alpha,    ///< the alpha byte
    Color,
};

/// What an identity makes of each value of its source.
struct IdentityOpacities {
    explicit IdentityOpacities(IPDFTransferFunction::SourceType source);

    std::array<double, 256> opacities;
    ByteTable bytes;     ///< the same cut to 8 bits
    ByteTable ofOpaque;  ///< effective alphas of an opaque source at full constant alpha, outside groups
};

const IdentityOpacities& IdentityOf(IPDFTransferFunction::SourceType source);

/// Whether a transfer function is the library's identity.
bool IsIdentity(const IPDFTransferFunction& transfer);

/// Opacities by a pixel's key, a byte, for a transfer function of the library's own. A key is learnt when it first
/// occurs; the identities have tables that serve all calls.
class KeyOpacities {
public:
    /// @param mask not known by its colours. @param alpha the constant alpha. @param group whether the opacities are
    /// those of a group.
    KeyOpacities(const MaskPixels& mask, MaskKey kind, const IPDFTransferFunction& transfer, std::uint32_t alpha,
                 bool group);

    /// Learns the keys that are not known yet. @return false if the opacity of one leaves 0 to 1.
    bool Learn(const unsigned char* keys, std::size_t count);
    /// Learns all keys that a mask can have, which saves looking for unknown ones.
    void LearnAll();

    /// Whether all keys are known and none leaves 0 to 1.
    [[nodiscard]] bool KnowsAll() const { return allInRange_; }

    /// By keys that are known: the opacity outside groups, the same cut to 8 bits, and the effective alpha of an opaque
    /// source.
    /// @{
    [[nodiscard]] const std::array<double, 256>& Opacities() const { return *opacities_; }
    [[nodiscard]] const ByteTable& Bytes() const { return *bytes_; }
    [[nodiscard]] const ByteTable& OfOpaque() const { return *ofOpaque_; }
    /// @}
    /// What scales the alphas of a source: only of an identity, outside groups and at full constant alpha; else null.
    [[nodiscard]] const KeyScaling* Scaling() const;

private:
    enum class Known : unsigned char { InRange = 0, No = 1, OutOfRange = 2 };

    void TakeIdentity();
    [[nodiscard]] Color ColorOf(unsigned int key) const;
    void LearnKey(unsigned int key);

    const IPDFTransferFunction& transfer_;
    const ColorMap* palette_;
    PixelFormat format_;
    MaskKey kind_;
    std::uint32_t alpha_;
    bool group_;
    bool identity_ = false;    ///< the tables are those of the identity, whose source's values the keys are
    bool allInRange_ = false;  ///< all keys are known, and their opacities within 0 to 1
    const std::array<double, 256>* opacities_ = &ownOpacities_;
    const ByteTable* bytes_ = &ownBytes_;
    const ByteTable* ofOpaque_ = &ownOfOpaque_;

    std::array<Known, 256> known_;
    std::array<double, 256> ownOpacities_;
    ByteTable ownBytes_;
    ByteTable ownOfOpaque_;
};

}  // namespace vantu
