#pragma once

// The instruction sets that vector code is compiled for, and what it may ask of them; to be included before the vector
// library. This is a list of what is let in, so that a library that knows more sets than this code still compiles: left
// out is what has vectors of no fixed size or gains nothing over the set before. All files with vector code agree, so
// that a test can force one set for the whole library.

#define HWY_WANT_AVX3_DL  // AVX-512 with byte permutations, which the library compiles only if it is asked to
#define HWY_DISABLED_TARGETS \
    (~(HWY_SCALAR | HWY_EMU128 | HWY_SSE4 | HWY_AVX2 | HWY_AVX3 | HWY_AVX3_DL | IMAGEOP_NEON_TARGET))
#include <hwy/detect_targets.h>

/// Newer libraries have sets with and without encryption, which is of no use here, older ones a single set.
#ifdef HWY_NEON_WITHOUT_AES
#define IMAGEOP_NEON_TARGET HWY_NEON_WITHOUT_AES
#else
#define IMAGEOP_NEON_TARGET HWY_NEON
#endif

/// Whether the set being compiled has vectors; otherwise the scalar code runs.
#define IMAGEOP_HAS_VECTORS (HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128)

/// Whether it looks words up in tables of 64 and packs and spreads lanes by a mask: vectors of 64 bytes.
#define IMAGEOP_HAS_WORD_TABLES (HWY_MAX_BYTES == 64)

/// Whether it looks bytes up in tables of 64.
#define IMAGEOP_HAS_BYTE_TABLES (HWY_TARGET == HWY_AVX3_DL)

/// Whether it sums products of neighbouring bytes at once.
#define IMAGEOP_HAS_PAIR_SUMS HWY_ARCH_X86
