#pragma once

#include "blend/definition/BlendRequest.h"

namespace vantu {

/// Whether a request may be painted. With the option IMAGEOP_CHECKED only if all that it paints and reads lies inside
/// its images; the first rectangle that does not is named on the standard error stream. Otherwise that is the caller's
/// affair, and nothing is looked at.
/// @param target null for a surface, whose bounds the blender does not know.
#ifdef IMAGEOP_CHECKED
bool MayPaint(const BlendRequestBase& request, const IQorImage* target, const IQorImage& source);
#else
constexpr bool MayPaint(const BlendRequestBase& /*request*/, const IQorImage* /*target*/, const IQorImage& /*source*/) {
    return true;
}
#endif

}  // namespace vantu
