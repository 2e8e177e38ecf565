#include <optional>

#include "blend/BlendSession.h"
#include "fuzz/Fuzz.h"
#include "support/VectorTargets.h"

using namespace vantu::test;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    static const std::vector<VectorTarget> targets = VectorTargets();
    std::optional<ForcedTarget> forced;
    if (!targets.empty()) forced.emplace(targets[data[0] % targets.size()]);
    BlendSession(Choices({data + 1, size - 1})).Run();
    return 0;
}
