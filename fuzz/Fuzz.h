#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "support/Choices.h"

// What all fuzz targets share. A target is a file that defines `LLVMFuzzerTestOneInput`; it gives the input to the
// library and stops the program where the library breaks a promise.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace vantu::fuzz {

using Bytes = std::span<const std::uint8_t>;

using test::Choices;
using test::Require;  // what it throws stops the program

}  // namespace vantu::fuzz
