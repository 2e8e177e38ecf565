#include <vantu/CQorStorage.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <utility>

namespace vantu {
namespace {

/// Makes room for `count` more bytes. Where memory runs out nothing has changed.
/// @return the first of them.
unsigned char* Extend(std::vector<unsigned char>& bytes, std::size_t count) {
    const std::size_t size = bytes.size();
    bytes.resize(size + count);
    return bytes.data() + size;
}

template <typename Integer>
void StoreLittleEndian(Integer value, unsigned char* to) {
    for (std::size_t i = 0; i < sizeof value; ++i) to[i] = static_cast<unsigned char>(value >> (8 * i));
}

template <typename Integer>
Integer LittleEndianAt(const std::vector<unsigned char>& bytes, std::size_t position) {
    Integer value = 0;
    for (std::size_t i = 0; i < sizeof value; ++i) value |= static_cast<Integer>(bytes[position + i]) << (8 * i);
    return value;
}

}  // namespace

CQorStorage::CQorStorage(std::vector<unsigned char> bytes) : bytes_(std::move(bytes)) {}

unsigned int CQorStorage::WriteByte(unsigned char value) {
    bytes_.push_back(value);
    return 1;
}

unsigned int CQorStorage::Write(double value) {
    StoreLittleEndian(std::bit_cast<std::uint64_t>(value), Extend(bytes_, sizeof value));
    return sizeof value;
}

unsigned int CQorStorage::Write(const std::string& text) {
    const auto length = static_cast<std::uint32_t>(text.size());
    unsigned char* const to = Extend(bytes_, sizeof length + text.size());
    StoreLittleEndian(length, to);
    std::copy(text.begin(), text.end(), to + sizeof length);
    return length + 4;
}

unsigned int CQorStorage::Read(unsigned char& value) {
    if (next_ == bytes_.size()) return 0;
    value = bytes_[next_++];
    return 1;
}

unsigned int CQorStorage::Read(double& value) {
    if (bytes_.size() - next_ < sizeof value) return 0;
    value = std::bit_cast<double>(LittleEndianAt<std::uint64_t>(bytes_, next_));
    next_ += sizeof value;
    return sizeof value;
}

unsigned int CQorStorage::Read(std::string& text) {
    if (bytes_.size() - next_ < 4) return 0;
    const std::size_t announced = LittleEndianAt<std::uint32_t>(bytes_, next_);
    const std::size_t length = std::min(announced, bytes_.size() - next_ - 4);
    const auto first = bytes_.begin() + static_cast<std::ptrdiff_t>(next_ + 4);
    text.assign(first, first + static_cast<std::ptrdiff_t>(length));
    next_ += 4 + length;
    // A short text must not look like a whole one, so the count leaves out the length field that promised more.
    return length == announced ? static_cast<unsigned int>(length) + 4 : static_cast<unsigned int>(length);
}

const std::vector<unsigned char>& CQorStorage::GetBytes() const {
    return bytes_;
}

}  // namespace vantu
