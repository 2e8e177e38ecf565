#include "Interpreter.h"
#include "Objects.h"
#include "Samples.h"

namespace pdf {

namespace {

// A sample of a picture or a pixel of a shading takes as long as so many pixels of one colour.
constexpr double kTimesForPicture = 16;
// How many pixels wide a line is at least: so that it can be seen, and that it covers half of a pixel where it has to.
constexpr double kThinnest = 0.2;
constexpr double kThinnestHard = 1;

}  // namespace

void Interpreter::PaintPath(bool fill, bool evenOdd, bool stroke) {
    if (fill || stroke) PaintOutline(path_, state_.toDevice, fill, evenOdd, stroke);
    if (pendingClip_ != PendingClip::None && !path_.IsEmpty())
        ClipTo(path_, state_.toDevice, pendingClip_ == PendingClip::EvenOdd);
    pendingClip_ = PendingClip::None;
    path_ = {};
}

void Interpreter::ClipTo(const Path& path, const Matrix& toDevice, bool evenOdd) {
    state_.clip = Intersect(state_.clip, FillCoverage(path, toDevice, evenOdd, Visible()));
    Spend(state_.clip.box, 1);
}

void Interpreter::PaintOutline(const Path& path, const Matrix& toDevice, bool fill, bool evenOdd, bool stroke) {
    if (IsHidden() || path.IsEmpty()) return;
    Mask filled, stroked;
    if (fill) filled = FillCoverage(path, toDevice, evenOdd, Visible());
    const double thinnest = canvas_.HasHardEdges() ? kThinnestHard : kThinnest;
    if (stroke) stroked = StrokeCoverage(path, toDevice, state_.line, thinnest, Visible());
    if (fill && stroke) filled = UnderStroke(filled, stroked, state_.stroke.alpha);
    PaintShape(filled, state_.fill);
    PaintShape(stroked, state_.stroke);
}

void Interpreter::PaintShape(const Mask& shape, const Ink& ink) {
    const Mask mask = Clipped(shape);
    if (IsEmpty(mask.box)) return;
    Spend(mask.box, ink.space->isPattern ? kTimesForPicture : 1);
    if (!ink.space->isPattern) {
        canvas_.Fill(ink.space->ToColor(ink.components), mask, PlacingOf(ink));
    } else if (ToInteger(Entry(ink.pattern, "/PatternType"), 0) == 1) {
        PaintTiles(mask, ink);
    } else {
        PaintImage(
            PaintShading(Entry(ink.pattern, "/Shading"), resources_, ink.patternToDevice, mask.box, true, page_.notes),
            mask, ink);
    }
}

void Interpreter::PaintImage(const PlacedImage& placed, const Mask& within, const Ink& ink) {
    const Pixels& box = placed.coverage.box;
    canvas_.Draw(placed.image, {box.x0, box.y0}, Intersect(placed.coverage, within), PlacingOf(ink));
}

void Interpreter::PaintPicture(QPDFObjectHandle picture) {
    if (IsHidden()) return;
    const double samples = ToNumber(Entry(picture, "/Width"), 0) * ToNumber(Entry(picture, "/Height"), 0);
    page_.budget.Spend(kTimesForPicture * std::clamp<double>(samples, 0, kMostPicturePixels));
    const PlacedImage placed =
        PlacePicture(picture, resources_, state_.toDevice, Visible(), page_.pictures, page_.notes);
    Spend(placed.coverage.box, kTimesForPicture);
    if (placed.image == nullptr)
        PaintShape(placed.coverage, state_.fill);
    else
        PaintImage(placed, state_.clip, state_.fill);
}

void Interpreter::PaintShadingOf(QPDFObjectHandle shading) {
    if (IsHidden()) return;
    Spend(Visible(), kTimesForPicture);
    PaintImage(PaintShading(shading, resources_, state_.toDevice, Visible(), false, page_.notes), state_.clip,
               state_.fill);
}

}  // namespace pdf
