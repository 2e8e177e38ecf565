#include "Document.h"

#include <qpdf/QPDFPageObjectHelper.hh>
#include <stdexcept>

#include "Objects.h"

namespace pdf {

namespace {

constexpr double kMostPixels = 1 << 28;
constexpr double kPointsPerInch = 72;
constexpr int kMostExpressions = 1000;
const Box kLetter{0, 0, 612, 792};

}  // namespace

Document::Document(const std::string& path) {
    file_.setSuppressWarnings(true);
    file_.processFile(path.c_str());
    pages_ = file_.getAllPages();
    const QPDFObjectHandle properties = Entry(file_.getRoot(), "/OCProperties");
    const QPDFObjectHandle byDefault = Entry(properties, "/D");
    const auto hide = [this](QPDFObjectHandle groups) {
        for (QPDFObjectHandle& group : Items(groups))
            if (group.isIndirect()) hiddenGroups_.insert(group.getObjGen());
    };
    if (ToName(Entry(byDefault, "/BaseState")) == "/OFF") hide(Entry(properties, "/OCGs"));
    for (QPDFObjectHandle& group : Items(Entry(byDefault, "/ON"))) hiddenGroups_.erase(group.getObjGen());
    hide(Entry(byDefault, "/OFF"));
    for (QPDFObjectHandle& usage : Items(Entry(byDefault, "/AS"))) {
        if (ToName(Entry(usage, "/Event")) != "/View") continue;
        for (QPDFObjectHandle& group : Items(Entry(usage, "/OCGs"))) {
            const std::string state = ToName(Entry(Entry(Entry(group, "/Usage"), "/View"), "/ViewState"));
            if (state == "/ON") hiddenGroups_.erase(group.getObjGen());
            if (state == "/OFF") hiddenGroups_.insert(group.getObjGen());
        }
    }
}

QPDFObjectHandle Document::Inherited(int number, const std::string& key) const {
    return QPDFPageObjectHelper(Page(number)).getAttribute(key, false);
}

PageGeometry Document::Geometry(int number, double dotsPerInch) const {
    const Box media = ToBox(Inherited(number, "/MediaBox"), kLetter);
    Box crop = Intersect(ToBox(Inherited(number, "/CropBox"), media), media);
    if (IsEmpty(crop)) crop = IsEmpty(media) ? kLetter : media;

    const double unit = ToNumber(Entry(Page(number), "/UserUnit"), 1);
    const double scale = dotsPerInch / kPointsPerInch * (unit > 0 ? unit : 1);
    const double width = (crop.x1 - crop.x0) * scale;
    const double height = (crop.y1 - crop.y0) * scale;
    const int quarterTurns = (ToInteger(Inherited(number, "/Rotate"), 0) / 90 % 4 + 4) % 4;
    const bool isTurned = quarterTurns % 2 != 0;
    // A page of 595.276 points has 596 columns at 72 dots an inch, one of 612.0000001 has 612.
    const double columns = std::max(1.0, std::ceil((isTurned ? height : width) - 1e-3));
    const double rows = std::max(1.0, std::ceil((isTurned ? width : height) - 1e-3));
    if (!(columns * rows <= kMostPixels)) throw std::runtime_error("the page is larger than 2^28 pixels");

    // The crop box to 0, 0 and pixels, still upward; then down and clockwise.
    const Matrix scaled{scale, 0, 0, scale, -crop.x0 * scale, -crop.y0 * scale};
    const Matrix turns[] = {
        {1, 0, 0, -1, 0, height}, {0, 1, 1, 0, 0, 0}, {-1, 0, 0, 1, width, 0}, {0, -1, -1, 0, height, width}};
    return {Concat(scaled, turns[quarterTurns]), {0, 0, static_cast<int>(columns), static_cast<int>(rows)}};
}

bool Document::IsTrue(QPDFObjectHandle expression, int& steps) const {
    if (--steps < 0) return true;
    if (!expression.isArray()) return !hiddenGroups_.contains(expression.getObjGen());
    std::vector<QPDFObjectHandle> parts = Items(expression);
    const std::string operation = ToName(Item(expression, 0));
    if (!parts.empty()) parts.erase(parts.begin());
    const auto isTrue = [&](QPDFObjectHandle part) { return IsTrue(part, steps); };
    if (operation == "/Or") return std::ranges::any_of(parts, isTrue);
    return std::ranges::all_of(parts, isTrue) != (operation == "/Not");
}

bool Document::IsShown(QPDFObjectHandle group) const {
    if (ToName(Entry(group, "/Type")) != "/OCMD") return !hiddenGroups_.contains(group.getObjGen());
    int steps = kMostExpressions;
    if (QPDFObjectHandle expression = Entry(group, "/VE"); expression.isArray()) return IsTrue(expression, steps);
    QPDFObjectHandle groups = Entry(group, "/OCGs");
    std::vector<QPDFObjectHandle> members = groups.isArray() ? Items(groups) : std::vector{groups};
    std::erase_if(members, [](QPDFObjectHandle member) { return !member.isDictionary(); });
    if (members.empty()) return true;
    const auto isOn = [this](QPDFObjectHandle member) { return !hiddenGroups_.contains(member.getObjGen()); };
    const std::string policy = ToName(Entry(group, "/P"));
    if (policy == "/AllOn") return std::ranges::all_of(members, isOn);
    if (policy == "/AnyOff") return !std::ranges::all_of(members, isOn);
    if (policy == "/AllOff") return std::ranges::none_of(members, isOn);
    return std::ranges::any_of(members, isOn);
}

}  // namespace pdf
