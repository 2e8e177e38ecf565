#pragma once

#include <vantu/Painter.h>

#include <memory>
#include <optional>
#include <vector>

#include "Calls.h"
#include "Mask.h"

namespace pdf {

// How an element or a group is put on the page.
struct Placing {
    vantu::BlendMode mode = vantu::BlendMode::Normal;
    double alpha = 1;              // 0 to 1
    std::optional<Mask> softMask;  // how opaque each pixel is at most
    bool alphaIsShape = false;     // whether both say where the element is, too
};

// The page and the groups open on it: turns what a page paints into calls to Painter, and counts them.
class Canvas {
public:
    using Image = std::shared_ptr<vantu::IQorImage>;

    // @param page painted on in the rows of `visible` alone. @param calls counts, and keeps if it is to.
    Canvas(const Image& page, const Pixels& visible, Calls& calls);

    // The pixels that can be painted on at the moment: those of the innermost group.
    [[nodiscard]] const Pixels& Visible() const { return groups_.back().shape.box; }
    // Whether a group that is open is a knockout group.
    [[nodiscard]] bool IsKnockout() const { return groups_.back().insideKnockout; }
    // Whether elements are there or not in each pixel.
    [[nodiscard]] bool HasHardEdges() const { return groups_.back().hasHardEdges; }

    // Paints one colour, or a picture whose top left corner lies at a place of the page, in a shape.
    void Fill(const vantu::Color& color, const Mask& shape, const Placing& placing);
    void Draw(const Image& picture, const vantu::Point<int, 2>& at, const Mask& shape, const Placing& placing);

    // Opens a group that can be seen in a shape. What is painted until EndGroup belongs to it.
    void BeginGroup(const Mask& shape, vantu::GroupKind kind);
    // Paints the group that was opened last on what lies below it.
    void EndGroup(const Placing& placing);

private:
    struct Group {
        Mask shape;
        vantu::GroupKind kind = {};
        bool insideKnockout = false;
        // Whether an element is there or not in each pixel. A smooth edge would let what a knockout group started on
        // shine through where elements overlap; where what lies below a group is taken out of it, colours of an edge
        // may wrap.
        bool hasHardEdges = false;
    };

    // The paint of an element or group of a shape.
    vantu::Paint PaintOf(const Mask& shape, const Placing& placing) const;
    void Make(Call call);

    vantu::Painter painter_;
    std::vector<Group> groups_;  // the page first
    Calls& calls_;
    CallList* kept_;  // null unless calls are kept
};

}  // namespace pdf
