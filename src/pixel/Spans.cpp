#include "pixel/Spans.h"

#include "pixel/SpanRows.h"

namespace vantu {

const SpanCodecs& ScalarSpanCodecs() {
    static constexpr SpanCodecs codecs = MakeSpanCodecs<ScalarRow>();
    return codecs;
}

}  // namespace vantu
