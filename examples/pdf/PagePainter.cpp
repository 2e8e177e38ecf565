#include "PagePainter.h"

#include <vantu/ImageUtil.h>

#include <functional>
#include <future>

#include "Images.h"
#include "Interpreter.h"
#include "Objects.h"
#include "Transparency.h"

namespace pdf {

namespace {

constexpr int kHiddenFlag = 2;
constexpr int kNoViewFlag = 32;
constexpr double kUsualPixels = 612 * 792;  // of a page
constexpr unsigned int kWhite = 0xFFFFFFFF;

// The appearance stream of an annotation that is shown; null of one that is not.
QPDFObjectHandle AppearanceOf(QPDFObjectHandle annotation, const Document& document) {
    const int flags = ToInteger(Entry(annotation, "/F"), 0);
    const bool isHidden =
        (flags & (kHiddenFlag | kNoViewFlag)) != 0 || ToName(Entry(annotation, "/Subtype")) == "/Popup";
    if (isHidden || !document.IsShown(Entry(annotation, "/OC"))) return QPDFObjectHandle::newNull();
    const QPDFObjectHandle normal = Entry(Entry(annotation, "/AP"), "/N");
    if (QPDFObjectHandle(normal).isStream()) return normal;
    return Entry(normal, ToName(Entry(annotation, "/AS")));
}

// Whether something else comes of these modes on white than of the source.
bool ShowOnWhite(BlendModes modes) {
    for (const vantu::BlendMode same : {vantu::BlendMode::Multiply, vantu::BlendMode::Darken})
        modes.reset(static_cast<std::size_t>(same));
    return modes.any();
}

// Paints the content of a page. A page is an isolated group, whatever it says of that: it blends with no paper. It is
// the same painted on white at once, unless it knocks out or has modes that show there.
void PaintContent(PageContext& context, Canvas& canvas, QPDFObjectHandle page, QPDFObjectHandle resources,
                  const GraphicsState& state) {
    const Pixels rows = canvas.Visible();
    const auto paintOn = [&](Canvas& target) {
        Interpreter(context, target, resources, state).Paint(Entry(page, "/Contents"));
    };
    if (ToBool(Entry(Entry(page, "/Group"), "/K"), false)) {
        canvas.BeginGroup({rows, nullptr}, {true, true, true});
        paintOn(canvas);
        canvas.EndGroup({});
    } else if (ShowOnWhite(context.blendModes.In(QPDFObjectHandle::newDictionary({{"/Resources", resources}})))) {
        const auto clear = MakeImage({0, 0, rows.x1, rows.y1});
        Canvas content(clear, rows, context.calls);
        paintOn(content);
        canvas.Draw(clear, {0, 0}, {rows, nullptr}, {});
    } else {
        paintOn(canvas);
    }
}

}  // namespace

unsigned long PaintRows(PageContext& context, int number, const PageGeometry& geometry,
                        const std::shared_ptr<vantu::IQorImage>& image, const Pixels& rows) {
    const QPDFObjectHandle page = context.document.Page(number);
    const QPDFObjectHandle resources = context.document.Inherited(number, "/Resources");
    const Budget allowed = context.budget;
    // Large pages take longer.
    context.budget.pixelsForOperator *=
        std::max(1.0, static_cast<double>(geometry.area.x1) * geometry.area.y1 / kUsualPixels);
    Canvas canvas(image, rows, context.calls);
    const GraphicsState state{geometry.toDevice, {rows, nullptr}};
    PaintContent(context, canvas, page, resources, state);

    for (const QPDFObjectHandle& annotation : Items(Entry(page, "/Annots"))) {
        const QPDFObjectHandle appearance = AppearanceOf(annotation, context.document);
        // The box of the appearance, after its matrix, comes onto the annotation's rectangle.
        const Box box = MapBox(ToMatrix(Entry(appearance, "/Matrix")), ToBox(Entry(appearance, "/BBox"), {}));
        GraphicsState placed = state;
        placed.toDevice = Concat(Between(box, ToBox(Entry(annotation, "/Rect"), {})), state.toDevice);
        Interpreter(context, canvas, resources, placed).PaintForm(appearance);
    }
    const unsigned long spent = allowed.operators - context.budget.operators;
    context.budget = allowed;
    return spent;
}

std::shared_ptr<vantu::IQorImage> PaintPage(const std::vector<std::unique_ptr<PageContext>>& contexts, int number,
                                            double dotsPerInch) {
    const PageGeometry geometry = contexts.front()->document.Geometry(number, dotsPerInch);
    const auto image = MakeImage(geometry.area);
    // @return the operators that it took.
    const auto paint = [&](PageContext& context, const Pixels& rows) {
        vantu::ImageUtil::Clear(*image, kWhite, rows);
        return PaintRows(context, number, geometry, image, rows);
    };
    const auto edge = [&](std::size_t band) {
        return static_cast<int>(static_cast<std::size_t>(geometry.area.y1) * band / contexts.size());
    };
    std::vector<std::future<unsigned long>> bands;
    for (std::size_t i = 0; i < contexts.size(); ++i) {
        bands.push_back(std::async(std::launch::async, paint, std::ref(*contexts[i]),
                                   Pixels{0, edge(i), geometry.area.x1, edge(i + 1)}));
    }
    unsigned long taken = 0;
    for (auto& band : bands) taken += band.get();
    // A band leaves out what cannot be seen there, so it takes less than the page. All bands take no less: if that is
    // within the budget, no thread would have cut the page off. If not, one thread tells.
    const bool mayBeCutOff = taken > contexts.front()->budget.operators;
    if (bands.size() > 1 && mayBeCutOff) paint(*contexts.front(), geometry.area);
    return image;
}

}  // namespace pdf
