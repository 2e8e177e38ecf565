#pragma once

#include "blend/CPDFImageBlender.h"

namespace vantu {

/// One new kernel for each destination format 1 to 9, source format 5 to 8 and mode: 432 entries.
template <typename Traits>
CPDFImageBlender::PixelBlends<Traits> MakePixelBlends();

/// One new kernel for each mode.
template <typename Traits>
CPDFImageBlender::RasterizerBlends<Traits> MakeRasterizerBlends();

}  // namespace vantu
