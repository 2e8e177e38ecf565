#include "blend/stages/MaskStages.h"
#include "blend/stages/Stages.h"

namespace vantu {

const BlendStages& ActiveStages() {
    return ScalarStages();
}

const MaskStages& ActiveMaskStages() {
    return ScalarMaskStages();
}

}  // namespace vantu
