#include "util/TurnLoops.h"

namespace vantu {

TurnSteps ActiveTurnSteps(unsigned int bits) {
    return TurnStepsOf<ScalarTurn>(bits);
}

}  // namespace vantu
