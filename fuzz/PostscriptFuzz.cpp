#include <vantu/CIdentityPDFTransferFunction.h>
#include <vantu/CPostscriptPDFTransferFunction.h>

#include <cctype>
#include <optional>
#include <string>
#include <vector>

#include "fuzz/Fuzz.h"

using namespace vantu;
using namespace vantu::fuzz;

namespace {

using SourceType = IPDFTransferFunction::SourceType;

std::string Lower(std::string text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

std::vector<std::string> Words(const std::string& text) {
    std::vector<std::string> words(1);
    for (const char c : text) {
        if (std::isspace(static_cast<unsigned char>(c)) == 0) {
            words.back() += c;
        } else if (!words.back().empty()) {
            words.emplace_back();
        }
    }
    return words;
}

/// The constant of `{ c exch sub }` where each word stands by itself and c is a whole number of up to nine digits.
std::optional<double> PlainConstant(const std::string& text) {
    const std::vector<std::string> words = Words(text);
    if (words.size() < 5 || words[0] != "{" || words[1].size() > 9 || Lower(words[2]) != "exch" ||
        Lower(words[3]) != "sub" || words[4].empty() || words[4][0] != '}') {
        return std::nullopt;
    }
    double value = 0;
    for (const char c : words[1]) {
        if (c < '0' || c > '9') return std::nullopt;
        value = value * 10 + (c - '0');
    }
    return value;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string code(reinterpret_cast<const char*>(data), size);
    const std::string lower = Lower(code);
    const bool mayInvert =
        lower.find('{') < lower.find("exch") && lower.find("sub") < lower.find('}', lower.find("sub"));
    const std::optional<double> constant = PlainConstant(code);

    for (const SourceType source : {SourceType::Alpha, SourceType::Luminosity}) {
        const CPostscriptPDFTransferFunction function(source, code);
        Require(function.GetCodeString() == code, "the text stays as it was given");
        // Of black without alpha the source value is 0: this is c, or 0 if the source value is passed through.
        const double c = function.ComputeAlpha(Color(0));
        if (constant) Require(c == *constant, "the constant is the number in the text");
        const CIdentityPDFTransferFunction identity(source);
        CPostscriptPDFTransferFunction copy(function);
        CPostscriptPDFTransferFunction assigned(source, "{ 7 exch sub }");
        assigned = std::move(copy);
        bool inverts = true, passes = true;
        for (const unsigned int argb : {0xFFFFFFFFU, 0x80402010U, 0x01FE00C8U}) {
            const double x = identity.ComputeAlpha(Color(argb));
            const double opacity = function.ComputeAlpha(Color(argb));
            inverts = inverts && opacity == c - x;
            passes = passes && opacity == x;
            Require(assigned.ComputeAlpha(Color(argb)) == opacity, "a copy computes the same");
        }
        Require(mayInvert ? inverts || passes : passes,
                "a text subtracts from its constant or passes the value through");
        if (constant) Require(inverts, "a text of the one shape is recognised");

        CQorStorage storage;
        Require(function.Save(&storage) == size + 4, "the text and its length are saved");
        CPostscriptPDFTransferFunction restored(source, "");
        Require(restored.Restore(storage) && restored.GetCodeString() == code, "the text is restored");
    }
    return 0;
}
