#pragma once

#include <vantu/CQorImage.h>
#include <vantu/IGraphicsFactory.h>

#include <memory>

namespace vantu {

/// The one way to a new image: from the factory where there is one, which chooses the alignment by itself and gets
/// `memory` untouched, otherwise a `CQorImage` of the given alignment.
/// @return empty if the factory makes none. @throws std::bad_alloc if the pixel block cannot be had.
inline std::shared_ptr<IQorImage> MakeImage(unsigned int width, unsigned int height, PixelFormat format,
                                            unsigned char alignment, bool bottomUp, IGraphicsFactory* factory,
                                            void** memory) {
    if (factory != nullptr) return factory->CreateImage(width, height, format, bottomUp, memory);
    return std::make_shared<CQorImage>(width, height, format, alignment, bottomUp);
}

}  // namespace vantu
