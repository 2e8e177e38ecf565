// A library built with IMAGEOP_CHECKED refuses what leaves an image.

#include <gtest/gtest.h>

#include "blend/Painting.h"

namespace vantu::test {
namespace {

using enum IQorImage::PixelFormat;

/// What a call says on the standard error stream; nothing if it is painted.
std::string Complaint(IPDFImageBlender& blender, const Call& call) {
    testing::internal::CaptureStderr();
    std::shared_ptr<Coverage> blended;
    const bool painted = Paint(blender, call, blended);
    std::string text = testing::internal::GetCapturedStderr();
    EXPECT_EQ(painted, text.empty());
    EXPECT_EQ(painted, blended && !blended->GetRanges().empty());
    return text;
}

constexpr const char* kRefused = "imageop: Blend is refused: ";

class CheckedRanges : public testing::TestWithParam<bool> {
protected:
    CheckedRanges() {
        if (GetParam()) blender_->BeginGroup(target_, nullptr, false, true, false);
        before_ = target_->Bytes();
    }
    std::string Complain(const Range<int, 2>& range, const Point<int, 2>& offset) {
        Call moved = call_;
        moved.coverage = Cover({{0, 0, 1, 1}, range});
        moved.offset = offset;
        return Complaint(*blender_, moved);
    }

    const std::shared_ptr<TestImage> target_ = std::make_shared<TestImage>(Shape{10, 6, Bgra32Premultiplied});
    const std::shared_ptr<IPDFImageBlender> blender_ = BlenderOn(target_);
    Call call_{.source = std::make_shared<TestImage>(Shape{8, 9, Bgr24})};
    std::vector<unsigned char> before_;
};

TEST_P(CheckedRanges, NameTheRectangleThatLeaves) {
    EXPECT_EQ(Complain({3, 1, 11, 2}, {0, 0}),
              std::string(kRefused) + "x 3 to 11, y 1 to 2 leaves the image that it paints on of 10 x 6 pixels\n");
    EXPECT_EQ(Complain({2, 1, 9, 2}, {0, 0}),
              std::string(kRefused) + "x 2 to 9, y 1 to 2 leaves the source of 8 x 9 pixels\n");
    for (const Range<int, 2>& range : {Range<int, 2>{-1, 2, 2, 3}, {2, -1, 3, 2}, {2, 2, 3, 7}, {9, 2, 8, 3}})
        EXPECT_NE(Complain(range, {0, 0}), "");
    EXPECT_EQ(target_->Bytes(), before_) << "nothing of a refused call is painted";
    EXPECT_EQ(Complain({2, 2, 8, 6}, {0, 3}), "");
    EXPECT_NE(Complain({2, 2, 10, 6}, {-2, -2}).find("x -2 to -1, y -2 to -1"), std::string::npos) << "its first range";
}

TEST_P(CheckedRanges, LookWhereAMaskedRangePaints) {
    call_.mask = std::make_shared<TestImage>(Shape{4, 4, Index1});
    EXPECT_EQ(Complain({2, 2, 8, 6}, {2, 0}), "") << "read as it stands, painted two to the right";
    EXPECT_NE(Complain({2, 2, 8, 6}, {3, 0}), "");
    EXPECT_NE(Complain({2, 2, 9, 6}, {0, 0}), "");
    call_.mask = std::make_shared<TestImage>(Shape{4, 4, Bgr24});
    EXPECT_EQ(Complain({2, 2, 4, 4}, {90, 0}), "") << "a soft mask without a function lets nothing through";
}

INSTANTIATE_TEST_SUITE_P(InAGroupOrNot, CheckedRanges, testing::Bool());

TEST(CheckedRangesOnASurface, LookAtTheSourceAlone) {
    const auto surface = std::make_shared<TestSurface>(10, 6);
    const auto blender = BlenderOn(nullptr, surface);
    Call call{.source = std::make_shared<TestImage>(Shape{8, 9, Bgr24}), .coverage = Cover({{2, 2, 10, 6}})};
    EXPECT_NE(Complaint(*blender, call), "");
    EXPECT_TRUE(surface->log.empty());
    call.offset = {-2, 0};
    EXPECT_EQ(Complaint(*blender, call), "");
}

}  // namespace
}  // namespace vantu::test
