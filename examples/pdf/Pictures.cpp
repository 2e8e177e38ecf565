#include <algorithm>
#include <array>
#include <cmath>

#include "Images.h"
#include "Outlines.h"

namespace pdf {

namespace {

constexpr double kMostInRow = 64;  // samples to look at for one pixel, along each axis

constexpr Box kUnitSquare{0, 0, 1, 1};

// The samples along one axis whose middles lie within `reach` of a place, or the nearest one.
struct Run {
    std::size_t first;
    std::size_t last;  // included
    std::size_t step;  // 1 unless there are too many

    Run(double middle, double reach, std::size_t size) {
        const auto inside = [&](double i) { return std::max(0.0, std::min(static_cast<double>(size - 1), i)); };
        const double low = std::ceil(middle - reach - 0.5);
        const double high = std::ceil(middle + reach - 0.5) - 1;
        first = static_cast<std::size_t>(inside(low <= high ? low : std::floor(middle)));
        last = static_cast<std::size_t>(inside(low <= high ? high : std::floor(middle)));
        step = 1 + static_cast<std::size_t>(static_cast<double>(last - first) / kMostInRow);
    }
};

using Pixel = std::array<unsigned char, 4>;

Pixel MeanOf(const Picture& picture, const Run& columns, const Run& rows) {
    std::array<unsigned long, 4> sums{};
    unsigned long count = 0;
    for (std::size_t y = rows.first; y <= rows.last; y += rows.step) {
        for (std::size_t x = columns.first; x <= columns.last; x += columns.step, ++count) {
            const unsigned char* const sample = picture.At(x, y);
            for (std::size_t j = 0; j < picture.channels; ++j) sums[j] += sample[j];
        }
    }
    Pixel mean{};
    for (std::size_t j = 0; j < 4; ++j) mean[j] = static_cast<unsigned char>((2 * sums[j] + count) / (2 * count));
    return mean;
}

// Samples a picture where a mask covers anything, into the same channels of an image as large as the mask's box.
void Sample(const Picture& picture, const Matrix& toPicture, const Mask& coverage, unsigned char* out) {
    // A pixel is a parallelogram there; these are half the sides of the upright rectangle around it.
    const double reachX = (std::abs(toPicture.a) + std::abs(toPicture.c)) / 2;
    const double reachY = (std::abs(toPicture.b) + std::abs(toPicture.d)) / 2;
    for (int y = coverage.box.y0; y < coverage.box.y1; ++y) {
        for (int x = coverage.box.x0; x < coverage.box.x1; ++x, out += picture.channels) {
            if (SampleAt(coverage, x, y) == 0) continue;
            const PointD middle = toPicture.Map({x + 0.5, y + 0.5});
            const Pixel mean = MeanOf(picture, {middle.x, reachX, picture.width}, {middle.y, reachY, picture.height});
            std::copy_n(mean.begin(), picture.channels, out);
        }
    }
}

}  // namespace

PlacedImage PlacePicture(QPDFObjectHandle stream, QPDFObjectHandle resources, const Matrix& toDevice,
                         const Pixels& clip, PictureCache& pictures, Notes& notes) {
    if (!toDevice.IsInvertible() || IsEmpty(Intersect(clip, Around(MapBox(toDevice, kUnitSquare))))) return {};
    const Picture* const picture = pictures.Get(stream, resources, notes);
    if (picture == nullptr) return {};

    PlacedImage placed;
    Matrix matrix = toDevice;
    if (IsUpright(toDevice)) {
        const Box exact = MapBox(toDevice, kUnitSquare);
        const Box snapped = Snapped(exact);
        matrix = Concat(toDevice, Between(exact, snapped));
        placed.coverage.box = Intersect(clip, Around(snapped));
    } else {
        Path outline;
        outline.AddRectangle(kUnitSquare);
        placed.coverage = FillCoverage(outline, matrix, false, clip);
    }
    const Pixels& box = placed.coverage.box;
    if (IsEmpty(box)) return {};
    // The first row of a picture is at the top of the unit square.
    const auto width = static_cast<double>(picture->width);
    const auto height = static_cast<double>(picture->height);
    const Matrix toPicture = Concat(matrix.Inverse(), {width, 0, 0, -height, 0, height});
    if (picture->channels == 1) {
        const Mask stencil = MakeMask(box);
        Sample(*picture, toPicture, placed.coverage, RowOf(stencil, box.y0));
        return {Intersect(placed.coverage, stencil), nullptr};
    }
    placed.image = MakeImage(box);
    Sample(*picture, toPicture, placed.coverage, placed.image->GetPixelData());
    return placed;
}

}  // namespace pdf
