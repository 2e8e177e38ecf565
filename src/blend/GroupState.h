#pragma once

#include <vantu/IPDFImageBlender.h>

#include <memory>

#include "blend/definition/BlendRequest.h"
#include "blend/definition/GroupAlphas.h"

namespace vantu {

/// One open transparency group.
struct GroupState {
    std::shared_ptr<IQorImage> backdrop;  ///< snapshot of `image` from when the group was opened
    bool startsClear = false;             ///< no byte of the snapshot but 0
    std::shared_ptr<IQorImage> image;     ///< what the group paints on
    std::shared_ptr<void> heldObject;     ///< kept alive, never looked at
    GroupAlphas groupAlpha;               ///< the group's own alpha per pixel
    bool knockout = false;
    bool keepBackdrop = false;
    bool plainResolve = false;
    std::shared_ptr<IPDFImageBlender::Coverage> coverage;  ///< what was painted; empty before the first `Blend`
    bool groupAlphaFits = true;  ///< no entry is above 255, as an opacity outside 0 to 1 may leave one
    RowSpan paintedRows;         ///< in all other rows the group alphas are 0
};

}  // namespace vantu
