#pragma once

#include <functional>
#include <span>
#include <string>

namespace pdf {

// Computes the numbers `out` from the numbers `in`. It never changes: threads may share one.
using Formula = std::function<void(std::span<const double> in, std::span<double> out)>;

// The program of a function of type 4: `{ dup 0.5 gt { 1 exch sub } if }`. Its inputs are put on the stack, its outputs
// taken from there; all are 0 if an operator finds too little on the stack or too much. True is -1, as all bits are
// set.
// @return empty if the text is no such program.
Formula ParseProgram(const std::string& text);

}  // namespace pdf
