#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "support/TestImage.h"

// Random work that a string of bytes spells: a fuzzer finds the bytes, or a test draws them.

namespace vantu::test {

/// Stops the work unless a promise holds.
inline void Require(bool holds, const char* promise) {
    if (!holds) throw std::logic_error(std::string("broken promise: ") + promise);
}

/// Numbers that an input spells byte by byte; zeros after its end.
class Choices {
public:
    explicit Choices(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    [[nodiscard]] bool Any() const { return !bytes_.empty(); }
    unsigned int Byte() {
        if (bytes_.empty()) return 0;
        const unsigned int byte = bytes_.front();
        bytes_ = bytes_.subspan(1);
        return byte;
    }
    unsigned int Word() {
        const unsigned int low = Byte();
        return low + 256 * Byte();
    }
    /// A number from `low` to `high`, both included.
    int Between(int low, int high) {
        const int count = high - low + 1;
        return low + static_cast<int>(count <= 256 ? Byte() : Word()) % count;
    }
    bool Flag() { return Byte() % 2 != 0; }
    bool OneIn(unsigned int count) { return Byte() % count == 0; }
    std::span<const std::uint8_t> Rest() { return std::exchange(bytes_, {}); }

private:
    std::span<const std::uint8_t> bytes_;
};

/// Bytes for `Choices`, the same on every platform for a seed.
inline std::vector<std::uint8_t> RandomBytes(std::uint32_t seed, std::size_t count) {
    Random random(seed);
    std::vector<std::uint8_t> bytes(count);
    std::ranges::generate(bytes, [&] { return static_cast<std::uint8_t>(random()); });
    return bytes;
}

}  // namespace vantu::test
