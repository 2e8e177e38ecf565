#include <vantu/CExponentialPDFTransferFunction.h>

#include <cmath>

#include "transfer/SourceValue.h"

namespace vantu {

CExponentialPDFTransferFunction::CExponentialPDFTransferFunction(SourceType source, double c0, double c1, double n)
    : IPDFTransferFunction(source), c0_(c0), c1_(c1), n_(n) {}

double CExponentialPDFTransferFunction::GetC0() const {
    return c0_;
}
double CExponentialPDFTransferFunction::GetC1() const {
    return c1_;
}
double CExponentialPDFTransferFunction::GetN() const {
    return n_;
}

IPDFTransferFunction::Type CExponentialPDFTransferFunction::GetType() const {
    return Type::Exponential;
}

double CExponentialPDFTransferFunction::ComputeAlpha(const Color& color) const {
    return std::pow(SourceValue(GetSourceType(), color), n_) * (c1_ - c0_) + c0_;
}

unsigned int CExponentialPDFTransferFunction::Save(CQorStorage* storage) const {
    if (storage == nullptr) return 3 * sizeof(double);
    unsigned int written = storage->Write(c0_);
    written += storage->Write(c1_);
    written += storage->Write(n_);
    return written;
}

bool CExponentialPDFTransferFunction::Restore(CQorStorage& storage) {
    for (double* const field : {&c0_, &c1_, &n_}) {
        if (storage.Read(*field) != sizeof(double)) return false;
    }
    return true;
}

}  // namespace vantu
