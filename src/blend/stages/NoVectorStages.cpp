#include "blend/stages/MixStages.h"
#include "blend/stages/Stages.h"

namespace vantu {

const BlendStages& ActiveStages() {
    return ScalarStages();
}

const MixStages& ActiveMixStages() {
    return ScalarMixStages();
}

}  // namespace vantu
