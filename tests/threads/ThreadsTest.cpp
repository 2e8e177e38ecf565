#include <gtest/gtest.h>
#include <vantu/QorIo.h>

#include <latch>
#include <thread>

#include "blend/BlendSession.h"
#include "support/VectorTargets.h"

// What threads may do at once. The thread sanitizer sees what goes wrong but seldom (preset tsan); in every build the
// results are compared with those of one thread.

namespace vantu::test {
namespace {

constexpr std::uint32_t kThreads = 8;

/// Calls `work(0)` to `work(7)`, each in a thread, all at the same moment.
template <typename Work>
void AtOnce(Work work) {
    std::latch start(kThreads);
    std::vector<std::jthread> threads;
    for (std::uint32_t i = 0; i < kThreads; ++i) {
        threads.emplace_back([&, i] {
            start.arrive_and_wait();
            work(i);
        });
    }
}

/// A call of a mode that needs tables made at first use.
Call SoftLightCall(const std::shared_ptr<IQorImage>& source) {
    Call call;
    call.source = source;
    call.coverage = Cover({{0, 0, 64, 4}});
    call.alpha = 200;
    call.mode = BlendMode::SoftLight;
    return call;
}

std::shared_ptr<TestImage> RandomImage(std::uint32_t seed, PixelFormat format = PixelFormat::Bgra32Premultiplied) {
    Random random(seed);
    auto image = std::make_shared<TestImage>(Shape{64, 4, format}, random);
    return image;
}

// The first test of this program, so that nothing has been used before.
TEST(Threads, MayRaceForTheFirstUse) {
    std::vector<std::vector<unsigned char>> painted(kThreads);
    const auto paint = [&](std::uint32_t i) {
        const auto image = RandomImage(1);
        Paint(*BlenderOn(image), SoftLightCall(RandomImage(2)));
        painted[i] = image->Bytes();
    };
    AtOnce(paint);
    const std::vector<std::vector<unsigned char>> first = painted;
    for (int i = 0; i < 20; ++i) {
        KeepTargetOfEnvironment();  // makes the library find its instruction set anew
        AtOnce(paint);
        EXPECT_EQ(painted, first);
    }
    EXPECT_EQ(std::ranges::count(first, first[0]), kThreads);
}

TEST(Threads, PaintDistinctImagesAsTheModelDoes) {
    AtOnce([&](std::uint32_t i) {
        for (std::uint32_t seed = 12 * i; seed < 12 * (i + 1); ++seed) {
            EXPECT_NO_THROW(BlendSession(Choices(RandomBytes(seed, 400))).Run()) << "session " << seed;
        }
    });
}

TEST(Threads, MayReadTheSameSourceMaskAndFunction) {
    Random random(3);
    const auto source = RandomImage(4), mask = RandomImage(5, PixelFormat::Index8);
    mask->SetPalette(RandomPalette(100, random));  // indices past its end are read too
    Call call = SoftLightCall(source);
    call.mask = mask;
    call.transfer = std::make_shared<CExponentialPDFTransferFunction>(TransferSource::Luminosity, 0.25, 0.75, 2.0);
    const auto surfaceCall = [&] {
        Call onSurface = call;
        const auto indexed = RandomImage(6, PixelFormat::Index8);
        indexed->SetPalette(RandomPalette(100, random));
        onSurface.source = indexed;
        return onSurface;
    }();

    std::vector<std::vector<unsigned char>> painted(kThreads);
    std::vector<std::vector<unsigned int>> colors(kThreads);
    AtOnce([&](std::uint32_t i) {
        const auto image = RandomImage(7);
        Paint(*BlenderOn(image), call);
        painted[i] = image->Bytes();
        const auto surface = std::make_shared<TestSurface>(64, 4, 0xFF808080);
        Paint(*BlenderOn(nullptr, surface), surfaceCall);
        std::ranges::transform(surface->pixels, std::back_inserter(colors[i]), Argb);
    });
    EXPECT_EQ(std::ranges::count(painted, painted[0]), kThreads);
    EXPECT_EQ(std::ranges::count(colors, colors[0]), kThreads);
}

TEST(Threads, OpenReadAndCloseBytesInMemory) {
    std::vector<unsigned int> sums(kThreads);
    AtOnce([&](std::uint32_t i) {
        for (unsigned int n = 0; n < 2000; ++n) {
            const unsigned char bytes[] = {static_cast<unsigned char>(i), static_cast<unsigned char>(n)};
            unsigned char read[2] = {};
            int fd = -1;
            QorOpenMemory(bytes, 2, &fd);
            QorReadFile(read, 1, fd);
            QorReadFile(read + 1, 9, fd);
            sums[i] += read[0] == bytes[0] && read[1] == bytes[1] ? 1 : 0;
            QorCloseFile(fd);
        }
    });
    EXPECT_EQ(sums, std::vector<unsigned int>(kThreads, 2000));
}

}  // namespace
}  // namespace vantu::test
