#include "fuzz/MemoryFile.h"

#include <sys/mman.h>
#include <unistd.h>

namespace vantu::fuzz {

MemoryFile::MemoryFile(Bytes bytes) : fd_(memfd_create("input", 0)) {
    Require(fd_ >= 0 && write(fd_, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()) &&
                lseek(fd_, 0, SEEK_SET) == 0,
            "the system has files in memory");
}

MemoryFile::~MemoryFile() {
    close(fd_);
}

}  // namespace vantu::fuzz
