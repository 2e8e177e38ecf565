#include "VectorTarget.h"

#include "pixel/VectorTargets.h"

#include <hwy/highway.h>

#include <cstdint>

namespace vantu::bench {
namespace {

/// The targets to choose from; a lower bit is a better one.
std::int64_t Targets() {
    return hwy::SupportedTargets() & HWY_TARGETS;
}

}  // namespace

bool ForceVectorTarget(const std::string& name) {
    for (std::int64_t rest = Targets(); rest != 0; rest &= rest - 1) {
        const std::int64_t target = rest & -rest;
        if (name != hwy::TargetName(target)) continue;
        hwy::SetSupportedTargetsForTest(target);
        return true;
    }
    return false;
}

std::string VectorTargetName() {
    return hwy::TargetName(Targets() & -Targets());
}

}  // namespace vantu::bench
