#include "fuzz/Fuzz.h"
#include "painter/PainterSession.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    vantu::test::PainterSession(vantu::test::Choices({data, size})).Run();
    return 0;
}
