#pragma once

#include <vantu/Export.h>
#include <vantu/IGraphicsFactory.h>
#include <vantu/LoadResult.h>

#include <memory>
#include <string>

namespace vantu {

/// Decodes JPEG files of one or three components into bottom-up `Bgr24` images; grey becomes three equal bytes.
///
/// A file that ends early gives an image whose missing rows are as the decoder fills them. The orientation that a
/// camera notes (EXIF) is not read: the picture comes as it lies in the file. Separate calls on separate files may run
/// on different threads.
class VANTU_API CJPEGLoader {
public:
    /// REQUIRES: the factory outlives the loader's calls.
    /// @param factory makes the images; null for `CQorImage`. Not owned.
    explicit CJPEGLoader(IGraphicsFactory* factory = nullptr) : factory_(factory) {}

    /// Reads the header only.
    /// @param path handed to `QorOpenFile` or `QorOpenFileW`.
    /// @param[out] width, height in pixels.
    /// @param[out] format always `Bgr24`, also for files that `Load` refuses.
    /// @return false if the file cannot be opened or its header not be read; the arguments are then untouched.
    /// @{
    [[nodiscard]] bool GetImageSize(const std::string& path, unsigned int& width, unsigned int& height,
                                    IQorImage::PixelFormat& format) const;
    [[nodiscard]] bool GetImageSize(const std::wstring& path, unsigned int& width, unsigned int& height,
                                    IQorImage::PixelFormat& format) const;
    /// @}
    /// The same from an open file at its position; the file stays open, its position afterwards is not defined.
    /// @param fd descriptor of the file.
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
    /// @param fd descriptor of the file.
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
