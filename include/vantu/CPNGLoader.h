#pragma once

#include <vantu/Export.h>
#include <vantu/IGraphicsFactory.h>
#include <vantu/LoadResult.h>

#include <memory>
#include <string>

namespace vantu {

/// Reads PNG files; samples are not converted, but for the order of red and blue.
///
/// The format follows from bit depth times channels: 1 `Index1`, 4 `Index4`, 8 `Index8`, 16 `Rgb555` (the bytes of a
/// 16-bit grey or of an 8-bit grey with alpha, as they come), 24 `Bgr24`, 32 `Bgra32Premultiplied` (although PNG alpha
/// is straight; a 16-bit grey with alpha comes so, too). Other products are refused. Palettes, transparency chunks and
/// gamma are not read.
///
/// Attention: rows are stored bottom row first while the image says that it is not bottom-up, so the picture stands on
/// its head to everything that honours the flag. `ImageUtil::Flip(*image, false, true, nullptr, nullptr)` puts it
/// upright. Before a picture with alpha is painted, multiply its colour bytes by alpha / 255.
///
/// Separate calls on separate files may run on different threads.
class VANTU_API CPNGLoader {
public:
    /// REQUIRES: the factory outlives the loader's calls.
    /// @param factory makes the images; null for `CQorImage`. Not owned.
    explicit CPNGLoader(IGraphicsFactory* factory = nullptr) : factory_(factory) {}

    /// Reads the headers only.
    /// @param path handed to `QorOpenFile` or `QorOpenFileW`.
    /// @param[out] width, height in pixels, as the header says them; they may be absurd.
    /// @param[out] format what `Load` would make.
    /// @return false if the file cannot be opened, or if `Load` would refuse its headers; the arguments are then
    /// untouched.
    /// @{
    [[nodiscard]] bool GetImageSize(const std::string& path, unsigned int& width, unsigned int& height,
                                    IQorImage::PixelFormat& format) const;
    [[nodiscard]] bool GetImageSize(const std::wstring& path, unsigned int& width, unsigned int& height,
                                    IQorImage::PixelFormat& format) const;
    /// @}
    /// The same from an open file at its position; the file stays open, its position afterwards is not defined.
    /// @param fd descriptor of the file; -1 is refused.
    /// @param[out] width, height, format as above.
    /// @return as above.
    [[nodiscard]] bool GetImageSize(int fd, unsigned int& width, unsigned int& height,
                                    IQorImage::PixelFormat& format) const;

    /// Reads a file.
    /// @param path handed to `QorOpenFile` or `QorOpenFileW`.
    /// @param memory handed to the factory as it is; without a factory not looked at.
    /// @return the image, owned by the caller, or empty if the file cannot be opened or is refused. No message.
    /// @throws std::bad_alloc if memory runs out.
    /// @{
    [[nodiscard]] std::shared_ptr<IQorImage> Load(const std::string& path, void** memory) const;
    [[nodiscard]] std::shared_ptr<IQorImage> Load(const std::wstring& path, void** memory) const;
    /// @}
    /// The same, and why there is no image.
    /// @param path, memory as above.
    /// @param[out] result what became of it; as it was if an exception leaves.
    /// @return as above.
    /// @{
    [[nodiscard]] std::shared_ptr<IQorImage> Load(const std::string& path, void** memory, LoadResult& result) const;
    [[nodiscard]] std::shared_ptr<IQorImage> Load(const std::wstring& path, void** memory, LoadResult& result) const;
    /// @}
    /// Reads from an open file at its position, which may lie inside a larger file. The file stays open; its position
    /// afterwards is not defined.
    /// @param fd descriptor of the file; -1 is refused.
    /// @param memory handed to the factory.
    /// @return as above.
    [[nodiscard]] std::shared_ptr<IQorImage> Load(int fd, void** memory) const;
    /// The same, and why there is no image.
    /// @param fd, memory, result as above.
    /// @return as above.
    [[nodiscard]] std::shared_ptr<IQorImage> Load(int fd, void** memory, LoadResult& result) const;

private:
    IGraphicsFactory* factory_;
};

}  // namespace vantu
