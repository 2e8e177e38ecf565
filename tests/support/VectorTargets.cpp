#include "support/VectorTargets.h"

#include <cstdio>
#include <cstdlib>

#ifdef IMAGEOP_TEST_VECTORS
#include "pixel/VectorTargets.h"
// The list of targets follows from the macros of the header above.
#include <hwy/targets.h>
#endif

namespace vantu::test {

#ifdef IMAGEOP_TEST_VECTORS

namespace {

std::int64_t TargetOfEnvironment() {
    const char* const name = std::getenv("IMAGEOP_TEST_TARGET");
    if (name == nullptr) return 0;
    for (const VectorTarget& target : VectorTargets()) {
        if (target.name == name) return target.id;
    }
    std::fprintf(stderr, "IMAGEOP_TEST_TARGET=%s is not to be had here\n", name);
    std::exit(1);
}

}  // namespace

void KeepTargetOfEnvironment() {
    hwy::SetSupportedTargetsForTest(TargetOfEnvironment());
}

std::vector<VectorTarget> VectorTargets() {
    hwy::SetSupportedTargetsForTest(0);
    std::vector<VectorTarget> targets;
    for (const std::int64_t id : hwy::SupportedAndGeneratedTargets()) targets.push_back({id, hwy::TargetName(id)});
    return targets;
}

ForcedTarget::ForcedTarget(const VectorTarget& target) {
    hwy::SetSupportedTargetsForTest(target.id);
}
ForcedTarget::~ForcedTarget() {
    KeepTargetOfEnvironment();
}

#else

void KeepTargetOfEnvironment() {}
std::vector<VectorTarget> VectorTargets() {
    return {};
}
ForcedTarget::ForcedTarget(const VectorTarget&) {}
ForcedTarget::~ForcedTarget() = default;

#endif

}  // namespace vantu::test
