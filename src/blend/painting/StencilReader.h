#pragma once

#include <cstddef>

namespace vantu {

/// How much of a run of stencil pixels is painted.
enum class StencilRun { Nothing, Everything, Some };

/// Reads `count` pixels of a stencil row from bit `x` on, the most significant bit of a byte first. Bit 0 paints:
/// `select` gets 1 for each painted pixel and 0 for each protected one.
StencilRun ReadStencil(const unsigned char* row, std::size_t x, std::size_t count, unsigned char* select);

}  // namespace vantu
