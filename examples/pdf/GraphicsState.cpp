#include "GraphicsState.h"

namespace pdf {

GraphicsState InitialState(const Matrix& toDevice, const Pixels& visible) {
    GraphicsState state;
    state.toDevice = toDevice;
    state.clip.box = visible;
    state.fill.space = ColorSpace::Device(1);
    state.fill.components = state.fill.space->Initial();
    state.stroke = state.fill;
    return state;
}

}  // namespace pdf
