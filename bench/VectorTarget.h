#pragma once

#include <string>

namespace vantu::bench {

/// Makes the library run the vector code of one target, by its name: AVX3, AVX2, SSE4, NEON. To be called
/// before the library's first use. @return false if this machine does not run it.
bool ForceVectorTarget(const std::string& name);

/// The target whose code runs.
std::string VectorTargetName();

}  // namespace vantu::bench
