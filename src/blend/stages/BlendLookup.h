#pragma once

#include <vantu/BlendMode.h>

#include <array>
#include <cstdint>

#include "blend/stages/Quotients.h"

// Blend functions to be looked up by vector code, made at first use from those that define the modes.

namespace vantu {

/// B(cb, cs) of a mode at 256*cb + cs.
using PairTable = std::array<unsigned char, 65536>;

/// The table of a mode that costs more to compute than to look up: ColorBurn or SoftLight.
template <BlendMode Mode>
const PairTable& GetPairTable();

/// SoftLight in slopes. With w = |2*cs - 255|: B = cb + w*above[cb] / 65536 from cs = 128 on, and below that
/// B = cb - 1 - w*below[cb] / 65536, or cb where below[cb] is 0.
struct SoftLightSlopes {
    SplitTable above;
    SplitTable below;

    /// Backdrops for which the double that defines the mode sometimes rounds down where the quotient is whole, so that
    /// no slope fits all sources. At most one lies in each 32.
    static constexpr std::array<unsigned int, 4> kUneven = {51, 85, 153, 170};
    /// Where one of them comes out one lower than its slope says: bit (w/2) % 16 of word 8*(cb/32) + w/32.
    alignas(64) std::array<std::uint16_t, 64> lower;
};

const SoftLightSlopes& GetSoftLightSlopes();

}  // namespace vantu
