#pragma once

namespace vantu::bench {

/// Registers the library, the scalar loop and pixman for every case that is measured, and memcpy of the same bytes.
void RegisterBlendBenchmarks();

}  // namespace vantu::bench
