#include <algorithm>
#include <optional>

#include "blend/definition/CompositeSteps.h"
#include "blend/stages/MaskStages.h"

namespace vantu {
namespace {

ByteTable EffectiveAlphas(double opacity) {
    ByteTable alphas;
    for (std::uint32_t sa = 0; sa < alphas.size(); ++sa) {
        alphas[sa] = static_cast<unsigned char>(PlainMaskOpacity(255, sa, opacity));
    }
    return alphas;
}

/// The least factor with sa * factor / 65536 = as(sa) for every sa: the greatest of ceil(65536 * as / sa), if that is
/// below all (65536 * (as + 1)) / sa.
std::optional<std::uint32_t> FactorOf(const ByteTable& as) {
    std::uint32_t least = 0, end = 65537;
    for (std::uint32_t sa = 1; sa < as.size(); ++sa) {
        least = std::max(least, (65536U * as[sa] + sa - 1) / sa);
        end = std::min(end, (65536U * (as[sa] + 1U) + sa - 1) / sa);
    }
    return least < end ? std::optional(least) : std::nullopt;
}

}  // namespace

KeyFactors::KeyFactors(const std::array<double, 256>& opacities) : words(), low(), high() {
    for (std::size_t key = 0; key < opacities.size(); ++key) {
        const ByteTable alphas = EffectiveAlphas(opacities[key]);
        std::uint32_t factor = FactorOf(alphas).value_or(static_cast<std::uint32_t>(kUneven + uneven.size()));
        if (factor == 65536) factor = kWhole;
        if (factor >= kUneven) uneven.push_back(alphas);
        words[key] = static_cast<std::uint16_t>(factor);
        low[key] = static_cast<unsigned char>(factor);
        high[key] = static_cast<unsigned char>(factor >> 8);
    }
}

}  // namespace vantu
