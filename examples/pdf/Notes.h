#pragma once

#include <map>
#include <string>

namespace pdf {

// What was left out or replaced, each kind once with its count. One thread at a time: each painter of a band keeps its
// own, and since every band meets the whole content, any one of them tells all.
class Notes {
public:
    void Add(const std::string& text) { ++counts_[text]; }
    [[nodiscard]] const std::map<std::string, unsigned long>& Counts() const { return counts_; }

private:
    std::map<std::string, unsigned long> counts_;
};

}  // namespace pdf
