#pragma once

#include <vantu/imageop.h>

#include <array>
#include <memory>

/// The classic figure of transparency groups: in each of four cells, over a colour gradient, a group of four
/// overlapping grey discs, each painted with Multiply; the groups are isolated or not and knockout or not.
namespace examples {

struct GroupKind {
    bool isolated;
    bool knockout;
};

/// The cells in reading order, two in a row.
inline constexpr std::array<GroupKind, 4> kGroupKinds{{{true, false}, {true, true}, {false, false}, {false, true}}};

/// The lengths of the figure, in pixels.
struct FigureSize {
    explicit constexpr FigureSize(int unit) : cell(17 * unit), gap(2 * unit), radius(4 * unit) {}

    int cell;    ///< side of a cell
    int gap;     ///< white around each cell
    int radius;  ///< of a disc

    /// Side of the whole figure.
    [[nodiscard]] constexpr int Side() const { return 2 * cell + 3 * gap; }
    /// Where a cell stands.
    [[nodiscard]] vantu::Range<int, 2> CellOf(std::size_t kind) const;
    /// The middle points of the discs, counted from the corner of a cell.
    [[nodiscard]] std::array<vantu::Point<int, 2>, 4> Discs() const;
};

inline constexpr vantu::Color kDiscColor{0xFFBFBFBF};

/// The hues from red (0) to magenta (1), mixed with a third of white.
[[nodiscard]] vantu::Color Rainbow(double position);

/// White paper with four gradients, `Bgr24`, bottom-up, rows aligned to 4 bytes.
[[nodiscard]] std::shared_ptr<vantu::CQorImage> MakeGradients(const FigureSize& size);

/// Paints the four groups on the gradients.
void PaintGroups(const std::shared_ptr<vantu::IQorImage>& figure, const FigureSize& size);

/// The image on which a group for `area` of `parent` starts: transparent for an isolated group, else the parent's
/// pixels.
[[nodiscard]] std::shared_ptr<vantu::CQorImage> MakeGroupImage(const vantu::IQorImage& parent,
                                                               const vantu::Range<int, 2>& area, bool isolated);

/// Paints an ellipse of one colour through one range per row: what lies in no range is not knocked out by an element of
/// a knockout group. The image painted on must contain the ellipse.
void PaintEllipse(vantu::IPDFImageBlender& blender, const vantu::Color& color, const vantu::Point<int, 2>& middle,
                  const vantu::Point<int, 2>& radii, vantu::BlendMode mode);

}  // namespace examples
