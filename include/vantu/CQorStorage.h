#pragma once

#include <vantu/Export.h>

#include <cstddef>
#include <string>
#include <vector>

namespace vantu {

/// A byte store: values are appended by the writing operations and taken from the front by the reading ones.
///
/// Numbers are little-endian; a byte string is preceded by its length in 4 bytes. Every operation returns the
/// number of bytes it moved, 0 for none. Where memory runs out std::bad_alloc leaves, and the store is as it was. All
/// are virtual, so that a host may keep the bytes elsewhere. One thread at a time.
class VANTU_API CQorStorage {
public:
    /// An empty store.
    CQorStorage() = default;
    /// A store that holds `bytes`, ready to be read.
    explicit CQorStorage(std::vector<unsigned char> bytes);
    virtual ~CQorStorage() = default;
    /// Copies the bytes and the reading position.
    /// @{
    CQorStorage(const CQorStorage&) = default;
    CQorStorage& operator=(const CQorStorage&) = default;
    /// @}

    /// Appends one byte. @return 1.
    virtual unsigned int WriteByte(unsigned char value);
    /// Appends the 8 bytes of an IEEE double. @return 8.
    virtual unsigned int Write(double value);
    /// Appends the length in 4 bytes, then the text. @return 4 plus the length.
    ///
    /// REQUIRES: the text is shorter than 2^32 - 4 bytes.
    virtual unsigned int Write(const std::string& text);

    /// Takes one byte. @return 1, or 0 at the end with `value` untouched.
    virtual unsigned int Read(unsigned char& value);
    /// Takes 8 bytes. @return 8, or 0 if fewer are left, with `value` untouched and nothing taken.
    virtual unsigned int Read(double& value);
    /// Takes a length and that many bytes. @return 4 plus the length; where fewer bytes are left than the length says,
    /// `text` gets those and the count is their number alone; with fewer than 4 bytes left 0, and `text` is untouched.
    virtual unsigned int Read(std::string& text);

    /// All bytes written so far, those already read included.
    [[nodiscard]] const std::vector<unsigned char>& GetBytes() const;

private:
    std::vector<unsigned char> bytes_;
    std::size_t next_ = 0;
};

}  // namespace vantu
