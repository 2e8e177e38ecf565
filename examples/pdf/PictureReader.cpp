#include "PictureReader.h"

#include <algorithm>
#include <cmath>

#include "ColorSpaces.h"
#include "Objects.h"
#include "Samples.h"

namespace pdf {

namespace {

using Bytes = std::vector<unsigned char>;

constexpr std::size_t kMostBytesKept = 1U << 26;  // of pictures, if it is more than one

// Reads a picture without its masks: `append` adds to the bytes what becomes of a pixel of some samples and a colour.
template <typename Append>
std::optional<Picture> ReadPixels(QPDFObjectHandle stream, const ColorSpace& space, std::size_t channels, Notes& notes,
                                  Append append) {
    const auto samples = ReadSamples(stream, space.Components(), notes);
    if (!samples) return std::nullopt;
    const std::size_t count = space.Components();
    Intervals decode = ToIntervals(Entry(stream, "/Decode"));
    while (decode.size() < count) decode.push_back(space.DefaultDecode(decode.size(), samples->bits));

    Picture out{samples->width, samples->height, channels, {}};
    out.pixels.reserve(out.width * out.height * channels);
    std::vector<unsigned int> pixel(count);
    std::vector<unsigned int> last;  // the samples that `color` was made of
    std::vector<double> components(count);
    vantu::Color color;
    for (std::size_t y = 0; y < out.height; ++y) {
        for (std::size_t x = 0; x < out.width; ++x) {
            for (std::size_t i = 0; i < count; ++i) pixel[i] = samples->At(x, y, i);
            if (pixel != last) {
                last = pixel;
                // low + sample / greatest (high - low)
                for (std::size_t i = 0; i < count; ++i)
                    components[i] = decode[i].low + pixel[i] * (decode[i].high - decode[i].low) / samples->Greatest();
                color = space.ToColor(components);
            }
            append(out.pixels, pixel, color);
        }
    }
    return out;
}

// Straight colours, opaque but where a colour key, a range for each sample, says otherwise.
std::optional<Picture> ReadColors(QPDFObjectHandle picture, const ColorSpace& space, Notes& notes) {
    const Intervals keys = ToIntervals(Entry(picture, "/Mask"));
    const auto isKeyed = [&](const std::vector<unsigned int>& samples) {
        return std::ranges::equal(samples, keys, [](unsigned int sample, const Interval& key) {
            return sample >= key.low && sample <= key.high;
        });
    };
    return ReadPixels(picture, space, 4, notes, [&](Bytes& out, const auto& samples, const vantu::Color& color) {
        const unsigned char alpha = isKeyed(samples) ? 0 : color.GetAlpha();
        out.insert(out.end(), {color.GetBlue(), color.GetGreen(), color.GetRed(), alpha});
    });
}

// One channel: how much is painted. Soft masks are gray pictures; of a stencil 0 is painted and 1 is not.
std::optional<Picture> ReadOpacity(QPDFObjectHandle mask, bool isStencil, Notes& notes) {
    const unsigned char turn = isStencil ? 255 : 0;
    return ReadPixels(mask, *ColorSpace::Device(1), 1, notes, [&](Bytes& out, const auto&, const vantu::Color& color) {
        out.push_back(static_cast<unsigned char>(color.GetGreen() ^ turn));
    });
}

// Premultiplies colours c by their opacity a, in the larger of both sizes: c a. Colours c' that were mixed with a matte
// m by the opacity have to be unmixed, c = (c' - m) / a + m, which gives c' - m (1 - a).
Picture Join(const Picture& colors, const Picture& opacity, const vantu::Color* matte) {
    Picture out{std::max(colors.width, opacity.width), std::max(colors.height, opacity.height), 4, {}};
    out.pixels.reserve(out.width * out.height * 4);
    const auto spread = [&out](const Picture& picture, std::size_t x, std::size_t y) {
        return picture.At(x * picture.width / out.width, y * picture.height / out.height);
    };
    const int mattes[] = {matte ? matte->GetBlue() : 0, matte ? matte->GetGreen() : 0, matte ? matte->GetRed() : 0};
    for (std::size_t y = 0; y < out.height; ++y) {
        for (std::size_t x = 0; x < out.width; ++x) {
            const unsigned char* const color = spread(colors, x, y);
            const int alpha = (color[3] * *spread(opacity, x, y) + 127) / 255;
            for (std::size_t i = 0; i < 3; ++i) {
                const int own =
                    matte ? color[i] - (mattes[i] * (255 - alpha) + 127) / 255 : (color[i] * alpha + 127) / 255;
                out.pixels.push_back(static_cast<unsigned char>(std::clamp(own, 0, alpha)));
            }
            out.pixels.push_back(static_cast<unsigned char>(alpha));
        }
    }
    return out;
}

}  // namespace

std::optional<Picture> ReadPicture(QPDFObjectHandle picture, QPDFObjectHandle resources, Notes& notes) {
    if (ToBool(Entry(picture, "/ImageMask"), false)) return ReadOpacity(picture, true, notes);
    const auto space = ColorSpace::Parse(Entry(picture, "/ColorSpace"), resources, notes);
    if (space->Components() == 0) return std::nullopt;
    const std::optional<Picture> colors = ReadColors(picture, *space, notes);
    if (!colors) return std::nullopt;

    QPDFObjectHandle softMask = Entry(picture, "/SMask");
    QPDFObjectHandle stencil = Entry(picture, "/Mask");
    std::optional<Picture> opacity = Picture{1, 1, 1, {255}};
    if (softMask.isStream())
        opacity = ReadOpacity(softMask, false, notes);
    else if (stencil.isStream())
        opacity = ReadOpacity(stencil, true, notes);
    if (!opacity ||
        std::max(colors->width, opacity->width) > kMostPicturePixels / std::max(colors->height, opacity->height)) {
        notes.Add("picture whose mask cannot be read or is too large: left out");
        return std::nullopt;
    }
    const std::vector<double> matte = ToNumbers(Entry(softMask, "/Matte"));
    const bool hasMatte = matte.size() == space->Components();
    const vantu::Color matteColor = hasMatte ? space->ToColor(matte) : vantu::Color();
    return Join(*colors, *opacity, hasMatte ? &matteColor : nullptr);
}

const Picture* PictureCache::Get(QPDFObjectHandle picture, QPDFObjectHandle resources, Notes& notes) {
    // Inline pictures say no subtype; they share one object.
    const bool isInline = ToName(Entry(picture, "/Subtype")) != "/Image";
    const QPDFObjGen id = isInline ? QPDFObjGen() : picture.getObjGen();
    if (const auto known = kept_.find(id); known != kept_.end() && !isInline) return &known->second;
    std::optional<Picture> read = ReadPicture(picture, resources, notes);
    if (!read) return nullptr;
    bytes_ += read->pixels.size();
    if (bytes_ > kMostBytesKept) {
        kept_.clear();
        bytes_ = read->pixels.size();
    }
    return &kept_.insert_or_assign(id, std::move(*read)).first->second;
}

}  // namespace pdf
