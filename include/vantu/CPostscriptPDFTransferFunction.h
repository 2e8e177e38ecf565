#pragma once

#include <vantu/Export.h>
#include <vantu/IPDFTransferFunction.h>

#include <memory>
#include <string>

namespace vantu {

struct CPostscriptFunction;  // the library's own

/// The opacity by a PostScript calculator text (ISO 32000-2, 7.10.5) of exactly one shape, `{ c exch sub }`, which
/// gives c - x. Every other text gives x; that is no error.
class VANTU_API CPostscriptPDFTransferFunction : public IPDFTransferFunction {
public:
    /// @param source what x is taken from.
    /// @param code the text, compiled here once. Number syntax and white space are those of the global locale's
    /// streams.
    CPostscriptPDFTransferFunction(SourceType source, const std::string& code);
    /// Copies the text and shares the compiled program.
    CPostscriptPDFTransferFunction(const CPostscriptPDFTransferFunction& other);
    /// Takes over text and program; the other object may then only be assigned to or destroyed.
    CPostscriptPDFTransferFunction(CPostscriptPDFTransferFunction&& other) noexcept;
    /// Copies the text and shares the compiled program.
    CPostscriptPDFTransferFunction& operator=(const CPostscriptPDFTransferFunction& other);
    /// Takes over text and program; the other object may then only be assigned to or destroyed.
    CPostscriptPDFTransferFunction& operator=(CPostscriptPDFTransferFunction&& other) noexcept;
    ~CPostscriptPDFTransferFunction() override;

    /// The text as it was given, recognised or not.
    [[nodiscard]] const std::string GetCodeString() const;  // NOLINT(readability-const-return-type): the contract

    /// @return `Type::Postscript`.
    [[nodiscard]] Type GetType() const override;
    [[nodiscard]] double ComputeAlpha(const Color& color) const override;
    /// Writes the text, 4 bytes of length before it.
    unsigned int Save(CQorStorage* storage) const override;
    /// Reads the text only: the program stays the one that the object was made with. So a function that is restored
    /// from a record passes x through, whatever its text. @return false if the storage held less than it announced.
    bool Restore(CQorStorage& storage) override;

    using IPDFTransferFunction::Restore;
    using IPDFTransferFunction::Save;

private:
    std::string code_;
    std::shared_ptr<const CPostscriptFunction> function_;
};

}  // namespace vantu
