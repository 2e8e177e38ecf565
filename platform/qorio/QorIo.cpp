#include <vantu/QorIo.h>

#include <cerrno>
#include <cstring>
#include <new>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include "MemoryFiles.h"

namespace vantu {
namespace {

/// UTF-8 of a wide text whose characters are code points; what is no code point becomes U+FFFD.
std::string Utf8(const std::wstring& wide) {
    std::string out;
    out.reserve(wide.size());
    const auto put = [&out](unsigned int byte) { out.push_back(static_cast<char>(byte)); };
    for (const wchar_t c : wide) {
        auto u = static_cast<unsigned int>(c);  // NOLINT(bugprone-signed-char-misuse,cert-str34-c): a wide one
        if (u > 0x10FFFF || (u >= 0xD800 && u < 0xE000)) u = 0xFFFD;
        if (u < 0x80) {
            put(u);
        } else if (u < 0x800) {
            put(0xC0 | u >> 6);
            put(0x80 | (u & 63));
        } else if (u < 0x10000) {
            put(0xE0 | u >> 12);
            put(0x80 | (u >> 6 & 63));
            put(0x80 | (u & 63));
        } else {
            put(0xF0 | u >> 18);
            put(0x80 | (u >> 12 & 63));
            put(0x80 | (u >> 6 & 63));
            put(0x80 | (u & 63));
        }
    }
    return out;
}

/// Calls `move(done)` until all of `size` bytes are moved, it reports the end, or an error other than EINTR.
template <typename Move>
unsigned int MoveFully(unsigned int size, Move move) {
    unsigned int done = 0;
    while (done < size) {
        const ssize_t n = move(done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        done += static_cast<unsigned int>(n);
    }
    return done;
}

/// The file over bytes in memory that has this descriptor; null for a file of the system.
MemoryFile* InMemory(int fd) {
    return fd < -1 ? MemoryFiles::Instance().Find(fd) : nullptr;
}

void AppendIntel(std::vector<unsigned char>& bytes, unsigned int value, unsigned int size) {
    for (unsigned int i = 0; i < size; ++i) bytes.push_back(static_cast<unsigned char>(value >> (8 * i)));
}

unsigned int WriteIntel(int fd, unsigned int value, unsigned int size) {
    std::vector<unsigned char> bytes;
    AppendIntel(bytes, value, size);
    return QorWriteFile(bytes.data(), size, fd);
}

}  // namespace

int QorOpenFile(const std::string& path, int* fd, int flags) {
    if (path.find('\0') != std::string::npos) return 0;
    const int access = flags == QOR_OPEN_CREATE ? O_WRONLY | O_CREAT | O_TRUNC : O_RDONLY;
    int opened = -1;
    do {
        opened = open(path.c_str(), access | O_CLOEXEC, 0666);
    } while (opened < 0 && errno == EINTR);
    if (opened < 0) return 0;
    *fd = opened;
    return 1;
}

int QorOpenFileW(const std::wstring& path, int* fd, int flags) {
    return QorOpenFile(Utf8(path), fd, flags);
}

int QorOpenMemory(const void* bytes, std::size_t size, int* fd) {
    try {
        const auto opened = MemoryFiles::Instance().Open({bytes, size});
        if (opened) *fd = *opened;
        return opened ? 1 : 0;
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

unsigned int QorReadFile(void* buffer, unsigned int size, int fd) {
    if (MemoryFile* const file = InMemory(fd)) return file->Read(buffer, size);
    return MoveFully(size, [=](unsigned int done) { return read(fd, static_cast<char*>(buffer) + done, size - done); });
}

long long QorSeekFile(int fd, long long offset, int origin) {
    if (MemoryFile* const file = InMemory(fd)) return file->Seek(offset, origin);
    return lseek(fd, offset, origin);
}

int QorCloseFile(int fd) {
    const bool closed = fd < -1 ? MemoryFiles::Instance().Close(fd) : close(fd) == 0;
    return closed ? 1 : 0;
}

unsigned int QorWriteFile(const void* buffer, unsigned int size, int fd) {
    return MoveFully(
        size, [=](unsigned int done) { return write(fd, static_cast<const char*>(buffer) + done, size - done); });
}

unsigned int QorWriteIntelInt(int fd, unsigned short value) {
    return WriteIntel(fd, value, 2);
}

unsigned int QorWriteIntelLong(int fd, unsigned int value) {
    return WriteIntel(fd, value, 4);
}

unsigned int QorWriteIntelStruct(int fd, const void* record, unsigned int size, const char* format) {
    const auto* field = static_cast<const unsigned char*>(record);
    const unsigned char* const end = field + size;
    std::vector<unsigned char> bytes;
    bytes.reserve(size);
    for (const char* at = format; *at != '\0';) {
        const char kind = *at++;
        unsigned int count = 0;
        while (*at >= '0' && *at <= '9' && count <= size) count = count * 10 + static_cast<unsigned int>(*at++ - '0');
        if (*at == ',') ++at;
        if (kind == 'P' && count == 1) continue;
        const unsigned int width = kind == 'I' ? 2 : kind == 'L' ? 4 : 0;
        if (width == 0 || static_cast<std::size_t>(end - field) < std::size_t{count} * width) return 0;
        for (; count > 0; --count, field += width) {
            unsigned short small = 0;
            unsigned int value = 0;
            if (width == 2) {
                std::memcpy(&small, field, sizeof small);
                value = small;
            } else {
                std::memcpy(&value, field, sizeof value);
            }
            AppendIntel(bytes, value, width);
        }
    }
    return field == end ? QorWriteFile(bytes.data(), size, fd) : 0;
}

}  // namespace vantu
