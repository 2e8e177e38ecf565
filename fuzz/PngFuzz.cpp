#include <vantu/CPNGLoader.h>

#include <new>

#include "MemoryFile.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const MemoryFile file(data, size);
    try {
        const auto image = vantu::CPNGLoader().Load(file.Descriptor(), nullptr);
    } catch (const std::bad_alloc&) {  // a header may ask for more memory than there is
    }
    return 0;
}
