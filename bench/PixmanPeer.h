#pragma once

#include <functional>

#include "BlendScene.h"
#include "PageScene.h"

namespace vantu::bench {

/// Whether pixman has what the case does; never, where it was not there to build with.
bool HasPixmanPeer(const BlendCase& blendCase);

/// Paints the whole column of a scene with pixman's operator of the case's mode. For cases that have a peer.
std::function<void()> MakePixmanPainter(const BlendCase& blendCase, const BlendScene& scene);

/// Whether pixman was there to build with.
bool HasPixman();

/// Paints all calls with pixman, on a page that stays where it is. There is one mask in a call of pixman.
/// REQUIRES: pixman is there, and no picture is painted through a mask with a constant alpha below 255.
std::function<void()> MakePixmanReplay(const PageScene& scene);

}  // namespace vantu::bench
