#include <gtest/gtest.h>
#include <vantu/CExponentialPDFTransferFunction.h>
#include <vantu/CIdentityPDFTransferFunction.h>
#include <vantu/CPostscriptPDFTransferFunction.h>

#include <limits>
#include <utility>

namespace vantu {
namespace {

using Source = IPDFTransferFunction::SourceType;

constexpr Color kBlack(0xFF000000U);
constexpr Color kClearWhite(0x00FFFFFFU);
constexpr Color kMixed(0x80C86432U);  // alpha 128, red 200, green 100, blue 50

double Postscript(const char* code, Source source, const Color& color) {
    return CPostscriptPDFTransferFunction(source, code).ComputeAlpha(color);
}

TEST(IdentityTransfer, GivesAlphaOrWeightedGrey) {
    const CIdentityPDFTransferFunction alpha(Source::Alpha);
    const CIdentityPDFTransferFunction luminosity(Source::Luminosity);
    EXPECT_EQ(alpha.ComputeAlpha(kBlack), 1.0);
    EXPECT_EQ(alpha.ComputeAlpha(kClearWhite), 0.0);
    EXPECT_EQ(alpha.ComputeAlpha(kMixed), 128 / 255.0);
    EXPECT_EQ(luminosity.ComputeAlpha(kBlack), 0.0);
    EXPECT_EQ(luminosity.ComputeAlpha(kClearWhite), (255 * 0.3 + 255 * 0.59 + 255 * 0.11) / 255.0);
    EXPECT_EQ(luminosity.ComputeAlpha(kMixed), ((200 * 0.3 + 100 * 0.59) + 50 * 0.11) / 255.0);
}

TEST(ExponentialTransfer, IsNotClamped) {
    EXPECT_EQ(CExponentialPDFTransferFunction(Source::Alpha, 1, 0, 1).ComputeAlpha(kMixed), 128 / 255.0 * -1.0 + 1.0);
    EXPECT_EQ(CExponentialPDFTransferFunction(Source::Luminosity, 0.25, 0.75, 0).ComputeAlpha(kBlack), 0.75);
    EXPECT_EQ(CExponentialPDFTransferFunction(Source::Alpha, -2, 3, 1).ComputeAlpha(kBlack), 3.0);
    EXPECT_EQ(CExponentialPDFTransferFunction(Source::Alpha, 0, 1, -1).ComputeAlpha(kClearWhite),
              std::numeric_limits<double>::infinity());
}

TEST(TransferFunctions, SourceOutsideTheEnumeration) {
    const auto odd = static_cast<Source>(2);
    const Color white(0x80FFFFFFU);
    EXPECT_GT(CIdentityPDFTransferFunction(odd).ComputeAlpha(white), 0.99);
    EXPECT_EQ(Postscript("", odd, white), 128 / 255.0);
}

TEST(PostscriptTransfer, RecognisesTheInversionAlone) {
    const std::pair<const char*, double> inversions[] = {
        {"{ 1 exch sub }", 1},
        {"{1 exch sub }", 1},
        {"   {\t0.25\nexch  sub\n}", 0.25},
        {"{ 1 EXCH Sub }", 1},
        {"{ 1 exch sub } anything else", 1},
        {"{ -2.5e1 exch sub }", -25},
        {"{ 1 exch sub }}", 1},
    };
    for (const auto& [code, constant] : inversions) {
        EXPECT_EQ(Postscript(code, Source::Alpha, kMixed), constant - 128 / 255.0) << code;
        EXPECT_EQ(Postscript(code, Source::Luminosity, kMixed), constant - (60.0 + 59.0 + 5.5) / 255.0) << code;
    }
    const char* const others[] = {"",
                                  "  ",
                                  "1 exch sub",
                                  "{ 1 exch sub}",
                                  "{ 1 exch sub",
                                  "{ exch sub }",
                                  "{ 1 sub exch }",
                                  "{ 1 exch dup sub }",
                                  "{ % note\n 1 exch sub }",
                                  "{ 1 2 exch sub }",
                                  "{ 1exch sub }",
                                  "{ 1 exch subs }",
                                  "{}",
                                  "{ 1e999 exch sub }"};
    for (const char* const code : others) {
        EXPECT_EQ(Postscript(code, Source::Alpha, kMixed), 128 / 255.0) << code;
        EXPECT_EQ(Postscript(code, Source::Luminosity, kMixed), (60.0 + 59.0 + 5.5) / 255.0) << code;
    }
}

TEST(PostscriptTransfer, CopiesAndMovesCarryTheProgram) {
    const std::string code = " { 1 exch sub }\ttail";
    CPostscriptPDFTransferFunction first(Source::Alpha, code);
    CPostscriptPDFTransferFunction copy(first);
    CPostscriptPDFTransferFunction other(Source::Luminosity, "pass");
    other = copy;
    EXPECT_EQ(other.GetSourceType(), Source::Alpha);
    const CPostscriptPDFTransferFunction moved(std::move(copy));
    CPostscriptPDFTransferFunction assigned(Source::Luminosity, "pass");
    assigned = std::move(first);
    auto& self = assigned;
    assigned = std::move(self);
    assigned = self;
    for (const auto* function : {&std::as_const(other), &moved, &std::as_const(assigned)}) {
        EXPECT_EQ(function->GetCodeString(), code);
        EXPECT_EQ(function->ComputeAlpha(kBlack), 0.0);
        EXPECT_EQ(function->ComputeAlpha(kClearWhite), 1.0);
    }
}

}  // namespace
}  // namespace vantu
