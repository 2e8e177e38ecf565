#pragma once

#include <vantu/Export.h>
#include <vantu/IQorImage.h>

#include <string>

namespace vantu {

/// Writes images as PNG files, upright, with the colours that the image shows.
///
/// | image | file |
/// |---|---|
/// | `Index1`, `Index4`, `Index8` with a palette | indices of 1, 4, 8 bits and the palette, its alpha if it has any |
/// | `Index1`, `Index4`, `Index8` without a palette | grey of 1, 4, 8 bits |
/// | `Bgr24` | 8-bit colours |
/// | `Bgra32` | 8-bit colours with alpha |
/// | `Bgra32Premultiplied`, `Bgra32Inverted` | the same, each colour as floor(255 * c / alpha), cut to 8 bits |
///
/// PNG has no 16-bit pixels of this library's kind and no picture without pixels: `Rgb565`, `Rgb555` and an image of no
/// width, no height or no memory are refused. Entries that a palette is short of are opaque black. A file that is read
/// by `CPNGLoader` stands on its head and has no palette; that is the loader's way. No state: any number of threads may
/// save distinct images.
class VANTU_API CPNGSaver {
public:
    /// Creates or empties a file and writes to it.
    /// @param image only read.
    /// @param path handed to `QorOpenFile` or `QorOpenFileW`, unless the image is refused.
    /// @return false if the image is refused, if the file cannot be opened or if not all of it can be written; then
    ///         the file holds what was written until then. No message.
    /// @throws std::bad_alloc if memory runs out.
    /// @{
    bool Save(const IQorImage& image, const std::string& path) const;
    bool Save(const IQorImage& image, const std::wstring& path) const;
    /// @}
    /// Writes to an open file, which stays open.
    /// @param image only read.
    /// @param fd descriptor of the file.
    /// @return as above.
    /// @throws std::bad_alloc as above.
    bool Save(const IQorImage& image, int fd) const;
};

}  // namespace vantu
