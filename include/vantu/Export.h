#pragma once

// What a compiler or a system wants said otherwise than others stands in this header alone.

/// Marks what a shared library shows: every public class with a virtual table or operations that are not inline, and
/// every public function. All else is compiled with hidden visibility. The sibling contracts are marked too, so that a
/// host's own implementation is found by the library, wherever it is linked.
#define VANTU_API [[gnu::visibility("default")]]
