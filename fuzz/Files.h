#pragma once

#include <vantu/QorIo.h>

#include <sys/mman.h>
#include <unistd.h>

#include "fuzz/Fuzz.h"

namespace vantu::fuzz {

/// A file over an input, open at its start.
class InputFile {
public:
    explicit InputFile(Bytes bytes) {
        Require(QorOpenMemory(bytes.data(), bytes.size(), &fd_) != 0, "bytes in memory can be opened");
    }
    ~InputFile() { QorCloseFile(fd_); }
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    [[nodiscard]] int Descriptor() const { return fd_; }

private:
    int fd_ = -1;
};

/// A nameless file to be written to and then read.
class OutputFile {
public:
    OutputFile() : fd_(memfd_create("output", 0)) { Require(fd_ >= 0, "the system has files in memory"); }
    ~OutputFile() { close(fd_); }
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    [[nodiscard]] int Descriptor() const { return fd_; }

private:
    int fd_;
};

}  // namespace vantu::fuzz
