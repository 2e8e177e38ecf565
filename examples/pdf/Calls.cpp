#include "Calls.h"

#include <algorithm>
#include <iomanip>
#include <ostream>
#include <vector>

namespace pdf {

namespace {

// Sizes in powers of four, told by the edge of a square.
const char* SizeOf(unsigned long pixels) {
    if (pixels <= 16UL * 16) return "to 16x16";
    if (pixels <= 64UL * 64) return "to 64x64";
    return pixels <= 256UL * 256 ? "to 256x256" : "larger";
}

unsigned long CountPixels(const Pixels& box) {
    return IsEmpty(box) ? 0 : static_cast<unsigned long>(Width(box)) * static_cast<unsigned long>(Height(box));
}

// What calls have in common that are counted together.
std::string KindOf(const Call& call) {
    static constexpr const char* kNames[] = {"colour", "32-bit picture", "begin a group", "end a group"};
    return std::string(kNames[static_cast<unsigned int>(call.what)]) + (call.group.isolated ? ", isolated" : "") +
           (call.group.knockout ? ", knockout" : "") + ", " +
           vantu::kBlendModeNames[static_cast<unsigned int>(call.paint.mode)] +
           (call.paint.alpha < 255 ? ", translucent" : "") + (call.paint.mask ? ", 8-bit mask" : "") + ", " +
           SizeOf(CountPixels(call.box));
}

}  // namespace

void Make(const Call& call, vantu::Painter& painter) {
    switch (call.what) {
        case Call::What::Fill: painter.Fill(call.box, call.color, call.paint); break;
        case Call::What::Draw: painter.Draw(call.picture, call.at, call.paint); break;
        case Call::What::BeginGroup: painter.BeginGroup(call.box, call.group); break;
        case Call::What::EndGroup: painter.EndGroup(call.paint); break;
    }
}

CallList* Calls::ListOf(const std::shared_ptr<vantu::IQorImage>& page, const Pixels& visible) {
    return keeps_ ? &kept_.emplace_back(CallList{page, visible, {}}) : nullptr;
}

void Calls::Add(const Call& call, Clock::duration time) {
    Sum& sum = sums_[KindOf(call)];
    ++sum.calls;
    sum.pixels += CountPixels(call.box);
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
