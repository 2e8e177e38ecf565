#pragma once

#include <vantu/Export.h>
#include <vantu/IQorImage.h>

#include <string>

namespace vantu {

/// Writes images as Windows bitmaps, any format, the pixel block as it is.
///
/// The header says the bits per pixel and nothing else of the format; other readers take 16 bits as 5-5-5. Palette
/// alpha is lost. Rows go out at the image's own stride, so an alignment other than 4 gives a file that readers
/// misread unless the rows happen to be whole 4-byte words. No state: any number of threads may save distinct images.
class VANTU_API CDIBSaver {
public:
    /// Creates or empties a file and writes to it.
    /// @param image only read; without memory it gives a file of headers alone.
    /// @param path handed to `QorOpenFile` or `QorOpenFileW`.
    /// @return false if the file cannot be opened; write errors are not reported.
    /// @{
    bool Save(const IQorImage& image, const std::string& path) const;
    bool Save(const IQorImage& image, const std::wstring& path) const;
    /// @}
    /// Writes to an open file, which stays open.
    /// @param image only read; without memory it gives a file of headers alone.
    /// @param fd descriptor of the file.
    /// @return true; write errors are not reported.
    bool Save(const IQorImage& image, int fd) const;
};

}  // namespace vantu
