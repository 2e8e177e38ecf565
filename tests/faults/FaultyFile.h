#pragma once

#include <cstddef>
#include <limits>
#include <vector>

namespace vantu::test {

/// The one file of this program: its own definitions of the file functions read and write it, whatever path they are
/// given, and fail on command.
struct FaultyFile {
    static constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();

    std::vector<unsigned char> bytes{};
    std::size_t position = 0;

    bool opens = true;                 ///< otherwise opening fails
    bool seeks = true;                 ///< otherwise seeking fails and moves nothing
    std::size_t badOffset = kNever;    ///< a call that comes to it stops there, short
    bool heals = false;                ///< whether the calls after that go on; otherwise all of them move nothing
    std::size_t mostPerCall = kNever;  ///< a call moves no more than this
    bool hollow = false;               ///< reads and writes past `bytes` succeed too, and touch no memory

    std::size_t moved = 0;  ///< bytes that reads and writes were told to have moved
    std::size_t calls = 0;  ///< reads and writes
    int open = 0;           ///< times opened less times closed
};

/// The file as it is now; a test puts its own in place.
FaultyFile& TheFile();

}  // namespace vantu::test
