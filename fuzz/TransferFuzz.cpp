#include <vantu/CExponentialPDFTransferFunction.h>
#include <vantu/CIdentityPDFTransferFunction.h>
#include <vantu/CPostscriptPDFTransferFunction.h>

#include <bit>
#include <cmath>

#include "fuzz/Fuzz.h"

// Records of transfer functions, as they lie in a store.

using namespace vantu;
using namespace vantu::fuzz;

namespace {

using Function = IPDFTransferFunction;

const Color kColors[] = {Color(0xFF000000), Color(0x00FFFFFF), Color(0x80402010), Color(0xFFFFFFFF)};

bool Same(double a, double b) {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

std::vector<unsigned char> RecordOf(const Function& function) {
    CQorStorage storage;
    const unsigned int written = Function::Save(function, &storage);
    Require(written == storage.GetBytes().size(), "saving tells how many bytes it wrote");
    Require(written == Function::Save(function, nullptr), "measuring tells what saving writes");
    return storage.GetBytes();
}

/// The opacity of a restored function from its source value and its fields.
double Expected(const Function& function, double x) {
    if (function.GetType() != Function::Type::Exponential) return x;
    const auto& f = dynamic_cast<const CExponentialPDFTransferFunction&>(function);
    return std::pow(x, f.GetN()) * (f.GetC1() - f.GetC0()) + f.GetC0();
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Choices choices({data, size});
    std::shared_ptr<Function> function;
    const int before = choices.Between(0, 3);
    if (before == 1) function = std::make_shared<CIdentityPDFTransferFunction>(Function::SourceType::Alpha);
    if (before == 2) {
        function = std::make_shared<CExponentialPDFTransferFunction>(Function::SourceType::Luminosity, 1, 2, 3);
    }
    if (before == 3) function = std::make_shared<CPostscriptPDFTransferFunction>(Function::SourceType::Alpha, "{ x }");
    const Bytes record = choices.Rest();
    CQorStorage storage(std::vector<unsigned char>(record.begin(), record.end()));

    const bool restored = Function::Restore(function, storage);
    if (!function) {
        Require(!restored, "what is restored is there");
        return 0;
    }
    const auto identity = [&](const Color& c) {
        return CIdentityPDFTransferFunction(function->GetSourceType()).ComputeAlpha(c);
    };
    for (const Color& color : kColors) {
        const double opacity = function->ComputeAlpha(color);
        const double expected = Expected(*function, identity(color));
        Require(Same(opacity, expected) || (std::isnan(opacity) && std::isnan(expected)),
                "a restored function computes by its fields");
    }

    const std::vector<unsigned char> written = RecordOf(*function);
    CQorStorage copy(written);
    std::shared_ptr<Function> second;
    Require(Function::Restore(second, copy), "what was saved can be restored");
    Require(RecordOf(*second) == written, "a record that is restored and saved is the same");
    return 0;
}
