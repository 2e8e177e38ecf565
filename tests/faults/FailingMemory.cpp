#include "faults/FailingMemory.h"

#include <atomic>
#include <cstdlib>

#include "support/Sanitizers.h"

// A sanitizer's own malloc has to stay. Then only operator new fails, and the sanitizer refuses what is too large.
#if !IMAGEOP_SANITIZED
// The C library's own allocator by its other names.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void __libc_free(void* block);
}
#else
extern "C" const char* __asan_default_options() {
    return "allocator_may_return_null=1:max_allocation_size_mb=4096";
}
#endif

namespace {

std::atomic<long> live{0};
std::atomic<std::size_t> limit{std::numeric_limits<std::size_t>::max()};
thread_local unsigned long countdown = 0;  // 0: not armed
thread_local unsigned long failFrom = 0;
thread_local bool failOn = false;
thread_local bool failed = false;

bool MayAllocate(std::size_t size) {
    if (size > limit.load(std::memory_order_relaxed)) return false;
    if (countdown == 0) return true;
    const unsigned long n = countdown++;
    if (n < failFrom || (n > failFrom && !failOn)) return true;
    failed = true;
    return false;
}

void* Counted(void* block) {
    if (block != nullptr) live.fetch_add(1, std::memory_order_relaxed);
    return block;
}

void* Allocate(std::size_t size) {
    if (!MayAllocate(size)) return nullptr;
#if !IMAGEOP_SANITIZED
    return Counted(__libc_malloc(size));
#else
    return Counted(std::malloc(size));
#endif
}

void Free(void* block) {
    if (block == nullptr) return;
    live.fetch_sub(1, std::memory_order_relaxed);
#if !IMAGEOP_SANITIZED
    __libc_free(block);
#else
    std::free(block);
#endif
}

void* New(std::size_t size) {
    if (void* const block = Allocate(size == 0 ? 1 : size)) return block;
    throw std::bad_alloc();
}

}  // namespace

#if !IMAGEOP_SANITIZED
extern "C" {

void* malloc(std::size_t size) noexcept {
    return Allocate(size);
}

void* calloc(std::size_t count, std::size_t size) noexcept {
    const bool fits = size == 0 || count <= std::numeric_limits<std::size_t>::max() / size;
    return fits && MayAllocate(count * size) ? Counted(__libc_calloc(count, size)) : nullptr;
}

void* realloc(void* block, std::size_t size) noexcept {
    if (block == nullptr) return Allocate(size);
    if (!MayAllocate(size)) return nullptr;
    void* const moved = __libc_realloc(block, size);
    if (size == 0 && moved == nullptr) live.fetch_sub(1, std::memory_order_relaxed);
    return moved;
}

void free(void* block) noexcept {
    Free(block);
}

}  // extern "C"
#endif

// All forms but those of over-aligned types, so that a block is freed by the family that gave it.
void* operator new(std::size_t size) {
    return New(size);
}
void* operator new[](std::size_t size) {
    return New(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size == 0 ? 1 : size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size == 0 ? 1 : size);
}
void operator delete(void* block) noexcept {
    Free(block);
}
void operator delete[](void* block) noexcept {
    Free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    Free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    Free(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
    Free(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
    Free(block);
}

namespace vantu::test {

long LiveBlocks() {
    return live.load(std::memory_order_relaxed);
}

MemoryLimit::MemoryLimit(std::size_t most) {
    limit = most;
}
MemoryLimit::~MemoryLimit() {
    limit = std::numeric_limits<std::size_t>::max();
}

void Failure::Arm() const {
    failFrom = n_;
    failOn = lasting_;
    failed = false;
    countdown = 1;
}

void Failure::Disarm() {
    countdown = 0;
    met_ = met_ || failed;
}

}  // namespace vantu::test
