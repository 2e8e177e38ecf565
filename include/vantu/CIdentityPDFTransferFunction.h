#pragma once

#include <vantu/Export.h>
#include <vantu/IPDFTransferFunction.h>

namespace vantu {

/// The opacity is the source value x itself.
class VANTU_API CIdentityPDFTransferFunction : public IPDFTransferFunction {
public:
    /// @param source what x is taken from.
    explicit CIdentityPDFTransferFunction(SourceType source);

    /// @return `Type::Identity`.
    [[nodiscard]] Type GetType() const override;
    [[nodiscard]] double ComputeAlpha(const Color& color) const override;
    /// Writes nothing. @return 0.
    unsigned int Save(CQorStorage* storage) const override;
    /// Reads nothing. @return true.
    bool Restore(CQorStorage& storage) override;

    using IPDFTransferFunction::Restore;
    using IPDFTransferFunction::Save;
};

}  // namespace vantu
