#include "PictureReader.h"

#include <algorithm>
#include <cmath>

#include "ColorSpaces.h"
#include "Objects.h"
#include "Samples.h"

namespace pdf {

namespace {

using Bytes = std::vector<unsigned char>;

// low + sample / greatest (high - low), a component each.
std::vector<Interval> DecodeOf(QPDFObjectHandle picture, const ColorSpace& space, unsigned int bits) {
    const std::vector<double> numbers = ToNumbers(Entry(picture, "/Decode"));
    std::vector<Interval> decode;
    for (std::size_t i = 0; i < space.Components(); ++i) {
        if (2 * i + 1 < numbers.size())
            decode.push_back({numbers[2 * i], numbers[2 * i + 1]});
        else
            decode.push_back(space.DefaultDecode(i, bits));
    }
    return decode;
}

// Turns the samples of a pixel into a colour. What was turned before is remembered: all values of short samples, else
// the pixel before.
class Colors {
public:
    Colors(const ColorSpace& space, std::vector<Interval> decode, unsigned int greatest)
        : space_(space), decode_(std::move(decode)), greatest_(greatest), components_(space.Components()) {
        if (components_.size() != 1 || greatest > 255) return;
        for (unsigned int sample = 0; sample <= greatest; ++sample) palette_.push_back(Compute(&sample));
    }

    vantu::Color operator()(const unsigned int* samples) {
        if (!palette_.empty()) return palette_[*samples];
        if (last_.empty() || !std::equal(last_.begin(), last_.end(), samples)) {
            last_.assign(samples, samples + components_.size());
            lastColor_ = Compute(samples);
        }
        return lastColor_;
    }

private:
    vantu::Color Compute(const unsigned int* samples) {
        for (std::size_t i = 0; i < components_.size(); ++i)
            components_[i] = decode_[i].low + samples[i] * (decode_[i].high - decode_[i].low) / greatest_;
        return space_.ToColor(components_);
    }

    const ColorSpace& space_;
    std::vector<Interval> decode_;
    double greatest_;
    std::vector<double> components_;
    std::vector<vantu::Color> palette_;
    std::vector<unsigned int> last_;
    vantu::Color lastColor_;
};

// Pixels that lie within all of the ranges of samples are left out.
bool IsKeyed(const std::vector<double>& keys, const unsigned int* samples, std::size_t components) {
    if (keys.size() != 2 * components) return false;
    for (std::size_t i = 0; i < components; ++i) {
        if (samples[i] < keys[2 * i] || samples[i] > keys[2 * i + 1]) return false;
    }
    return true;
}

// Reads the samples of a picture and has `append` add each pixel to the bytes of the result.
template <typename Append>
Picture ReadPixels(const Samples& samples, std::size_t channels, Append append) {
    Picture out{samples.width, samples.height, channels, {}};
    const std::size_t rowSize = out.width * channels;
    out.pixels.reserve(rowSize * out.height);
    std::vector<unsigned int> row;
    for (std::size_t y = 0; y < out.height; ++y) {
        if (y > 0 && samples.IsMissing(y - 1)) {  // the same once more: a few bytes may claim to be a large picture
            out.pixels.resize(out.pixels.size() + rowSize);
            std::copy_n(out.pixels.end() - 2 * static_cast<std::ptrdiff_t>(rowSize), rowSize,
                        out.pixels.end() - static_cast<std::ptrdiff_t>(rowSize));
            continue;
        }
        samples.ReadRow(y, row);
        for (const unsigned int* pixel = row.data(); pixel != row.data() + row.size(); pixel += samples.components)
            append(out.pixels, pixel);
    }
    return out;
}

// Straight colours, opaque but where a colour key says otherwise.
std::optional<Picture> ReadColors(QPDFObjectHandle picture, const ColorSpace& space, Notes& notes) {
    const auto samples = ReadSamples(picture, space.Components(), notes);
    if (!samples) return std::nullopt;
    const std::vector<double> keys = ToNumbers(Entry(picture, "/Mask"));
    Colors colors(space, DecodeOf(picture, space, samples->bits), samples->Greatest());
    return ReadPixels(*samples, 4, [&](Bytes& out, const unsigned int* pixel) {
        const vantu::Color color = colors(pixel);
        const unsigned char alpha = IsKeyed(keys, pixel, samples->components) ? 0 : 255;
        out.insert(out.end(), {color.GetBlue(), color.GetGreen(), color.GetRed(), alpha});
    });
}

// One channel: how much is painted. Soft masks are gray pictures; of a stencil 0 is painted and 1 is not.
std::optional<Picture> ReadOpacity(QPDFObjectHandle mask, bool isStencil, Notes& notes) {
    const auto gray = ColorSpace::Device(1);
    const auto samples = ReadSamples(mask, 1, notes);
    if (!samples) return std::nullopt;
    const unsigned char turn = isStencil ? 255 : 0;
    Colors colors(*gray, DecodeOf(mask, *gray, samples->bits), samples->Greatest());
    return ReadPixels(*samples, 1, [&](Bytes& out, const unsigned int* pixel) {
        out.push_back(static_cast<unsigned char>(colors(pixel).GetGreen() ^ turn));
    });
}

// The nearest pixels in another size.
Picture Resize(const Picture& picture, std::size_t width, std::size_t height) {
    Picture out{width, height, picture.channels, {}};
    out.pixels.reserve(width * height * out.channels);
    for (std::size_t y = 0; y < height; ++y) {
        for (std::size_t x = 0; x < width; ++x) {
            const unsigned char* const pixel = picture.At(x * picture.width / width, y * picture.height / height);
            out.pixels.insert(out.pixels.end(), pixel, pixel + picture.channels);
        }
    }
    return out;
}

// Brings both to one size. A colour c that was mixed with a matte m by an opacity a has to be unmixed,
// (c - m) / a + m, and premultiplied: c - m (1 - a).
Picture Join(Picture colors, Picture opacity, const vantu::Color* matte) {
    const std::size_t width = std::max(colors.width, opacity.width);
    const std::size_t height = std::max(colors.height, opacity.height);
    if (colors.width != width || colors.height != height) colors = Resize(colors, width, height);
    if (opacity.width != width || opacity.height != height) opacity = Resize(opacity, width, height);
    for (std::size_t i = 0; i < width * height; ++i) {
        unsigned char* const pixel = colors.pixels.data() + 4 * i;
        pixel[3] = static_cast<unsigned char>((pixel[3] * opacity.pixels[i] + 127) / 255);
        if (matte == nullptr) continue;
        const int mattes[] = {matte->GetBlue(), matte->GetGreen(), matte->GetRed()};
        for (std::size_t j = 0; j < 3; ++j) {
            const int own = pixel[j] - (mattes[j] * (255 - pixel[3]) + 127) / 255;
            pixel[j] = static_cast<unsigned char>(std::clamp<int>(own, 0, pixel[3]));
        }
    }
    return colors;
}

void Premultiply(Picture& picture) {
    for (unsigned char* pixel = picture.pixels.data(); pixel != picture.pixels.data() + picture.pixels.size();
         pixel += 4) {
        if (pixel[3] == 255) continue;
        for (int j = 0; j < 3; ++j) pixel[j] = static_cast<unsigned char>((pixel[j] * pixel[3] + 127) / 255);
    }
}

}  // namespace

std::optional<Picture> ReadPicture(QPDFObjectHandle picture, QPDFObjectHandle resources, Notes& notes) {
    if (ToBool(Entry(picture, "/ImageMask"), false)) return ReadOpacity(picture, true, notes);
    const QPDFObjectHandle name = Entry(picture, "/ColorSpace");
    const auto space = ColorSpace::Parse(name, resources, notes);
    if (space->Components() == 0) return std::nullopt;
    std::optional<Picture> colors = ReadColors(picture, *space, notes);
    if (!colors) return std::nullopt;

    QPDFObjectHandle softMask = Entry(picture, "/SMask");
    QPDFObjectHandle stencil = Entry(picture, "/Mask");
    std::optional<Picture> opacity;
    if (softMask.isStream())
        opacity = ReadOpacity(softMask, false, notes);
    else if (stencil.isStream())
        opacity = ReadOpacity(stencil, true, notes);
    if (opacity &&
        std::max(colors->width, opacity->width) > kMostPicturePixels / std::max(colors->height, opacity->height)) {
        notes.Add("mask of a picture that has another shape and too many pixels: left out");
        opacity.reset();
    }
    const std::vector<double> matte = ToNumbers(Entry(softMask, "/Matte"));
    if (opacity && matte.size() == space->Components()) {
        const vantu::Color color = space->ToColor(matte);
        return Join(std::move(*colors), std::move(*opacity), &color);
    }
    if (opacity) colors = Join(std::move(*colors), std::move(*opacity), nullptr);
    Premultiply(*colors);
    return colors;
}

}  // namespace pdf
