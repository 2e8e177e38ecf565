#pragma once

#include <vantu/QorIo.h>

#include <string>

namespace vantu {

/// A file opened by its path, closed on every way out.
class OpenFile {
public:
    OpenFile(const std::string& path, int flags) : open_(QorOpenFile(path, &fd_, flags) != 0) {}
    OpenFile(const std::wstring& path, int flags) : open_(QorOpenFileW(path, &fd_, flags) != 0) {}
    ~OpenFile() {
        if (open_) QorCloseFile(fd_);
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    explicit operator bool() const { return open_; }
    [[nodiscard]] int Descriptor() const { return fd_; }

private:
    int fd_ = -1;
    bool open_;
};

/// `use(fd)` on the file at `path`; a false or empty result if it cannot be opened.
template <typename Path, typename Use>
auto WithFile(const Path& path, int flags, Use use) {
    const OpenFile file(path, flags);
    return file ? use(file.Descriptor()) : decltype(use(0)){};
}

}  // namespace vantu
