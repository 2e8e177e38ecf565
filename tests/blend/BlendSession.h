#pragma once

#include <optional>

#include "blend/GroupModel.h"
#include "support/Choices.h"

namespace vantu::test {

/// Two equal images: one for the blender, one for the model.
struct Twins {
    std::shared_ptr<TestImage> painted;
    std::shared_ptr<TestImage> model;

    [[nodiscard]] Range<int, 2> Bounds() const {
        return {0, 0, static_cast<int>(painted->GetWidth()), static_cast<int>(painted->GetHeight())};
    }
    void RequireSame() const {
        Require(painted->Bytes() == model->Bytes(), "the blender paints what the scalar steps paint");
        Require(painted->GuardsIntact(), "the blender writes inside the image");
    }
};

/// Paintings with valid arguments that choices spell: images of all formats, row orders and alignments, coverages
/// inside of what is read and written, masks, transfer functions, nested groups, images that share memory, images
/// painted on themselves and groups painted into what is below. The blender paints one set of images, the scalar model
/// an equal one; after each step all bytes are compared.
class BlendSession {
public:
    explicit BlendSession(Choices choices)
        : choices_(choices), arena_(MakeArena()), destination_(MakeTwins(MakeFormat(true))) {
        // A blender is made of hundreds of objects: two serve all of a thread, on an image and a surface that change.
        thread_local const auto page = std::make_shared<TestImage>(Shape{1, 1, PixelFormat::Index8});
        thread_local const auto canvas = std::make_shared<TestSurface>(1, 1);
        thread_local const auto onPage = BlenderOn(page), onCanvas = BlenderOn(nullptr, canvas);
        *page = std::move(*destination_.painted);
        destination_.painted = page;
        blender_ = onPage;
        if (choices_.OneIn(4)) {
            modelSurface_ = std::make_unique<TestSurface>(page->GetWidth(), page->GetHeight());
            Random random(choices_.Word());
            for (Color& color : modelSurface_->pixels) color = Color(static_cast<unsigned int>(random()));
            *canvas = *modelSurface_;
            surface_ = canvas;
            blender_ = onCanvas;
        }
    }

    /// @throws std::logic_error where the blender paints something else than the model.
    void Run() {
        for (int steps = 0; choices_.Any() && steps < 8; ++steps) {
            const unsigned int action = choices_.Byte() % 6;
            if (action == 0 && groups_.size() < 4) {
                Begin();
            } else if (action == 1) {
                End();
            } else {
                Blend();
            }
            RequireSame();
        }
        while (!groups_.empty()) {
            End();
            RequireSame();
        }
        Require(!blender_->EndGroup(), "no group is open after the last one was closed");
    }

private:
    struct Group {
        Twins image;
        GroupModel model;
    };

    PixelFormat MakeFormat(bool any) {
        // One in 32 is of a format that is not painted from.
        any = any || choices_.OneIn(32);
        return static_cast<PixelFormat>(any ? choices_.Between(1, 9) : choices_.Between(5, 8));
    }

    /// Memory in which most images lie and overlap; seldom there is some.
    std::optional<Twins> MakeArena() {
        if (!choices_.OneIn(8)) return std::nullopt;
        Random random(choices_.Word());
        const Shape shape{7168, 1, PixelFormat::Index8};
        const Twins twins{std::make_shared<TestImage>(shape, random), std::make_shared<TestImage>(shape)};
        std::copy_n(twins.painted->GetPixelData(), twins.painted->Size(), twins.model->GetPixelData());
        return twins;
    }

    /// Longer than a span in one direction, of the size of another image, or small.
    std::pair<int, int> MakeSize(int least, const Twins* like) {
        switch (choices_.Byte() % 16) {
            case 0:
            case 1: return {choices_.Between(200, 700), choices_.Between(1, 2)};
            case 2: return {choices_.Between(least, 40), choices_.Between(13, 40)};
            case 3:
            case 4:
            case 5:
            case 6:
            case 7:
                if (like != nullptr) return {like->Bounds().x1, like->Bounds().y1};
                [[fallthrough]];
            default: return {choices_.Between(least, 48), choices_.Between(least, 12)};
        }
    }

    Twins MakeTwins(PixelFormat format, int least = 1, const Twins* like = nullptr) {
        const auto [width, height] = MakeSize(least, like);
        const Shape shape{static_cast<unsigned int>(width), static_cast<unsigned int>(height), format,
                          static_cast<unsigned char>(choices_.Between(0, 8)), choices_.Flag()};
        Random random(choices_.Word());
        Twins twins;
        if (arena_ && !choices_.OneIn(4)) {
            const auto first = static_cast<std::size_t>(choices_.Flag() ? 0 : choices_.Between(0, 40));
            twins = {std::make_shared<TestImage>(shape, arena_->painted, first),
                     std::make_shared<TestImage>(shape, arena_->model, first)};
        } else {
            twins = {std::make_shared<TestImage>(shape, random), std::make_shared<TestImage>(shape)};
            Fill(*twins.painted, random);
            std::copy_n(twins.painted->GetPixelData(), twins.painted->Size(), twins.model->GetPixelData());
        }
        if (choices_.OneIn(3)) {
            const auto size = static_cast<unsigned int>(choices_.Flag() ? 256 : choices_.Between(0, 20));
            const bool grey = choices_.Flag();
            Random same(random);
            twins.painted->SetPalette(grey ? GreyPalette(size) : RandomPalette(size, random));
            twins.model->SetPalette(grey ? GreyPalette(size) : RandomPalette(size, same));
        }
        return twins;
    }

    /// Random bytes, runs of clear and full ones, opaque rows, or the same four bytes again and again.
    void Fill(TestImage& image, Random& random) {
        const unsigned int content = choices_.Byte() % 4;
        if (content == 1) AddRuns(image, random);
        if (content == 3) AddOpaqueRows(image, random);
        if (content != 2) return;
        const std::array<unsigned int, 4> bytes{choices_.Byte(), choices_.Byte(), choices_.Byte(), choices_.Byte()};
        for (std::size_t i = 0; i < image.Size(); ++i)
            image.GetPixelData()[i] = static_cast<unsigned char>(bytes[i % 4]);
    }

    double MakeNumber() {
        static constexpr std::array kNumbers{0.0, 1.0, 0.5, 0.25, -1.0, 2.0, 1.5, -0.25, 1e-9, 1e9, -1e300, 0.999};
        return kNumbers.at(choices_.Byte() % kNumbers.size());
    }

    /// A function for the blender and one for the model.
    using TwinTransfers = std::array<std::shared_ptr<IPDFTransferFunction>, 2>;
    TwinTransfers MakeTransfers() {
        const auto source = choices_.Flag() ? TransferSource::Alpha : TransferSource::Luminosity;
        const auto both = [](std::shared_ptr<IPDFTransferFunction> function) {
            return TwinTransfers{function, function};
        };
        switch (choices_.Between(0, 7)) {
            case 0: return {};
            case 1: {
                const double c0 = MakeNumber(), c1 = MakeNumber();
                return both(std::make_shared<CExponentialPDFTransferFunction>(source, c0, c1, MakeNumber()));
            }
            case 2:
                return both(
                    std::make_shared<CPostscriptPDFTransferFunction>(source, choices_.Flag() ? "{ 1 exch sub }" : ""));
            case 3: {
                // Depends on the order in which pixels are asked for, and may leave 0 to 1.
                const auto opacity = [scale = MakeNumber(), shift = MakeNumber(),
                                      asked = choices_.Word()](const Color& color) mutable {
                    asked += 37 + color.GetAlpha() + color.GetGreen();
                    return asked % 300 / 256.0 * scale + shift;
                };
                return {std::make_shared<HostFunction>(opacity), std::make_shared<HostFunction>(opacity)};
            }
            default: return both(std::make_shared<CIdentityPDFTransferFunction>(source));
        }
    }

    /// The image that is painted on: the top group's, or the destination, whose size is also the surface's.
    [[nodiscard]] const Twins& Target() const { return groups_.empty() ? destination_ : groups_.back()->image; }

    Twins MakeSource() {
        switch (choices_.Between(0, 5)) {
            case 0: return Target();
            case 1: return closed_ ? *closed_ : destination_;
            default: return MakeTwins(MakeFormat(surface_ && groups_.empty()), 1, &Target());
        }
    }

    void Begin() {
        Twins image = choices_.OneIn(4) ? Target() : MakeTwins(MakeFormat(choices_.OneIn(4)));
        const bool knockout = choices_.Flag(), keepBackdrop = choices_.Flag(), plainResolve = choices_.Flag();
        Require(blender_->BeginGroup(image.painted, nullptr, knockout, keepBackdrop, plainResolve),
                "a group is opened");
        groups_.push_back(std::make_unique<Group>(Group{image, {*image.model, knockout, keepBackdrop, plainResolve}}));
    }

    void End() {
        Require(blender_->EndGroup() == !groups_.empty(), "a group that is open is closed");
        if (groups_.empty()) return;
        groups_.back()->model.End();
        closed_ = groups_.back()->image;
        groups_.pop_back();
        closed_->RequireSame();
    }

    void Blend() {
        const Twins source = MakeSource();
        Call call;
        if (choices_.Flag()) call.offset = {choices_.Between(-20, 20), choices_.Between(-6, 6)};
        call.alpha = static_cast<unsigned char>(choices_.Flag() ? 255 : choices_.Byte());
        call.mode = static_cast<BlendMode>(choices_.Between(0, kBlendModeCount));
        std::optional<Twins> mask;
        TwinTransfers transfers;
        if (choices_.Flag()) {
            const bool self = choices_.OneIn(8);
            const auto format = static_cast<PixelFormat>(choices_.Flag() ? 1 : choices_.Between(1, 9));
            mask = self ? Target() : MakeTwins(format, 0, &Target());
            if (choices_.Flag()) call.maskOffset = {choices_.Between(-30, 40), choices_.Between(-8, 10)};
            transfers = MakeTransfers();
            if (!self && choices_.OneIn(32)) {
                mask->painted->HideMemory();
                mask->model->HideMemory();
            }
        }
        call.coverage = MakeCoverage(source, call, mask);

        call.source = source.painted;
        if (mask) call.mask = mask->painted;
        call.transfer = transfers[0];
        std::shared_ptr<Coverage> blended;
        const bool done = Paint(*blender_, call, blended);
        const bool onSurface = surface_ && groups_.empty();
        const auto format = static_cast<unsigned int>(source.painted->GetPixelFormat());
        const bool valid =
            static_cast<unsigned int>(call.mode) < kBlendModeCount && (onSurface || (format >= 5 && format <= 8));
        Require(done == (valid || call.alpha == 0), "a call is refused if and only if its format or mode is");
        if (!valid || call.alpha == 0) return;
        const auto ends = [](const Range<int, 2>& r) { return std::array{r.x0, r.y0, r.x1, r.y1}; };
        Require(blended != call.coverage &&
                    std::ranges::equal(blended->GetRanges(), call.coverage->GetRanges(), {}, ends, ends),
                "what was painted is told in a coverage of its own");

        call.source = source.model;
        if (mask) call.mask = mask->model;
        call.transfer = transfers[1];
        if (!groups_.empty()) {
            groups_.back()->model.Paint(call);
        } else if (onSurface) {
            PaintModel(call, *modelSurface_);
        } else {
            PaintModel(call, *destination_.model);
        }
    }

    /// Ranges for which all that is read and written lies inside the images, whether they meet the mask or not.
    std::shared_ptr<Coverage> MakeCoverage(const Twins& source, const Call& call, const std::optional<Twins>& mask) {
        const int dx = call.offset.x, dy = call.offset.y;
        using Rectangle = Range<int, 2>;
        const auto cut = [](const Rectangle& a, const Rectangle& b) {
            return Rectangle{std::max(a.x0, b.x0), std::max(a.y0, b.y0), std::min(a.x1, b.x1), std::min(a.y1, b.y1)};
        };
        const auto moved = [&](const Rectangle& r) { return Rectangle{r.x0 - dx, r.y0 - dy, r.x1 - dx, r.y1 - dy}; };
        Rectangle inside = cut(Target().Bounds(), moved(source.Bounds()));
        if (mask) inside = cut(inside, cut(source.Bounds(), moved(Target().Bounds())));
        auto coverage = IPDFImageBlender::CreateCoverage();
        if (inside.x0 >= inside.x1 || inside.y0 >= inside.y1) return coverage;
        for (unsigned int count = choices_.Byte() % 4; count > 0; --count) {
            if (choices_.Flag()) {
                coverage->AddRange(inside);
                continue;
            }
            const int x0 = choices_.Between(inside.x0, inside.x1), y0 = choices_.Between(inside.y0, inside.y1);
            coverage->AddRange({x0, y0, choices_.Between(x0, inside.x1), choices_.Between(y0, inside.y1)});
        }
        return coverage;
    }

    void RequireSame() const {
        if (arena_) arena_->RequireSame();
        destination_.RequireSame();
        for (const auto& group : groups_) group->image.RequireSame();
        if (surface_) {
            Require(std::ranges::equal(surface_->pixels, modelSurface_->pixels, {}, Argb, Argb),
                    "the blender paints on a surface what the scalar steps paint");
        }
    }

    Choices choices_;
    std::optional<Twins> arena_;
    Twins destination_;
    std::shared_ptr<TestSurface> surface_;
    std::unique_ptr<TestSurface> modelSurface_;
    std::shared_ptr<IPDFImageBlender> blender_;
    std::vector<std::unique_ptr<Group>> groups_;
    std::optional<Twins> closed_;  ///< the image of the last group that was closed
};

}  // namespace vantu::test
