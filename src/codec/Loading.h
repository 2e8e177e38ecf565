#pragma once

#include <vantu/IQorImage.h>
#include <vantu/LoadResult.h>

#include <memory>

#include "codec/WithFile.h"

namespace vantu {

/// The empty result of a load, and why.
inline std::shared_ptr<IQorImage> Refuse(LoadResult& result, LoadResult why) {
    result = why;
    return nullptr;
}

/// `load(fd)` of the file at `path`, which sets `result` itself unless there is no such file.
template <typename Path, typename Load>
std::shared_ptr<IQorImage> LoadFile(const Path& path, LoadResult& result, Load load) {
    const OpenFile file(path, QOR_OPEN_READ);
    return file ? load(file.Descriptor()) : Refuse(result, LoadResult::NoFile);
}

}  // namespace vantu
