// The parts of the host that compute: programs, functions, colours, codes of texts, outlines, coverage.

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <qpdf/QUtil.hh>
#include <string>
#include <utility>
#include <vector>

#include "CMap.h"
#include "ColorSpaces.h"
#include "ContentReader.h"
#include "Encodings.h"
#include "Flatten.h"
#include "Fonts.h"
#include "Functions.h"
#include "Objects.h"
#include "Outlines.h"
#include "PictureReader.h"
#include "Samples.h"

namespace pdf {
namespace {

using Numbers = std::vector<double>;

/// An object as a document spells it.
QPDFObjectHandle Object(const std::string& text) {
    return QPDFObjectHandle::parse(text);
}

/// A stream with a dictionary as a document spells it.
QPDFObjectHandle Stream(const std::string& dictionary, const std::string& data) {
    static const std::shared_ptr<QPDF> document = QPDF::create();
    QPDFObjectHandle stream = QPDFObjectHandle::newStream(document.get(), data);
    stream.replaceDict(Object(dictionary));
    return stream;
}

TEST(Calculator, RunsEveryOperator) {
    struct Case {
        const char* program;
        Numbers in, out;
    };
    for (const auto& [program, in, out] : {
             Case{"{ abs }", {-2.5}, {2.5}},
             Case{"{ add }", {1, 2}, {3}},
             Case{"{ sub }", {1, 2}, {-1}},
             Case{"{ mul }", {3, 2}, {6}},
             Case{"{ div }", {3, 2}, {1.5}},
             Case{"{ div }", {3, 0}, {0}},
             Case{"{ idiv }", {-7, 2}, {-3}},
             Case{"{ mod }", {-7, 3}, {-1}},
             Case{"{ neg }", {4}, {-4}},
             Case{"{ ceiling }", {-1.5}, {-1}},
             Case{"{ floor }", {-1.5}, {-2}},
             Case{"{ round }", {-6.5}, {-6}},
             Case{"{ truncate }", {-1.5}, {-1}},
             Case{"{ cvi cvr }", {2.75}, {2}},
             Case{"{ sqrt }", {16}, {4}},
             Case{"{ sin }", {30}, {0.5}},
             Case{"{ cos }", {60}, {0.5}},
             Case{"{ atan }", {1, 0}, {90}},
             Case{"{ atan }", {-1, 0}, {270}},
             Case{"{ exp }", {9, 0.5}, {3}},
             Case{"{ ln }", {1}, {0}},
             Case{"{ log }", {1000}, {3}},
             Case{"{ and }", {12, 10}, {8}},
             Case{"{ or }", {12, 10}, {14}},
             Case{"{ xor }", {12, 10}, {6}},
             Case{"{ not }", {12}, {-13}},
             Case{"{ true false xor not }", {}, {0}},
             Case{"{ bitshift }", {7, 3}, {56}},
             Case{"{ bitshift }", {56, -3}, {7}},
             Case{"{ 2 copy eq 3 1 roll ne }", {4, 5}, {0, -1}},
             Case{"{ 2 copy gt 3 1 roll ge }", {5, 5}, {0, -1}},
             Case{"{ 2 copy lt 3 1 roll le }", {5, 5}, {0, -1}},
             Case{"{ pop dup exch }", {1, 2}, {1, 1}},
             Case{"{ 2 index }", {7, 8, 9}, {7, 8, 9, 7}},
             Case{"{ 3 1 roll }", {1, 2, 3}, {3, 1, 2}},
             Case{"{ 3 -1 roll }", {1, 2, 3}, {2, 3, 1}},
             Case{"{ dup 0.5 gt { 1 exch sub } if }", {0.75}, {0.25}},
             Case{"{ dup 0.5 gt { 1 exch sub } if }", {0.25}, {0.25}},
             Case{"{ 0 gt { 1 } { 2 dup 2 eq { pop 3 } if } ifelse } % a note", {-1}, {3}},
             Case{"{0 gt{1}{2}ifelse}", {1}, {1}},
             Case{"{ add }", {1}, {0}},  // too little on the stack
             Case{"{ -1 copy }", {1}, {0}},
         }) {
        SCOPED_TRACE(program);
        const Function function = ParseProgram(program, out.size());
        ASSERT_TRUE(function);
        const Numbers results = function(in);
        for (std::size_t i = 0; i < out.size(); ++i) EXPECT_NEAR(results[i], out[i], 1e-12) << i;
    }
    std::string pushes = "{";
    for (int i = 0; i < 200; ++i) pushes += " 1";
    EXPECT_EQ(ParseProgram(pushes + "}", 1)({}), Numbers{0});
}

TEST(Calculator, RefusesWhatIsNoProgram) {
    for (const std::string& text :
         {std::string(), std::string("1"), std::string("{ 1"), std::string("{ nonsense }"), std::string("{ 1e999 }"),
          std::string("{ { 1 } }"), std::string("{ 1 { 1 } ifelse }"), std::string("{ 1 { 1 } { 2 } if }"),
          std::string(100'000, '{')}) {
        EXPECT_FALSE(ParseProgram(text, 1)) << text.substr(0, 20);
    }
}

const char* const kSquare = "<< /FunctionType 2 /Domain [0 1] /N 2 >>";

TEST(Function, GivesTheWorkedFigures) {
    struct Case {
        const char* what;
        QPDFObjectHandle object;
        Numbers in, out;
    };
    const auto ramp = Object("<< /FunctionType 2 /Domain [0 1] /C0 [1 0] /C1 [0 1] /N 2 /Range [0 1 0 0.5] >>");
    const auto stitched =
        Object(std::string("<< /FunctionType 3 /Domain [0 1] /Bounds [0.5] /Encode [0 1 1 0] /Functions [") + kSquare +
               kSquare + "] >>");
    const auto grid = Stream("<< /FunctionType 0 /Domain [0 1 0 1] /Range [0 1] /Size [2 2] /BitsPerSample 8 >>",
                             std::string("\0\xFF\xFF\0", 4));
    const auto nibbles = Stream(
        "<< /FunctionType 0 /Domain [-1 1] /Range [0 9] /Decode [0 3] /Encode [3 0] /Size [4]"
        " /BitsPerSample 4 >>",
        "\x05\xAF");
    for (const auto& [what, object, in, out] : {
             Case{"exponential", ramp, {0.5}, {0.75, 0.25}},
             Case{"without its end", Object("<< /FunctionType 2 /Domain [0 1] /C0 [0.5] /N 1 >>"), {0.5}, {0.75}},
             Case{"beyond the domain and the range", ramp, {7}, {0, 0.5}},
             Case{"first of two", stitched, {0.25}, {0.25}},
             Case{"at the bound", stitched, {0.5}, {1}},
             Case{"second of two", stitched, {0.75}, {0.25}},
             Case{"grid point", grid, {1, 0}, {1}},
             Case{"between two", grid, {0.25, 0}, {0.25}},
             Case{"between four", grid, {0.5, 0.5}, {0.5}},
             Case{"an input that is missing", grid, {1}, {1}},
             Case{"encoded backwards", nibbles, {-1}, {3}},
             Case{"decoded", nibbles, {0}, {1.5}},
             Case{"program", Stream("<< /FunctionType 4 /Domain [-9 9] /Range [0 1] >>", "{ 2 mul }"), {0.25}, {0.5}},
             Case{"joined", Object(std::string("[") + kSquare + kSquare + "]"), {0.5}, {0.25, 0.25}},
         }) {
        SCOPED_TRACE(what);
        const Function function = ParseFunction(object);
        ASSERT_TRUE(function);
        const Numbers results = function(in);
        ASSERT_EQ(results.size(), out.size());
        for (std::size_t i = 0; i < out.size(); ++i) EXPECT_NEAR(results[i], out[i], 1e-12) << i;
    }
}

TEST(Function, RefusesWhatIsDamaged) {
    for (const std::string text :
         {"null", "[]", "<< /FunctionType 7 /Domain [0 1] >>", "<< /FunctionType 2 /N 1 >>",
          "<< /FunctionType 2 /Domain [0 1] /C0 [0 0 0] /N 1 >>",
          "<< /FunctionType 3 /Domain [0 1] /Bounds [] /Encode [0 1] /Functions [] >>",
          "<< /FunctionType 3 /Domain [0 1] /Bounds [0.5] /Encode [0 1] /Functions [null null] >>"}) {
        EXPECT_FALSE(ParseFunction(Object(text))) << text;
    }
    const std::string sampled = "<< /FunctionType 0 /Domain [0 1] /Range [0 1] ";
    for (const std::string rest : {"/Size [2] /BitsPerSample 33 >>", "/Size [0] /BitsPerSample 8 >>",
                                   "/Size [2000000000] /BitsPerSample 8 >>", "/BitsPerSample 8 >>"}) {
        EXPECT_FALSE(ParseFunction(Stream(sampled + rest, "abcd"))) << rest;
    }
    QPDFObjectHandle deep = Object(kSquare);
    for (int i = 0; i < 300; ++i) {
        QPDFObjectHandle outer = Object("<< /FunctionType 3 /Domain [0 1] /Bounds [] /Encode [0 1] /Functions [] >>");
        outer.getKey("/Functions").appendItem(deep);
        deep = outer;
    }
    EXPECT_FALSE(ParseFunction(deep)) << "too deep";
}

TEST(ColorSpace, GivesTheWorkedFigures) {
    const std::string tint = "<< /FunctionType 2 /Domain [0 1] /C0 [1 1 1] /C1 [1 0 0] /N 1 >>";
    const auto resources = Object("<< /ColorSpace << /CS0 [/Indexed /DeviceGray 1 <40C0>] >> >>");
    struct Case {
        std::string object;
        Numbers components;
        unsigned int color;
        Numbers initial;
    };
    for (const auto& [object, components, color, initial] : {
             Case{"/DeviceGray", {0.5}, 0x808080, {0}},
             Case{"/DeviceRGB", {1, 0.5, -3}, 0xFF8000, {0, 0, 0}},
             Case{"/DeviceRGB", {1}, 0xFF0000, {0, 0, 0}},
             Case{"/DeviceCMYK", {0.25, 0, 0, 0.25}, 0x80BFBF, {0, 0, 0, 1}},
             Case{"[/CalRGB << >>]", {0, 1, 0}, 0x00FF00, {0, 0, 0}},
             Case{"[/Indexed /DeviceRGB 1 <000000FF8000>]", {1}, 0xFF8000, {0}},
             Case{"[/Indexed /DeviceRGB 1 <000000FF8000>]", {99}, 0xFF8000, {0}},
             Case{"[/Indexed /DeviceRGB 3 (A)]", {0}, 0x410000, {0}},  // a table that ends early
             Case{"/CS0", {1}, 0xC0C0C0, {0}},
             Case{"[/Separation /Spot /DeviceRGB " + tint + "]", {1}, 0xFF0000, {1}},
             Case{"[/Separation /Spot /DeviceRGB " + tint + "]", {0.5}, 0xFF8080, {1}},
             Case{"[/Lab << /WhitePoint [0.95 1 1.09] >>]", {100, 0, 0}, 0xFFFFFF, {0, 0, 0}},
             Case{"[/Lab << /WhitePoint [0.95 1 1.09] >>]", {53.585, 0, 0}, 0x808080, {0, 0, 0}},
             Case{"[/Lab << /WhitePoint [0.95 1 1.09] >>]", {53.24, 80.09, 67.2}, 0xFF0000, {0, 0, 0}},
             Case{"[/Pattern /DeviceRGB]", {0, 0, 1}, 0x0000FF, {0, 0, 0}},
         }) {
        SCOPED_TRACE(object);
        Notes notes;
        const auto space = ColorSpace::Parse(Object(object), resources, notes);
        EXPECT_TRUE(notes.Counts().empty());
        EXPECT_EQ(space->initial, initial);
        const vantu::Color shown = space->ToColor(components);
        EXPECT_NEAR(shown.GetRed(), color >> 16, 1);
        EXPECT_NEAR(shown.GetGreen(), color >> 8 & 255, 1);
        EXPECT_NEAR(shown.GetBlue(), color & 255, 1);
        EXPECT_EQ(shown.GetAlpha(), 255);
    }
    std::string deep = "/DeviceRGB";
    for (int i = 0; i < 20; ++i) deep = "[/Separation /Spot " + deep + tint + "]";
    for (const std::string& object :
         {std::string("/Nonsense"), std::string("[/Indexed /DeviceRGB -1 <00>]"), std::string("null"), deep}) {
        Notes notes;
        EXPECT_EQ(ColorSpace::Parse(Object(object), resources, notes), ColorSpace::Device(1)) << object;
        EXPECT_EQ(notes.Counts().size(), 1U);
    }
}

TEST(CMap, DividesTextsIntoCodes) {
    Notes notes;
    const auto mixed = CMap::Parse(Stream("<< /WMode 1 >>", R"(
        2 begincodespacerange <00> <7F> <8140> <9FFC> endcodespacerange
        1 begincidrange <20> <7E> 1 endcidrange
        1 begincidchar <8140> 633 endcidchar)"),
                                   notes);
    ASSERT_TRUE(mixed);
    EXPECT_TRUE(mixed->isVertical);
    struct Case {
        std::string text;
        std::size_t position, length;
        unsigned int cid;
    };
    for (const auto& [text, position, length, cid] :
         {Case{"A\x81\x40", 0, 1, 34}, Case{"A\x81\x40", 1, 2, 633}, Case{"\x1F", 0, 1, 0}, Case{"\x81\x20", 0, 1, 0},
          Case{"\x81", 0, 1, 0}}) {
        const CMap::Code code = mixed->Next(text, position);
        EXPECT_TRUE(code.length == length && code.cid == cid) << code.length << ' ' << code.cid;
    }
    const auto identity = CMap::Parse(Object("/Identity-H"), notes);
    EXPECT_EQ(identity->Next("\x01\x02", 0).cid, 0x102U);
    EXPECT_EQ(identity->Next("\x01\x02", 1).length, 1U) << "half a code at the end";
    EXPECT_TRUE(notes.Counts().empty());
    EXPECT_FALSE(CMap::Parse(Object("/90ms-RKSJ-H"), notes));
    EXPECT_EQ(notes.Counts().size(), 1U);
}

TEST(Encoding, NamesTheCharactersOfCodes) {
    for (const auto& [name, unicode] : {std::pair("space", 0x20U),
                                        {"asciitilde", 0x7EU},
                                        {"exclamdown", 0xA1U},
                                        {"eacute", 0xE9U},
                                        {"ydieresis", 0xFFU},
                                        {"Euro", 0x20ACU},
                                        {"a.alt", 0x61U},
                                        {"uni20AC", 0x20ACU},
                                        {"u1F600", 0x1F600U},
                                        {"unicorn", 0U},
                                        {"g37", 0U},
                                        {"", 0U}}) {
        EXPECT_EQ(UnicodeOf(name), unicode) << name;
    }
    EXPECT_EQ(ToEncoding(Object("/WinAnsiEncoding"), false)[0x80].unicode, 0x20ACU);
    EXPECT_EQ(ToEncoding(Object("/MacRomanEncoding"), false)[0x8A].unicode, 0xE4U);
    const Encoding standard = ToEncoding(Object("null"), true);
    EXPECT_EQ(standard[0x27].unicode, 0x2019U);
    EXPECT_EQ(standard[0xAE].unicode, 0xFB01U);
    EXPECT_EQ(standard[0xFB].unicode, 0xDFU);
    const Encoding own = ToEncoding(Object("<< /Differences [65 /B 254 /x.y /uni0416 /beyond -1 /before] >>"), false);
    EXPECT_TRUE(own[65].name == "B" && own[65].unicode == 0x42);
    EXPECT_TRUE(own[254].name == "x.y" && own[255].unicode == 0x416);
    EXPECT_TRUE(own[66].name.empty() && own[66].unicode == 0);
}

TEST(Font, ThatIsReplacedHasTheWidthsOfTheDocument) {
    Notes notes;
    const auto font =
        FontCache().Get(Object("<< /Subtype /Type1 /BaseFont /Helvetica /FirstChar 65 /Widths [1334] >>"), notes);
    ASSERT_TRUE(font) << "fonts-urw-base35 is missing";
    std::size_t position = 0;
    const Glyph glyph = font->next("A", position);
    EXPECT_DOUBLE_EQ(glyph.advance.x, 1.334);
    EXPECT_NEAR(glyph.stretch, 2, 0.01);
}

TEST(ContentReader, HandsOnOperatorsWithinItsBudget) {
    QPDFObjectHandle both = Object("[]");
    both.appendItem(Stream("<< >>", "1 0 0 rg q [(a) -3] TJ"));
    both.appendItem(Stream("<< >>", "BI /W 1 /H 1 /CS /G /BPC 8 ID x EI Q --5 1.-5 - 2cm"));
    std::string text;
    const auto write = [&](const std::string& name, const Operands& operands) {
        for (QPDFObjectHandle operand : operands)
            text += (operand.isStream() ? operand.getDict().unparse() + ToBytes(operand) : operand.unparse()) + " ";
        text += name + "; ";
    };
    Budget plenty;
    ContentReader reader;
    EXPECT_TRUE(reader.Read(both, plenty, write));
    EXPECT_TRUE(text.starts_with("1 0 0 rg; q; [ (a) -3 ] TJ; BI; << /Bit")) << text;
    EXPECT_TRUE(text.ends_with("/Width 1 >>x  EI; Q; -5 1.5 0 2 cm; ")) << text;
    const QPDFObjectHandle glyph = Stream("<< >>", "BI /W 1 /H 1 ID a EI BI /W 2 /H 1 ID b EI");
    text.clear();
    EXPECT_TRUE(reader.Read(glyph, plenty, write));
    const std::string once = std::exchange(text, "");
    EXPECT_TRUE(once.ends_with("/Width 2 >>b  EI; ")) << once;
    EXPECT_TRUE(reader.Read(glyph, plenty, write));
    EXPECT_EQ(text, once) << "what was kept";
    std::string saves;
    for (int i = 0; i < 5000; ++i) saves += "q ";
    text.clear();
    Budget little{.operators = 3000};
    EXPECT_FALSE(reader.Read(Stream("<< >>", saves), little, write));
    EXPECT_EQ(text.size(), 3 * 3000U);
}

TEST(Samples, RowsBeginWithAByte) {
    const Samples pairs{.width = 3, .height = 2, .components = 1, .bits = 2, .bytes = "\x1B\xC0"};
    EXPECT_TRUE(pairs.At(0, 0, 0) == 0 && pairs.At(1, 0, 0) == 1 && pairs.At(2, 0, 0) == 2);
    EXPECT_TRUE(pairs.At(0, 1, 0) == 3 && pairs.At(2, 1, 0) == 0);
    const Samples words{.width = 1, .height = 1, .components = 2, .bits = 16, .bytes = "\x01\x02\xFF\xFE"};
    EXPECT_TRUE(words.At(0, 0, 0) == 0x102 && words.At(0, 0, 1) == 0xFFFE);
}

// One scene as a JPEG file of RGB, alone and inside another filter, and of CMYK.
TEST(ReadPicture, ReadsJpegFiles) {
    const auto read = [](const char* name, const std::string& rest, bool inHexadecimal) {
        std::ifstream in(std::string(IMAGEOP_TEST_DATA "/codec/") + name, std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(in), {}};
        const std::string dictionary = "<< /Width 37 /Height 23 " + rest + " >>";
        Notes notes;
        return ReadPicture(Stream(dictionary, inHexadecimal ? QUtil::hex_encode(bytes) : bytes), Object("null"), notes);
    };
    const auto alone = read("baseline.jpg", "/ColorSpace /DeviceRGB /Filter [/DCTDecode]", false);
    const auto inside = read("baseline.jpg", "/ColorSpace /DeviceRGB /Filter [/ASCIIHexDecode /DCTDecode]", true);
    const auto cmyk = read("cmyk.jpg", "/ColorSpace /DeviceCMYK /Filter /DCTDecode /Decode [1 0 1 0 1 0 1 0]", false);
    ASSERT_TRUE(alone && inside && cmyk);
    for (std::size_t i = 0; i < std::size_t{37} * 23 * 4; ++i) {
        EXPECT_NEAR(alone->pixels[i], inside->pixels[i], 4) << i;
        EXPECT_NEAR(alone->pixels[i], cmyk->pixels[i], 80) << i << ": the simple formula darkens";
    }
    EXPECT_FALSE(read("baseline.jpg", "/ColorSpace /DeviceCMYK /Filter /DCTDecode", false)) << "other components";
}

TEST(Flatten, StraysLittleFromACurveAndKeepsToTheSteps) {
    constexpr double kRadius = 100, kHandle = 0.5522847498 * kRadius;  // within 0.03 % of a circle
    Path quarter;
    quarter.MoveTo({kRadius, 0});
    quarter.CurveTo({kRadius, kHandle}, {kHandle, kRadius}, {0, kRadius});
    const auto lines = Flatten(quarter, {});
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_LT(lines[0].points.size(), 40U);
    for (std::size_t i = 1; i < lines[0].points.size(); ++i) {
        const PointD a = lines[0].points[i - 1], b = lines[0].points[i];
        EXPECT_NEAR(std::hypot((a.x + b.x) / 2, (a.y + b.y) / 2), kRadius, 0.08);
    }
    Path path;
    path.MoveTo({9, 9});  // alone
    path.AddRectangle({0, 0, 2, 1});
    EXPECT_TRUE(path.current.x == 0 && path.current.y == 0);
    path.LineTo({5, 5});  // goes on from the rectangle's start
    path.MoveTo({1, 1});
    path.LineTo({1e300, 1});
    const auto drawn = Flatten(path, {2, 0, 0, 2, 10, 0});
    ASSERT_EQ(drawn.size(), 3U);
    EXPECT_TRUE(drawn[0].closed && drawn[0].points.size() == 4 && drawn[0].points[2].x == 14);
    EXPECT_TRUE(!drawn[1].closed && drawn[1].points[0].x == 10 && drawn[1].points[1].y == 10);
    EXPECT_TRUE(drawn[2].points[1].x == 1e9 && drawn[2].points[1].y == 2);
    EXPECT_TRUE(Flatten(Path(), {}).empty());
}

constexpr Pixels kClip{0, 0, 12, 12};

/// Rows of a mask as text: a letter for a pixel, `.` for none, `#` for all, a digit for tenths between.
std::vector<std::string> Picture(const Mask& mask, int width, int height) {
    std::vector<std::string> rows;
    for (int y = 0; y < height; ++y) {
        std::string& row = rows.emplace_back();
        for (int x = 0; x < width; ++x) {
            const int sample = SampleAt(mask, x, y);
            row += sample < 3 ? '.' : sample > 252 ? '#' : static_cast<char>('0' + (sample * 10 + 127) / 255);
        }
    }
    return rows;
}

using Rows = std::vector<std::string>;

TEST(Coverage, OfFillsIsTheAreaInsideEachPixel) {
    Path path;
    path.AddRectangle({1.5, 1, 5, 4.25});
    path.AddRectangle({2, 2, 4, 3});
    EXPECT_EQ(Picture(FillCoverage(path, {}, false, kClip), 6, 5),
              (Rows{"......", ".5###.", ".5###.", ".5###.", ".1333."}));
    EXPECT_EQ(Picture(FillCoverage(path, {}, true, kClip), 6, 5),
              (Rows{"......", ".5###.", ".5..#.", ".5###.", ".1333."}));
    const Mask whole = FillCoverage(path, {1, 0.25, 0, 1, 0, 0}, true, kClip);
    const Mask band = FillCoverage(path, {1, 0.25, 0, 1, 0, 0}, true, {3, 2, 5, 9});
    for (int y = 2; y < 9; ++y) {
        for (int x = 3; x < 5; ++x) EXPECT_EQ(SampleAt(band, x, y), SampleAt(whole, x, y)) << "bands fit together";
    }
    Path far;
    far.AddRectangle({-1e30, 3, 1e30, 4});
    EXPECT_EQ(Picture(FillCoverage(far, {}, false, kClip), 3, 5), (Rows{"...", "...", "...", "###", "..."}));
    EXPECT_TRUE(IsEmpty(FillCoverage(path, {}, false, {20, 20, 20, 30}).box));
}

StrokeStyle Style(double width, LineJoin join = LineJoin::Miter) {
    StrokeStyle style;
    style.width = width;
    style.join = join;
    return style;
}

TEST(Coverage, OfStrokesFollowsTheStyle) {
    Path line;
    line.MoveTo({2, 2});
    line.LineTo({6, 2});
    StrokeStyle style = Style(2);
    EXPECT_EQ(Picture(StrokeCoverage(line, {}, style, 0.5, kClip), 9, 4),
              (Rows{".........", "..####...", "..####...", "........."}));
    style.cap = LineCap::Square;
    EXPECT_EQ(Picture(StrokeCoverage(line, {}, style, 0.5, kClip), 9, 3),
              (Rows{".........", ".######..", ".######.."}));
    style = Style(2);
    style.dashes = {1};
    style.phase = 0.5;
    EXPECT_EQ(Picture(StrokeCoverage(line, {}, style, 0.5, kClip), 9, 2)[1], "..5555...");
    style = Style(0);
    EXPECT_EQ(Picture(StrokeCoverage(line, Matrix{1, 0, 0, 1, 0, 0.5}, style, 0.5, kClip), 9, 4)[2], "..####...")
        << "no width is a pixel";
    EXPECT_EQ(Picture(StrokeCoverage(line, Matrix{1, 0, 0, 1, 0, 0.5}, Style(0.1), 0.5, kClip), 9, 4)[2], "..####...")
        << "nor is less, along the pixels";
    Path slope;
    slope.MoveTo({2, 2});
    slope.LineTo({6, 6});
    // through a corner of a pixel and the one across: w sqrt 2 - w^2 / 2 of it
    EXPECT_NEAR(SampleAt(StrokeCoverage(slope, {}, Style(0.1), 0.5, kClip), 4, 4), 0.582 * 255, 3);
    Path point;
    point.AddRectangle({3, 2, 3, 2});
    style = Style(2);
    for (const LineCap cap : {LineCap::Butt, LineCap::Square, LineCap::Round}) {
        style.cap = cap;
        EXPECT_EQ(SampleAt(StrokeCoverage(point, {}, style, 0.5, kClip), 3, 2) > 150, cap == LineCap::Round);
    }
    Path corner;
    corner.MoveTo({2, 8});
    corner.LineTo({2, 2});
    corner.LineTo({8, 2});
    EXPECT_EQ(SampleAt(StrokeCoverage(corner, {}, Style(2), 0.5, kClip), 1, 1), 255) << "a mitred corner";
    EXPECT_NEAR(SampleAt(StrokeCoverage(corner, {}, Style(2, LineJoin::Bevel), 0.5, kClip), 1, 1), 128, 3);
    EXPECT_NEAR(SampleAt(StrokeCoverage(corner, {}, Style(2, LineJoin::Round), 0.5, kClip), 1, 1), 200, 20);
}

TEST(Mask, IntersectsAndGivesWayUnderAStroke) {
    Mask a = MakeMask({0, 0, 2, 1}), b = MakeMask({1, 0, 3, 1});
    RowOf(a, 0)[1] = 100;
    RowOf(b, 0)[0] = 200;
    const Mask both = Intersect(a, b);
    EXPECT_TRUE(both.box.x0 == 1 && both.box.x1 == 2);
    EXPECT_EQ(SampleAt(both, 1, 0), 78) << "100 * 200 / 255 = 78.4";
    const Mask box{{1, -5, 9, 5}, nullptr};
    EXPECT_EQ(SampleAt(Intersect(box, a), 1, 0), 100);
    EXPECT_EQ(SampleAt(Intersect(a, box), 0, 0), 0);
    EXPECT_EQ(SampleAt(box, 8, 4), 255);
    EXPECT_TRUE(IsEmpty(Intersect(box, Mask()).box));
    RowOf(b, 0)[0] = 128;
    EXPECT_EQ(SampleAt(UnderStroke(box, b, 0.5), 1, 0), 170) << "127 / (1 - 0.5 * 128 / 255)";
    EXPECT_EQ(SampleAt(UnderStroke(box, b, 1), 1, 0), 255) << "both edges make one";
    EXPECT_EQ(SampleAt(UnderStroke(box, b, 0.5), 5, 0), 255);
}

}  // namespace
}  // namespace pdf
