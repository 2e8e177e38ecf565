#include "blend/stages/MaskStages.h"

namespace vantu {

KeyScaling::KeyScaling(const std::array<double, 256>& opacitiesOfKeys)
    : bias(), holdsUpTo(), opacities(opacitiesOfKeys) {
    for (std::uint32_t key = 0; key < opacities.size(); ++key) {
        // The bias that holds farther.
        for (const unsigned int tried : {0U, 1U}) {
            std::uint32_t alpha = 0;
            while (alpha < 255 && Approximately(alpha + 1, key, tried) == Exactly(alpha + 1, key)) ++alpha;
            if (alpha < holdsUpTo[key]) continue;
            bias[key] = static_cast<unsigned char>(tried);
            holdsUpTo[key] = static_cast<unsigned char>(alpha);
        }
    }
}

}  // namespace vantu
