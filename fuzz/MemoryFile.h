#pragma once

#include <cstddef>
#include <cstdint>

/// A file in memory that holds an input, open at its start.
class MemoryFile {
public:
    MemoryFile(const std::uint8_t* data, std::size_t size);
    ~MemoryFile();
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    [[nodiscard]] int Descriptor() const { return fd_; }

private:
    int fd_;
};

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
