#include "PagePainter.h"

#include <vantu/CQorImage.h>
#include <vantu/ImageUtil.h>

#include <exception>
#include <thread>

#include "Interpreter.h"
#include "Objects.h"
#include "Transparency.h"

namespace pdf {

namespace {

constexpr int kHiddenFlag = 2;
constexpr int kNoViewFlag = 32;
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

void PagePainter::Paint(int number, const PageGeometry& geometry, const std::shared_ptr<vantu::IQorImage>& image,
                        const Pixels& rows) {
    const QPDFObjectHandle page = document_.Page(number);
    const QPDFObjectHandle resources = document_.Inherited(number, "/Resources");
    Canvas canvas(image, rows, &calls_);
    Budget budget = budget_;
    PageContext context{document_, canvas, fonts_, blendModes_, notes_, budget};
    const GraphicsState state = InitialState(geometry.toDevice, rows);
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
}

std::shared_ptr<vantu::IQorImage> PaintPage(std::vector<std::unique_ptr<PagePainter>>& painters, int number,
                                            double dotsPerInch) {
    const PageGeometry geometry = painters.front()->GetDocument().Geometry(number, dotsPerInch);
    const auto image = std::make_shared<vantu::CQorImage>(
        static_cast<unsigned int>(geometry.area.x1), static_cast<unsigned int>(geometry.area.y1),
        vantu::PixelFormat::Bgra32Premultiplied, static_cast<unsigned char>(4), false);
    vantu::ImageUtil::Clear(*image, kWhite, geometry.area);

    const int bands = static_cast<int>(painters.size());
    std::vector<std::exception_ptr> failures(painters.size());
    std::vector<std::thread> threads;
    for (int band = 0; band < bands; ++band) {
        const auto edge = [&](int n) { return static_cast<int>(std::int64_t{geometry.area.y1} * n / bands); };
        threads.emplace_back([&, band, rows = Pixels{0, edge(band), geometry.area.x1, edge(band + 1)}] {
            const auto at = static_cast<std::size_t>(band);
            try {
                painters[at]->Paint(number, geometry, image, rows);
            } catch (...) {
                failures[at] = std::current_exception();
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (const std::exception_ptr& failure : failures) {
        if (failure) std::rethrow_exception(failure);
    }
    return image;
}

}  // namespace pdf
