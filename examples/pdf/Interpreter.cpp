#include "Interpreter.h"

#include "Objects.h"
#include "Transparency.h"

namespace pdf {

namespace {

// An operand; null if there are too few.
QPDFObjectHandle Operand(const Operands& operands, std::size_t index) {
    return index < operands.size() ? operands[index] : QPDFObjectHandle::newNull();
}

double Number(const Operands& operands, std::size_t index) {
    return ToNumber(Operand(operands, index), 0);
}

PointD Point(const Operands& operands, std::size_t index) {
    return {Number(operands, index), Number(operands, index + 1)};
}

Matrix MatrixOf(const Operands& o) {
    return {Number(o, 0), Number(o, 1), Number(o, 2), Number(o, 3), Number(o, 4), Number(o, 5)};
}

std::string Text(const Operands& operands, std::size_t index) {
    QPDFObjectHandle text = Operand(operands, index);
    return text.isString() ? text.getStringValue() : std::string();
}

template <typename Style>
Style ToStyle(QPDFObjectHandle number) {
    return static_cast<Style>(std::clamp(ToInteger(number, 0), 0, 2));
}

// Whether an operator shows text or places it, and changes nothing else.
bool IsPartOfText(const std::string& name) {
    return name == "'" || name == "\"" || (name.starts_with('T') && name != "Tf" && name != "Tr");
}

constexpr std::size_t kMostSavedStates = 1000;
constexpr unsigned long kOperatorsForContent = 6;

}  // namespace

Interpreter::Interpreter(PageContext& page, Canvas& canvas, QPDFObjectHandle resources, const GraphicsState& state,
                         bool colorless)
    : page_(page),
      canvas_(canvas),
      resources_(resources),
      state_(state),
      baseToDevice_(state.toDevice),
      colorless_(colorless) {}

void Interpreter::Paint(QPDFObjectHandle content) {
    Budget& budget = page_.budget;
    if (budget.nesting == 0) {
        page_.notes.Add("content nested too deeply: left out");
        return;
    }
    budget.operators -= std::min(budget.operators, kOperatorsForContent);
    --budget.nesting;
    const auto handle = [this](const std::string& name, const Operands& operands) {
        if (!IsPartOfText(name)) PaintText();
        const auto found = Operators().find(name);
        if (found != Operators().end()) found->second(*this, operands);
    };
    const bool isWhole = page_.contents.Read(content, budget, handle);
    PaintText();
    if (!isWhole) page_.notes.Add("a page of too many operators is cut off");
    ++budget.nesting;
}

void Interpreter::PaintOnce(QPDFObjectHandle content) {
    const auto [open, isNew] = page_.budget.open.insert(content.getObjGen());
    if (!isNew) {
        page_.notes.Add("content inside itself: left out");
        return;
    }
    Paint(content);
    page_.budget.open.erase(open);
}

const std::map<std::string, Interpreter::Action>& Interpreter::Operators() {
    using I = Interpreter&;
    using O = const Operands&;
    static const std::map<std::string, Action> operators{
        {"q",
         [](I i, O) {
             if (i.saved_.size() < kMostSavedStates) i.saved_.push_back(i.state_);
         }},
        {"Q", [](I i, O) { i.RestoreState(); }},
        {"cm", [](I i, O o) { i.state_.toDevice = Concat(MatrixOf(o), i.state_.toDevice); }},
        {"w", [](I i, O o) { i.state_.line.width = std::abs(Number(o, 0)); }},
        {"J", [](I i, O o) { i.state_.line.cap = ToStyle<LineCap>(Operand(o, 0)); }},
        {"j", [](I i, O o) { i.state_.line.join = ToStyle<LineJoin>(Operand(o, 0)); }},
        {"M", [](I i, O o) { i.state_.line.miterLimit = Number(o, 0); }},
        {"d", [](I i, O o) { i.SetDashes(Operand(o, 0), Number(o, 1)); }},
        {"gs", [](I i, O o) { i.SetParameters(i.Resource("/ExtGState", Operand(o, 0))); }},

        {"m", [](I i, O o) { i.path_.MoveTo(Point(o, 0)); }},
        {"l", [](I i, O o) { i.path_.LineTo(Point(o, 0)); }},
        {"c", [](I i, O o) { i.path_.CurveTo(Point(o, 0), Point(o, 2), Point(o, 4)); }},
        {"v", [](I i, O o) { i.path_.CurveTo(i.path_.current, Point(o, 0), Point(o, 2)); }},
        {"y", [](I i, O o) { i.path_.CurveTo(Point(o, 0), Point(o, 2), Point(o, 2)); }},
        {"h", [](I i, O) { i.path_.Close(); }},
        {"re",
         [](I i, O o) {
             const PointD corner = Point(o, 0);
             i.path_.AddRectangle({corner.x, corner.y, corner.x + Number(o, 2), corner.y + Number(o, 3)});
         }},
        {"W", [](I i, O) { i.pendingClip_ = PendingClip::NonZero; }},
        {"W*", [](I i, O) { i.pendingClip_ = PendingClip::EvenOdd; }},
        {"n", [](I i, O) { i.PaintPath(false, false, false); }},
        {"S", [](I i, O) { i.PaintPath(false, false, true); }},
        {"s", [](I i, O) { i.path_.Close(), i.PaintPath(false, false, true); }},
        {"f", [](I i, O) { i.PaintPath(true, false, false); }},
        {"F", [](I i, O) { i.PaintPath(true, false, false); }},
        {"f*", [](I i, O) { i.PaintPath(true, true, false); }},
        {"B", [](I i, O) { i.PaintPath(true, false, true); }},
        {"B*", [](I i, O) { i.PaintPath(true, true, true); }},
        {"b", [](I i, O) { i.path_.Close(), i.PaintPath(true, false, true); }},
        {"b*", [](I i, O) { i.path_.Close(), i.PaintPath(true, true, true); }},

        {"cs", [](I i, O o) { i.SetSpace(i.state_.fill, Operand(o, 0)); }},
        {"CS", [](I i, O o) { i.SetSpace(i.state_.stroke, Operand(o, 0)); }},
        {"sc", [](I i, O o) { i.SetColor(i.state_.fill, o); }},
        {"scn", [](I i, O o) { i.SetColor(i.state_.fill, o); }},
        {"SC", [](I i, O o) { i.SetColor(i.state_.stroke, o); }},
        {"SCN", [](I i, O o) { i.SetColor(i.state_.stroke, o); }},
        {"g", [](I i, O o) { i.SetDeviceColor(i.state_.fill, "/DeviceGray", o); }},
        {"G", [](I i, O o) { i.SetDeviceColor(i.state_.stroke, "/DeviceGray", o); }},
        {"rg", [](I i, O o) { i.SetDeviceColor(i.state_.fill, "/DeviceRGB", o); }},
        {"RG", [](I i, O o) { i.SetDeviceColor(i.state_.stroke, "/DeviceRGB", o); }},
        {"k", [](I i, O o) { i.SetDeviceColor(i.state_.fill, "/DeviceCMYK", o); }},
        {"K", [](I i, O o) { i.SetDeviceColor(i.state_.stroke, "/DeviceCMYK", o); }},

        {"sh", [](I i, O o) { i.PaintShadingOf(i.Resource("/Shading", Operand(o, 0))); }},
        {"Do", [](I i, O o) { i.PaintObject(i.Resource("/XObject", Operand(o, 0))); }},
        {"EI", [](I i, O o) { i.PaintPicture(Operand(o, 0)); }},
        {"d1", [](I i, O) { i.colorless_ = true; }},

        {"BMC", [](I i, O o) { i.BeginMarkedContent(o); }},
        {"BDC", [](I i, O o) { i.BeginMarkedContent(o); }},
        {"EMC", [](I i, O) { i.hiddenDepth_ = std::max(i.hiddenDepth_ - 1, 0); }},

        {"BT", [](I i, O) { i.textMatrix_ = i.lineMatrix_ = Matrix{}; }},
        {"ET", [](I i, O) { i.EndText(); }},
        {"Tc", [](I i, O o) { i.state_.text.characterSpacing = Number(o, 0); }},
        {"Tw", [](I i, O o) { i.state_.text.wordSpacing = Number(o, 0); }},
        {"Tz", [](I i, O o) { i.state_.text.horizontalScale = Number(o, 0) / 100; }},
        {"TL", [](I i, O o) { i.state_.text.leading = Number(o, 0); }},
        {"Ts", [](I i, O o) { i.state_.text.rise = Number(o, 0); }},
        {"Tr", [](I i, O o) { i.state_.text.renderMode = ToInteger(Operand(o, 0), 0); }},
        {"Tf", [](I i, O o) { i.SetFont(i.Resource("/Font", Operand(o, 0)), Number(o, 1)); }},
        {"Td", [](I i, O o) { i.MoveLine(Point(o, 0)); }},
        {"TD", [](I i, O o) { i.state_.text.leading = -Number(o, 1), i.MoveLine(Point(o, 0)); }},
        {"T*", [](I i, O) { i.NextLine(); }},
        {"Tm", [](I i, O o) { i.textMatrix_ = i.lineMatrix_ = MatrixOf(o); }},
        {"Tj", [](I i, O o) { i.ShowText(Text(o, 0)); }},
        {"TJ", [](I i, O o) { i.ShowAdjustedText(Operand(o, 0)); }},
        {"'", [](I i, O o) { i.NextLine(), i.ShowText(Text(o, 0)); }},
        {"\"",
         [](I i, O o) {
             i.state_.text.wordSpacing = Number(o, 0);
             i.state_.text.characterSpacing = Number(o, 1);
             i.NextLine(), i.ShowText(Text(o, 2));
         }},
    };
    return operators;
}

QPDFObjectHandle Interpreter::Resource(const char* kind, QPDFObjectHandle name) const {
    return name.isName() ? Entry(Entry(resources_, kind), name.getName()) : QPDFObjectHandle::newNull();
}

void Interpreter::RestoreState() {
    if (saved_.empty()) return;
    state_ = std::move(saved_.back());
    saved_.pop_back();
}

void Interpreter::SetDashes(QPDFObjectHandle lengths, double phase) {
    state_.line.dashes = ToNumbers(lengths);
    state_.line.phase = phase;
}

void Interpreter::SetParameters(QPDFObjectHandle dictionary) {
    if (!dictionary.isDictionary()) return;
    for (const auto& [key, constValue] : dictionary.getDictAsMap()) {
        QPDFObjectHandle value = constValue;
        if (key == "/LW") state_.line.width = std::abs(ToNumber(value, state_.line.width));
        if (key == "/LC") state_.line.cap = ToStyle<LineCap>(value);
        if (key == "/LJ") state_.line.join = ToStyle<LineJoin>(value);
        if (key == "/ML") state_.line.miterLimit = ToNumber(value, state_.line.miterLimit);
        if (key == "/D") SetDashes(Item(value, 0), ToNumber(Item(value, 1), 0));
        if (key == "/Font") SetFont(Item(value, 0), ToNumber(Item(value, 1), 0));
        if (key == "/ca") state_.fill.alpha = std::clamp(ToNumber(value, 1), 0.0, 1.0);
        if (key == "/CA") state_.stroke.alpha = std::clamp(ToNumber(value, 1), 0.0, 1.0);
        if (key == "/BM") state_.mode = ToBlendMode(value, page_.notes);
        if (key == "/AIS") state_.alphaIsShape = ToBool(value, false);
        if (key == "/TK") state_.text.knockout = ToBool(value, true);
        if (key == "/SMask") {
            state_.softMask.reset();
            if (Entry(value, "/G").isStream())
                state_.softMask = std::make_shared<SoftMask>(SoftMask{value, state_.toDevice, {}});
        }
    }
}

void Interpreter::SetSpace(Ink& ink, QPDFObjectHandle space) {
    if (colorless_) return;
    ColorSpace::Pointer& known = spaces_[ToName(space)];
    if (!known) known = ColorSpace::Parse(space, resources_, page_.notes);
    ink.space = known;
    ink.components = ink.space->initial;
    ink.pattern = QPDFObjectHandle::newNull();
}

void Interpreter::SetColor(Ink& ink, const Operands& operands) {
    if (colorless_) return;
    ink.components.clear();
    for (const QPDFObjectHandle& operand : operands) {
        if (QPDFObjectHandle(operand).isName()) {
            ink.pattern = Resource("/Pattern", operand);
            ink.patternToDevice = Concat(ToMatrix(Entry(ink.pattern, "/Matrix")), baseToDevice_);
        } else {
            ink.components.push_back(ToNumber(operand, 0));
        }
    }
}

void Interpreter::SetDeviceColor(Ink& ink, const char* space, const Operands& operands) {
    SetSpace(ink, QPDFObjectHandle::newName(space));
    SetColor(ink, operands);
}

void Interpreter::BeginMarkedContent(const Operands& operands) {
    const bool isLayer = ToName(Operand(operands, 0)) == "/OC";
    const bool isHidden = isLayer && !page_.document.IsShown(Resource("/Properties", Operand(operands, 1)));
    if (IsHidden() || isHidden) ++hiddenDepth_;
}

}  // namespace pdf
