#pragma once

#include <gtest/gtest.h>

#include <sys/mman.h>

#include "support/TestImage.h"

namespace vantu::test {

/// An image of any size whose block takes up memory only where it is touched. The block is zeroed and ends, on
/// multiples of 16 bytes, where the memory ends that may be touched; the same holds for its beginning if its size is a
/// multiple of a page.
class SparseImage : public ShapedImage {
public:
    explicit SparseImage(const Shape& shape) : ShapedImage(shape), room_((Size() + 2 * kPage - 1) / kPage * kPage) {
        // The first and the last page are never made accessible.
        map_ = mmap(nullptr, room_ + kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (map_ == MAP_FAILED) return;
        auto* const first = static_cast<unsigned char*>(map_) + kPage;
        if (mprotect(first, room_ - kPage, PROT_READ | PROT_WRITE) != 0) return;
        block_ = first + (room_ - kPage - Size()) / 16 * 16;
    }
    ~SparseImage() override {
        if (map_ != MAP_FAILED) munmap(map_, room_ + kPage);
    }
    SparseImage(const SparseImage&) = delete;
    SparseImage& operator=(const SparseImage&) = delete;

    /// The block; null if the system gives no address space of that size.
    const unsigned char* GetPixelData() const override { return block_; }
    unsigned char* GetPixelData() override { return block_; }

private:
    static constexpr std::size_t kPage = 65536;  // at least as large as any system's

    std::size_t room_;
    void* map_ = MAP_FAILED;
    unsigned char* block_ = nullptr;
};

}  // namespace vantu::test
