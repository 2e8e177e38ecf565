#pragma once

#include <vantu/Export.h>

namespace vantu {

/// What became of a load.
enum class LoadResult {
    Loaded,       ///< there is an image
    NoFile,       ///< the path cannot be opened; a descriptor that cannot be read is like an empty file
    NotThisKind,  ///< the file does not begin as files of the loader's kind do
    Damaged,      ///< it begins so, but headers or PNG rows are cut off, or the decoder finds them broken
    NotRead,      ///< of a kind that the loader does not read, whole as it may be
    NoImage,      ///< the factory made none, or one that the rows do not fit into
    NoMemory,     ///< the decoder ran out of memory; a block that cannot be had throws instead
};

/// One line of English about a result, without a full stop. Static, never null.
[[nodiscard]] VANTU_API const char* TextOf(LoadResult result);

}  // namespace vantu
