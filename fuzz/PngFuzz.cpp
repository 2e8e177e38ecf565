#include <vantu/CPNGLoader.h>

#include "fuzz/Files.h"
#include "fuzz/LoadAndCheck.h"

using namespace vantu;
using namespace vantu::fuzz;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto [own, made] = LoadEachWay([&](IGraphicsFactory* factory) {
        const InputFile file({data, size});
        return CPNGLoader(factory).Load(file.Descriptor(), nullptr);
    });
    Require(!own || !made || SameRows(*own, *made), "what is loaded does not depend on whose memory it is loaded into");
    return 0;
}
