#include "faults/FaultyFile.h"

#include <vantu/QorIo.h>

#include <algorithm>
#include <cstring>

namespace vantu {
namespace {

constexpr int kDescriptor = 7;

using test::FaultyFile;
using test::TheFile;

/// How much of `size` bytes a call moves before it meets a fault.
std::size_t Reach(FaultyFile& file, std::size_t size) {
    std::size_t most = std::min(size, file.mostPerCall);
    if (file.badOffset != FaultyFile::kNever && file.position + most > file.badOffset) {
        most = file.badOffset - std::min(file.badOffset, file.position);
        if (file.heals) file.badOffset = FaultyFile::kNever;
    }
    return most;
}

unsigned int Moved(FaultyFile& file, std::size_t size) {
    file.position += size;
    file.moved += size;
    ++file.calls;
    return static_cast<unsigned int>(size);
}

}  // namespace

FaultyFile& test::TheFile() {
    static FaultyFile file;
    return file;
}

int QorOpenFile(const std::string& /*path*/, int* fd, int flags) {
    FaultyFile& file = TheFile();
    if (!file.opens) return 0;
    if (flags == QOR_OPEN_CREATE) file.bytes.clear();
    file.position = 0;
    ++file.open;
    *fd = kDescriptor;
    return 1;
}

int QorOpenFileW(const std::wstring& path, int* fd, int flags) {
    return QorOpenFile(std::string(path.size(), 'w'), fd, flags);
}

int QorCloseFile(int fd) {
    if (fd != kDescriptor) return 0;
    --TheFile().open;
    return 1;
}

unsigned int QorReadFile(void* buffer, unsigned int size, int fd) {
    FaultyFile& file = TheFile();
    if (fd != kDescriptor) return 0;
    const std::size_t there = file.bytes.size() - std::min(file.bytes.size(), file.position);
    const std::size_t count = Reach(file, file.hollow ? size : std::min<std::size_t>(size, there));
    if (const std::size_t real = std::min(there, count); real > 0) {
        std::memcpy(buffer, &file.bytes[file.position], real);
    }
    return Moved(file, count);
}

long long QorSeekFile(int fd, long long offset, int /*origin*/) {
    FaultyFile& file = TheFile();
    if (fd != kDescriptor || !file.seeks || offset < 0) return -1;
    file.position = static_cast<std::size_t>(offset);
    return offset;
}

unsigned int QorWriteFile(const void* buffer, unsigned int size, int fd) {
    FaultyFile& file = TheFile();
    if (fd != kDescriptor) return 0;
    const std::size_t count = Reach(file, size);
    const auto* const from = static_cast<const unsigned char*>(buffer);
    if (!file.hollow) file.bytes.insert(file.bytes.end(), from, from + count);
    return Moved(file, count);
}

unsigned int QorWriteIntelInt(int fd, unsigned short value) {
    return QorWriteFile(&value, sizeof value, fd);
}

unsigned int QorWriteIntelLong(int fd, unsigned int value) {
    return QorWriteFile(&value, sizeof value, fd);
}

unsigned int QorWriteIntelStruct(int fd, const void* record, unsigned int size, const char* /*format*/) {
    return QorWriteFile(record, size, fd);
}

}  // namespace vantu
