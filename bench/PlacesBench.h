#pragma once

namespace vantu::bench {

/// Registers tables of calls that each paint at another place of a page.
void RegisterPlacesBenchmarks();

}  // namespace vantu::bench
