#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace vantu::test {

/// An instruction set that vector code can be made to run on.
struct VectorTarget {
    std::int64_t id;
    std::string name;
};

inline std::ostream& operator<<(std::ostream& out, const VectorTarget& target) {
    return out << target.name;
}

/// Keeps the library on the instruction set that the environment variable IMAGEOP_TEST_TARGET names, if it names one,
/// for example AVX2.
void KeepTargetOfEnvironment();

/// Those that this build has and this machine runs, the slowest last; none in a build without vector code.
std::vector<VectorTarget> VectorTargets();

/// Makes the library use one of them until the scope ends.
class ForcedTarget {
public:
    explicit ForcedTarget(const VectorTarget& target);
    ~ForcedTarget();
    ForcedTarget(const ForcedTarget&) = delete;
    ForcedTarget& operator=(const ForcedTarget&) = delete;
};

}  // namespace vantu::test
