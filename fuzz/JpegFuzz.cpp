#include <vantu/CJPEGLoader.h>

#include <new>

#include "MemoryFile.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    unsigned int width = 0;
    unsigned int height = 0;
    auto format = vantu::PixelFormat::Bgr24;
    const MemoryFile header(data, size);
    const bool sized = vantu::CJPEGLoader().GetImageSize(header.Descriptor(), width, height, format);
    if (!sized || width > 4096 || height > 4096) return 0;  // a few bytes can ask for minutes of work

    const MemoryFile file(data, size);
    const auto image = vantu::CJPEGLoader().Load(file.Descriptor(), nullptr);
    return 0;
}
