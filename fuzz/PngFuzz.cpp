#include <vantu/CPNGLoader.h>

#include "fuzz/LoadAndCheck.h"
#include "fuzz/MemoryFile.h"

using namespace vantu;
using namespace vantu::fuzz;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto [own, made] = LoadEachWay([&](IGraphicsFactory* factory) {
        const MemoryFile file({data, size});
        return CPNGLoader(factory).Load(file.Descriptor(), nullptr);
    });
    Require(!own || !made || SameRows(*own, *made), "what is loaded does not depend on whose memory it is loaded into");
    return 0;
}
