#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <utility>

// What all fuzz targets share. A target is a file that defines `LLVMFuzzerTestOneInput`; it gives the input to the
// library and stops the program where the library breaks a promise.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace vantu::fuzz {

using Bytes = std::span<const std::uint8_t>;

/// Stops the program unless a promise holds.
inline void Require(bool holds, const char* promise) {
    if (holds) return;
    std::fprintf(stderr, "broken promise: %s\n", promise);
    std::abort();
}

/// Numbers that an input spells byte by byte; zeros after its end.
class Choices {
public:
    explicit Choices(Bytes bytes) : bytes_(bytes) {}

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
    Bytes Rest() { return std::exchange(bytes_, {}); }

private:
    Bytes bytes_;
};

}  // namespace vantu::fuzz
