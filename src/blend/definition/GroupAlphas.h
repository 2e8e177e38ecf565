#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>
#include <vector>

namespace vantu {

/// Gives vectors memory of zeros, which `resize` need not write: of a large group most pages of memory are then never
/// touched if little is painted.
/// REQUIRES: elements are set to 0 again before a vector gets shorter.
template <typename T>
struct ZeroedMemory {
    using value_type = T;

    ZeroedMemory() = default;
    template <typename U>
    ZeroedMemory(const ZeroedMemory<U>&) {}

    T* allocate(std::size_t count) {
        void* const memory = std::calloc(count, sizeof(T));
        if (memory == nullptr) throw std::bad_alloc();
        return static_cast<T*>(memory);
    }
    void deallocate(T* memory, std::size_t) { std::free(memory); }
    void construct(T*) {}

    bool operator==(const ZeroedMemory&) const { return true; }
};

/// The alphas of a group: entry width * y + x is that of pixel (x, y), counted from the visual top.
using GroupAlphas = std::vector<unsigned int, ZeroedMemory<unsigned int>>;

}  // namespace vantu
