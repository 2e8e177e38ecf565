#include "PixmanPeer.h"

namespace vantu::bench {

bool HasPixmanPeer(const BlendCase& /*blendCase*/) {
    return false;
}

std::function<void()> MakePixmanPainter(const BlendCase& /*blendCase*/, const BlendScene& /*scene*/) {
    return {};
}

bool HasPixman() {
    return false;
}

std::function<void()> MakePixmanReplay(const PageScene& /*scene*/) {
    return {};
}

}  // namespace vantu::bench
