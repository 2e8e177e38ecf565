#pragma once

#include <png.h>

#include <cstdlib>

#include "codec/CatchJump.h"

namespace vantu {

/// What reading and writing a PNG file have in common: libpng's two structures, its fatal errors and its memory. Every
/// call that may end in a fatal error runs under `Run`.
class PngFile {
public:
    PngFile(const PngFile&) = delete;
    PngFile& operator=(const PngFile&) = delete;

    /// Whether an allocation of libpng failed.
    [[nodiscard]] bool OutOfMemory() const { return outOfMemory_; }

protected:
    explicit PngFile(int fd) : fd_(fd) {}
    ~PngFile() = default;

    /// @return false if a fatal error ended `step`, for which the rules of `CatchJump` hold.
    template <typename Step>
    bool Run(const Step& step) {
        return CatchJump(onError_, step);
    }

    /// Makes the two structures by `create`, one of libpng's functions for a reader or a writer. To be called in `Run`.
    template <typename Create>
    void MakeStructures(Create create) {
        png_ = create(
            PNG_LIBPNG_VER_STRING, this, OnError, [](png_structp, png_const_charp) {}, this, Allocate, nullptr);
        if (png_ != nullptr) info_ = png_create_info_struct(png_);
        if (info_ == nullptr) std::longjmp(onError_, 1);
    }

    int fd_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;

private:
    [[noreturn]] static void OnError(png_structp png, png_const_charp /*message*/) {
        std::longjmp(static_cast<PngFile*>(png_get_error_ptr(png))->onError_, 1);
    }

    static png_voidp Allocate(png_structp png, png_alloc_size_t size) {
        void* const block = std::malloc(size);
        if (block == nullptr) static_cast<PngFile*>(png_get_mem_ptr(png))->outOfMemory_ = true;
        return block;
    }

    bool outOfMemory_ = false;
    std::jmp_buf onError_{};
};

}  // namespace vantu
