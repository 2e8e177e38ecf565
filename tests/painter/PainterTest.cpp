#include <gtest/gtest.h>
#include <vantu/CExponentialPDFTransferFunction.h>
#include <vantu/CIdentityPDFTransferFunction.h>

#include <limits>

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

}  // namespace
}  // namespace vantu::test
