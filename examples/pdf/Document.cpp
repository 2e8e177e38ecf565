#include "Document.h"

#include <stdexcept>

#include "Objects.h"

namespace pdf {

namespace {

constexpr double kMostPixels = 1 << 28;
constexpr double kPointsPerInch = 72;
constexpr int kDeepestTree = 64;
const Box kLetter{0, 0, 612, 792};

}  // namespace

Document::Document(const std::string& path) {
    file_.setSuppressWarnings(true);
    file_.processFile(path.c_str());
    pages_ = file_.getAllPages();
    const QPDFObjectHandle properties = Entry(file_.getRoot(), "/OCProperties");
    const QPDFObjectHandle byDefault = Entry(properties, "/D");
    const auto forEach = [](QPDFObjectHandle groups, auto use) {
        for (int i = 0; groups.isArray() && i < groups.getArrayNItems(); ++i) use(groups.getArrayItem(i).getObjGen());
    };
    if (ToName(Entry(byDefault, "/BaseState")) == "/OFF")
        forEach(Entry(properties, "/OCGs"), [this](QPDFObjGen group) { hiddenGroups_.insert(group); });
    forEach(Entry(byDefault, "/ON"), [this](QPDFObjGen group) { hiddenGroups_.erase(group); });
    forEach(Entry(byDefault, "/OFF"), [this](QPDFObjGen group) { hiddenGroups_.insert(group); });
}

QPDFObjectHandle Document::Inherited(int number, const std::string& key) const {
    QPDFObjectHandle node = Page(number);
    for (int depth = 0; depth < kDeepestTree; ++depth, node = Entry(node, "/Parent")) {
        const QPDFObjectHandle value = Entry(node, key);
        if (!QPDFObjectHandle(value).isNull()) return value;
    }
    return QPDFObjectHandle::newNull();
}

PageGeometry Document::Geometry(int number, double dotsPerInch) const {
    const Box media = ToBox(Inherited(number, "/MediaBox"), kLetter);
    Box crop = ToBox(Inherited(number, "/CropBox"), media);
    crop = {std::max(crop.x0, media.x0), std::max(crop.y0, media.y0), std::min(crop.x1, media.x1),
            std::min(crop.y1, media.y1)};
    if (crop.IsEmpty()) crop = media.IsEmpty() ? kLetter : media;

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

QPDFObjectHandle Document::MakeStream(QPDFObjectHandle dictionary, const std::string& data) {
    QPDFObjectHandle stream = QPDFObjectHandle::newStream(&file_, data);
    stream.replaceDict(dictionary);
    return stream;
}

bool Document::IsShown(QPDFObjectHandle group) const {
    if (ToName(Entry(group, "/Type")) != "/OCMD") return !hiddenGroups_.contains(group.getObjGen());
    const QPDFObjectHandle groups = Entry(group, "/OCGs");
    std::vector<QPDFObjectHandle> members;
    if (QPDFObjectHandle(groups).isArray())
        members = QPDFObjectHandle(groups).getArrayAsVector();
    else if (QPDFObjectHandle(groups).isDictionary())
        members.push_back(groups);
    if (members.empty()) return true;
    std::size_t shown = 0;
    for (const QPDFObjectHandle& member : members) shown += hiddenGroups_.contains(member.getObjGen()) ? 0 : 1;
    const std::string policy = ToName(Entry(group, "/P"));
    if (policy == "/AllOn") return shown == members.size();
    if (policy == "/AnyOff") return shown < members.size();
    if (policy == "/AllOff") return shown == 0;
    return shown > 0;
}

}  // namespace pdf
