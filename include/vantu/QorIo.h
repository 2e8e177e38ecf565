#pragma once

#include <vantu/Export.h>

#include <cstddef>
#include <string>

/// @file
/// File access of the host system, by descriptor. The library only calls these, and `QorOpenMemory` not even that. None
/// of them reports why it failed; two threads may work on distinct descriptors at once.

namespace vantu {

/// Flags of `QorOpenFile`: to read a file that exists.
inline constexpr int QOR_OPEN_READ = 0;
/// Flags of `QorOpenFile`: to write; creates the file or empties it.
inline constexpr int QOR_OPEN_CREATE = 0x101;

/// Opens a file.
/// @param path of the file.
/// @param[out] fd the descriptor, to be given to `QorCloseFile`; untouched on failure.
/// @param flags `QOR_OPEN_READ` or `QOR_OPEN_CREATE`.
/// @return non-zero on success, 0 on failure.
VANTU_API int QorOpenFile(const std::string& path, int* fd, int flags);
/// The same by a wide path.
VANTU_API int QorOpenFileW(const std::wstring& path, int* fd, int flags);
/// Opens bytes in memory as a file to read: for streams of documents and members of archives. Nothing is copied and no
/// file is made. `QorReadFile`, `QorSeekFile` and `QorCloseFile` work on it, `QorWriteFile` writes nothing.
/// @param bytes stay the caller's.
///        REQUIRES: they are there and do not change until the descriptor is closed.
/// @param size their number.
/// @param[out] fd the descriptor, a number below -1, which the system knows nothing of; untouched on failure. There may
///        be 2^31 - 1 of them at once.
/// @return non-zero on success, 0 if there is no memory for one more.
VANTU_API int QorOpenMemory(const void* bytes, std::size_t size, int* fd);
/// Reads bytes at the file position and moves it.
/// @param buffer room for `size` bytes.
/// @param size number of bytes wanted.
/// @param fd descriptor of the file.
/// @return the number read, less than `size` only at the end or after an error.
VANTU_API unsigned int QorReadFile(void* buffer, unsigned int size, int fd);
/// Moves the file position.
/// @param fd descriptor of the file.
/// @param offset in bytes.
/// @param origin 0 counts from the start, 1 from the current position, 2 from the end.
/// @return the resulting absolute position, or -1.
VANTU_API long long QorSeekFile(int fd, long long offset, int origin);
/// Closes a descriptor. @return non-zero on success.
VANTU_API int QorCloseFile(int fd);

/// Writes bytes at the file position and moves it.
/// @param buffer the bytes.
/// @param size their number.
/// @param fd descriptor of the file.
/// @return the number written, less than `size` only after an error.
VANTU_API unsigned int QorWriteFile(const void* buffer, unsigned int size, int fd);
/// Writes a 16-bit value in little-endian order. @return the number of bytes written.
VANTU_API unsigned int QorWriteIntelInt(int fd, unsigned short value);
/// Writes a 32-bit value in little-endian order. @return the number of bytes written.
VANTU_API unsigned int QorWriteIntelLong(int fd, unsigned int value);
/// Writes a record field by field in little-endian order.
/// @param fd descriptor of the file.
/// @param record the fields in the order of the machine.
/// @param size of the record in bytes.
/// @param format comma-separated groups: `P1` fields packed without gaps, `I<n>` n 16-bit fields, `L<n>` n 32-bit
///        fields, for example "P1,L3,I2,L6".
/// @return the number of bytes written, 0 if the format does not fit `size`.
VANTU_API unsigned int QorWriteIntelStruct(int fd, const void* record, unsigned int size, const char* format);

}  // namespace vantu
