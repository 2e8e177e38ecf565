#pragma once

#include <vantu/Export.h>
#include <vantu/IGraphicsFactory.h>
#include <vantu/LoadResult.h>

#include <memory>
#include <string>

namespace vantu {

/// Reads uncompressed Windows bitmaps of 1, 4, 8, 16, 24 and 32 bits.
///
/// Pixels are never converted: 16 bits become `Rgb555`, 24 `Bgr24`, 32 `Bgra32Premultiplied`. RLE, bit fields and
/// OS/2 core headers are refused. Without a factory the image keeps the file's row order and has alignment 4; with one
/// it is always bottom-up. Rows are read in one run at the file's stride, so a factory's image needs alignment 4; what
/// a shorter block cannot take is left out. The palette of a file of 1, 4 or 8 bits is read into the one that the image
/// has; without one it is lost. A file that ends early leaves the rest of the block as the image was born.
/// Separate calls on separate files may run on different threads.
class VANTU_API CDIBLoader {
public:
    /// REQUIRES: the factory outlives the loader's calls.
    /// @param factory makes the images; null for `CQorImage`. Not owned.
    explicit CDIBLoader(IGraphicsFactory* factory = nullptr) : factory_(factory) {}

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
    /// The same from the start of an open file, which stays open; its position afterwards is not defined.
    /// @param fd descriptor of the file.
    /// @param[out] width, height, format as above.
    /// @param skipFileHeader true if the data begins with the info header.
    /// @return as above.
    [[nodiscard]] bool GetImageSize(int fd, unsigned int& width, unsigned int& height, IQorImage::PixelFormat& format,
                                    bool skipFileHeader) const;

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
    /// Reads from the start of an open file, wherever its position is. The file stays open; its position afterwards is
    /// not defined.
    /// @param fd descriptor of the file.
    /// @param memory handed to the factory.
    /// @param skipFileHeader true if the data begins with the info header and the rows follow the palette.
    /// @return as above.
    [[nodiscard]] std::shared_ptr<IQorImage> Load(int fd, void** memory, bool skipFileHeader) const;
    /// The same, and why there is no image.
    /// @param fd, memory, skipFileHeader, result as above.
    /// @return as above.
    [[nodiscard]] std::shared_ptr<IQorImage> Load(int fd, void** memory, bool skipFileHeader, LoadResult& result) const;

private:
    IGraphicsFactory* factory_;
};

}  // namespace vantu
