#include <vantu/CDIBLoader.h>

#include <new>

#include "MemoryFile.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    for (const bool skipFileHeader : {false, true}) {
        const MemoryFile file(data, size);
        try {
            const auto image = vantu::CDIBLoader().Load(file.Descriptor(), nullptr, skipFileHeader);
        } catch (const std::bad_alloc&) {  // a header may ask for more memory than there is
        }
    }
    return 0;
}
