#pragma once

#include <vantu/Painter.h>

#include <memory>
#include <string>
#include <vector>

#include "Calls.h"
#include "Mask.h"

namespace pdf {

// How an element or a group is put on the page.
struct Placing {
    vantu::BlendMode mode = vantu::BlendMode::Normal;
    double alpha = 1;  // 0 to 1
};

// The page and the groups open on it: turns what a page paints into calls to Painter, and counts them.
class Canvas {
public:
    using Image = std::shared_ptr<vantu::IQorImage>;

    // @param page painted on in the rows of `visible` alone. @param calls counts, or null.
    Canvas(const Image& page, const Pixels& visible, Calls* calls);

    // The pixels that can be painted on at the moment: those of the innermost group.
    [[nodiscard]] const Pixels& Visible() const { return groups_.back().visible; }
    [[nodiscard]] bool IsKnockout() const { return groups_.back().knockout; }
    [[nodiscard]] Calls* GetCalls() const { return calls_; }

    // Paints one colour, or a picture whose top left corner lies at a place of the page, through a mask.
    void Fill(const vantu::Color& color, const Mask& mask, const Placing& placing);
    void Draw(const Image& picture, const vantu::Point<int, 2>& at, const Mask& mask, const Placing& placing);

    // Opens a group. What is painted until EndGroup or TakeGroup belongs to it.
    void BeginGroup(const Pixels& bounds, const vantu::GroupKind& kind);
    // Paints the group that was opened last on what lies below it.
    void EndGroup(const Mask& mask, const Placing& placing);

private:
    struct Group {
        Pixels visible;
        bool knockout;
    };

    template <typename Call>
    void Count(const char* what, const Pixels& area, bool masked, const Placing& placing, Call call);

    vantu::Painter painter_;
    std::vector<Group> groups_;  // the page first
    Calls* calls_;
};

}  // namespace pdf
