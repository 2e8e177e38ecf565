#include "Calls.h"

#include <algorithm>
#include <iomanip>
#include <ostream>
#include <vector>

namespace pdf {

void Calls::Add(const std::string& kind, unsigned long pixels, Clock::duration time) {
    Sum& sum = sums_[kind];
    ++sum.calls;
    sum.pixels += pixels;
    sum.time += time;
}

void Calls::Print(std::ostream& out) const {
    std::vector<std::pair<std::string, Sum>> lines(sums_.begin(), sums_.end());
    std::sort(lines.begin(), lines.end(), [](const auto& a, const auto& b) { return a.second.time > b.second.time; });
    out << "   calls     pixels        ms  ns/pixel  what, all on 32-bit premultiplied pixels\n" << std::fixed;
    for (const auto& [kind, sum] : lines) {
        const double nanoseconds = std::chrono::duration<double, std::nano>(sum.time).count();
        const double pixels = static_cast<double>(std::max(sum.pixels, 1UL));
        out << std::setw(8) << sum.calls << std::setw(11) << sum.pixels << std::setw(10) << std::setprecision(3)
            << nanoseconds / 1e6 << std::setw(10) << std::setprecision(2) << nanoseconds / pixels << "  " << kind
            << '\n';
    }
}

}  // namespace pdf
