#include "VectorTarget.h"

namespace vantu::bench {

bool ForceVectorTarget(const std::string& name) {
    return name == VectorTargetName();
}

std::string VectorTargetName() {
    return "none";
}

}  // namespace vantu::bench
