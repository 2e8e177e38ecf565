#include "MemoryFile.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>

MemoryFile::MemoryFile(const std::uint8_t* data, std::size_t size) : fd_(memfd_create("input", 0)) {
    if (fd_ < 0 || write(fd_, data, size) != static_cast<ssize_t>(size) || lseek(fd_, 0, SEEK_SET) != 0) std::abort();
}

MemoryFile::~MemoryFile() {
    close(fd_);
}
