#include <gtest/gtest.h>

#include "support/VectorTargets.h"

namespace vantu::test {
namespace {

class KeepTarget : public testing::Environment {
    void SetUp() override { KeepTargetOfEnvironment(); }
};

[[maybe_unused]] testing::Environment* const keepTarget = testing::AddGlobalTestEnvironment(new KeepTarget);

}  // namespace
}  // namespace vantu::test
