#pragma once

#include <algorithm>
#include <memory>

#include "blend/Painting.h"

namespace vantu::test {

/// Resolves a group pixel in place: p of the image, b of the snapshot, group alpha a.
inline void ResolvePixel(unsigned char* p, const unsigned char* b, std::uint32_t a, bool inverted, bool keep,
                         bool plain) {
    const auto alpha = [=](unsigned int byte) { return inverted ? 255 - byte : byte; };
    const auto store = [](unsigned char& byte, std::uint32_t v) { byte = static_cast<unsigned char>(v); };
    const std::uint32_t pa = alpha(p[3]), ba = alpha(b[3]), a8 = a % 256;
    for (int c = 0; c < 3; ++c) {
        if (plain && keep) {
            store(p[c], ((255 - a8) * b[c] + a8 * p[c]) / 255);
        } else if (plain) {
            if (pa == 0) return;
            store(p[c], p[c] * a / pa);
        } else if (a == 0) {
            p[c] = 0;
        } else if (ba != 0) {
            if (pa == 0) return;
            const std::uint32_t n = p[c] * 255U / pa, o = b[c] * 255U / ba;
            const std::uint32_t t = (n - o) * (ba - a * ba / 255) / a;
            store(p[c], (n + t) * a / 255);
        }
    }
    store(p[3], plain && keep ? a8 : alpha(a));
}

/// An open group of the model: paints on `image` from construction to `End`.
class GroupModel {
public:
    GroupModel(TestImage& image, bool knockout, bool keepBackdrop, bool plainResolve)
        : image_(image),
          snapshot_(new TestImage(image.GetShape())),
          view_(MakeConstDirectAccessor(*snapshot_, image.GetPixelFormat())),
          group_{*view_, knockout, image.GetWidth(),
                 std::vector<std::uint32_t>(std::size_t{image.GetWidth()} * image.GetHeight())},
          keep_(keepBackdrop),
          plain_(plainResolve) {
        std::copy_n(image.GetPixelData(), snapshot_->Bytes().size(), snapshot_->GetPixelData());
    }

    void Paint(const Call& call) {
        PaintModel(call, image_, &group_);
        covered_->AddCoverage(*call.coverage);
    }

    void End() {
        const PixelFormat format = image_.GetPixelFormat();
        const bool inverted = format == PixelFormat::Bgra32Inverted;
        if ((format != PixelFormat::Bgra32Premultiplied && !inverted) || (keep_ && !plain_)) return;
        const auto rows = ViewOf<Accessor<PixelFormat::Bgra32>>(image_);
        const auto before = ViewOf<Accessor<PixelFormat::Bgra32>>(*snapshot_);
        for (const auto& [x0, y0, x1, y1] : covered_->GetRanges()) {
            for (auto y = static_cast<unsigned int>(y0); y < static_cast<unsigned int>(y1); ++y) {
                for (auto x = static_cast<unsigned int>(x0); x < static_cast<unsigned int>(x1); ++x) {
                    ResolvePixel(rows.Address(x, y), before.Address(x, y), group_.alpha[image_.GetWidth() * y + x],
                                 inverted, keep_, plain_);
                }
            }
        }
    }

private:
    TestImage& image_;
    std::unique_ptr<TestImage> snapshot_;
    std::unique_ptr<DynamicAccessor> view_;
    ModelGroup group_;
    bool keep_;
    bool plain_;
    std::shared_ptr<Coverage> covered_ = IPDFImageBlender::CreateCoverage();
};

}  // namespace vantu::test
