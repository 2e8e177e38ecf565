#pragma once

#include <vantu/Export.h>
#include <vantu/IPDFTransferFunction.h>

namespace vantu {

/// The opacity is pow(x, N) * (C1 - C0) + C0 (ISO 32000-2, 7.10.3), not clamped.
class VANTU_API CExponentialPDFTransferFunction : public IPDFTransferFunction {
public:
    /// @param source what x is taken from.
    /// @param c0 the opacity at x = 0.
    /// @param c1 the opacity at x = 1.
    /// @param n the exponent; no number is refused.
    CExponentialPDFTransferFunction(SourceType source, double c0, double c1, double n);

    [[nodiscard]] double GetC0() const;  ///< the opacity at x = 0
    [[nodiscard]] double GetC1() const;  ///< the opacity at x = 1
    [[nodiscard]] double GetN() const;   ///< the exponent

    /// @return `Type::Exponential`.
    [[nodiscard]] Type GetType() const override;
    [[nodiscard]] double ComputeAlpha(const Color& color) const override;
    /// Writes C0, C1 and N, 24 bytes.
    unsigned int Save(CQorStorage* storage) const override;
    /// Reads C0, C1 and N. @return false at the first that is short; those before it stay read.
    bool Restore(CQorStorage& storage) override;

    using IPDFTransferFunction::Restore;
    using IPDFTransferFunction::Save;

private:
    double c0_;
    double c1_;
    double n_;
};

}  // namespace vantu
