#include <vantu/CIdentityPDFTransferFunction.h>

#include "transfer/SourceValue.h"

namespace vantu {

CIdentityPDFTransferFunction::CIdentityPDFTransferFunction(SourceType source) : IPDFTransferFunction(source) {}

IPDFTransferFunction::Type CIdentityPDFTransferFunction::GetType() const {
    return Type::Identity;
}

double CIdentityPDFTransferFunction::ComputeAlpha(const Color& color) const {
    return SourceValue(GetSourceType(), color);
}

unsigned int CIdentityPDFTransferFunction::Save(CQorStorage* /*storage*/) const {
    return 0;
}

bool CIdentityPDFTransferFunction::Restore(CQorStorage& /*storage*/) {
    return true;
}

}  // namespace vantu
