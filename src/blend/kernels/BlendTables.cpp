#include "blend/kernels/BlendTables.h"

#include "blend/kernels/BlendFunctions.h"

namespace vantu {
namespace {

template <BlendMode Mode>
const BlendTable& Table() {
    static const BlendTable table = [] {
        BlendTable made{};
        for (unsigned int i = 0; i < 65536; ++i) {
            made.bytes[i] = static_cast<unsigned char>(BlendChannel<Mode>(i >> 8, i & 255));
        }
        return made;
    }();
    return table;
}

}  // namespace

const BlendTable* BlendTableOf(BlendMode mode) {
    if (mode == BlendMode::ColorBurn) return &Table<BlendMode::ColorBurn>();
    if (mode == BlendMode::SoftLight) return &Table<BlendMode::SoftLight>();
    return nullptr;
}

}  // namespace vantu
