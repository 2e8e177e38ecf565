#include "pixel/Spans.h"

namespace vantu {

const SpanCodecs& ActiveSpanCodecs() {
    return ScalarSpanCodecs();
}

}  // namespace vantu
