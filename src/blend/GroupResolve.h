#pragma once

#include "blend/GroupState.h"

namespace vantu {

/// Turns the painted ranges of a group's image into the group's result, by the group's flags. Images of premultiplied
/// pixels alone are changed. A pixel in two ranges is resolved twice.
void ResolveGroup(GroupState& group);

}  // namespace vantu
