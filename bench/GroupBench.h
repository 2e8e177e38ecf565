#pragma once

namespace vantu::bench {

/// Registers groups that are painted on and resolved.
void RegisterGroupBenchmarks();

}  // namespace vantu::bench
