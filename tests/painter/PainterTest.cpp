#include <gtest/gtest.h>
#include <vantu/CExponentialPDFTransferFunction.h>
#include <vantu/CIdentityPDFTransferFunction.h>

#include <limits>
#include <utility>

#include "painter/ByHand.h"

namespace vantu::test {
namespace {

using enum IQorImage::PixelFormat;

constexpr int kLeast = std::numeric_limits<int>::min();
constexpr int kMost = std::numeric_limits<int>::max();

std::shared_ptr<IPDFTransferFunction> Identity(TransferSource source) {
    return std::make_shared<CIdentityPDFTransferFunction>(source);
}

/// Random calls to a painter and to the model of it, on pages that are equal.
class Scene {
public:
    explicit Scene(std::uint32_t seed) : random_(seed) {
        const unsigned int width = Between(random_, 1, 40), height = Between(random_, 1, 24);
        whole_ = {0, 0, static_cast<int>(width), static_cast<int>(height)};
        if (Chance(6)) {
            whole_.x0 = std::min(3, whole_.x1);
            surface_ = std::make_shared<TestSurface>(width, height);
            for (Color& color : surface_->pixels) color = Color(static_cast<unsigned int>(random_()));
            surfaceByHand_ = std::make_shared<TestSurface>(*surface_);
            painter_.emplace(surface_, whole_);
        } else {
            const Shape shape{width, height, static_cast<PixelFormat>(Between(random_, 4, 9)),
                              kAlignments[random_() % kAlignments.size()], Chance(2)};
            page_ = std::make_shared<TestImage>(shape, random_);
            pageByHand_ = std::make_shared<TestImage>(shape);
            std::copy_n(page_->GetPixelData(), page_->Size(), pageByHand_->GetPixelData());
            painter_.emplace(page_);
        }
        model_.emplace(pageByHand_, surfaceByHand_, whole_);
    }

    void Run() {
        const unsigned int calls = Between(random_, 1, 14);
        for (unsigned int i = 0; i < calls; ++i) {
            switch (Between(random_, 0, 7)) {
                case 0: SetClip(); break;
                case 1: BeginGroup(); break;
                case 2: EndGroup(); break;
                case 3:
                case 4: Fill(); break;
                default: Draw(); break;
            }
        }
        while (painter_->GetGroupDepth() > 0) EndGroup();
        EXPECT_EQ(painter_->EndGroup(), PaintResult::NoGroup);
        if (page_) {
            EXPECT_EQ(page_->Bytes(), pageByHand_->Bytes());
            EXPECT_TRUE(page_->GuardsIntact());
        } else {
            const auto same = [](Color a, Color b) { return std::memcmp(&a, &b, sizeof a) == 0; };
            EXPECT_TRUE(std::ranges::equal(surface_->pixels, surfaceByHand_->pixels, same));
        }
    }

private:
    bool Chance(unsigned int oneIn) { return Between(random_, 1, oneIn) == 1; }
    int Near(int below, int above) {
        return static_cast<int>(Between(random_, 0, static_cast<unsigned int>(above - below))) + below;
    }
    Point<int, 2> Place() { return {Near(-12, whole_.x1), Near(-12, whole_.y1)}; }
    Rectangle Box() {
        const auto [x, y] = Place();
        return {x, y, x + Near(-1, 30), y + Near(-1, 20)};
    }
    std::vector<Rectangle> Boxes() {
        std::vector<Rectangle> boxes(Between(random_, 0, 5));
        for (Rectangle& box : boxes) box = Box();
        return boxes;
    }

    Image Picture(PixelFormat format) {
        const Shape shape{Between(random_, 1, 40), Between(random_, 1, 20), format,
                          kAlignments[random_() % kAlignments.size()], Chance(2)};
        auto image = std::make_shared<TestImage>(shape, random_);
        if (format <= Index4 || (format == Index8 && Chance(2))) image->SetPalette(RandomPalette(256, random_));
        if (BitsPerPixel(format) == 32) {
            for (std::size_t i = 0; i < image->Size(); i += Between(random_, 1, 9)) {
                image->GetPixelData()[i] = Chance(2) ? 0 : 255;
            }
        }
        return image;
    }

    How RandomHow() {
        How how;
        how.mode = static_cast<BlendMode>(Between(random_, 0, kBlendModeCount - 1));
        if (Chance(3)) how.mode = BlendMode::Normal;
        if (Chance(2)) how.alpha = static_cast<unsigned char>(random_());
        if (Chance(2)) return how;
        how.maskAt = Place();
        how.outsideMask = Chance(3);
        how.mask = Picture(Chance(3) ? Index1 : static_cast<PixelFormat>(Between(random_, 1, 9)));
        switch (Between(random_, 0, 4)) {
            case 0:
                if (how.mask->GetPixelFormat() == Index1) return how;
                [[fallthrough]];
            case 1: how.maskTransfer = Identity(TransferSource::Alpha); break;
            case 2:
                how.maskTransfer =
                    std::make_shared<CExponentialPDFTransferFunction>(TransferSource::Luminosity, 0.0, 0.9, 1.5);
                break;
            case 3:
                how.maskTransfer = std::make_shared<HostFunction>(
                    [](const Color& color) { return color.GetGreen() < 100 ? 0.0 : color.GetGreen() / 255.0; });
                break;
            default: how.maskTransfer = Identity(TransferSource::Luminosity); break;
        }
        return how;
    }

    void SetClip() {
        model_->clip.reset();
        if (Chance(3)) return painter_->ClearClip();
        model_->clip = Boxes();
        if (Chance(2)) model_->clip->push_back(whole_);
        painter_->SetClip(*model_->clip);
    }

    void Draw() {
        const bool anyFormat = model_->OnSurface();
        const Image picture =
            Picture(static_cast<PixelFormat>(anyFormat ? Between(random_, 1, 9) : Between(random_, 5, 8)));
        const Point<int, 2> at = Place();
        const How how = RandomHow();
        const Rectangle place = RectangleOf(*picture, at);
        const bool some = model_->Element(
            *picture, at, [&](int x, int y) { return Holds(place, x, y); }, how);
        Expect(painter_->Draw(picture, at, how), some);
    }

    void Fill() {
        const std::vector<Rectangle> boxes = Boxes();
        Color color(static_cast<unsigned int>(random_()));
        if (Chance(2)) color.SetAlpha(255);
        const How how = RandomHow();
        How cut = how;
        cut.alpha = static_cast<unsigned char>(how.alpha * color.GetAlpha() / 255);
        const Image pixel = Row(Bgr24, {color.GetBlue(), color.GetGreen(), color.GetRed()});
        const auto holds = [&](int x, int y) {
            return std::ranges::any_of(boxes, [&](const Rectangle& r) { return Holds(r, x, y); });
        };
        const bool some = model_->Element(*pixel, {0, 0}, holds, cut);
        Expect(boxes.size() == 1 ? painter_->Fill(boxes[0], color, how) : painter_->Fill(boxes, color, how), some);
    }

    void BeginGroup() {
        if (painter_->GetGroupDepth() >= 4) return;
        const Rectangle bounds = Chance(3) ? whole_ : Box();
        const GroupKind kind{Chance(2), Chance(2), Chance(3)};
        plain_.push_back(kind.plain);
        painter_->BeginGroup(bounds, kind);
        model_->BeginGroup(bounds, kind);
    }

    void EndGroup() {
        if (plain_.empty()) return;
        const How how = plain_.back() ? How{} : RandomHow();
        plain_.pop_back();
        const bool some = model_->EndGroup(how);
        Expect(painter_->EndGroup(how), some);
    }

    static void Expect(PaintResult result, bool some) {
        EXPECT_EQ(result, some ? PaintResult::Painted : PaintResult::NothingToPaint) << TextOf(result);
    }

    Random random_;
    Rectangle whole_{};
    Image page_, pageByHand_;
    std::shared_ptr<TestSurface> surface_, surfaceByHand_;
    std::optional<Painter> painter_;
    std::optional<ByHand> model_;
    std::vector<bool> plain_;
};

TEST(Painter, GivesTheBytesOfCallsMadeByHand) {
    for (std::uint32_t seed = 0; seed < 3000 && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Scene(seed).Run();
    }
}

TEST(Painter, SaysWhyNothingIsPainted) {
    Random random(1);
    const auto page = std::make_shared<TestImage>(Shape{4, 4, Bgr24}, random);
    const auto before = page->Bytes();
    Painter painter(page);
    const auto opaque = std::make_shared<TestImage>(Shape{2, 2, Bgr24}, random);
    const auto hidden = std::make_shared<TestImage>(Shape{2, 2, Bgr24}, random);
    hidden->HideMemory();
    struct WideImage : TestImage {
        using TestImage::TestImage;
        unsigned int GetWidth() const override { return 1U << 28; }
    };
    const auto wide = std::make_shared<WideImage>(Shape{2, 2, Bgr24});
    const auto draw = [&](const Image& picture, const How& how) { return painter.Draw(picture, {0, 0}, how); };
    const auto expect = [](PaintResult result, PaintResult expected) { EXPECT_EQ(result, expected) << TextOf(result); };
    expect(draw(nullptr, {}), PaintResult::NoPixels);
    expect(draw(hidden, {}), PaintResult::NoPixels);
    expect(draw(wide, {}), PaintResult::TooWide);
    expect(draw(std::make_shared<TestImage>(Shape{2, 2, Bgra32}), {}), PaintResult::SourceFormat);
    expect(draw(opaque, {.mode = BlendMode{kBlendModeCount}}), PaintResult::NoSuchMode);
    expect(draw(opaque, {.mode = static_cast<BlendMode>(1 << 16)}), PaintResult::NoSuchMode);
    expect(draw(opaque, {.mask = opaque}), PaintResult::MaskWithoutFunction);
    const auto alphaOf = Identity(TransferSource::Alpha);
    expect(draw(opaque, {.mask = hidden, .maskTransfer = alphaOf}), PaintResult::NoPixels);
    expect(draw(opaque, {.mask = wide, .maskTransfer = alphaOf}), PaintResult::TooWide);
    const auto formless = std::make_shared<TestImage>(Shape{2, 2, static_cast<PixelFormat>(0)});
    expect(draw(opaque, {.mask = formless, .maskTransfer = alphaOf}), PaintResult::MaskFormat);
    expect(draw(opaque, {.alpha = 0}), PaintResult::NothingToPaint);
    expect(painter.BeginGroup({4, 0, 9, 9}), PaintResult::NothingToPaint);
    expect(draw(opaque, {}), PaintResult::NothingToPaint);
    expect(painter.EndGroup(), PaintResult::NothingToPaint);
    expect(painter.EndGroup(), PaintResult::NoGroup);
    EXPECT_EQ(page->Bytes(), before);

    expect(Painter(std::make_shared<TestImage>(Shape{4, 4, Index8})).Draw(opaque, {0, 0}), PaintResult::TargetFormat);
    expect(Painter(nullptr).Fill({0, 0, 1, 1}, ARGB_BLACK), PaintResult::NoPixels);
    expect(painter.BeginGroup({0, 0, 4, 4}, {.plain = true}), PaintResult::GroupBegun);
    page->HideMemory();
    expect(draw(opaque, {}), PaintResult::NoPixels);
    expect(painter.EndGroup({.alpha = 7}), PaintResult::PlainGroup);
}

TEST(Painter, ReachesTheEndsOfPositionsAndNoFurther) {
    struct Corner : RasterSurface {
        Corner() {
            GetPixel = [](RasterSurface*, int x, int y, Color& out) {
                EXPECT_TRUE(x >= kMost - 4 && x < kMost && y >= kLeast && y < kLeast + 4) << x << ' ' << y;
                out = Color(0xFFFFFFFF);
            };
            SetPixel = [](RasterSurface* self, int, int, const Color&) { ++static_cast<Corner*>(self)->painted; };
        }
        int painted = 0;
    };
    const auto corner = std::make_shared<Corner>();
    Painter painter(corner, {kMost - 4, kLeast, kMost, kLeast + 4});
    const auto painted = [&](PaintResult result) { return std::pair(result, std::exchange(corner->painted, 0)); };
    const auto pixels = [](int count) { return std::pair(PaintResult::Painted, count); };
    const Rectangle everything{kLeast, kLeast, kMost, kMost};
    EXPECT_EQ(painted(painter.Fill(everything, ARGB_BLACK)), pixels(16));

    Random random(2);
    const auto picture = std::make_shared<TestImage>(Shape{9, 9, Bgr24}, random);
    EXPECT_EQ(painted(painter.Draw(picture, {kMost - 1, kLeast})), pixels(4));
    EXPECT_EQ(painted(painter.Draw(picture, {kMost - 9, kLeast + 3})), pixels(4));
    EXPECT_EQ(painter.Draw(picture, {kLeast, kMost}), PaintResult::NothingToPaint);
    const How masked{.mask = picture, .maskAt = {kMost - 2, kLeast}, .maskTransfer = Identity(TransferSource::Alpha)};
    EXPECT_EQ(painted(painter.Fill(everything, ARGB_BLACK, masked)), pixels(8));
    EXPECT_EQ(painted(painter.Draw(picture, {kMost - 8, kLeast}, masked)), pixels(8));

    EXPECT_EQ(painter.BeginGroup(everything), PaintResult::GroupBegun);
    EXPECT_EQ(painted(painter.Fill(everything, ARGB_BLACK, masked)), pixels(0));
    EXPECT_EQ(painted(painter.EndGroup()), pixels(8));
}

}  // namespace
}  // namespace vantu::test
