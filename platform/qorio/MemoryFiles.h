#pragma once

#include <cstddef>
#include <deque>
#include <limits>
#include <mutex>
#include <optional>

namespace vantu {

/// A file whose content is bytes that its opener keeps.
class MemoryFile {
public:
    MemoryFile(const void* bytes, std::size_t size);

    unsigned int Read(void* buffer, unsigned int size);
    long long Seek(long long offset, int origin);

private:
    const unsigned char* bytes_;
    long long size_;
    long long position_ = 0;  // may lie past the end, as in any file
};

/// The open files over bytes in memory. Their descriptors are the numbers below -1, which no file of the system has.
/// Any number of threads may call at once.
class MemoryFiles {
public:
    /// The one of the process.
    static MemoryFiles& Instance();

    /// @return the descriptor of a new file; none if there is no number left. @throws std::bad_alloc
    std::optional<int> Open(const MemoryFile& file);
    /// @return null if `fd` is no open file of this kind. The file stays where it is until it is closed.
    MemoryFile* Find(int fd);
    /// @return false if `fd` is no open file of this kind.
    bool Close(int fd);

private:
    static constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();

    struct Slot {
        MemoryFile file;
        bool open = true;
        std::size_t nextClosed = kNone;  // of a closed slot: another one
    };

    Slot* OpenSlot(int fd);

    std::mutex mutex_;
    std::deque<Slot> slots_;  // whose elements do not move when it grows
    std::size_t firstClosed_ = kNone;
};

}  // namespace vantu
