#include "blend/stages/Stages.h"

namespace vantu {

const BlendStages& ActiveStages() {
    return ScalarStages();
}

}  // namespace vantu
