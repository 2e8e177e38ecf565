#include "blend/kernels/Stages.h"

namespace vantu {

const CompositeStages& ActiveStages() {
    return ScalarStages();
}

}  // namespace vantu
