#pragma once

#include <cstddef>
#include <cstdint>

namespace vantu::test {

/// The checksum of PNG chunks, byte by byte.
class Crc32 {
public:
    void Add(unsigned char byte) {
        crc_ ^= byte;
        for (int bit = 0; bit < 8; ++bit) crc_ = (crc_ & 1) != 0 ? crc_ >> 1 ^ 0xEDB88320U : crc_ >> 1;
    }
    [[nodiscard]] std::uint32_t Get() const { return ~crc_; }

private:
    std::uint32_t crc_ = ~0U;
};

inline std::uint32_t Crc32Of(const unsigned char* bytes, std::size_t size) {
    Crc32 crc;
    for (std::size_t i = 0; i < size; ++i) crc.Add(bytes[i]);
    return crc.Get();
}

}  // namespace vantu::test
