#pragma once

#include <gtest/gtest.h>
#include <vantu/CDIBLoader.h>
#include <vantu/CJPEGLoader.h>
#include <vantu/CPNGLoader.h>
#include <vantu/QorIo.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <unistd.h>

#include "support/Crc32.h"
#include "support/TestImage.h"

namespace vantu::test {

using Bytes = std::vector<unsigned char>;
using ImagePtr = std::shared_ptr<IQorImage>;

inline std::string FixturePath(const std::string& name) {
    return IMAGEOP_TEST_DATA "/codec/" + name;
}

inline Bytes ReadAll(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    EXPECT_TRUE(in) << path;
    return Bytes(std::istreambuf_iterator<char>(in), {});
}

/// A fixture with edits, one after the other, at offsets: `16=80FF` replaces bytes, `2+FFE5` inserts them, `2~9`
/// inserts 9 zeros, `40-9` takes out 9 bytes at most, `29#12` puts there the checksum of the bytes from 12 to there.
inline Bytes Edited(const std::string& name, const std::string& edits) {
    Bytes file = ReadAll(FixturePath(name));
    std::istringstream in(edits);
    std::ptrdiff_t offset = 0;
    char kind = 0;
    for (std::string text; in >> offset >> kind >> text;) {
        const auto at = file.begin() + offset;
        Bytes bytes;
        for (std::size_t i = 0; i < text.size() && (kind == '=' || kind == '+'); i += 2)
            bytes.push_back(static_cast<unsigned char>(std::stoi(text.substr(i, 2), nullptr, 16)));
        if (kind == '=') std::ranges::copy(bytes, at);
        if (kind == '+') file.insert(at, bytes.begin(), bytes.end());
        if (kind == '~') file.insert(at, std::stoul(text), 0);
        if (kind == '-') file.erase(at, std::min(file.end(), at + std::stoi(text)));
        if (kind == '#') {
            const std::size_t first = std::stoul(text);
            const std::uint32_t crc = Crc32Of(&file[first], static_cast<std::size_t>(offset) - first);
            for (int i = 0; i < 4; ++i) at[i] = static_cast<unsigned char>(crc >> 8 * (3 - i));
        }
    }
    return file;
}

/// A nameless file that stands at its start.
class TempFile {
public:
    explicit TempFile(const Bytes& bytes = {}) { Replace(bytes); }
    void Replace(const Bytes& bytes) {
        EXPECT_EQ(ftruncate(Descriptor(), 0), 0);
        EXPECT_EQ(pwrite(Descriptor(), bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
        lseek(Descriptor(), 0, SEEK_SET);
    }
    [[nodiscard]] Bytes Content() const {
        Bytes bytes(static_cast<std::size_t>(lseek(Descriptor(), 0, SEEK_END)));
        EXPECT_EQ(pread(Descriptor(), bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
        return bytes;
    }
    [[nodiscard]] int Descriptor() const { return fileno(file_.get()); }

private:
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    std::unique_ptr<std::FILE, Close> file_{std::tmpfile()};
};

/// Bytes in memory, open at their start. Not for programs with file functions of their own.
class MemoryFile {
public:
    explicit MemoryFile(Bytes bytes) : bytes_(std::move(bytes)) {
        EXPECT_NE(QorOpenMemory(bytes_.data(), bytes_.size(), &fd_), 0);
    }
    ~MemoryFile() { QorCloseFile(fd_); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    [[nodiscard]] int Descriptor() const { return fd_; }

private:
    const Bytes bytes_;
    int fd_ = -1;
};

inline std::string Kind(const std::string& file) {
    return file.substr(file.size() - 3);
}

/// Loads from a path or, at its start, from a descriptor, with the loader of the file's kind.
template <typename Path>
ImagePtr LoadPath(const std::string& kind, const Path& path, IGraphicsFactory* factory, void** memory = nullptr) {
    if (kind == "bmp") return CDIBLoader(factory).Load(path, memory);
    if (kind == "png") return CPNGLoader(factory).Load(path, memory);
    return CJPEGLoader(factory).Load(path, memory);
}

inline ImagePtr LoadFrom(const std::string& kind, int fd, IGraphicsFactory* factory) {
    if (kind == "bmp") return CDIBLoader(factory).Load(fd, nullptr, false);
    return kind == "png" ? CPNGLoader(factory).Load(fd, nullptr) : CJPEGLoader(factory).Load(fd, nullptr);
}

/// The same from either, and why.
template <typename File>
ImagePtr LoadWhy(const std::string& kind, const File& file, IGraphicsFactory* factory, LoadResult& result) {
    if constexpr (std::is_same_v<File, int>) {
        if (kind == "bmp") return CDIBLoader(factory).Load(file, nullptr, false, result);
    } else {
        if (kind == "bmp") return CDIBLoader(factory).Load(file, nullptr, result);
    }
    return kind == "png" ? CPNGLoader(factory).Load(file, nullptr, result)
                         : CJPEGLoader(factory).Load(file, nullptr, result);
}

/// What `GetImageSize` says of a file, at its start; a size of 0 if nothing.
inline Shape SizeOf(const std::string& kind, int fd) {
    Shape shape{0, 0, PixelFormat{}};
    const bool told = kind == "bmp"   ? CDIBLoader().GetImageSize(fd, shape.width, shape.height, shape.format, false)
                      : kind == "png" ? CPNGLoader().GetImageSize(fd, shape.width, shape.height, shape.format)
                                      : CJPEGLoader().GetImageSize(fd, shape.width, shape.height, shape.format);
    EXPECT_EQ(told, shape.format != PixelFormat{});
    return shape;
}

}  // namespace vantu::test
