#pragma once

#include <vantu/Color.h>
#include <vantu/Export.h>

#include <vector>

namespace vantu {

/// A palette: a fixed number of colours, addressed by the indices of a 1-, 4- or 8-bit image.
///
/// Const operations may run on any number of threads at once; a writer needs the map to itself.
class VANTU_API ColorMap {
public:
    /// @param size number of entries; all start opaque black.
    explicit ColorMap(unsigned int size);

    /// Number of entries.
    [[nodiscard]] unsigned int GetSize() const;

    /// Entry `index`. An index at or past the size reads as opaque black, and a write through it is lost.
    [[nodiscard]] Color& operator[](unsigned int index);
    /// Entry `index`. An index at or past the size reads as opaque black.
    [[nodiscard]] const Color& operator[](unsigned int index) const;

private:
    std::vector<Color> entries_;
    Color beyond_;  // what a writable subscript past the end refers to; reset at each such access
};

}  // namespace vantu
