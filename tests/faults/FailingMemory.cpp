#include "faults/FailingMemory.h"

#include <atomic>
#include <cstdlib>

#include <dlfcn.h>

namespace {

constexpr auto kNever = std::numeric_limits<unsigned long>::max();

std::atomic<long> live{0};
std::atomic<std::size_t> limit{std::numeric_limits<std::size_t>::max()};
thread_local unsigned long countdown = 0;  // 0: not armed
thread_local unsigned long failFrom = kNever;
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

template <typename Function>
Function* Next(Function* /*type*/, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

void* Counted(void* block) {
    if (block != nullptr) live.fetch_add(1, std::memory_order_relaxed);
    return block;
}

void* New(std::size_t size) {
    if (void* const block = std::malloc(size == 0 ? 1 : size)) return block;
    throw std::bad_alloc();
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) noexcept {
    static const auto next = Next(&malloc, "malloc");
    return MayAllocate(size) ? Counted(next(size)) : nullptr;
}

void* calloc(std::size_t count, std::size_t size) noexcept {
    static const auto next = Next(&calloc, "calloc");
    const bool fits = size == 0 || count <= std::numeric_limits<std::size_t>::max() / size;
    return fits && MayAllocate(count * size) ? Counted(next(count, size)) : nullptr;
}

void* realloc(void* block, std::size_t size) noexcept {
    static const auto next = Next(&realloc, "realloc");
    if (!MayAllocate(size)) return nullptr;
    void* const moved = next(block, size);
    if (block == nullptr) return Counted(moved);
    if (size == 0 && moved == nullptr) live.fetch_sub(1, std::memory_order_relaxed);
    return moved;
}

void free(void* block) noexcept {
    static const auto next = Next(&free, "free");
    if (block != nullptr) live.fetch_sub(1, std::memory_order_relaxed);
    next(block);
}

}  // extern "C"

// All forms but those of over-aligned types, so that a block is freed by the family that gave it.
void* operator new(std::size_t size) {
    return New(size);
}
void* operator new[](std::size_t size) {
    return New(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return std::malloc(size == 0 ? 1 : size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return std::malloc(size == 0 ? 1 : size);
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete[](void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    std::free(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
    std::free(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
    std::free(block);
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
