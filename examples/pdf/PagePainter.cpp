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

// What leads an appearance to its place: the box of its own, after its matrix, onto the annotation's rectangle.
Matrix AppearanceMatrix(QPDFObjectHandle annotation, QPDFObjectHandle appearance) {
    const Box place = ToBox(Entry(annotation, "/Rect"), {});
    const Box box = MapBox(ToMatrix(Entry(appearance, "/Matrix")), ToBox(Entry(appearance, "/BBox"), {}));
    if (box.IsEmpty()) return {1, 0, 0, 1, place.x0, place.y0};
    const double across = (place.x1 - place.x0) / (box.x1 - box.x0);
    const double up = (place.y1 - place.y0) / (box.y1 - box.y0);
    return {across, 0, 0, up, place.x0 - box.x0 * across, place.y0 - box.y0 * up};
}

// A page that says it is a group is isolated, whatever it says of that: it blends with no paper. It is the same painted
// on white at once, unless it knocks out or has modes that make something else of white than the source.
bool NeedsGroup(QPDFObjectHandle group, BlendModes modes) {
    for (const vantu::BlendMode same : {vantu::BlendMode::Multiply, vantu::BlendMode::Darken})
        modes.reset(static_cast<std::size_t>(same));
    return group.isDictionary() && (modes.any() || ToBool(Entry(group, "/K"), false));
}

}  // namespace

unsigned long PagePainter::Paint(int number, const PageGeometry& geometry,
                                 const std::shared_ptr<vantu::IQorImage>& image, const Pixels& rows) {
    const QPDFObjectHandle page = document_.Page(number);
    const QPDFObjectHandle resources = document_.Inherited(number, "/Resources");
    Canvas canvas(image, rows, &calls_);
    Budget budget = budget_;
    // Large pages take longer.
    budget.pixelsForOperator *= std::max(1.0, static_cast<double>(geometry.area.x1) * geometry.area.y1 / kUsualPixels);
    PageContext context{document_, canvas, fonts_, pictures_, blendModes_, notes_, budget};
    const GraphicsState state{geometry.toDevice, {rows, nullptr}};
    const QPDFObjectHandle group = Entry(page, "/Group");
    const bool isGroup =
        NeedsGroup(group, blendModes_.In(QPDFObjectHandle::newDictionary({{"/Resources", resources}})));
    if (isGroup) canvas.BeginGroup({rows, nullptr}, {true, ToBool(Entry(group, "/K"), false), true});
    Interpreter(context, resources, state).Paint(Entry(page, "/Contents"));
    if (isGroup) canvas.EndGroup({});

    const QPDFObjectHandle annotations = Entry(page, "/Annots");
    for (int i = 0; QPDFObjectHandle(annotations).isArray() && i < QPDFObjectHandle(annotations).getArrayNItems();
         ++i) {
        const QPDFObjectHandle annotation = Item(annotations, i);
        const QPDFObjectHandle appearance = AppearanceOf(annotation, document_);
        GraphicsState placed = state;
        placed.toDevice = Concat(AppearanceMatrix(annotation, appearance), state.toDevice);
        Interpreter(context, resources, placed).PaintForm(appearance);
    }
    return budget_.operators - budget.operators;
}

std::shared_ptr<vantu::IQorImage> PaintPage(std::vector<std::unique_ptr<PagePainter>>& painters, int number,
                                            double dotsPerInch) {
    const PageGeometry geometry = painters.front()->GetDocument().Geometry(number, dotsPerInch);
    const auto image = MakeImage(geometry.area);
    // @return the operators that it took.
    const auto paint = [&](PagePainter& painter, const Pixels& rows) {
        vantu::ImageUtil::Clear(*image, kWhite, rows);
        return painter.Paint(number, geometry, image, rows);
    };
    const auto edge = [&](std::size_t band) {
        return static_cast<int>(static_cast<std::size_t>(geometry.area.y1) * band / painters.size());
    };
    std::vector<std::future<unsigned long>> bands;
    for (std::size_t i = 0; i < painters.size(); ++i) {
        bands.push_back(std::async(std::launch::async, paint, std::ref(*painters[i]),
                                   Pixels{0, edge(i), geometry.area.x1, edge(i + 1)}));
    }
    unsigned long taken = 0;
    for (auto& band : bands) taken += band.get();
    // A band leaves out what cannot be seen there, so it takes less than the page. All bands take no less: if that is
    // within the budget, no thread would have cut the page off. If not, one thread tells.
    if (bands.size() > 1 && taken > painters.front()->GetBudget().operators) paint(*painters.front(), geometry.area);
    return image;
}

}  // namespace pdf
