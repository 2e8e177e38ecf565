#include <gtest/gtest.h>

#include <optional>

#include "blend/BlendSession.h"
#include "support/VectorTargets.h"

namespace vantu::test {
namespace {

class Painting : public testing::TestWithParam<std::uint32_t> {};

TEST_P(Painting, IsThePixelByPixelResultOnEveryVectorTarget) {
    const std::vector<VectorTarget> targets = VectorTargets();
    for (std::uint32_t i = 0; i < 5000; ++i) {
        const std::uint32_t seed = GetParam() * 100000 + i;
        SCOPED_TRACE(seed);
        std::optional<ForcedTarget> forced;
        if (!targets.empty()) forced.emplace(targets[i % targets.size()]);
        ASSERT_NO_THROW(BlendSession(Choices(RandomBytes(seed, 400))).Run());
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, Painting, testing::Range(1U, 5U));

}  // namespace
}  // namespace vantu::test
