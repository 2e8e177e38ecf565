#pragma once

#include <vantu/Painter.h>

#include <chrono>
#include <deque>
#include <iosfwd>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Geometry.h"

namespace pdf {

// A call to Painter, told so that it can be made again.
struct Call {
    enum class What { Fill, Draw, BeginGroup, EndGroup };

    What what;
    Pixels box{0, 0, 0, 0};                          // where it may paint
    vantu::Paint paint = {};                         // all but BeginGroup
    vantu::Color color = {};                         // Fill
    std::shared_ptr<vantu::IQorImage> picture = {};  // Draw
    vantu::Point<int, 2> at{0, 0};                   // Draw: the picture's top left corner
    vantu::GroupKind group = {};                     // BeginGroup
};

void Make(const Call& call, vantu::Painter& painter);

// The calls that were made on one picture, in order.
struct CallList {
    std::shared_ptr<vantu::IQorImage> page;
    Pixels visible;  // what of it may be painted on
    std::vector<Call> calls;
};

// What a page asked of the library: calls, pixels and time of each kind. One thread at a time.
class Calls {
public:
    using Clock = std::chrono::steady_clock;

    // Keeps the calls that are made on a picture from now on, too, if Keep was called.
    // @return their list, or null. It stays where it is.
    CallList* ListOf(const std::shared_ptr<vantu::IQorImage>& page, const Pixels& visible);
    void Keep() { keeps_ = true; }
    [[nodiscard]] const std::deque<CallList>& Kept() const { return kept_; }

    // @param call its box is what can be seen.
    void Add(const Call& call, Clock::duration time);
    // One line a kind, what took longest first.
    void Print(std::ostream& out) const;

private:
    struct Sum {
        unsigned long calls = 0;
        unsigned long pixels = 0;
        Clock::duration time{0};
    };
    std::map<std::string, Sum> sums_;
    bool keeps_ = false;
    std::deque<CallList> kept_;
};

}  // namespace pdf
