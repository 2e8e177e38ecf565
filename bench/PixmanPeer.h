#pragma once

#include <functional>

#include "BlendScene.h"

namespace vantu::bench {

/// Whether pixman has what the case does; never, where it was not there to build with.
bool HasPixmanPeer(const BlendCase& blendCase);

/// Paints the whole column of a scene with pixman's operator of the case's mode. For cases that have a peer.
std::function<void()> MakePixmanPainter(const BlendCase& blendCase, const BlendScene& scene);

}  // namespace vantu::bench
