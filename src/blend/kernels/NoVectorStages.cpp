#include "blend/kernels/Stages.h"

namespace vantu {

const BlendStages& ActiveStages() {
    return ScalarStages();
}

}  // namespace vantu
