#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <memory>

#include "blend/Painting.h"
#include "support/Crc32.h"
#include "support/VectorTargets.h"

// The same random pages, painted anywhere, have the checksums below: on every processor, with and without vectors, from
// every compiler. They change only if a pixel of the library does, and then a failure prints what they are now.

namespace vantu::test {
namespace {

constexpr int kWidth = 150;  // more than two of the longest blocks, and a rest
constexpr int kHeight = 5;
constexpr int kMargin = 4;  // by which sources are larger

/// An image whose alphas, where it has them, come in runs of 0, of 255 and of anything.
std::shared_ptr<TestImage> Picture(Random& random, PixelFormat format, int margin) {
    const auto extent = [margin](int size) { return static_cast<unsigned int>(size + margin); };
    const bool bottomUp = Between(random, 0, 1) == 1;
    auto image = std::make_shared<TestImage>(Shape{extent(kWidth), extent(kHeight), format, 4, bottomUp}, random);
    if (BitsPerPixel(format) == 32) {
        unsigned char* const bytes = image->GetPixelData();
        const std::size_t size = std::size_t{image->Stride()} * image->GetHeight();
        unsigned int run = 0, kind = 0;
        for (std::size_t i = 3; i < size; i += 4) {
            if (run-- == 0) {
                run = Between(random, 0, 80);
                kind = Between(random, 0, 3);
            }
            if (kind < 2) bytes[i] = static_cast<unsigned char>(kind * 255);
        }
    }
    if (BitsPerPixel(format) <= 8) image->SetPalette(RandomPalette(1U << BitsPerPixel(format), random));
    return image;
}

/// Functions that every C library computes alike: of powers, whose last bit may differ, only the first.
std::shared_ptr<IPDFTransferFunction> Transfer(Random& random) {
    const auto source = static_cast<IPDFTransferFunction::SourceType>(Between(random, 0, 1));
    switch (Between(random, 0, 2)) {
        case 0: return std::make_shared<CExponentialPDFTransferFunction>(source, 0.875, 0.25, 1.0);
        case 1: return std::make_shared<CPostscriptPDFTransferFunction>(source, "{ 1 exch sub }");
        default: return std::make_shared<CIdentityPDFTransferFunction>(source);
    }
}

enum class Mask { None, Stencil, Soft };

/// Ranges stay so far inside the page that the offset may move them on either side.
Call RandomCall(Random& random, PixelFormat source, Mask kind, BlendMode mode) {
    const auto place = [&](int most) { return static_cast<int>(Between(random, 0, static_cast<unsigned int>(most))); };
    Call call;
    call.mode = mode;
    call.source = Picture(random, source, kMargin);
    if (kind == Mask::Stencil) call.mask = Picture(random, PixelFormat::Index1, 0);
    if (kind == Mask::Soft) {
        call.mask = Picture(random, static_cast<PixelFormat>(Between(random, 1, 9)), 0);
        call.transfer = Transfer(random);
    }
    const int left = place(20), top = place(1), right = kWidth - kMargin - place(20);
    call.coverage = Cover({{left, top, right, kHeight - 2}});
    call.offset = {place(kMargin), place(1)};
    call.maskOffset = {-place(30), -place(1)};
    if (Between(random, 0, 2) != 0) call.alpha = static_cast<unsigned char>(Between(random, 1, 254));
    return call;
}

/// Paints one of each mask from a source of each format.
void PaintAll(IPDFImageBlender& blender, Random& random, unsigned int firstFormat, unsigned int lastFormat,
              BlendMode mode) {
    for (unsigned int format = firstFormat; format <= lastFormat; ++format) {
        for (const Mask mask : {Mask::None, Mask::Stencil, Mask::Soft}) {
            EXPECT_TRUE(Paint(blender, RandomCall(random, static_cast<PixelFormat>(format), mask, mode)));
        }
    }
}

/// Images of every format.
std::uint32_t PaintImages(BlendMode mode) {
    Random random(static_cast<unsigned int>(mode) + 1);
    Crc32 checksum;
    for (unsigned int format = 1; format <= 9; ++format) {
        const auto image = Picture(random, static_cast<PixelFormat>(format), 0);
        PaintAll(*BlenderOn(image), random, 5, 8, mode);
        for (const unsigned char byte : image->Bytes()) checksum.Add(byte);
    }
    return checksum.Get();
}

/// Groups of every format and way of resolving.
std::uint32_t PaintGroups(BlendMode mode, bool knockout) {
    Random random(static_cast<unsigned int>(mode) + (knockout ? 200 : 100));
    Crc32 checksum;
    for (unsigned int format = 1; format <= 9; ++format) {
        for (unsigned int resolve = 0; resolve < 4; ++resolve) {
            const auto image = Picture(random, static_cast<PixelFormat>(format), 0);
            const auto blender = BlenderOn(nullptr);
            EXPECT_TRUE(blender->BeginGroup(image, nullptr, knockout, (resolve & 1) != 0, (resolve & 2) != 0));
            PaintAll(*blender, random, 5 + resolve, 5 + resolve, mode);
            EXPECT_TRUE(blender->EndGroup());
            for (const unsigned char byte : image->Bytes()) checksum.Add(byte);
        }
    }
    return checksum.Get();
}

/// A surface.
std::uint32_t PaintSurface(BlendMode mode) {
    Random random(static_cast<unsigned int>(mode) + 300);
    Crc32 checksum;
    const auto surface = std::make_shared<TestSurface>(kWidth, kHeight);
    for (Color& color : surface->pixels) color = Color(static_cast<unsigned int>(random()));
    PaintAll(*BlenderOn(nullptr, surface), random, 1, 9, mode);
    for (const Color& color : surface->pixels) {
        for (const unsigned int part : {color.GetBlue(), color.GetGreen(), color.GetRed(), color.GetAlpha()}) {
            checksum.Add(static_cast<unsigned char>(part));
        }
    }
    return checksum.Get();
}

/// Checksums of what a mode paints.
struct Painted {
    std::uint32_t images;
    std::uint32_t groups;
    std::uint32_t knockoutGroups;
    std::uint32_t surface;
    bool operator==(const Painted&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Painted& painted) {
    char text[64];
    std::snprintf(text, sizeof text, "{0x%08X, 0x%08X, 0x%08X, 0x%08X}", painted.images, painted.groups,
                  painted.knockoutGroups, painted.surface);
    return out << text;
}

constexpr std::array<Painted, kBlendModeCount> kPainted{{
    {0x420062E8, 0x5E671441, 0x471A1B42, 0xFB08ED8F},  // Normal
    {0x219692F1, 0x64E5E8EF, 0x8B4A6E75, 0x2CDAB4BA},  // Multiply
    {0x8D9A13DE, 0x279A1AC6, 0x67A47880, 0x88B7114B},  // Screen
    {0x46B6406E, 0xDAD63B78, 0x8BC149DF, 0xC22DD4DD},  // Overlay
    {0xAE90DA8A, 0xF8DF8D10, 0xF03D228D, 0xF8D6F390},  // Darken
    {0x93B5CFB0, 0x91B05566, 0x428526EE, 0xA2959124},  // Lighten
    {0xEBA2E53B, 0x1B866763, 0x2218A0CB, 0x4A624F2F},  // ColorDodge
    {0x3DA16542, 0xD46D8E06, 0x2B7BD40F, 0xFF289DB2},  // ColorBurn
    {0xCD473599, 0x926D283A, 0x7E458E8C, 0x542E4DE3},  // HardLight
    {0x4B5239E1, 0x2F8D9D24, 0x72AF3EB0, 0x94DC36A1},  // SoftLight
    {0xC74BC980, 0x039B0AEA, 0xCA557542, 0x887A72CF},  // Difference
    {0x20D1B369, 0xA0F7389A, 0xA9DE4D3F, 0x5E6004EB},  // Exclusion
}};

void ExpectPainted() {
    for (unsigned int i = 0; i < kBlendModeCount; ++i) {
        const auto mode = static_cast<BlendMode>(i);
        const Painted painted{PaintImages(mode), PaintGroups(mode, false), PaintGroups(mode, true), PaintSurface(mode)};
        EXPECT_EQ(painted, kPainted[i]) << "mode " << i;
    }
}

TEST(PortableBytes, AreTheSameOnEveryVectorTargetAndWithoutAny) {
    if (VectorTargets().empty()) ExpectPainted();
    for (const VectorTarget& target : VectorTargets()) {
        SCOPED_TRACE(target.name);
        const ForcedTarget forced(target);
        ExpectPainted();
    }
}

}  // namespace
}  // namespace vantu::test
