#pragma once

#include <cstddef>

#include "pixel/PixelRows.h"

namespace vantu {

/// How much of what was read of a stencil is painted.
enum class Painted { Nothing, Some, Everything };

/// Reads `width` pixels of each row of a stencil from bit `x` on, the most significant bit of a byte first. Bit 0
/// paints: `select` gets, row after row, 1 for each painted pixel and 0 for each protected one.
Painted ReadStencil(const PixelRows<const unsigned char>& rows, std::size_t x, std::size_t width,
                    unsigned char* select);

}  // namespace vantu
