#pragma once

namespace vantu::bench {

/// Registers what is paid per blender, per call and per group, whatever is painted.
void RegisterSetupBenchmarks();

}  // namespace vantu::bench
