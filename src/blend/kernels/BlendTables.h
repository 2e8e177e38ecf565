#pragma once

#include <array>
#include <cstdint>

#include "blend/kernels/WordTables.h"

namespace vantu {

/// SoftLight for vector code, made from the function that defines it.
struct SoftLightTable {
    /// B(cb, cs) at 256*cb + cs, and three bytes more, so that four can be read at each entry.
    std::array<unsigned char, 65536 + 3> bytes;

    // The same in slopes. With w = |2*cs - 255|: B = cb + w*above[cb] / 65536 from cs = 128 on, and below that
    // B = cb - 1 - w*below[cb] / 65536, or cb where below[cb] is 0.
    alignas(64) WordTable above;
    alignas(64) WordTable below;

    /// Backdrops for which the double that defines the mode sometimes rounds down where the quotient is whole, so that
    /// no slope fits all sources. At most one lies in each 32.
    static constexpr std::array<unsigned int, 4> kUneven = {51, 85, 153, 170};
    /// Where one of them comes out one lower than its slope says: bit (w/2) % 16 of word 8*(cb/32) + w/32.
    alignas(64) std::array<std::uint16_t, 64> lower;
};

/// The table, made at first use.
const SoftLightTable& GetSoftLightTable();

}  // namespace vantu
