#pragma once

namespace vantu::bench {

/// Registers the calls that pages of PDF files make: the project's own, and those of the folder that the environment
/// variable IMAGEOP_BENCH_PAGES names. None, where the host of the pages was not there to build with.
void RegisterPagesBenchmarks();

}  // namespace vantu::bench
