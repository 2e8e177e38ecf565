#pragma once

#include <vantu/IQorImage.h>

#include <memory>

#include "pixel/Accessor.h"

namespace vantu {

/// An accessor whose format is known at run time only: four operations bound to the accessor that the record owns.
/// Operations that an image does not offer do nothing; `GetValue` and `SetValue` of a 1- or 4-bit image without a
/// palette are null and must not be called.
struct DynamicAccessor {
    std::unique_ptr<AccessorBase> accessor;
    void (*GetColor)(const DynamicAccessor& self, unsigned int x, unsigned int y, Color& out);
    void (*SetColor)(const DynamicAccessor& self, unsigned int x, unsigned int y, const Color& in);
    unsigned int (*GetValue)(const DynamicAccessor& self, unsigned int x, unsigned int y);
    void (*SetValue)(const DynamicAccessor& self, unsigned int x, unsigned int y, unsigned int value);
};

/// A writable accessor. An image with a palette is seen through it, whatever its format. Null for a format that is none
/// and when memory is exhausted.
std::unique_ptr<DynamicAccessor> MakeAccessor(IQorImage& image);

/// The same, read-only: `SetColor` and `SetValue` do nothing.
std::unique_ptr<DynamicAccessor> MakeConstAccessor(const IQorImage& image);

/// A writable accessor of the pixels themselves, taken to be of the given format: a palette is not looked at.
std::unique_ptr<DynamicAccessor> MakeDirectAccessor(IQorImage& image, PixelFormat format);

/// The same, read-only.
std::unique_ptr<DynamicAccessor> MakeConstDirectAccessor(const IQorImage& image, PixelFormat format);

}  // namespace vantu
