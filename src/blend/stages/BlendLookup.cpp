#include "blend/stages/BlendLookup.h"

#include <algorithm>
#include <cstdint>

#include "blend/definition/BlendFunctions.h"

namespace vantu {
namespace {

constexpr std::int64_t Weight(int cs) {
    return cs < 128 ? 255 - 2 * cs : 2 * cs - 255;
}

/// A slope with floor(w*slope / 65536) = step(cs) for all 128 sources from `first` on: the least, or where there is
/// none the greatest that is never too high.
template <typename Step>
std::uint16_t Slope(int first, std::int64_t least, Step step) {
    std::int64_t greatest = 65535;
    for (int cs = first; cs < first + 128; ++cs) {
        const std::int64_t w = Weight(cs);
        least = std::max(least, (65536 * step(cs) + w - 1) / w);
        greatest = std::min(greatest, (65536 * (step(cs) + 1) - 1) / w);
    }
    return static_cast<std::uint16_t>(std::min(least, greatest));
}

SoftLightSlopes MakeSoftLightSlopes() {
    WordTable above{}, below{};
    for (int cb = 0; cb < 256; ++cb) {
        const auto b = [cb](int cs) {
            return static_cast<int>(SoftLight(static_cast<std::uint32_t>(cb), static_cast<std::uint32_t>(cs)));
        };
        const auto backdrop = static_cast<std::size_t>(cb);
        above[backdrop] = Slope(128, 0, [&](int cs) { return b(cs) - cb; });
        if (cb != 0 && cb != 255) below[backdrop] = Slope(0, 1, [&](int cs) { return cb - 1 - b(cs); });
    }
    SoftLightSlopes slopes{SplitTable(above), SplitTable(below), {}};
    for (const unsigned int cb : SoftLightSlopes::kUneven) {
        for (unsigned int cs = 0; cs < 128; ++cs) {
            const auto w = static_cast<std::uint32_t>(Weight(static_cast<int>(cs)));
            if (cb - 1 - (w * below[cb] >> 16) == SoftLight(cb, cs)) continue;
            std::uint16_t& word = slopes.lower[8 * (cb / 32) + w / 32];
            word = static_cast<std::uint16_t>(word | 1U << w / 2 % 16);
        }
    }
    return slopes;
}

template <BlendMode Mode>
PairTable MakePairTable() {
    PairTable table{};
    for (std::uint32_t cb = 0; cb < 256; ++cb) {
        for (std::uint32_t cs = 0; cs < 256; ++cs) {
            table[256 * cb + cs] = static_cast<unsigned char>(BlendChannel<Mode>(cb, cs));
        }
    }
    return table;
}

}  // namespace

template <BlendMode Mode>
const PairTable& GetPairTable() {
    static const PairTable table = MakePairTable<Mode>();
    return table;
}

template const PairTable& GetPairTable<BlendMode::ColorBurn>();
template const PairTable& GetPairTable<BlendMode::SoftLight>();

const SoftLightSlopes& GetSoftLightSlopes() {
    static const SoftLightSlopes slopes = MakeSoftLightSlopes();
    return slopes;
}

}  // namespace vantu
