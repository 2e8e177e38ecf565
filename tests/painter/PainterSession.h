#pragma once

#include <vantu/CQorImage.h>

#include <limits>
#include <optional>

#include "painter/ByHand.h"
#include "support/Choices.h"

namespace vantu::test {

/// Calls to a painter that choices spell, on an image, on memory of the caller's and on a surface: places up to the
/// ends of what an int holds, pictures and masks of any format, without memory or absurdly wide, modes that are none,
/// groups in groups. What is valid is also painted by hand, a pixel at a time; in the end all bytes are compared.
class PainterSession {
public:
    explicit PainterSession(Choices choices) : choices_(choices) {
        const auto width = static_cast<unsigned int>(choices_.Between(1, 40));
        const auto height = static_cast<unsigned int>(choices_.Between(1, 20));
        Random random(choices_.Word());
        Rectangle whole{0, 0, static_cast<int>(width), static_cast<int>(height)};
        if (choices_.OneIn(5)) {
            whole.x0 = choices_.Between(0, whole.x1 - 1);
            surface_ = std::make_shared<TestSurface>(width, height);
            for (Color& color : surface_->pixels) color = Color(static_cast<unsigned int>(random()));
            surfaceByHand_ = std::make_shared<TestSurface>(*surface_);
            painter_.emplace(surface_, whole);
        } else {
            const Shape shape{width, height, static_cast<PixelFormat>(choices_.Between(4, 9)),
                              static_cast<unsigned char>(choices_.Between(0, 8)), choices_.Flag()};
            page_ = std::make_shared<TestImage>(shape, random);
            if (choices_.Flag()) ImageUtil::ClearPixelAlpha(*page_, 255, {1, 0, 0, 0});
            pageByHand_ = std::make_shared<TestImage>(shape);
            std::copy_n(page_->GetPixelData(), page_->Size(), pageByHand_->GetPixelData());
            const auto [w, h, format, alignment, bottomUp] = shape;
            if (choices_.Flag()) {
                painter_.emplace(page_);
            } else {
                painter_.emplace(CQorImage::OnMemory(page_->GetPixelData(), w, h, format, page_->Stride(), bottomUp));
            }
        }
        byHand_.emplace(pageByHand_, surfaceByHand_, whole);
    }

    /// @throws std::logic_error where the painter breaks a promise.
    void Run() {
        for (int calls = 0; choices_.Any() && calls < 20; ++calls) {
            switch (choices_.Between(0, 9)) {
                case 0: SetClip(); break;
                case 1:
                case 2: BeginGroup(); break;
                case 3: EndGroup(); break;
                case 4:
                case 5: Fill(); break;
                default: Draw(); break;
            }
        }
        while (!groups_.empty()) EndGroup();
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
        return choices_.OneIn(12) ? kFar.at(choices_.Byte() % kFar.size()) : choices_.Between(-12, 30);
    }
    Rectangle Box() {
        Rectangle box{Place(), Place(), Place(), Place()};
        if (choices_.Flag()) {
            const auto width = static_cast<unsigned int>(choices_.Between(0, 40));
            const auto height = static_cast<unsigned int>(choices_.Between(0, 20));
            box = RectangleOf(TestImage({width, height, PixelFormat::Index1}), {box.x0, box.y0});
        }
        return box;
    }
    std::vector<Rectangle> Boxes() {
        std::vector<Rectangle> boxes(choices_.Byte() % 5);
        for (Rectangle& box : boxes) box = Box();
        return boxes;
    }

    /// @param valid becomes false for one that no call paints from or through, as one whose rows are too long.
    Image Picture(int leastFormat, int mostFormat, bool& valid) {
        struct WideImage : TestImage {
            using TestImage::TestImage;
            unsigned int GetWidth() const override { return std::numeric_limits<unsigned int>::max(); }
        };
        const bool anyFormat = leastFormat != mostFormat && choices_.OneIn(32);
        const int number = anyFormat ? choices_.Between(0, 10) : choices_.Between(leastFormat, mostFormat);
        const auto format = static_cast<PixelFormat>(number);
        const Shape shape{static_cast<unsigned int>(choices_.Between(1, 40)),
                          static_cast<unsigned int>(choices_.Between(1, 20)), format,
                          static_cast<unsigned char>(choices_.Between(0, 8)), choices_.Flag()};
        const bool wide = choices_.OneIn(64), hidden = choices_.OneIn(64);
        Random random(choices_.Word());
        const Image image = wide ? std::make_shared<WideImage>(shape) : std::make_shared<TestImage>(shape);
        image->Randomize(random);
        AddRuns(*image, random);
        const bool bare = format == PixelFormat::Index8 && choices_.Flag();
        if (number >= 1 && number <= 3 && !bare) image->SetPalette(RandomPalette(256, random));
        if (hidden) image->HideMemory();
        valid = valid && !wide && !hidden && number >= leastFormat && number <= mostFormat;
        return image;
    }

    How MakeHow(bool& valid, bool normal = false) {
        How how;
        how.mode = static_cast<BlendMode>(choices_.OneIn(32) ? choices_.Word() : choices_.Byte() % kBlendModeCount);
        if (normal || choices_.OneIn(3)) how.mode = BlendMode::Normal;
        valid = valid && static_cast<unsigned int>(how.mode) < kBlendModeCount;
        how.alpha = static_cast<unsigned char>(choices_.Flag() ? 255 : choices_.Byte());
        if (choices_.Flag()) return how;
        how.maskAt = {Place(), Place()};
        how.outsideMask = choices_.Flag();
        const bool stencil = choices_.Flag();
        how.mask = Picture(1, stencil ? 1 : 9, valid);
        const auto source = choices_.Flag() ? TransferSource::Alpha : TransferSource::Luminosity;
        switch (choices_.Between(0, 3)) {
            case 0: valid = valid && how.mask->GetPixelFormat() == PixelFormat::Index1; break;
            case 1: how.maskTransfer = std::make_shared<CIdentityPDFTransferFunction>(source); break;
            case 2: how.maskTransfer = std::make_shared<CExponentialPDFTransferFunction>(source, 0.0, 0.9, 1.5); break;
            default:
                how.maskTransfer = std::make_shared<HostFunction>(
                    [](const Color& c) { return c.GetGreen() < 100 ? 0.0 : c.GetGreen() / 255.0; });
                break;
        }
        return how;
    }

    void SetClip() {
        byHand_->clip.reset();
        if (choices_.OneIn(3)) return painter_->ClearClip();
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
        const auto inside = [&](int x, int y) { return Holds(place, x, y); };
        RequireTold(result, byHand_->Element(*picture, at, inside, how));
    }

    void Fill() {
        bool valid = true;
        const std::vector<Rectangle> boxes = Boxes();
        const unsigned int rgb = choices_.Word() * 257U & 0xFFFFFF;
        const Color color(rgb | (choices_.Flag() ? 255 : choices_.Byte()) << 24);
        How how = MakeHow(valid);
        const PaintResult result =
            boxes.size() == 1 ? painter_->Fill(boxes[0], color, how) : painter_->Fill(boxes, color, how);
        if (!valid) return RequireRefused(result);
        how.alpha = static_cast<unsigned char>(how.alpha * color.GetAlpha() / 255);
        const Image pixel = Row(PixelFormat::Bgr24, {color.GetBlue(), color.GetGreen(), color.GetRed()});
        const auto inOne = [&](int x, int y) {
            return std::ranges::any_of(boxes, [&](const Rectangle& r) { return Holds(r, x, y); });
        };
        RequireTold(result, byHand_->Element(*pixel, {0, 0}, inOne, how));
    }

    void BeginGroup() {
        if (groups_.size() == 4) return;
        constexpr int far = 1 << 20;
        const Rectangle bounds = choices_.Flag() ? Rectangle{-far, -far, far, far} : Box();
        const GroupKind kind{choices_.Flag(), choices_.Flag(), choices_.OneIn(3), choices_.OneIn(3)};
        groups_.push_back(kind);
        painter_->BeginGroup(bounds, kind);
        byHand_->BeginGroup(bounds, kind);
    }

    /// Ends a group as it was promised or, sometimes, otherwise.
    void EndGroup() {
        if (groups_.empty()) return;
        const GroupKind kind = groups_.back();
        groups_.pop_back();
        bool valid = true;
        const How promised = kind.plain ? How{} : MakeHow(valid, kind.normal);
        const bool broken = (kind.plain || kind.normal) && choices_.OneIn(8);
        How how = promised;
        if (broken) how.mode = BlendMode::Difference;
        const PaintResult result = painter_->EndGroup(how);
        const bool some = byHand_->EndGroup(valid ? promised : How{.alpha = 0});
        if (broken) return Require(!some || result == PaintResult::PlainGroup, "a painter says what it did not heed");
        if (!valid) return RequireRefused(result);
        RequireTold(result, some);
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
    std::vector<GroupKind> groups_;  ///< that are open
};

}  // namespace vantu::test
