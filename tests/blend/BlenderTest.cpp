#include <gtest/gtest.h>
#include <vantu/ImageUtil.h>

#include <cmath>

#include "blend/Painting.h"

namespace vantu::test {
namespace {

using enum IQorImage::PixelFormat;

std::shared_ptr<TestImage> Image(PixelFormat format, unsigned int width = 4, unsigned int height = 4) {
    return std::make_shared<TestImage>(Shape{width, height, format});
}

using Bytes = std::vector<unsigned char>;

TEST(Blender, NeedsARasterizerWhoseSurfaceItAsksForOnceAndOnlyWithoutAnImage) {
    struct Counting : IRasterizer {
        std::shared_ptr<RasterSurface> GetRasterSurface() override { return ++asked, nullptr; }
        int asked = 0;
    };
    std::shared_ptr<IRasterizer> none, counting = std::make_shared<Counting>();
    const auto& asked = static_cast<Counting&>(*counting).asked;
    EXPECT_FALSE(IPDFImageBlender::Create(none, Image(Bgr24)));
    EXPECT_TRUE(IPDFImageBlender::Create(counting, Image(Bgr24)));
    EXPECT_EQ(asked, 0);
    const auto blender = IPDFImageBlender::Create(counting, nullptr);
    EXPECT_FALSE(Paint(*blender, {Image(Bgr24), Cover({})})) << "nothing to paint on";
    EXPECT_EQ(asked, 1);
}

TEST(Blender, LetsGoOfItsDestinationBeforeTheGroupsThatAreOpen) {
    std::vector<std::string> released;
    const auto noted = [&released](const char* name, auto object) {
        const auto release = [&released, name, object](auto*) { released.emplace_back(name); };
        return decltype(object)(object.get(), release);
    };
    const auto makeAndDrop = [&](std::shared_ptr<IQorImage> image) {
        const auto host = std::make_shared<TestRasterizer>(noted("surface", std::make_shared<RasterSurface>()));
        std::shared_ptr<IRasterizer> rasterizer = noted("rasterizer", host);
        auto blender = IPDFImageBlender::Create(rasterizer, image);
        blender->BeginGroup(noted("group", Image(Bgr24)), nullptr, false, false, false);
        host->surface.reset();
        rasterizer.reset();
        image.reset();
        released.clear();
        blender.reset();
    };
    makeAndDrop(noted("image", Image(Bgr24)));
    EXPECT_EQ(released, (std::vector<std::string>{"rasterizer", "image", "group"}));
    makeAndDrop(nullptr);
    EXPECT_EQ(released, (std::vector<std::string>{"surface", "rasterizer", "group"}));
}

TEST(Blender, RefusesMissingArgumentsAndLeavesBlended) {
    const auto image = Image(Bgr24), hollow = Image(Bgr24);
    hollow->HideMemory();
    const auto blender = BlenderOn(image, nullptr);
    for (Call call : {Call{nullptr, Cover({})}, Call{image, nullptr}, Call{hollow, Cover({})}}) {
        for (const unsigned char alpha : Bytes{255, 0}) {
            std::shared_ptr<Coverage> blended;
            call.alpha = alpha;
            EXPECT_FALSE(Paint(*blender, call, blended));
            EXPECT_FALSE(blended);
        }
    }
}

TEST(Blender, TakesSourcesOfFourFormatsOnImagesAndOfNineOnSurfaces) {
    const auto surface = std::make_shared<TestSurface>(4, 4);
    for (unsigned int source = 0; source <= 10; ++source) {
        const auto format = PixelFormat{source};
        for (const PixelFormat destination : kPixelFormats) {
            std::shared_ptr<Coverage> blended;
            EXPECT_EQ(Paint(*BlenderOn(Image(destination)),
                            {.source = Image(format), .coverage = Cover({{0, 0, 4, 4}}), .mode = BlendMode::Exclusion},
                            blended),
                      source >= 5 && source <= 8);
            EXPECT_TRUE(blended) << "filled also when refused";
        }
        EXPECT_EQ(Paint(*BlenderOn(nullptr, surface), {Image(format), Cover({{0, 0, 4, 4}})}),
                  source >= 1 && source <= 9);
    }
    EXPECT_FALSE(Paint(*BlenderOn(Image(PixelFormat{0})), {Image(Bgr24), Cover({})}));
}

TEST(Blender, RefusesAModeThatIsNoneUnlessNothingShows) {
    const auto surface = std::make_shared<TestSurface>(4, 4);
    for (const auto& blender : {BlenderOn(Image(Bgr24)), BlenderOn(nullptr, surface)}) {
        Call call{.source = Image(Bgr24), .coverage = Cover({{0, 0, 4, 4}}), .mode = BlendMode{kBlendModeCount}};
        EXPECT_FALSE(Paint(*blender, call));
        call.alpha = 0;
        call.source = Image(Index1);
        std::shared_ptr<Coverage> blended;
        EXPECT_TRUE(Paint(*blender, call, blended));
        EXPECT_FALSE(blended);
    }
    EXPECT_TRUE(surface->log.empty());
}

TEST(Blender, ModeAbove255MayFindAKernelOfOtherFormatsWhichStaysInsideTheImages) {
    for (const unsigned int mode : {256U, 512U, 768U, 0x10000U, 0x20000U, 0x3010BU}) {
        for (const PixelFormat to : kPixelFormats) {
            for (const PixelFormat from : {Rgb555, Bgr24, Bgra32Premultiplied, Bgra32Inverted}) {
                const unsigned int key =
                    static_cast<unsigned int>(to) << 16 | static_cast<unsigned int>(from) << 8 | mode;
                const unsigned int kernelTo = key >> 16, kernelFrom = key >> 8 & 255;
                const auto image = Image(to, 5, 5), source = Image(from, 5, 5);
                EXPECT_EQ(Paint(*BlenderOn(image),
                                {.source = source, .coverage = Cover({{0, 0, 5, 5}}), .mode = BlendMode{mode}}),
                          kernelTo >= 1 && kernelTo <= 9 && kernelFrom >= 5 && kernelFrom <= 8);
                EXPECT_TRUE(image->GuardsIntact());
            }
        }
    }
    const auto image = Row(Bgra32, {0, 0, 0, 0});
    EXPECT_TRUE(Paint(*BlenderOn(image),
                      {.source = Row(Rgb555, {0x1F, 0}), .coverage = Cover({{0, 0, 1, 1}}), .mode = BlendMode{256}}));
    EXPECT_EQ(image->Bytes(), (Bytes{255, 0, 0, 255})) << "the same formats and Normal";

    // Pixels of 2 bytes are taken for ones of 4: of five rows, the first three in memory hold such rows.
    for (const bool bottomUp : {false, true}) {
        for (const bool low : {false, true}) {
            const auto target = Image(Bgr24, 5, 5);
            const auto source = std::make_shared<TestImage>(Shape{5, 5, Rgb555, 4, bottomUp});
            EXPECT_TRUE(Paint(
                *BlenderOn(target),
                {.source = source, .coverage = Cover({{0, low ? 3 : 0, 5, low ? 5 : 2}}), .mode = BlendMode{0x200}}));
            EXPECT_EQ(target->Bytes() != Image(Bgr24, 5, 5)->Bytes(), low == bottomUp);
        }
    }
}

TEST(Blender, ReplacesBlendedByACopyOfTheCoverage) {
    const auto blender = BlenderOn(Image(Bgr24));
    auto blended = Cover({{9, 9, 10, 10}});
    const std::weak_ptr<Coverage> before = blended;
    const Call call{Image(Bgr24), Cover({{0, 0, 2, 2}})};
    EXPECT_TRUE(Paint(*blender, call, blended));
    EXPECT_TRUE(before.expired());
    ASSERT_NE(blended, call.coverage);
    ASSERT_EQ(blended->GetRanges().size(), 1U);
    EXPECT_EQ(blended->GetRanges()[0].x1, 2);
    EXPECT_TRUE(Paint(*blender, {Image(Bgr24), Cover({})}, blended));
    EXPECT_TRUE(blended->GetRanges().empty());
}

TEST(Blender, RefusesADestinationWithoutMemoryIfThereIsSomethingToPaint) {
    const auto image = Image(Bgr24);
    image->HideMemory();
    EXPECT_FALSE(Paint(*BlenderOn(image), {Image(Bgr24), Cover({{0, 0, 1, 1}})}));
    EXPECT_TRUE(Paint(*BlenderOn(image), {Image(Bgr24), Cover({})}));
}

TEST(ImageBlend, StoresWhatTheFormatsMakeOfTheResult) {
    struct Case {
        const char* what;
        PixelFormat to;
        Bytes before;
        PixelFormat from;
        Bytes source;
        unsigned char alpha;
        BlendMode mode;
        Bytes after;
    };
    using enum BlendMode;
    constexpr auto p7 = Bgra32Premultiplied, p8 = Bgra32Inverted;
    for (const Case& c : {
             Case{"transparent source of 7", Rgb555, {0xFF, 0xFF}, p7, {9, 9, 9, 0}, 255, Normal, {0xFF, 0xFF}},
             Case{"transparent source of 8", p7, {9, 9, 9, 0}, p8, {9, 9, 9, 255}, 255, Screen, {9, 9, 9, 0}},
             Case{"painting clears bit 15", Rgb555, {0xFF, 0xFF}, Bgr24, {255, 0, 0}, 255, Normal, {0x1F, 0}},
             Case{"empty paint darkens a byte", p7, {100, 0, 0, 128}, p7, {9, 9, 9, 100}, 1, Normal, {99, 0, 0, 128}},
             Case{"but no straight one", Bgra32, {100, 0, 0, 128}, p7, {9, 9, 9, 100}, 1, Normal, {100, 0, 0, 128}},
             Case{"indices are kept", Index8, {77}, Bgr24, {1, 2, 3}, 255, Difference, {77}},
             Case{"clear pixel loses its bytes", p7, {9, 8, 7, 0}, p8, {0, 0, 0, 254}, 1, Screen, {0, 0, 0, 0}},
             Case{"and from 7 in Multiply", p7, {9, 8, 7, 0}, p7, {0, 0, 0, 1}, 1, Multiply, {0, 0, 0, 0}},
             Case{"and on 8", p8, {9, 8, 7, 255}, p8, {0, 0, 0, 254}, 1, Multiply, {0, 0, 0, 255}},
             Case{"but not from 8 on 7 in Multiply", p7, {9, 8, 7, 0}, p8, {0, 0, 0, 254}, 1, Multiply, {9, 8, 7, 0}},
         }) {
        const auto image = Row(c.to, c.before);
        EXPECT_TRUE(Paint(
            *BlenderOn(image),
            {.source = Row(c.from, c.source), .coverage = Cover({{0, 0, 1, 1}}), .alpha = c.alpha, .mode = c.mode}));
        EXPECT_EQ(image->Bytes(), c.after) << c.what;
    }
    // The exception holds also where source and destination share memory.
    const auto shared = Row(p7, {9, 8, 7, 0, 0, 0, 0, 254});
    const Call call{.source = std::make_shared<TestImage>(Shape{1, 1, p8}, shared, 4),
                    .coverage = Cover({{0, 0, 1, 1}}),
                    .alpha = 1,
                    .mode = Multiply};
    EXPECT_TRUE(Paint(*BlenderOn(shared), call));
    EXPECT_EQ(shared->Bytes()[0], 9);
}

TEST(ImageBlend, PaintsEveryRowWhateverLiesBetweenRows) {
    Random random(3);
    for (const PixelFormat format : {Bgr24, Bgra32Premultiplied}) {
        for (const unsigned char from : Bytes{1, 16}) {
            for (const unsigned char to : Bytes{1, 16}) {
                const auto image = std::make_shared<TestImage>(Shape{5, 3, format, to});
                const auto source = std::make_shared<TestImage>(Shape{5, 3, format, from}, random);
                if (format != Bgr24) ImageUtil::ClearPixelAlpha(*source, 255, {1, 0, 0, 0});
                EXPECT_TRUE(Paint(*BlenderOn(image), {source, Cover({{0, 0, 5, 3}})}));
                EXPECT_TRUE(SamePicture(*image, *source)) << "alignment " << int{from} << " to " << int{to};
                EXPECT_TRUE(to == 1 || image->Bytes().back() == TestImage::kFreshByte);
            }
        }
    }
}

/// A row that is painted on an image or on a surface of the same look, from a source that is clear, then half opaque.
struct TwoPixels {
    explicit TwoPixels(bool onSurface) {
        if (onSurface) {
            surface = std::make_shared<TestSurface>(2, 1, 0xFF646464);
        } else {
            image = Row(Bgra32, {100, 100, 100, 255, 100, 100, 100, 255});
        }
    }
    bool Apply(Call call) const {
        call.source = Row(Bgra32Premultiplied, {9, 9, 9, 0, 64, 64, 64, 128});
        call.coverage = Cover({{0, 0, 2, 1}});
        return Paint(*BlenderOn(image, surface), call);
    }
    std::pair<unsigned int, unsigned int> Colors() const {
        if (surface) return {Argb(surface->At(0, 0)), Argb(surface->At(1, 0))};
        return {ValueAt(*image, 0, 0), ValueAt(*image, 1, 0)};
    }
    std::shared_ptr<TestImage> image;
    std::shared_ptr<TestSurface> surface;
};

TEST(Mask, StencilCopiesTheSourceAtFullAlphaInNormalAlone) {
    using Colors = std::pair<unsigned int, unsigned int>;
    for (const bool onSurface : {false, true}) {
        TwoPixels copied(onSurface), blended(onSurface), multiplied(onSurface), guarded(onSurface);
        EXPECT_TRUE(copied.Apply({.mask = Row(Index1, {0x3F})}));
        EXPECT_EQ(copied.Colors(), (Colors{0, 0x807F7F7F}));
        EXPECT_TRUE(blended.Apply({.mask = Row(Index1, {0x3F}), .alpha = 254}));
        EXPECT_EQ(blended.Colors(), (Colors{0xFF646464, 0xFF717171})) << "(127 * 127 + 128 * 100) / 255";
        EXPECT_TRUE(multiplied.Apply({.mask = Row(Index1, {0x3F}), .mode = BlendMode::Multiply}));
        EXPECT_EQ(multiplied.Colors().first, 0xFF646464);
        // A palette that shows 0 as the protecting colour is not looked at.
        const auto mask = Row(Index1, {0xFF});
        mask->SetPalette(std::make_unique<ColorMap>(2));
        EXPECT_TRUE(guarded.Apply({.mask = mask}));
        EXPECT_EQ(guarded.Colors(), (Colors{0xFF646464, 0xFF646464}));
    }
}

TEST(Mask, OneBitMaskWithAnyOtherFunctionIsSoftAndSeenThroughItsPalette) {
    const auto mask = Row(Index1, {0x40});
    mask->SetPalette(std::make_unique<ColorMap>(2));
    (*mask->GetPalette())[0] = Color(0);
    (*mask->GetPalette())[1] = Color(0xFFFFFFFF);
    const auto luminosity = std::make_shared<CIdentityPDFTransferFunction>(TransferSource::Luminosity);
    const auto exponential = std::make_shared<CExponentialPDFTransferFunction>(TransferSource::Alpha, 0.0, 1.0, 1.0);
    for (const bool onSurface : {false, true}) {
        TwoPixels first(onSurface), second(onSurface);
        EXPECT_TRUE(first.Apply({.mask = mask, .transfer = luminosity}));
        EXPECT_TRUE(second.Apply({.mask = mask, .transfer = exponential}));
        EXPECT_EQ(first.Colors().second, 0xFF717171);
        EXPECT_EQ(second.Colors().second, 0xFF717171);
    }
}

TEST(Mask, RowsOfOpaquePixelsAndOthersArePaintedAlike) {
    Random random(3);
    const auto make = [&](unsigned int height, PixelFormat format) {
        return std::make_shared<TestImage>(Shape{75, height, format, 1}, random);
    };
    for (const bool stencil : {false, true}) {
        for (const int alpha : {255, 100}) {
            const auto source = make(6, PixelFormat::Bgra32Premultiplied), page = make(9, PixelFormat::Bgra32);
            const auto mask = make(8, stencil ? PixelFormat::Index1 : PixelFormat::Index8);
            mask->SetPalette(GreyPalette(256));
            // The fourth row of the range has a translucent pixel.
            for (std::size_t i = 3; i < source->Size(); i += 4) source->GetPixelData()[i] = i == 1183 ? 128 : 255;
            for (std::size_t i = 3; i < page->Size(); i += 4) page->GetPixelData()[i] = 255;
            const auto model = std::make_shared<TestImage>(Shape{75, 9, PixelFormat::Bgra32, 1});
            std::ranges::copy(page->Bytes(), model->GetPixelData());
            Call call{source, Cover({{0, 0, 75, 6}}), {0, 2}, mask};
            if (!stencil) call.transfer = std::make_shared<CIdentityPDFTransferFunction>(TransferSource::Luminosity);
            call.alpha = static_cast<unsigned char>(alpha);
            EXPECT_TRUE(Paint(*BlenderOn(page), call));
            PaintModel(call, *model);
            EXPECT_EQ(model->Bytes(), page->Bytes()) << stencil << alpha;
        }
    }
}

TEST(Mask, ThatCannotBeReadLeavesItsRectangleUnpainted) {
    const auto hidden = Row(Index8, {255});
    hidden->HideMemory();
    const auto identity = std::make_shared<CIdentityPDFTransferFunction>(TransferSource::Alpha);
    for (const bool onSurface : {false, true}) {
        for (const Call& call : {Call{.mask = hidden, .transfer = identity}, Call{.mask = Row(Index8, {255})},
                                 Call{.mask = Image(PixelFormat{0}, 1, 1), .transfer = identity}}) {
            TwoPixels at0(onSurface), at1(onSurface);
            EXPECT_TRUE(at0.Apply(call));
            EXPECT_EQ(at0.Colors().second, 0xFF717171) << "the strip beside it is painted";
            Call moved = call;
            moved.maskOffset = {1, 0};
            EXPECT_TRUE(at1.Apply(moved));
            EXPECT_EQ(at1.Colors().second, 0xFF646464);
        }
    }
}

TEST(Mask, OpacitiesOutside0To1GoOnIn32Bits) {
    struct Case {
        double opacity;
        Bytes painted, inGroup;
    };
    for (const auto& [opacity, painted, inGroup] : {
             Case{1.005, {200, 200, 200, 255}, {200, 200, 200, 255}},
             Case{-0.005, {99, 99, 99, 254}, {145, 145, 145, 255}},
             Case{3.0, {144, 144, 144, 255}, {144, 144, 144, 255}},
             Case{-0.5, {50, 50, 50, 254}, {96, 96, 96, 255}},
             Case{std::nan(""), {99, 99, 99, 127}, {250, 250, 250, 255}},
         }) {
        SCOPED_TRACE(opacity);
        const Call call{.source = Row(Bgr24, {200, 200, 200}),
                        .coverage = Cover({{0, 0, 1, 1}}),
                        .mask = Row(Bgr24, {0, 0, 0}),
                        .transfer = std::make_shared<CExponentialPDFTransferFunction>(TransferSource::Luminosity,
                                                                                      opacity, opacity, 1.0)};
        const auto image = Row(Bgra32, {100, 100, 100, 255}), group = Row(Bgra32, {100, 100, 100, 255});
        const auto blender = BlenderOn(image);
        EXPECT_TRUE(Paint(*blender, call));
        EXPECT_TRUE(blender->BeginGroup(group, nullptr, false, true, false));
        EXPECT_TRUE(Paint(*blender, call));
        EXPECT_EQ(image->Bytes(), painted);
        EXPECT_EQ(group->Bytes(), inGroup);
    }
}

TEST(Mask, FunctionOfAnUnnamedSourceIsAskedForEachPixel) {
    const auto image = Row(Bgr24, {0, 0, 0, 0, 0, 0});
    const Call call{.source = Row(Bgr24, {255, 255, 255, 255, 255, 255}),
                    .coverage = Cover({{0, 0, 2, 1}}),
                    .mask = Row(Bgra32, {9, 9, 9, 64, 9, 9, 9, 192}),
                    .transfer = std::make_shared<CPostscriptPDFTransferFunction>(static_cast<TransferSource>(2), "")};
    EXPECT_TRUE(Paint(*BlenderOn(image), call));
    EXPECT_EQ(image->Bytes(), (Bytes{64, 64, 64, 192, 192, 192})) << "it looks at alpha";
}

TEST(Mask, HostFunctionIsAskedOncePerPixelColumnByColumn) {
    const auto mask = std::make_shared<TestImage>(Shape{2, 2, Index4, 1});
    std::ranges::copy(Bytes{0x01, 0x23}, mask->GetPixelData());
    mask->SetPalette(std::make_unique<ColorMap>(4));
    for (unsigned int i = 0; i < 4; ++i) (*mask->GetPalette())[i] = Color(i);
    const auto source = Image(Bgra32Premultiplied);  // clear pixels: the function is asked all the same
    std::fill_n(source->GetPixelData(), source->Bytes().size(), static_cast<unsigned char>(0));
    const auto surface = std::make_shared<TestSurface>(4, 4);
    std::vector<unsigned int> asked;
    const Call call{.source = source,
                    .coverage = Cover({{0, 0, 2, 2}}),
                    .mask = mask,
                    .transfer = std::make_shared<HostFunction>([&](const Color& color) {
                        asked.push_back(color.GetBlue());
                        return 1.0;
                    })};
    for (const auto& blender :
         {BlenderOn(nullptr, surface), BlenderOn(Image(Bgra32Inverted)), BlenderOn(Image(Index8))}) {
        EXPECT_TRUE(Paint(*blender, call));
        EXPECT_EQ(asked, (std::vector<unsigned int>{0, 2, 1, 3}));
        asked.clear();
    }
}

TEST(SurfaceBlend, ReadsAndWritesInTheOrderOfItsLoops) {
    using Log = std::vector<TestSurface::Access>;
    const auto surface = std::make_shared<TestSurface>(4, 4);
    const auto blender = BlenderOn(nullptr, surface);
    Call call{Image(Bgr24), Cover({{1, 1, 3, 3}})};
    EXPECT_TRUE(Paint(*blender, call));
    EXPECT_EQ(
        surface->log,
        (Log{{'G', 1, 1}, {'S', 1, 1}, {'G', 2, 1}, {'S', 2, 1}, {'G', 1, 2}, {'S', 1, 2}, {'G', 2, 2}, {'S', 2, 2}}));

    const auto mask = std::make_shared<TestImage>(Shape{2, 2, Index1, 1});
    std::ranges::copy(Bytes{0x3F, 0xBF}, mask->GetPixelData());  // protects the lower left pixel
    call = {.source = Image(Bgr24), .coverage = Cover({{0, 0, 2, 2}}), .offset = {2, 0}, .mask = mask};
    surface->log.clear();
    EXPECT_TRUE(Paint(*blender, call));
    EXPECT_EQ(surface->log, (Log{{'S', 2, 0}, {'S', 3, 0}, {'S', 3, 1}})) << "a copy does not look";
    call.alpha = 254;
    surface->log.clear();
    EXPECT_TRUE(Paint(*blender, call));
    EXPECT_EQ(surface->log, (Log{{'G', 2, 0}, {'S', 2, 0}, {'G', 3, 0}, {'S', 3, 0}, {'G', 3, 1}, {'S', 3, 1}}));

    call = {.source = Row(Bgra32Premultiplied, {1, 1, 1, 0}), .coverage = Cover({{0, 0, 1, 1}})};
    surface->log.clear();
    EXPECT_TRUE(Paint(*blender, call));
    EXPECT_EQ(surface->log, (Log{{'G', 0, 0}})) << "a clear source is found after reading";
}

TEST(SurfaceBlend, ColorsThatAreNotReadCarryOverWithinARectangle) {
    const auto surface = std::make_shared<TestSurface>(3, 1);
    surface->readable = false;
    // Each rectangle starts from opaque black; its second pixel from what the first became.
    EXPECT_TRUE(Paint(*BlenderOn(nullptr, surface), {.source = Row(Bgr24, {255, 255, 255, 255, 255, 255, 0, 0, 0}),
                                                     .coverage = Cover({{0, 0, 2, 1}}),
                                                     .alpha = 128}));
    EXPECT_EQ(Argb(surface->At(0, 0)), 0xFF808080U);
    EXPECT_EQ(Argb(surface->At(1, 0)), 0xFFBFBFBFU) << "128 + 127 * 128 / 255";
    EXPECT_TRUE(Paint(*BlenderOn(nullptr, surface), {.source = Row(Index8, {1, 2, 3}),
                                                     .coverage = Cover({{0, 0, 1, 1}, {2, 0, 3, 1}}),
                                                     .mode = BlendMode::Screen}));
    EXPECT_EQ(Argb(surface->At(2, 0)), 0xFF000000U) << "bare samples are opaque black";
}

}  // namespace
}  // namespace vantu::test
