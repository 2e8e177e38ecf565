#include <vantu/ColorMap.h>

namespace vantu {

ColorMap::ColorMap(unsigned int size) : entries_(size) {}

unsigned int ColorMap::GetSize() const {
    return static_cast<unsigned int>(entries_.size());
}

Color& ColorMap::operator[](unsigned int index) {
    if (index < entries_.size()) return entries_[index];
    beyond_ = Color(ARGB_BLACK);
    return beyond_;
}

const Color& ColorMap::operator[](unsigned int index) const {
    static const Color black(ARGB_BLACK);
    return index < entries_.size() ? entries_[index] : black;
}

}  // namespace vantu
