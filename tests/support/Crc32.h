#pragma once

#include <cstddef>

namespace vantu::test {

/// The checksum of PNG chunks.
inline unsigned int Crc32(const unsigned char* bytes, std::size_t size) {
    unsigned int crc = ~0U;
    for (std::size_t i = 0; i < size; ++i) {
        crc ^= bytes[i];
        for (int bit = 0; bit < 8; ++bit) crc = (crc & 1) != 0 ? crc >> 1 ^ 0xEDB88320U : crc >> 1;
    }
    return ~crc;
}

}  // namespace vantu::test
