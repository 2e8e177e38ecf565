#include <vantu/CJPEGLoader.h>

#include "fuzz/Files.h"
#include "fuzz/LoadAndCheck.h"

using namespace vantu;
using namespace vantu::fuzz;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    unsigned int width = 0;
    unsigned int height = 0;
    auto format = PixelFormat::Index1;
    const InputFile header({data, size});
    const bool sized = CJPEGLoader().GetImageSize(header.Descriptor(), width, height, format);
    Require(sized == (format == PixelFormat::Bgr24), "the format is told if and only if the header can be read");
    // A progressive file of a few bytes can ask for minutes of work.
    if (std::uint64_t{width} * height > 1 << 15) return 0;

    const auto [own, made] = LoadEachWay([&](IGraphicsFactory* factory) {
        const InputFile file({data, size});
        return CJPEGLoader(factory).Load(file.Descriptor(), nullptr);
    });
    if (!own) return 0;
    Require(sized && own->GetWidth() == width && own->GetHeight() == height && own->GetPixelFormat() == format,
            "an image has the size that its header tells");
    Require(!made || SameRows(*own, *made), "what is loaded does not depend on whose memory it is loaded into");
    return 0;
}
