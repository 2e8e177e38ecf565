#pragma once

namespace vantu::bench {

/// Registers the loaders, and the bare codec libraries reading the same files.
void RegisterCodecBenchmarks();

}  // namespace vantu::bench
