#include <limits>
#include <optional>

#include "blend/Scene.h"
#include "fuzz/Fuzz.h"
#include "painter/ByHand.h"

// Random calls to a painter, with valid arguments and others: places up to the ends of what an int holds, pictures and
// masks of any format, without memory or absurdly wide, modes that are none, groups in groups. What is valid is also
// painted by hand, a pixel at a time; in the end all bytes are compared.

using namespace vantu;
using namespace vantu::test;
using namespace vantu::fuzz;

namespace {

/// Says that its rows are longer than they are.
struct WideImage : TestImage {
    using TestImage::TestImage;
    unsigned int GetWidth() const override { return std::numeric_limits<unsigned int>::max(); }
};

class Session {
public:
    explicit Session(Bytes bytes) : choices_(bytes) {
        const auto width = static_cast<unsigned int>(choices_.Between(1, 30));
        const auto height = static_cast<unsigned int>(choices_.Between(1, 12));
        Random random(choices_.Word());
        const Rectangle whole{0, 0, static_cast<int>(width), static_cast<int>(height)};
        if (choices_.Byte() % 5 == 0) {
            surface_ = std::make_shared<TestSurface>(width, height);
            for (Color& color : surface_->pixels) color = Color(static_cast<unsigned int>(random()));
            surfaceByHand_ = std::make_shared<TestSurface>(*surface_);
            painter_.emplace(surface_, whole);
        } else {
            const Shape shape{width, height, static_cast<PixelFormat>(choices_.Between(4, 9)),
                              static_cast<unsigned char>(choices_.Between(0, 8)), choices_.Flag()};
            page_ = std::make_shared<TestImage>(shape, random);
            pageByHand_ = std::make_shared<TestImage>(shape);
            std::copy_n(page_->GetPixelData(), page_->Size(), pageByHand_->GetPixelData());
            painter_.emplace(page_);
        }
        byHand_.emplace(pageByHand_, surfaceByHand_, whole);
    }

    void Run() {
        for (int calls = 0; choices_.Any() && calls < 20; ++calls) {
            switch (choices_.Between(0, 8)) {
                case 0: SetClip(); break;
                case 1: BeginGroup(); break;
                case 2: EndGroup(); break;
                case 3:
                case 4: Fill(); break;
                default: Draw(); break;
            }
        }
        while (!plain_.empty()) EndGroup();
        Require(painter_->EndGroup() == PaintResult::NoGroup, "no group is open after the last one was closed");
        if (page_) {
            Require(page_->Bytes() == pageByHand_->Bytes(), "a painter gives the bytes of calls made by hand");
            Require(page_->GuardsIntact(), "a painter writes inside the page");
        } else {
            Require(std::ranges::equal(surface_->pixels, surfaceByHand_->pixels, {}, Argb, Argb),
                    "a painter gives a surface the colours of calls made by hand");
        }
    }

private:
    int Place() {
        constexpr int least = std::numeric_limits<int>::min(), most = std::numeric_limits<int>::max();
        static constexpr std::array kFar{least, least + 1, least + 20, -(1 << 30), 1 << 30, most - 20, most - 1, most};
        return choices_.Byte() % 12 == 0 ? kFar.at(choices_.Byte() % kFar.size()) : choices_.Between(-12, 30);
    }
    Rectangle Box() {
        Rectangle box{Place(), Place(), Place(), Place()};
        if (choices_.Flag()) box = RectangleAt(Point<int, 2>{box.x0, box.y0});
        return box;
    }
    Rectangle RectangleAt(const Point<int, 2>& at) {
        return RectangleOf(*std::make_shared<TestImage>(Shape{static_cast<unsigned int>(choices_.Between(0, 24)),
                                                              static_cast<unsigned int>(choices_.Between(0, 12)),
                                                              PixelFormat::Index8}),
                           at);
    }
    std::vector<Rectangle> Boxes() {
        std::vector<Rectangle> boxes(choices_.Byte() % 5);
        for (Rectangle& box : boxes) box = Box();
        return boxes;
    }

    /// @param valid becomes false for one that no call paints from or through.
    Image Picture(int leastFormat, int mostFormat, bool& valid) {
        const bool anyFormat = leastFormat != mostFormat && choices_.Byte() % 32 == 0;
        const int number = anyFormat ? choices_.Between(0, 10) : choices_.Between(leastFormat, mostFormat);
        const auto format = static_cast<PixelFormat>(number);
        const Shape shape{static_cast<unsigned int>(choices_.Between(1, 24)),
                          static_cast<unsigned int>(choices_.Between(1, 10)), format,
                          static_cast<unsigned char>(choices_.Between(0, 8)), choices_.Flag()};
        const bool wide = choices_.Byte() % 64 == 0;
        Random random(choices_.Word());
        const Image image = wide ? std::make_shared<WideImage>(shape) : std::make_shared<TestImage>(shape);
        image->Randomize(random);
        AddRuns(*image, random);
        const bool bare = format == PixelFormat::Index8 && choices_.Flag();
        if (number >= 1 && number <= 3 && !bare) {
            image->SetPalette(RandomPalette(256, random));
        }
        const bool hidden = choices_.Byte() % 64 == 0;
        if (hidden) image->HideMemory();
        valid = valid && !wide && !hidden && number >= leastFormat && number <= mostFormat;
        return image;
    }

    How MakeHow(bool& valid) {
        How how;
        how.mode =
            static_cast<BlendMode>(choices_.Byte() % 32 == 0 ? choices_.Word() : choices_.Byte() % kBlendModeCount);
        valid = valid && static_cast<unsigned int>(how.mode) < kBlendModeCount;
        how.alpha = static_cast<unsigned char>(choices_.Flag() ? 255 : choices_.Byte());
        if (choices_.Flag()) return how;
        how.maskAt = {Place(), Place()};
        how.outsideMask = choices_.Flag();
        const bool stencil = choices_.Flag();
        how.mask = Picture(1, stencil ? 1 : 9, valid);
        switch (choices_.Between(0, 4)) {
            case 0: valid = valid && how.mask->GetPixelFormat() == PixelFormat::Index1; break;
            case 1: how.maskTransfer = std::make_shared<CIdentityPDFTransferFunction>(TransferSource::Alpha); break;
            case 2:
                how.maskTransfer =
                    std::make_shared<CExponentialPDFTransferFunction>(TransferSource::Luminosity, 0.0, 0.9, 1.5);
                break;
            case 3:
                how.maskTransfer = std::make_shared<HostFunction>([](const Color& c) { return c.GetGreen() / 255.0; });
                break;
            default:
                how.maskTransfer = std::make_shared<CIdentityPDFTransferFunction>(TransferSource::Luminosity);
                break;
        }
        return how;
    }

    void SetClip() {
        byHand_->clip.reset();
        if (choices_.Byte() % 3 == 0) return painter_->ClearClip();
        byHand_->clip = Boxes();
        painter_->SetClip(*byHand_->clip);
    }

    void Draw() {
        bool valid = true;
        const bool onSurface = byHand_->OnSurface();
        const Image picture = Picture(onSurface ? 1 : 5, onSurface ? 9 : 8, valid);
        const Point<int, 2> at{Place(), Place()};
        const How how = MakeHow(valid);
        const PaintResult result = painter_->Draw(picture, at, how);
        if (!valid) return RequireRefused(result);
        const Rectangle place = RectangleOf(*picture, at);
        RequireTold(result, byHand_->Element(
                                *picture, at, [&](int x, int y) { return Holds(place, x, y); }, how));
    }

    void Fill() {
        bool valid = true;
        const std::vector<Rectangle> boxes = Boxes();
        const unsigned int rgb = choices_.Word() * 257U & 0xFFFFFF;
        const Color color(rgb | (choices_.Flag() ? 255 : choices_.Byte()) << 24);
        How how = MakeHow(valid);
        const PaintResult result = painter_->Fill(boxes, color, how);
        if (!valid) return RequireRefused(result);
        how.alpha = static_cast<unsigned char>(how.alpha * color.GetAlpha() / 255);
        const Image pixel = Row(PixelFormat::Bgr24, {color.GetBlue(), color.GetGreen(), color.GetRed()});
        const auto inOne = [&](int x, int y) {
            return std::ranges::any_of(boxes, [&](const Rectangle& r) { return Holds(r, x, y); });
        };
        RequireTold(result, byHand_->Element(*pixel, {0, 0}, inOne, how));
    }

    void BeginGroup() {
        if (plain_.size() == 4) return;
        const Rectangle bounds = Box();
        const unsigned int kind = choices_.Byte();
        const GroupKind group{kind % 2 != 0, kind / 2 % 2 != 0, kind / 4 % 3 == 0};
        plain_.push_back(group.plain);
        painter_->BeginGroup(bounds, group);
        byHand_->BeginGroup(bounds, group);
    }

    void EndGroup() {
        if (plain_.empty()) return;
        bool valid = true;
        const How how = plain_.back() ? How{} : MakeHow(valid);
        plain_.pop_back();
        const PaintResult result = painter_->EndGroup(how);
        const bool some = byHand_->EndGroup(valid ? how : How{.alpha = 0});
        if (valid) return RequireTold(result, some);
        RequireRefused(result);
    }

    static void RequireTold(PaintResult result, bool some) {
        Require(result == (some ? PaintResult::Painted : PaintResult::NothingToPaint),
                "a painter says what it painted");
    }
    static void RequireRefused(PaintResult result) {
        Require(result != PaintResult::Painted, "what cannot be painted is refused");
    }

    Choices choices_;
    Image page_, pageByHand_;
    std::shared_ptr<TestSurface> surface_, surfaceByHand_;
    std::optional<Painter> painter_;
    std::optional<ByHand> byHand_;
    std::vector<bool> plain_;  ///< of each open group, whether it is
};

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Session(Bytes(data, size)).Run();
    return 0;
}
