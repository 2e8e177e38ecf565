#include "fuzz/Fuzz.h"
#include "painter/Session.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    vantu::test::Session(vantu::test::Choices({data, size})).Run();
    return 0;
}
