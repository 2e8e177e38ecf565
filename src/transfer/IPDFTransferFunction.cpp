#include <vantu/CExponentialPDFTransferFunction.h>
#include <vantu/CIdentityPDFTransferFunction.h>
#include <vantu/CPostscriptPDFTransferFunction.h>
#include <vantu/IPDFTransferFunction.h>

namespace vantu {
namespace {

// The tag byte of a record: the type in the low 7 bits, the source in the top one.
constexpr unsigned int kSourceShift = 7;
constexpr unsigned int kTypeMask = 0x7F;

}  // namespace

unsigned int IPDFTransferFunction::Save(const IPDFTransferFunction& function, CQorStorage* storage) {
    if (storage == nullptr) return function.Save(nullptr) + 1;
    const unsigned int tag = static_cast<unsigned int>(function.GetType()) +
                             (static_cast<unsigned int>(function.GetSourceType()) << kSourceShift);
    const unsigned int written = storage->WriteByte(static_cast<unsigned char>(tag));
    return written + function.Save(storage);
}

bool IPDFTransferFunction::Restore(std::shared_ptr<IPDFTransferFunction>& out, CQorStorage& storage) {
    unsigned char tag = 0;
    if (storage.Read(tag) == 0) return false;
    const auto source = static_cast<SourceType>(tag >> kSourceShift);
    const unsigned int type = tag & kTypeMask;
    switch (type) {
        case static_cast<unsigned int>(Type::Identity):
            out = std::make_shared<CIdentityPDFTransferFunction>(source);
            break;
        case static_cast<unsigned int>(Type::Exponential):
            out = std::make_shared<CExponentialPDFTransferFunction>(source, 0.0, 0.0, 1.0);
            break;
        case static_cast<unsigned int>(Type::Postscript):
            out = std::make_shared<CPostscriptPDFTransferFunction>(source, std::string());
            break;
        case 1:
        case 3: out.reset(); break;
        default: break;  // a newer record: the function at hand reads it as its own
    }
    return out && out->Restore(storage);
}

}  // namespace vantu
