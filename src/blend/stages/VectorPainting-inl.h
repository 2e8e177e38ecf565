// Spans painted in steps. Included once per target.

#if defined(IMAGEOP_VECTOR_PAINTING_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef IMAGEOP_VECTOR_PAINTING_INL_H
#undef IMAGEOP_VECTOR_PAINTING_INL_H
#else
#define IMAGEOP_VECTOR_PAINTING_INL_H
#endif

#include <vantu/BlendMode.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <utility>

#include "blend/stages/Stages.h"
#include "blend/stages/VectorForms-inl.h"
#include "blend/stages/VectorGather-inl.h"
#include "blend/stages/VectorPixels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace vantu::HWY_NAMESPACE {

/// Paints the first pixels of rows, `end` of each, which are whole steps, from a place on: all, or to a step from which
/// on it pays to gather.
/// @return the place to go on with.
///
/// Flattened, as compilers leave this or that function out of a large one: called, it costs each step more than it
/// does.
template <typename Stage, typename BlendFunction>
HWY_FLATTEN HWY_NOINLINE Place PaintSteps(const CompositeSpan& span, Place place, std::size_t end,
                                          const BlendFunction& blend) {
    CompositeSpan rest = span.FromRow(place.row);
    for (; place.row < span.rows; ++place.row, rest.GoToRow(1)) {
        std::size_t first = std::exchange(place.x, 0);
        while (first < end) {
            if constexpr (requires { Stage::PaintWhileOpaque(rest, first, end); }) {
                first = Stage::PaintWhileOpaque(rest, first, end);
            }
            // It is not worth while to ask at each step whether the next one is opaque again.
            for (const std::size_t some = std::min(end, first + 4 * StepPixels()); first < some;
                 first += StepPixels()) {
                if (!Stage::Paint(rest, first, blend)) return {place.row, first};
            }
        }
    }
    return place;
}

/// Paints pixels of a span from a place on: all, where rows are narrower than a step, else while some, but few of them
/// need it.
/// @return the place to go on with.
template <typename Stage, BlendMode Mode>
HWY_NOINLINE Place PaintGathered(const CompositeSpan& span, Place place, const Blend<Mode>& blend) {
    GatheredPixels gathered(span, Mode == BlendMode::Normal && span.alpha == 255);
    const bool narrow = span.count < StepPixels();
    while (place.row < span.rows) {
        const Part part = gathered.PartFrom(place);
        const std::size_t count = gathered.Take(part, narrow && span.select == nullptr);
        if (count != 0) {
            PaintSteps<Stage>(gathered.AsSpan(), {0, 0}, count, blend);
            gathered.PutBack(part);
        }
        place.x += part.width;
        if (place.x == span.count) place = {place.row + part.rows, 0};
        if (!narrow && (count == 0 || 4 * count > 3 * part.width * part.rows)) break;
    }
    return place;
}

/// The pixels of a span behind its last whole step, in buffers of a whole step. The first of them fills what is left,
/// so that what holds for all of them holds for the step.
template <bool Group>
class Tail {
public:
    Tail(const CompositeSpan& span, std::size_t first) : span_(span), first_(first), padded_(span) {
        padded_.count = StepPixels();
        padded_.rows = 1;
        padded_.source = Pad<kPackedBytes>(span.source, source_);
        padded_.target = Pad<kPackedBytes>(span.target, target_);
        padded_.opacity = Pad<1>(span.opacity, opacity_);
        padded_.select = Pad<1>(span.select, select_);
        if constexpr (Group) {
            padded_.snapshot = Pad<kPackedBytes>(span.snapshot, snapshot_);
            padded_.groupAlpha = Pad<1>(span.groupAlpha, groupAlpha_);
        }
    }

    [[nodiscard]] const CompositeSpan& Padded() const { return padded_; }

    void Store() const {
        const std::size_t rest = span_.count - first_;
        std::memcpy(span_.target + first_ * kPackedBytes, target_, rest * kPackedBytes);
        if constexpr (Group) std::memcpy(span_.groupAlpha + first_, groupAlpha_, rest * sizeof *groupAlpha_);
    }

private:
    static constexpr std::size_t kMostPixels = kBlocks * HWY_MAX_BYTES / 2;

    template <std::size_t PerPixel, typename T, std::size_t size>
    T* Pad(const T* from, T (&to)[size]) const {
        if (from == nullptr) return nullptr;
        from += first_ * PerPixel;
        std::array<T, PerPixel> first;
        std::copy_n(from, PerPixel, first.begin());
        for (std::size_t i = 0; i < kMostPixels; ++i) std::copy_n(first.begin(), PerPixel, to + i * PerPixel);
        std::copy_n(from, (span_.count - first_) * PerPixel, to);
        return to;
    }

    const CompositeSpan& span_;
    std::size_t first_;
    CompositeSpan padded_;
    unsigned char source_[kMostPixels * kPackedBytes];
    unsigned char target_[kMostPixels * kPackedBytes];
    unsigned char snapshot_[Group ? kMostPixels * kPackedBytes : 1];
    unsigned char opacity_[kMostPixels];
    unsigned char select_[kMostPixels];
    std::uint32_t groupAlpha_[Group ? kMostPixels : 1];
};

/// Paints a span in steps by a stage. There is one place that paints a step, whatever it is of: the code is large.
template <BlendMode Mode, typename Stage, bool Group>
void PaintSpan(const CompositeSpan& span) {
    const Blend<Mode> blend;
    if constexpr (!Group) {
        if (span.opacity == nullptr && span.count < StepPixels()) {
            PaintGathered<Stage>(span, {0, 0}, blend);
            return;
        }
    }
    const std::size_t whole = span.count - span.count % StepPixels();
    for (Place place{0, 0}; whole != 0 && place.row < span.rows;) {
        place = PaintSteps<Stage>(span, place, whole, blend);
        if constexpr (!Group) {
            if (place.row == span.rows) break;
            CompositeSpan steps = span;
            steps.count = whole;
            place = PaintGathered<Stage>(steps, place, blend);
        }
    }
    if (whole == span.count) return;
    if constexpr (!Group) {
        if (span.opacity == nullptr) {
            PaintGathered<Stage>(span.FromPixel(whole), {0, 0}, blend);
            return;
        }
    }
    for (std::size_t row = 0; row < span.rows; ++row) {
        const CompositeSpan rest = span.FromRow(row);
        Tail<Group> tail(rest, whole);
        PaintSteps<Stage>(tail.Padded(), {0, 0}, StepPixels(), blend);
        tail.Store();
    }
}

}  // namespace vantu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
