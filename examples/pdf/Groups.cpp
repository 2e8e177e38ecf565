#include <array>

#include "Functions.h"
#include "Images.h"
#include "Interpreter.h"
#include "Objects.h"
#include "Transparency.h"

namespace pdf {

namespace {

constexpr double kMost = 255;
constexpr double kTimesForGroup = 8;  // of the time that painting a pixel takes
constexpr unsigned int kBytesPerPixel = 4;
const Box kEverywhere{-1e6, -1e6, 1e6, 1e6};

Box BoxOf(QPDFObjectHandle form) {
    return ToBox(Entry(form, "/BBox"), kEverywhere);
}

// What a transfer function makes of each of the 256 values that a mask's group can have.
std::array<unsigned char, 256> TransferTable(QPDFObjectHandle transfer) {
    std::array<unsigned char, 256> table{};
    const auto function = ParseFunction(transfer);
    for (std::size_t i = 0; i < table.size(); ++i) {
        double value = static_cast<double>(i) / kMost;
        if (function) value = std::clamp(function(std::array{value})[0], 0.0, 1.0);
        table[i] = static_cast<unsigned char>(std::lround(value * kMost));
    }
    return table;
}

// 0.3 R + 0.59 G + 0.11 B
unsigned char Luminosity(unsigned int red, unsigned int green, unsigned int blue) {
    return static_cast<unsigned char>((30 * red + 59 * green + 11 * blue + 50) / 100);
}

}  // namespace

void Interpreter::PaintObject(QPDFObjectHandle object) {
    if (IsHidden() || !page_.document.IsShown(Entry(object, "/OC"))) return;
    const std::string kind = ToName(Entry(object, "/Subtype"));
    if (kind == "/Image") PaintPicture(object);
    if (kind == "/Form") PaintForm(object);
}

void Interpreter::PaintForm(QPDFObjectHandle form) {
    if (!form.isStream()) return;
    GraphicsState inside = state_;
    inside.toDevice = Concat(ToMatrix(Entry(form, "/Matrix")), state_.toDevice);
    if (ToName(Entry(Entry(form, "/Group"), "/S")) == "/Transparency")
        PaintGroup(form, inside);
    else
        PaintContentOf(form, inside);
}

void Interpreter::PaintContentOf(QPDFObjectHandle form, const GraphicsState& inside) {
    const QPDFObjectHandle own = Entry(form, "/Resources");
    Interpreter content(page_, canvas_, QPDFObjectHandle(own).isDictionary() ? own : resources_, inside, colorless_);
    Path box;
    box.AddRectangle(BoxOf(form));
    content.ClipTo(box, inside.toDevice, false);
    if (!IsEmpty(content.Visible())) content.PaintOnce(form);
}

void Interpreter::PaintGroup(QPDFObjectHandle form, GraphicsState inside) {
    const QPDFObjectHandle group = Entry(form, "/Group");
    const bool knockout = ToBool(Entry(group, "/K"), false);
    // With Normal alone inside, a group is the same isolated, and nothing need be taken out of it.
    const bool usesModes = page_.blendModes.In(form).any();
    const bool isolated = ToBool(Entry(group, "/I"), false) || !usesModes;
    const bool asItIs = state_.mode == vantu::BlendMode::Normal && state_.fill.alpha == 1 && !state_.softMask;
    inside.mode = vantu::BlendMode::Normal;
    inside.fill.alpha = inside.stroke.alpha = 1;
    inside.softMask.reset();
    // Such a group is what it would be without being one.
    if (asItIs && !knockout && !canvas_.IsKnockout() && (!isolated || !usesModes)) {
        PaintContentOf(form, inside);
        return;
    }
    const Pixels bounds = Intersect(Visible(), Around(MapBox(inside.toDevice, BoxOf(form))));
    const Mask shape = Clipped({bounds, nullptr});  // the clip cuts the group as a whole
    if (IsEmpty(shape.box)) return;
    Spend(shape.box, kTimesForGroup);
    inside.clip = {shape.box, nullptr};
    const Placing asAWhole = PlacingOf(state_.fill);
    BeginGroup(shape, isolated, knockout);
    PaintContentOf(form, inside);
    canvas_.EndGroup(asAWhole);
}

// No group is promised to be plain: whether its clip needs a mask is not the same in each band of a page.
void Interpreter::BeginGroup(const Mask& shape, bool isolated, bool knockout) {
    canvas_.BeginGroup(shape, {isolated, knockout, false, state_.mode == vantu::BlendMode::Normal});
}

Placing Interpreter::PlacingOf(const Ink& ink) {
    Placing placing{state_.mode, ink.alpha, std::nullopt, state_.alphaIsShape};
    if (state_.softMask) placing.softMask = MaskOf(*state_.softMask);
    return placing;
}

// A soft mask's group is painted as a page of its own: its alpha, or its luminosity on the backdrop colour, is the
// mask.
const Mask& Interpreter::MaskOf(SoftMask& softMask) {
    if (softMask.mask) return *softMask.mask;
    softMask.mask = Mask{};  // of a mask that needs itself
    const QPDFObjectHandle form = Entry(softMask.dictionary, "/G");
    const QPDFObjectHandle group = Entry(form, "/Group");
    const bool byLuminosity = ToName(Entry(softMask.dictionary, "/S")) == "/Luminosity";
    vantu::Color backdrop = vantu::ARGB_BLACK;
    const std::vector<double> components = ToNumbers(Entry(softMask.dictionary, "/BC"));
    if (!components.empty()) {
        const QPDFObjectHandle named = Entry(group, "/CS");
        ColorSpace::Pointer space = ColorSpace::Device(components.size());
        if (!space || !QPDFObjectHandle(named).isNull())
            space = ColorSpace::Parse(named, Entry(form, "/Resources"), page_.notes);
        backdrop = space->ToColor(components);
    }
    const auto table = TransferTable(Entry(softMask.dictionary, "/TR"));
    const unsigned char outside =
        table[byLuminosity ? Luminosity(backdrop.GetRed(), backdrop.GetGreen(), backdrop.GetBlue()) : 0];

    const Matrix toDevice = Concat(ToMatrix(Entry(form, "/Matrix")), softMask.toDevice);
    Pixels bounds = canvas_.Visible();
    // In a knockout group an element is also there where a mask makes it clear.
    if (outside == 0 && !canvas_.IsKnockout()) bounds = Intersect(bounds, Around(MapBox(toDevice, BoxOf(form))));
    if (IsEmpty(bounds)) return *softMask.mask;
    Spend(bounds, kTimesForGroup);
    const auto image = MakeImage({0, 0, bounds.x1, bounds.y1});
    Canvas canvas(image, bounds, page_.calls);
    if (byLuminosity) canvas.Fill(backdrop, {bounds, nullptr}, {});
    const GraphicsState inside{toDevice, {bounds, nullptr}};
    const bool knockout = ToBool(Entry(group, "/K"), false);
    const bool needsGroup = knockout || (byLuminosity && page_.blendModes.In(form).any());
    if (needsGroup) canvas.BeginGroup({bounds, nullptr}, {true, knockout, true});
    Interpreter(page_, canvas, resources_, inside).PaintContentOf(form, inside);
    if (needsGroup) canvas.EndGroup({});

    Mask mask = MakeMask(bounds);
    for (int y = bounds.y0; y < bounds.y1; ++y) {
        unsigned char* const row = RowOf(mask, y);
        const std::size_t first =
            static_cast<std::size_t>(y) * image->GetWidth() + static_cast<unsigned int>(bounds.x0);
        const unsigned char* pixel = image->GetPixelData() + first * kBytesPerPixel;
        for (int x = 0; x < Width(bounds); ++x, pixel += kBytesPerPixel)
            row[x] = table[byLuminosity ? Luminosity(pixel[2], pixel[1], pixel[0]) : pixel[3]];
    }
    softMask.mask = std::move(mask);
    return *softMask.mask;
}

}  // namespace pdf
