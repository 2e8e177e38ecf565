// Every allocation of a call fails once. Nothing leaks, and whatever lived before the call is as it was and of use.

#include <vantu/CDIBSaver.h>
#include <vantu/CPNGSaver.h>
#include <vantu/CQorImage.h>
#include <vantu/CQorStorage.h>
#include <vantu/ImageUtil.h>
#include <vantu/Painter.h>

#include "blend/Painting.h"
#include "codec/Files.h"
#include "faults/FailingMemory.h"
#include "faults/FaultyFile.h"

namespace vantu::test {
namespace {

using enum IQorImage::PixelFormat;

Bytes BlockOf(const IQorImage& image) {
    const unsigned char* const data = image.GetPixelData();
    const std::size_t stride = RowStride(image.GetWidth(), image.GetPixelFormat(), image.GetAlignment());
    return Bytes(data, data + stride * image.GetHeight());
}

TEST(AllocationFailure, LoadersGiveAllOrNothingAndCloseTheFile) {
    for (const std::string name : {"bits4.bmp", "bits24.bmp", "grey4.png", "rgb8interlaced.png", "rgba8.png",
                                   "palette8trns.png", "baseline.jpg", "progressive.jpg", "restart.jpg", "grey.jpg"}) {
        SCOPED_TRACE(name);
        TheFile() = {.bytes = ReadAll(FixturePath(name))};
        const Bytes whole = BlockOf(*LoadPath(Kind(name), name, nullptr));
        const unsigned long count = WithEveryAllocationFailing([&](Failure& failure) {
            ImagePtr image;
            LoadResult result{};
            const Outcome outcome = failure.In([&] {
                image = LoadWhy(Kind(name), name, nullptr, result);
                return image != nullptr;
            });
            EXPECT_EQ(outcome == Outcome::True, image != nullptr);
            EXPECT_TRUE(outcome != Outcome::False || result == LoadResult::NoMemory);
            EXPECT_TRUE(image == nullptr || BlockOf(*image) == whole);
            EXPECT_EQ(TheFile().open, 0);
        });
        EXPECT_GE(count, 1U);
        WithEveryAllocationFailing([&](Failure& failure) {
            unsigned int width = 7, height = 8;
            PixelFormat format = Index1;
            const bool sized =
                failure.In([&] { return CJPEGLoader().GetImageSize(name, width, height, format); }) == Outcome::True;
            EXPECT_TRUE(sized || (width == 7 && height == 8 && format == Index1));
            EXPECT_EQ(TheFile().open, 0);
        });
    }
}

TEST(AllocationFailure, SaversThrowAndCloseTheFile) {
    TheFile() = {.hollow = true};
    const CQorImage indices(3, 2, Index4, 4, false), colors(3, 2, Bgra32Premultiplied, 4, false);
    for (const bool png : {false, true}) {
        const unsigned long count = WithEveryAllocationFailing([&](Failure& failure) {
            const Outcome outcome = failure.In([&] {
                return png ? CPNGSaver().Save(colors, std::string("file"))
                           : CDIBSaver().Save(indices, std::string("file"));
            });
            EXPECT_NE(outcome, Outcome::False);
            EXPECT_EQ(TheFile().open, 0);
        });
        EXPECT_GE(count, 1U);
    }
}

using Ranges = std::vector<std::tuple<int, int, int, int>>;

Ranges List(const Coverage& coverage) {
    Ranges list;
    for (const auto& [x0, y0, x1, y1] : coverage.GetRanges()) list.emplace_back(x0, y0, x1, y1);
    return list;
}

TEST(AllocationFailure, CoverageKeepsItsList) {
    const auto other = Cover({{30, 30, 31, 31}, {2, 2, 9, 9}});
    WithEveryAllocationFailing([&](Failure& failure) {
        const auto coverage = Cover({{0, 0, 2, 2}, {10, 0, 12, 2}, {20, 20, 22, 22}});
        const Ranges before = List(*coverage);
        const Outcome outcome = failure.In([&] { return coverage->AddRange({1, 0, 11, 2}), true; });
        EXPECT_EQ(List(*coverage), outcome == Outcome::True ? (Ranges{{20, 20, 22, 22}, {0, 0, 12, 2}}) : before);
    });
    WithEveryAllocationFailing([&](Failure& failure) {
        const auto coverage = Cover({{0, 0, 2, 2}});
        const Outcome outcome = failure.In([&] { return coverage->AddCoverage(*other), true; });
        const Ranges list = List(*coverage);
        EXPECT_TRUE(outcome == Outcome::Threw || list.size() == 2);
        EXPECT_TRUE(list.front() == Ranges::value_type(0, 0, 2, 2) || outcome == Outcome::True);
        coverage->AddCoverage(*other);
        EXPECT_EQ(List(*coverage), (Ranges{{30, 30, 31, 31}, {0, 0, 9, 9}})) << "the ranges of a second try merge";
    });
    WithEveryAllocationFailing([&](Failure& failure) {
        failure.In([&] { return std::unique_ptr<Coverage>(other->Clone()) != nullptr; });
        EXPECT_EQ(List(*other).size(), 2U);
    });
    WithEveryAllocationFailing(
        [](Failure& failure) { failure.In([] { return IPDFImageBlender::CreateCoverage() != nullptr; }); });
}

TEST(AllocationFailure, CreateGivesAWholeBlenderOrNone) {
    const unsigned long count = WithEveryAllocationFailing([](Failure& failure) {
        std::shared_ptr<IRasterizer> rasterizer = std::make_shared<TestRasterizer>(nullptr);
        std::shared_ptr<IPDFImageBlender> blender;
        failure.In([&] { return (blender = IPDFImageBlender::Create(rasterizer, nullptr)) != nullptr; });
        if (blender) {
            EXPECT_FALSE(blender->EndGroup());
        }
        blender.reset();
        EXPECT_EQ(rasterizer.use_count(), 1);
    });
    EXPECT_GE(count, 888U);
}

/// A call of each kind of painting, with one range.
struct Painted {
    const char* what;
    Call call;
    bool hollowMask = false;  ///< the call may leave out what its mask covers
};

std::vector<Painted> Paintings(const std::shared_ptr<TestImage>& destination) {
    Random random(61);
    const auto image = [&](PixelFormat format) { return std::make_shared<TestImage>(Shape{19, 9, format}, random); };
    const auto identity = std::make_shared<CIdentityPDFTransferFunction>(TransferSource::Luminosity);
    const auto host = std::make_shared<HostFunction>([](const Color& color) { return color.GetRed() / 255.0; });
    const auto where = Cover({{2, 1, 17, 8}});
    const auto indices = image(Index8);
    indices->SetPalette(RandomPalette(100, random));
    return {
        {"opaque", {.source = image(Bgr24), .coverage = where}},
        {"mixed", {.source = image(Bgra32Inverted), .coverage = where, .alpha = 99, .mode = BlendMode::SoftLight}},
        {"stencil", {.source = image(Bgra32Premultiplied), .coverage = where, .mask = image(Index1)}},
        {"colour mask", {.source = image(Bgr24), .coverage = where, .mask = image(Bgr24), .transfer = identity}},
        {"short palette", {.source = image(Bgr24), .coverage = where, .mask = indices, .transfer = identity}},
        {"host's function",
         {.source = image(Rgb555), .coverage = where, .mask = image(Bgra32), .transfer = host, .mode = BlendMode{5}},
         true},
        {"shared memory",
         {.source = std::make_shared<TestImage>(Shape{17, 8, Bgra32Premultiplied}, destination, 8), .coverage = where}},
    };
}

TEST(AllocationFailure, BlendPaintsAllOrNothingAndRecordsWhatItPainted) {
    const Shape shape{19, 9, Bgra32Premultiplied};
    Random random(62);
    const Bytes before = TestImage(shape, random).Bytes();
    const auto destination = std::make_shared<TestImage>(shape);
    const auto reset = [&] { std::ranges::copy(before, destination->GetPixelData()); };
    const auto surface = std::make_shared<TestSurface>(19, 9);
    surface->log.reserve(10000);
    for (const Painted& painted : Paintings(destination)) {
        SCOPED_TRACE(painted.what);
        reset();
        EXPECT_TRUE(Paint(*BlenderOn(destination), painted.call));
        const Bytes whole = destination->Bytes();
        EXPECT_NE(whole, before);
        const auto blender = BlenderOn(destination);
        WithEveryAllocationFailing([&](Failure& failure) {
            reset();
            auto blended = Cover({{1, 1, 2, 2}});
            const auto held = blended;
            const Outcome outcome = failure.In([&] { return Paint(*blender, painted.call, blended); });
            if (outcome != Outcome::True) {
                EXPECT_EQ(destination->Bytes(), before);
                EXPECT_EQ(blended, held);
                EXPECT_TRUE(Paint(*blender, painted.call, blended));
            } else if (painted.hollowMask && failure.Met()) {
                EXPECT_EQ(destination->Bytes(), before) << "a mask that cannot be read leaves its rectangle out";
                EXPECT_TRUE(Paint(*blender, painted.call, blended));
            }
            EXPECT_EQ(destination->Bytes(), whole);
            EXPECT_EQ(List(*blended), List(*painted.call.coverage));
        });
        WithEveryAllocationFailing([&](Failure& failure) {
            const auto onSurface = BlenderOn(nullptr, surface);
            surface->log.clear();
            std::shared_ptr<Coverage> blended;
            const Outcome outcome = failure.In([&] { return Paint(*onSurface, painted.call, blended); });
            EXPECT_TRUE(outcome == Outcome::True || surface->log.empty());
            EXPECT_TRUE(Paint(*onSurface, painted.call, blended));
        });
    }
}

/// Paints two elements into a group and ends it. @return the group image.
Bytes Group(const Bytes& before, const Call& first, const Call* second) {
    const auto image = std::make_shared<TestImage>(Shape{19, 9, Bgra32Premultiplied});
    std::ranges::copy(before, image->GetPixelData());
    const auto blender = BlenderOn(nullptr);
    EXPECT_TRUE(blender->BeginGroup(image, nullptr, false, false, false));
    EXPECT_TRUE(Paint(*blender, first));
    EXPECT_TRUE(second == nullptr || Paint(*blender, *second));
    EXPECT_TRUE(blender->EndGroup());
    return image->Bytes();
}

TEST(AllocationFailure, BlendInAGroupLeavesTheGroupAsItWas) {
    Random random(63);
    const Bytes before = TestImage({19, 9, Bgra32Premultiplied}, random).Bytes();
    const auto apart = std::make_shared<TestImage>(Shape{19, 9, Bgra32Premultiplied}, random);
    const Call first{.source = apart, .coverage = Cover({{0, 0, 5, 3}}), .alpha = 77};
    for (const Painted& painted : Paintings(apart)) {
        SCOPED_TRACE(painted.what);
        const Bytes one = Group(before, first, nullptr);
        const Bytes both = Group(before, first, &painted.call);
        for (const bool again : {false, true}) {
            WithEveryAllocationFailing([&](Failure& failure) {
                const auto image = std::make_shared<TestImage>(Shape{19, 9, Bgra32Premultiplied});
                std::ranges::copy(before, image->GetPixelData());
                const auto blender = BlenderOn(nullptr);
                EXPECT_TRUE(blender->BeginGroup(image, nullptr, false, false, false));
                EXPECT_TRUE(Paint(*blender, first));
                const Bytes then = image->Bytes();
                bool done = failure.In([&] { return Paint(*blender, painted.call); }) == Outcome::True;
                if (done && painted.hollowMask && failure.Met()) return;  // covered, but for the mask's rectangle
                if (!done) {
                    EXPECT_EQ(image->Bytes(), then);
                }
                if (!done && again) done = Paint(*blender, painted.call);
                EXPECT_TRUE(blender->EndGroup());
                EXPECT_FALSE(blender->EndGroup());
                EXPECT_EQ(image->Bytes(), done ? both : one);
            });
        }
    }
}

TEST(AllocationFailure, PainterKeepsItsGroupsInOrder) {
    const auto page = std::make_shared<TestImage>(Shape{9, 7, Bgra32Premultiplied});
    const auto stencil = Row(Index1, {0b01011010});
    Painter painter(page);
    const auto paint = [&] {
        painter.SetClip({{0, 0, 5, 7}, {4, 2, 9, 7}});
        painter.BeginGroup({1, 1, 9, 7}, {.knockout = true});
        painter.Fill({{2, 2, 6, 6}, {4, 1, 8, 5}}, 0x80406080, {.mode = BlendMode::Multiply});
        painter.Fill({0, 0, 9, 9}, 0xFFFFEEDD, {.mask = stencil, .maskAt = {1, 3}});
        painter.EndGroup({.alpha = 200});
        painter.ClearClip();
        return true;
    };
    paint();
    const Bytes expected = page->Bytes();
    WithEveryAllocationFailing([&](Failure& failure) {
        painter = Painter(page);
        failure.In(paint);
        while (painter.GetGroupDepth() > 0) painter.EndGroup({.alpha = 0});
        std::fill_n(page->GetPixelData(), page->Size(), TestImage::kFreshByte);
        paint();
        EXPECT_EQ(page->Bytes(), expected);
    });
}

TEST(AllocationFailure, BeginGroupOpensAGroupOrLeavesTheStack) {
    Random random(64);
    const Shape shape{7, 5, Bgra32Premultiplied};
    const Call element{.source = std::make_shared<TestImage>(shape, random), .coverage = Cover({{1, 1, 6, 4}})};
    const unsigned int most = 5;  // the stack grows on the way
    for (unsigned int depth = 0; depth <= most; ++depth) {
        WithEveryAllocationFailing([&](Failure& failure) {
            std::vector<std::shared_ptr<TestImage>> images;
            for (unsigned int i = 0; i <= depth; ++i) images.push_back(std::make_shared<TestImage>(shape));
            auto held = std::make_shared<int>(1);
            const auto blender = BlenderOn(std::make_shared<TestImage>(shape));
            for (unsigned int i = 0; i < depth; ++i) {
                EXPECT_TRUE(blender->BeginGroup(images[i], nullptr, false, true, false));
                EXPECT_TRUE(Paint(*blender, element));
            }
            const Bytes before = images[depth]->Bytes();
            const bool opened = failure.In([&] {
                return blender->BeginGroup(images[depth], held, false, true, false);
            }) == Outcome::True;
            EXPECT_EQ(held.use_count() > 1, opened);
            EXPECT_EQ(images[depth]->Bytes(), before);
            EXPECT_TRUE(Paint(*blender, element));
            EXPECT_EQ(images[depth]->Bytes() != before, opened) << "the element went to the top group";
            for (unsigned int i = 0; i < depth + (opened ? 1 : 0); ++i) EXPECT_TRUE(blender->EndGroup());
            EXPECT_FALSE(blender->EndGroup());
        });
    }
}

TEST(AllocationFailure, UtilitiesGiveAWholeImageOrNone) {
    Random random(65);
    const TestImage image({13, 9, Bgr24, 3, true}, random);
    TestFactory low(8);
    low.rowsLeftOut = 2;  // painted by way of a larger block
    for (IGraphicsFactory* const factory :
         {static_cast<IGraphicsFactory*>(nullptr), static_cast<IGraphicsFactory*>(&low)}) {
        for (const int way : {-3, -2, -1, 0, 1, 2}) {
            const auto turned = [&] {
                if (way < 0) return ImageUtil::Rotate(image, way, factory, nullptr);
                return ImageUtil::Flip(image, way == 1, way == 2, factory, nullptr);
            };
            const Bytes whole = BlockOf(*turned());
            low.last.reset();
            WithEveryAllocationFailing([&](Failure& failure) {
                ImagePtr made;
                failure.In([&] { return (made = turned()) != nullptr; });
                EXPECT_TRUE(made == nullptr || BlockOf(*made) == whole);
                low.last.reset();
            });
        }
    }
    TestImage target({13, 9, Bgra32});
    const Bytes before = target.Bytes();
    WithEveryAllocationFailing([&](Failure& failure) {
        std::ranges::copy(before, target.GetPixelData());
        const Outcome outcome = failure.In([&] { return ImageUtil::Copy(image, {0, 0, 13, 9}, target, {0, 0}); });
        EXPECT_EQ(target.Bytes() != before, outcome == Outcome::True);
    });
}

TEST(AllocationFailure, StorageMovesAWholeValueOrNothing) {
    const std::string text = "a text that no string holds by itself";
    for (const unsigned int size : {1U, 8U, 41U}) {
        WithEveryAllocationFailing([&](Failure& failure) {
            CQorStorage storage(Bytes{1, 2, 3});
            const auto write = [&] {
                return size == 1 ? storage.WriteByte(4) : size == 8 ? storage.Write(0.5) : storage.Write(text);
            };
            const Outcome outcome = failure.In([&] { return write() == size; });
            EXPECT_EQ(storage.GetBytes().size(), outcome == Outcome::True ? 3 + size : 3);
        });
    }
    WithEveryAllocationFailing([&](Failure& failure) {
        CQorStorage storage;
        storage.Write(text);
        std::string read;
        if (failure.In([&] { return storage.Read(read) == 41; }) != Outcome::True) storage.Read(read);
        EXPECT_EQ(read, text);
    });
}

TEST(AllocationFailure, TransferFunctionsStayOfUse) {
    const std::string code = "{ 1 exch sub }  % a text that no string holds by itself";
    const CPostscriptPDFTransferFunction inversion(TransferSource::Alpha, code);
    CQorStorage record;
    IPDFTransferFunction::Save(inversion, &record);
    WithEveryAllocationFailing([&](Failure& failure) {
        std::unique_ptr<CPostscriptPDFTransferFunction> made;
        failure.In([&] {
            made = std::make_unique<CPostscriptPDFTransferFunction>(TransferSource::Alpha, code);
            return true;
        });
        EXPECT_TRUE(made == nullptr || made->ComputeAlpha(Color(0x33000000)) == 1 - 0x33 / 255.0);
    });
    WithEveryAllocationFailing([&](Failure& failure) {
        CQorStorage storage(record.GetBytes());
        const auto held = std::make_shared<CIdentityPDFTransferFunction>(TransferSource::Alpha);
        std::shared_ptr<IPDFTransferFunction> function = held;
        const Outcome outcome = failure.In([&] { return IPDFTransferFunction::Restore(function, storage); });
        ASSERT_TRUE(function);
        EXPECT_EQ(function->ComputeAlpha(Color(0x33000000)), 0x33 / 255.0);
        EXPECT_TRUE(outcome != Outcome::True || function->GetType() == TransferType::Postscript);
    });
    WithEveryAllocationFailing([&](Failure& failure) {
        CPostscriptPDFTransferFunction copy(TransferSource::Luminosity, "");
        failure.In([&] { return copy = inversion, true; });
        const double opacity = copy.ComputeAlpha(Color(0x33000000));
        EXPECT_TRUE(opacity == 0 || opacity == 0x33 / 255.0 || opacity == 1 - 0x33 / 255.0);
        CQorStorage storage;
        failure.In([&] { return IPDFTransferFunction::Save(inversion, &storage) == 5 + code.size(); });
    });
}

}  // namespace
}  // namespace vantu::test
