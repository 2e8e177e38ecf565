#include <vantu/CPNGLoader.h>
#include <vantu/CPNGSaver.h>

#include "fuzz/Files.h"
#include "fuzz/LoadAndCheck.h"

using namespace vantu;
using namespace vantu::fuzz;

namespace {

std::shared_ptr<IQorImage> SavedAndLoaded(const IQorImage& image) {
    const OutputFile saved;
    Require(CPNGSaver().Save(image, saved.Descriptor()), "an image is saved");
    QorSeekFile(saved.Descriptor(), 0, 0);
    auto loaded = CPNGLoader().Load(saved.Descriptor(), nullptr);
    Require(loaded != nullptr, "what is saved can be loaded");
    return loaded;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto [own, made] = LoadEachWay([&](IGraphicsFactory* factory) {
        const InputFile file({data, size});
        return CPNGLoader(factory).Load(file.Descriptor(), nullptr);
    });
    RequireToldSize(made, [&](auto& width, auto& height, auto& format) {
        return CPNGLoader().GetImageSize(InputFile({data, size}).Descriptor(), width, height, format);
    });
    Require(!own || !made || SameRows(*own, *made), "what is loaded does not depend on whose memory it is loaded into");
    if (!own || own->GetPixelFormat() == PixelFormat::Rgb555) return 0;

    // The loader turns a picture upside down and takes straight colours for premultiplied ones.
    const auto twice = SavedAndLoaded(*SavedAndLoaded(*own));
    Require(BitsPerPixel(own->GetPixelFormat()) == 32 || SameRows(*own, *twice),
            "an image that is saved and loaded twice is the same");
    return 0;
}
