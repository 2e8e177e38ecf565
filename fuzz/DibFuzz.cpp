#include <vantu/CDIBLoader.h>
#include <vantu/CDIBSaver.h>

#include "fuzz/Files.h"
#include "fuzz/LoadAndCheck.h"

using namespace vantu;
using namespace vantu::fuzz;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    for (const bool skipFileHeader : {false, true}) {
        const auto [own, made] = LoadEachWay([&](IGraphicsFactory* factory) {
            const InputFile file({data, size});
            return CDIBLoader(factory).Load(file.Descriptor(), nullptr, skipFileHeader);
        });
        RequireToldSize(made, [&](auto& width, auto& height, auto& format) {
            return CDIBLoader().GetImageSize(InputFile({data, size}).Descriptor(), width, height, format,
                                             skipFileHeader);
        });
        Require(!made || made->IsBottomUp(), "a factory is asked for bottom-up images");
        if (!own) continue;

        const OutputFile saved;
        Require(CDIBSaver().Save(*own, saved.Descriptor()), "an image is saved");
        const auto again = CDIBLoader().Load(saved.Descriptor(), nullptr, false);
        Require(again && SameRows(*own, *again), "an image that is saved and loaded is the same");
    }
    return 0;
}
