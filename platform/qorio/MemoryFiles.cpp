#include "MemoryFiles.h"

#include <algorithm>
#include <cstring>

namespace vantu {
namespace {

/// descriptor = -2 - place, and back.
constexpr int DescriptorOf(std::size_t place) {
    return -2 - static_cast<int>(place);
}
constexpr std::size_t PlaceOf(int fd) {
    return static_cast<std::size_t>(-2 - fd);
}
constexpr std::size_t kMostFiles = PlaceOf(std::numeric_limits<int>::min()) + 1;

}  // namespace

MemoryFile::MemoryFile(const void* bytes, std::size_t size)
    : bytes_(static_cast<const unsigned char*>(bytes)), size_(static_cast<long long>(size)) {}

unsigned int MemoryFile::Read(void* buffer, unsigned int size) {
    if (position_ >= size_) return 0;
    const auto count = static_cast<unsigned int>(std::min<long long>(size, size_ - position_));
    std::memcpy(buffer, bytes_ + position_, count);
    position_ += count;
    return count;
}

long long MemoryFile::Seek(long long offset, int origin) {
    if (origin < 0 || origin > 2) return -1;
    const long long base = origin == 0 ? 0 : origin == 1 ? position_ : size_;
    if (offset < -base || offset > std::numeric_limits<long long>::max() - base) return -1;
    return position_ = base + offset;
}

MemoryFiles& MemoryFiles::Instance() {
    static MemoryFiles files;
    return files;
}

std::optional<int> MemoryFiles::Open(const MemoryFile& file) {
    const std::lock_guard lock(mutex_);
    std::size_t place = firstClosed_;
    if (place != kNone) {
        firstClosed_ = slots_[place].nextClosed;
        slots_[place] = {file};
    } else {
        place = slots_.size();
        if (place == kMostFiles) return std::nullopt;
        slots_.push_back({file});
    }
    return DescriptorOf(place);
}

MemoryFile* MemoryFiles::Find(int fd) {
    const std::lock_guard lock(mutex_);
    Slot* const slot = OpenSlot(fd);
    return slot == nullptr ? nullptr : &slot->file;
}

bool MemoryFiles::Close(int fd) {
    const std::lock_guard lock(mutex_);
    Slot* const slot = OpenSlot(fd);
    if (slot == nullptr) return false;
    slot->open = false;
    slot->nextClosed = firstClosed_;
    firstClosed_ = PlaceOf(fd);
    return true;
}

MemoryFiles::Slot* MemoryFiles::OpenSlot(int fd) {
    if (fd >= -1 || PlaceOf(fd) >= slots_.size()) return nullptr;
    Slot& slot = slots_[PlaceOf(fd)];
    return slot.open ? &slot : nullptr;
}

}  // namespace vantu
