#pragma once

#include "fuzz/Fuzz.h"

namespace vantu::fuzz {

/// A file in memory that holds an input, open at its start.
class MemoryFile {
public:
    explicit MemoryFile(Bytes bytes);
    ~MemoryFile();
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    [[nodiscard]] int Descriptor() const { return fd_; }

private:
    int fd_;
};

}  // namespace vantu::fuzz
