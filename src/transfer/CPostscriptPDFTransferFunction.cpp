#include <vantu/CPostscriptPDFTransferFunction.h>

#include <locale>
#include <sstream>
#include <string_view>
#include <utility>

#include "transfer/SourceValue.h"

namespace vantu {

/// A compiled program. Immutable and shared by the copies of a function.
struct CPostscriptFunction {
    double constant;
    double (*evaluate)(const CPostscriptFunction& self, const Color& color);
};

namespace {

/// Whether `word` is `keyword` but for the case of its letters.
bool IsKeyword(std::string_view word, std::string_view keyword) {
    if (word.size() != keyword.size()) return false;
    const std::locale locale;
    const auto& letters = std::use_facet<std::ctype<char>>(locale);
    for (std::size_t i = 0; i < word.size(); ++i) {
        if (letters.toupper(word[i]) != letters.toupper(keyword[i])) return false;
    }
    return true;
}

/// Recognises `{ c exch sub }` and puts c in `constant`. What follows the closing brace is not looked at.
bool RecogniseInversion(const std::string& code, double& constant) {
    std::istringstream stream(code);
    stream.exceptions(std::ios::badbit);  // or exhausted memory would pass for a text that is not recognised
    char brace = '\0';
    stream >> brace;
    if (brace != '{') return false;
    std::string first;
    std::string second;
    // Once an extraction has failed the later ones do nothing, so the brace stays the opening one.
    stream >> constant >> first >> second >> brace;
    return brace == '}' && IsKeyword(first, "exch") && IsKeyword(second, "sub");
}

std::shared_ptr<const CPostscriptFunction> Compile(const std::string& code, IPDFTransferFunction::SourceType source) {
    using Self = const CPostscriptFunction&;
    // The siblings take every type but alpha for luminosity; here only luminosity itself is.
    const bool luminosity = source == IPDFTransferFunction::SourceType::Luminosity;
    CPostscriptFunction function{};
    if (RecogniseInversion(code, function.constant)) {
        function.evaluate = luminosity ? [](Self self, const Color& c) { return self.constant - LuminosityValue(c); }
                                       : [](Self self, const Color& c) { return self.constant - AlphaValue(c); };
    } else {
        function.constant = 0.0;
        function.evaluate = luminosity ? [](Self, const Color& c) { return LuminosityValue(c); }
                                       : [](Self, const Color& c) { return AlphaValue(c); };
    }
    return std::make_shared<const CPostscriptFunction>(function);
}

}  // namespace

CPostscriptPDFTransferFunction::CPostscriptPDFTransferFunction(SourceType source, const std::string& code)
    : IPDFTransferFunction(source), code_(code), function_(Compile(code, source)) {}

CPostscriptPDFTransferFunction::CPostscriptPDFTransferFunction(const CPostscriptPDFTransferFunction&) = default;
CPostscriptPDFTransferFunction::CPostscriptPDFTransferFunction(CPostscriptPDFTransferFunction&&) noexcept = default;
CPostscriptPDFTransferFunction& CPostscriptPDFTransferFunction::operator=(const CPostscriptPDFTransferFunction&) =
    default;
CPostscriptPDFTransferFunction::~CPostscriptPDFTransferFunction() = default;

CPostscriptPDFTransferFunction& CPostscriptPDFTransferFunction::operator=(
    CPostscriptPDFTransferFunction&& other) noexcept {
    if (this == &other) return *this;
    IPDFTransferFunction::operator=(other);
    code_ = std::exchange(other.code_, {});
    function_ = std::move(other.function_);
    return *this;
}

// NOLINTNEXTLINE(readability-const-return-type): the contract
const std::string CPostscriptPDFTransferFunction::GetCodeString() const {
    return code_;
}

IPDFTransferFunction::Type CPostscriptPDFTransferFunction::GetType() const {
    return Type::Postscript;
}

double CPostscriptPDFTransferFunction::ComputeAlpha(const Color& color) const {
    return function_->evaluate(*function_, color);
}

unsigned int CPostscriptPDFTransferFunction::Save(CQorStorage* storage) const {
    return storage == nullptr ? static_cast<unsigned int>(code_.size()) + 4 : storage->Write(code_);
}

bool CPostscriptPDFTransferFunction::Restore(CQorStorage& storage) {
    const unsigned int read = storage.Read(code_);
    return read >= 4 && read == code_.size() + 4;
}

}  // namespace vantu
