#pragma once

#include <csetjmp>

namespace vantu {

/// Runs `step`, in which a C library may report a fatal error by a long jump to `target`.
///
/// The jump destroys nothing on its way, so `step` and what it calls hold no object with a destructor. Neither do they
/// allocate by `new` or throw. @return false if the jump was taken.
template <typename Step>
bool CatchJump(std::jmp_buf& target, const Step& step) {
    if (setjmp(target) != 0) return false;
    step();
    return true;
}

}  // namespace vantu
