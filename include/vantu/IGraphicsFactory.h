#pragma once

#include <vantu/Export.h>
#include <vantu/IQorImage.h>

#include <memory>

namespace vantu {

/// The host's image factory. A host overrides `CreateImage`; the library calls nothing else.
///
/// The library holds a factory only as a raw pointer that may be null.
///
/// REQUIRES: it outlives the call it is given to.
class VANTU_API IGraphicsFactory {
public:
    virtual ~IGraphicsFactory() = default;

    /// Host operations that stand before `CreateImage` in the virtual table; never called by the library.
    /// @{
    virtual void* GetHostContext() { return nullptr; }
    virtual bool SetHostContext(void* context) { return context == nullptr; }
    /// @}

    /// Makes an image of exactly this size, format and row order; its alignment is the factory's choice, but 4 for the
    /// bitmap loader. An image of 1, 4 or 8 bits for that loader needs a palette of 2, 16 or 256 entries, for the
    /// file's to be read into. Called on the thread of the loader or `ImageUtil` call.
    ///
    /// @param width, height in pixels, 0 allowed; they may come from a file and be absurd.
    /// @param format one of the nine.
    /// @param bottomUp whether the first row in memory shall be the visually lowest.
    /// @param memory the caller's opaque pointer, passed on untouched from the loader or `ImageUtil` call.
    /// @return the image, or empty if it cannot be made, which the caller reports as its own failure.
    virtual std::shared_ptr<IQorImage> CreateImage(unsigned int width, unsigned int height,
                                                   IQorImage::PixelFormat format, bool bottomUp, void** memory) = 0;

protected:
    /// For implementations alone.
    /// @{
    IGraphicsFactory() = default;
    IGraphicsFactory(const IGraphicsFactory&) = default;
    IGraphicsFactory& operator=(const IGraphicsFactory&) = default;
    /// @}
};

}  // namespace vantu
