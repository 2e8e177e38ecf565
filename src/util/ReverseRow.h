#pragma once

#include <cstddef>
#include <cstdint>

#include "util/TurnSteps.h"

namespace vantu {

/// Target pixel x gets source pixel `last` - x, for x from 0 to `count` - 1; `last` is `count` - 1 or, of pixels of
/// less than a byte, `count`. The other bits of the last target byte are kept.
/// @param steps those for pixels of `bits` bits.
/// @param available bytes that can be read from `source` on; what lies beyond counts as 0.
inline void ReverseRow(const TurnSteps& steps, unsigned int bits, const unsigned char* source, std::uint64_t available,
                       std::size_t last, unsigned char* target, std::size_t count) {
    const std::size_t whole = count * bits / 8;  // bytes of the target
    if (bits >= 8) return steps.reverse(source + whole, 0, target, whole);

    // Target byte i gets the 8 source bits that end 8 i bits before `end`. Those of the first may end behind the
    // memory, those of the last, if it is not full, may begin before the row.
    const std::uint64_t end = std::uint64_t{last + 1} * bits;
    const auto byteAt = [=](std::int64_t i) -> unsigned char {
        return static_cast<std::uint64_t>(i) < available ? source[i] : static_cast<unsigned char>(0);
    };
    const auto reverseByte = [&](std::size_t i, unsigned int kept) {
        const auto start = static_cast<std::int64_t>(end - 8 * (std::uint64_t{i} + 1));
        const unsigned char window[] = {byteAt(start >> 3), byteAt((start >> 3) + 1)};
        unsigned char fields;
        steps.reverse(&window[1], end & 7, &fields, 1);
        target[i] = static_cast<unsigned char>((target[i] & kept) | (fields & ~kept));
    };
    const std::size_t first = whole > 0 && (end & 7) != 0 && end >> 3 >= available ? 1 : 0;
    if (first > 0) reverseByte(0, 0);
    if (whole > first) steps.reverse(source + (end >> 3) - first, end & 7, target + first, whole - first);
    const std::size_t rest = count * bits % 8;
    if (rest > 0) reverseByte(whole, 0xFFU >> rest);
}

}  // namespace vantu
