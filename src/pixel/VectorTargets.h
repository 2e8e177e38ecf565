#pragma once

// The instruction sets that vector code is compiled for; to be included before the vector library. What has vectors of
// no fixed size, or gains nothing over the set before, is left out. All files with vector code agree, so that a test
// can force one set for the whole library.
#define HWY_DISABLED_TARGETS (HWY_SSSE3 | HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128)
