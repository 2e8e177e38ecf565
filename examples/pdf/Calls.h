#pragma once

#include <chrono>
#include <iosfwd>
#include <map>
#include <string>

namespace pdf {

// What a page asked of the library: calls, pixels and time of each kind. One thread at a time.
class Calls {
public:
    using Clock = std::chrono::steady_clock;

    // @param kind what the calls have in common. @param pixels of the rectangle that a call was given.
    void Add(const std::string& kind, unsigned long pixels, Clock::duration time);
    // One line a kind, what took longest first.
    void Print(std::ostream& out) const;

private:
    struct Sum {
        unsigned long calls = 0;
        unsigned long pixels = 0;
        Clock::duration time{0};
    };
    std::map<std::string, Sum> sums_;
};

}  // namespace pdf
