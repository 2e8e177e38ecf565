#include "blend/painting/KeyOpacities.h"

#include <vantu/CExponentialPDFTransferFunction.h>
#include <vantu/CIdentityPDFTransferFunction.h>
#include <vantu/CPostscriptPDFTransferFunction.h>
#include <vantu/ColorMap.h>

#include <cstdint>
#include <typeinfo>

#include "blend/definition/CompositeSteps.h"
#include "blend/stages/Stages.h"

namespace vantu {
namespace {

using SourceType = IPDFTransferFunction::SourceType;

/// Whether entry i of a palette is the opaque grey i. Only the reference palette's way to keep its entries, one after
/// another, is looked at in one go; a palette that keeps them otherwise counts as none, and its entries are asked for.
bool IsGreyRamp(const ColorMap& palette) {
    if (palette.GetSize() < 256) return false;
    const auto* const entries = &palette[0];
    for (const unsigned int i : {1U, 128U, 255U}) {
        const auto distance = reinterpret_cast<std::uintptr_t>(&palette[i]) - reinterpret_cast<std::uintptr_t>(entries);
        if (distance != i * sizeof(Color)) return false;
    }
    return ActiveMaskStages().areGreys(entries);
}

}  // namespace

IdentityOpacities::IdentityOpacities(SourceType source) {
    const CIdentityPDFTransferFunction transfer(source);
    for (unsigned int value = 0; value < opacities.size(); ++value) {
        Color color(value * 0x010101);
        color.SetAlpha(static_cast<unsigned char>(source == SourceType::Alpha ? value : 255));
        opacities[value] = transfer.ComputeAlpha(color);
        bytes[value] = static_cast<unsigned char>(GroupMaskByte(opacities[value]));
        ofOpaque[value] = static_cast<unsigned char>(PlainMaskOpacity(255, 255, opacities[value]));
    }
}

const IdentityOpacities& IdentityOf(SourceType source) {
    static const std::array<IdentityOpacities, 2> identities = {IdentityOpacities(SourceType::Alpha),
                                                                IdentityOpacities(SourceType::Luminosity)};
    return identities[source == SourceType::Alpha ? 0 : 1];
}

bool IsIdentity(const IPDFTransferFunction& transfer) {
    return typeid(transfer) == typeid(CIdentityPDFTransferFunction);
}

bool IsOwnTransferFunction(const IPDFTransferFunction& transfer) {
    const SourceType source = transfer.GetSourceType();
    if (source != SourceType::Alpha && source != SourceType::Luminosity) return false;
    return IsIdentity(transfer) || typeid(transfer) == typeid(CExponentialPDFTransferFunction) ||
           typeid(transfer) == typeid(CPostscriptPDFTransferFunction);
}

KeyOpacities::KeyOpacities(const MaskPixels& mask, MaskKey kind, const IPDFTransferFunction& transfer,
                           std::uint32_t alpha, bool group)
    : transfer_(transfer), palette_(mask.palette), format_(mask.format), kind_(kind), alpha_(alpha), group_(group) {
    // An alpha byte is a key only to a function of alphas.
    const bool bySource =
        kind == MaskKey::Alpha || (kind == MaskKey::Index && BitsPerPixel(format_) == 8 &&
                                   transfer.GetSourceType() == SourceType::Luminosity && IsGreyRamp(*palette_));
    if (bySource && IsIdentity(transfer)) {
        TakeIdentity();
    } else {
        known_.fill(Known::No);
    }
}

/// Takes the tables of the identity, where the key is the value of its source.
void KeyOpacities::TakeIdentity() {
    const IdentityOpacities& identity = IdentityOf(transfer_.GetSourceType());
    identity_ = allInRange_ = true;
    opacities_ = &identity.opacities;
    bytes_ = &identity.bytes;
    if (alpha_ == 255) {
        ofOpaque_ = group_ ? &identity.bytes : &identity.ofOpaque;
        return;
    }
    static constexpr auto opaque = [] {
        std::array<unsigned char, 256 * kPackedBytes> pixels{};
        pixels.fill(255);
        return pixels;
    }();
    const MaskSpan span{opacities_->data(), bytes_->data(), opaque.data(), ownOfOpaque_.data(), 256, alpha_};
    (group_ ? ActiveStages().groupMask : ActiveStages().plainMask)(span);
}

const KeyScaling* KeyOpacities::Scaling() const {
    if (!identity_ || group_ || alpha_ != 255) return nullptr;
    if (transfer_.GetSourceType() == SourceType::Alpha) {
        static const KeyScaling alpha(IdentityOf(SourceType::Alpha).opacities);
        return &alpha;
    }
    static const KeyScaling luminosity(IdentityOf(SourceType::Luminosity).opacities);
    return &luminosity;
}

/// A colour whose opacity all pixels of a key have.
Color KeyOpacities::ColorOf(unsigned int key) const {
    Color color(ARGB_BLACK);
    if (palette_ != nullptr) {
        color = (*palette_)[key];
    } else if (kind_ == MaskKey::Alpha) {
        color.SetAlpha(static_cast<unsigned char>(key));
    }
    return color;
}

void KeyOpacities::LearnKey(unsigned int key) {
    const double opacity = transfer_.ComputeAlpha(ColorOf(key));
    known_[key] = InRange(opacity) ? Known::InRange : Known::OutOfRange;
    if (known_[key] == Known::OutOfRange) return;
    ownOpacities_[key] = opacity;
    ownBytes_[key] = static_cast<unsigned char>(GroupMaskByte(opacity));
    ownOfOpaque_[key] = static_cast<unsigned char>(group_ ? GroupMaskOpacity(alpha_, 255, ownBytes_[key])
                                                          : PlainMaskOpacity(alpha_, 255, opacity));
}

bool KeyOpacities::Learn(const unsigned char* keys, std::size_t count) {
    if (allInRange_) return true;
    for (std::size_t i = 0; i < count; ++i) {
        if (known_[keys[i]] == Known::InRange) continue;
        if (known_[keys[i]] == Known::No) LearnKey(keys[i]);
        if (known_[keys[i]] == Known::OutOfRange) return false;
    }
    return true;
}

void KeyOpacities::LearnAll() {
    if (allInRange_) return;
    const unsigned int count = kind_ == MaskKey::Index   ? 1U << BitsPerPixel(format_)
                               : kind_ == MaskKey::Alpha ? 256
                                                         : 1;
    if (palette_ != nullptr && palette_->GetSize() < count) return;
    allInRange_ = true;
    for (unsigned int key = 0; key < count; ++key) {
        LearnKey(key);
        allInRange_ = allInRange_ && known_[key] == Known::InRange;
    }
}

}  // namespace vantu
