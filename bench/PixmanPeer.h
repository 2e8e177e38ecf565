#pragma once

#include <functional>

#include "BlendScene.h"
#include "PageScene.h"

namespace vantu::bench {

/// Whether pixman has what the case does; never, where it was not there to build with.
bool HasPixmanPeer(const BlendCase& blendCase);

/// Paints the whole column of a scene with pixman's operator of the case's mode. For cases that have a peer.
std::function<void()> MakePixmanPainter(const BlendCase& blendCase, const BlendScene& scene);

/// Whether pixman has what a call does.
bool HasPixmanPeer(const PageCall& call);

/// Paints all calls with pixman. For calls that have a peer, on a page that stays where it is.
std::function<void()> MakePixmanReplay(const PageScene& scene);

}  // namespace vantu::bench
