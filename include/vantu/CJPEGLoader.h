#pragma once

#include <vantu/Export.h>
#include <vantu/IGraphicsFactory.h>

#include <memory>
#include <string>

namespace vantu {

/// Decodes JPEG files of one or three components into bottom-up `Bgr24` images; grey becomes three equal bytes.
///
/// A file that ends early gives an image whose missing rows are as the decoder fills them. Separate calls on separate
/// files may run on different threads.
class VANTU_API CJPEGLoader {
public:
    /// @param factory makes the images; null for `CQorImage`. Not owned.
    explicit CJPEGLoader(IGraphicsFactory* factory = nullptr) : factory_(factory) {}

    /// Reads the header only. @param width, height in pixels, @param format always `Bgr24`, also for files that `Load`
    /// refuses. @return false if the header cannot be read; the arguments are then untouched.
    [[nodiscard]] bool GetImageSize(const std::string& path, unsigned int& width, unsigned int& height,
                                    IQorImage::PixelFormat& format) const;
    [[nodiscard]] bool GetImageSize(const std::wstring& path, unsigned int& width, unsigned int& height,
                                    IQorImage::PixelFormat& format) const;
    [[nodiscard]] bool GetImageSize(int fd, unsigned int& width, unsigned int& height,
                                    IQorImage::PixelFormat& format) const;

    /// @param memory handed to the factory. @return the image, or empty on any refusal.
    [[nodiscard]] std::shared_ptr<IQorImage> Load(const std::string& path, void** memory) const;
    [[nodiscard]] std::shared_ptr<IQorImage> Load(const std::wstring& path, void** memory) const;
    /// Reads from an open file at its position; the file stays open.
    [[nodiscard]] std::shared_ptr<IQorImage> Load(int fd, void** memory) const;

private:
    IGraphicsFactory* factory_;
};

}  // namespace vantu
