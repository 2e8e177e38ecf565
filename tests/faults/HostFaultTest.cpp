// What a host hands in breaks its contract: factories, images, palettes, functions and surfaces.

#include <vantu/CQorImage.h>
#include <vantu/ImageUtil.h>

#include <stdexcept>

#include "blend/Painting.h"
#include "codec/Files.h"
#include "faults/FaultyFile.h"

namespace vantu::test {
namespace {

using enum IQorImage::PixelFormat;

/// Makes an image of its own shape, whatever is asked for.
class StubbornFactory : public IGraphicsFactory {
public:
    explicit StubbornFactory(const Shape& shape) : shape_(shape) {}
    ImagePtr CreateImage(unsigned int, unsigned int, PixelFormat, bool, void**) override {
        last = std::make_shared<TestImage>(shape_);
        if (shape_.height == 3) last->SetPalette(std::make_unique<ColorMap>(shape_.width));
        return last;
    }
    std::shared_ptr<TestImage> last;

private:
    Shape shape_;
};

TEST(HostFault, NothingIsWrittenBesideAnImageThatWasNotAskedFor) {
    Random random(71);
    for (const PixelFormat format : kPixelFormats) {
        for (const unsigned int width : {0U, 1U, 5U, 36U, 50U}) {
            for (const unsigned int height : {0U, 1U, 3U, 22U, 40U}) {
                const Shape shape{width, height, format, kAlignments[random() % kAlignments.size()], random() % 2 == 0};
                SCOPED_TRACE(testing::Message() << shape);
                StubbornFactory factory(shape);
                for (const std::string name : {"bits1.bmp", "bits8.bmp", "bits32.bmp", "grey1.png",
                                               "rgb8interlaced.png", "rgba8.png", "progressive.jpg", "grey.jpg"}) {
                    TheFile() = {.bytes = ReadAll(FixturePath(name))};
                    static_cast<void>(LoadPath(Kind(name), name, &factory));
                    EXPECT_TRUE(factory.last->GuardsIntact()) << name;
                }
                const TestImage image(RandomShape(random, kPixelFormats[random() % 9], 40), random);
                for (const int way : {-3, -2, -1, 0, 1, 2}) {
                    static_cast<void>(way < 0 ? ImageUtil::Rotate(image, way, &factory, nullptr)
                                              : ImageUtil::Flip(image, way == 1, way == 2, &factory, nullptr));
                    EXPECT_TRUE(factory.last->GuardsIntact()) << image.GetShape() << " way " << way;
                }
            }
        }
    }
}

TEST(HostFault, AGroupImageThatLosesItsMemoryIsNotResolved) {
    Random random(72);
    for (const PixelFormat format : {Bgra32Premultiplied, Bgra32Inverted, Bgr24}) {
        for (const bool plainResolve : {false, true}) {
            const auto outer = std::make_shared<TestImage>(Shape{4, 4, format}, random);
            const auto inner = std::make_shared<TestImage>(Shape{4, 4, format}, random);
            const auto blender = BlenderOn(nullptr);
            const Call call{std::make_shared<TestImage>(Shape{4, 4, Bgr24}, random), Cover({{0, 0, 4, 4}})};
            EXPECT_TRUE(blender->BeginGroup(outer, nullptr, false, false, plainResolve));
            EXPECT_TRUE(blender->BeginGroup(inner, nullptr, false, false, plainResolve));
            EXPECT_TRUE(Paint(*blender, call));
            inner->HideMemory();
            EXPECT_FALSE(Paint(*blender, call));
            EXPECT_TRUE(blender->EndGroup());
            EXPECT_TRUE(Paint(*blender, call)) << "the group below is of use";
            EXPECT_TRUE(blender->EndGroup());
            EXPECT_FALSE(blender->EndGroup());
        }
    }
}

/// Throws when it has been asked `left` times; -1 for never.
struct Fuse {
    void Burn() {
        if (left == 0) throw std::runtime_error("host");
        --left;
    }
    int left = -1;
};

TEST(HostFault, ExceptionsOfTheHostPassAndLeaveTheBlenderOfUse) {
    Random random(73);
    const Shape shape{4, 3, Bgra32Premultiplied};
    const Bytes before = TestImage(shape, random).Bytes();
    const auto image = std::make_shared<TestImage>(shape), group = std::make_shared<TestImage>(shape);
    const auto fuse = std::make_shared<Fuse>();
    const Call call{.source = std::make_shared<TestImage>(shape, random),
                    .coverage = Cover({{0, 0, 4, 3}}),
                    .mask = std::make_shared<TestImage>(Shape{4, 3, Bgra32}, random),
                    .transfer = std::make_shared<HostFunction>([fuse](const Color& color) {
                        fuse->Burn();
                        return color.GetRed() / 255.0;
                    })};
    const auto fill = [&] {
        for (const auto& each : {image, group}) std::ranges::copy(before, each->GetPixelData());
    };
    // With and without a group: the results of calls that nothing disturbs.
    std::vector<Bytes> whole;
    const auto blender = BlenderOn(image);
    for (const bool inGroup : {false, true}) {
        fill();
        if (inGroup) blender->BeginGroup(group, nullptr, false, true, false);
        EXPECT_TRUE(Paint(*blender, call));
        EXPECT_EQ(blender->EndGroup(), inGroup);
        whole.push_back((inGroup ? group : image)->Bytes());
    }
    for (int asked = 0; asked < 12; ++asked) {
        for (const bool inGroup : {false, true}) {
            fill();
            if (inGroup) blender->BeginGroup(group, nullptr, false, true, false);
            auto blended = Cover({{1, 1, 2, 2}});
            const auto held = blended;
            fuse->left = asked;
            EXPECT_THROW(Paint(*blender, call, blended), std::runtime_error);
            fuse->left = -1;
            EXPECT_EQ(blended, held);
            EXPECT_EQ(blender->EndGroup(), inGroup);
            fill();
            if (inGroup) blender->BeginGroup(group, nullptr, false, true, false);
            EXPECT_TRUE(Paint(*blender, call));
            EXPECT_EQ(blender->EndGroup(), inGroup);
            EXPECT_EQ((inGroup ? group : image)->Bytes(), whole[inGroup]);
        }
    }
}

/// Moves one byte less than it should in its n-th operation, or none from it on.
class FailingStorage : public CQorStorage {
public:
    FailingStorage(Bytes bytes, int n, bool lasting) : CQorStorage(std::move(bytes)), left_(n), lasting_(lasting) {}

    unsigned int WriteByte(unsigned char value) override { return Fails() ? 0 : CQorStorage::WriteByte(value); }
    unsigned int Write(double value) override { return Fails() ? Short(7) : CQorStorage::Write(value); }
    unsigned int Write(const std::string& text) override {
        return Fails() ? Short(static_cast<unsigned int>(text.size()) + 3) : CQorStorage::Write(text);
    }
    unsigned int Read(unsigned char& value) override { return Fails() ? 0 : CQorStorage::Read(value); }
    unsigned int Read(double& value) override { return Fails() ? Short(7) : CQorStorage::Read(value); }
    unsigned int Read(std::string& text) override {
        if (!Fails()) return CQorStorage::Read(text);
        text = "cut";
        return Short(static_cast<unsigned int>(text.size()));
    }

private:
    bool Fails() { return left_ > 0 ? --left_ == 0 : left_ == 0 && lasting_; }
    [[nodiscard]] unsigned int Short(unsigned int count) const { return lasting_ ? 0 : count; }

    int left_;
    bool lasting_;
};

TEST(HostFault, RecordsOfAStorageThatMovesLess) {
    const CIdentityPDFTransferFunction identity(TransferSource::Luminosity);
    const CExponentialPDFTransferFunction exponential(TransferSource::Alpha, 0.5, 0.25, 2);
    const CPostscriptPDFTransferFunction postscript(TransferSource::Alpha, "{ 1 exch sub }");
    const struct {
        const IPDFTransferFunction& function;
        int operations;
    } cases[] = {{identity, 1}, {exponential, 4}, {postscript, 2}};
    for (const auto& [function, operations] : cases) {
        CQorStorage record;
        const unsigned int size = IPDFTransferFunction::Save(function, &record);
        for (int n = 1; n <= operations; ++n) {
            for (const bool lasting : {false, true}) {
                FailingStorage target({}, n, lasting);
                EXPECT_LT(IPDFTransferFunction::Save(function, &target), size);
                FailingStorage cut(record.GetBytes(), n, lasting);
                std::shared_ptr<IPDFTransferFunction> restored;
                EXPECT_FALSE(IPDFTransferFunction::Restore(restored, cut));
                EXPECT_EQ(restored != nullptr, n > 1);
                if (!restored) continue;
                EXPECT_EQ(restored->GetType(), function.GetType());
                EXPECT_NO_THROW(static_cast<void>(restored->ComputeAlpha(Color(0x80808080))));
            }
        }
    }
}

TEST(HostFault, AnImageWhoseStorageMovesLessKeepsItsPixelsOrHasNone) {
    for (const bool lasting : {false, true}) {
        CQorImage image(3, 2, Bgr24, 4, false);
        image.GetPixelData()[5] = 99;
        EXPECT_TRUE(image.SetStorage(std::make_shared<FailingStorage>(Bytes(), 1, lasting), 0, nullptr));
        EXPECT_FALSE(image.Store());
        EXPECT_FALSE(image.Unload()) << "what is not stored stays";
        EXPECT_EQ(image.GetPixelData()[5], 99);
        EXPECT_TRUE(image.SetStorage(std::make_shared<FailingStorage>(Bytes(), 2, lasting), 0, nullptr));
        EXPECT_TRUE(image.Store());
        EXPECT_TRUE(image.Unload());
        EXPECT_FALSE(image.Load());
        EXPECT_EQ(image.GetPixelData(), nullptr);
    }
}

}  // namespace
}  // namespace vantu::test
