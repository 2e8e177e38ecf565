#pragma once

#include <array>
#include <cstdint>

// Orders of vector lanes by sets of 8 bits. For vectors of 4 lanes the first 16 rows serve.

namespace vantu {

using LaneOrders = std::array<std::array<std::uint8_t, 8>, 256>;

/// The lanes whose bits are set, in order.
inline constexpr LaneOrders kPackLanes = [] {
    LaneOrders rows{};
    for (unsigned int bits = 0; bits < rows.size(); ++bits) {
        unsigned int packed = 0;
        for (std::uint8_t lane = 0; lane < 8; ++lane) {
            if ((bits >> lane & 1U) != 0) rows[bits][packed++] = lane;
        }
    }
    return rows;
}();

/// Back again: where a lane whose bit is set was packed to.
inline constexpr LaneOrders kUnpackLanes = [] {
    LaneOrders rows{};
    for (unsigned int bits = 0; bits < rows.size(); ++bits) {
        std::uint8_t packed = 0;
        for (unsigned int lane = 0; lane < 8; ++lane) {
            rows[bits][lane] = packed;
            if ((bits >> lane & 1U) != 0) ++packed;
        }
    }
    return rows;
}();

}  // namespace vantu
