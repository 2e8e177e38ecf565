#include "PagesBench.h"

namespace vantu::bench {

void RegisterPagesBenchmarks() {}

}  // namespace vantu::bench
