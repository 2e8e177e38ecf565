#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "Qpdf.h"

namespace pdf {

// The numbers from one to another.
struct Interval {
    double low = 0;
    double high = 1;
};
using Intervals = std::vector<Interval>;

// Pairs of numbers; none of anything that is no array.
Intervals ToIntervals(QPDFObjectHandle array);

// A function of a document: numbers in, one number or more out. Numbers outside its domain count as its nearest end,
// those that are missing as 0. It never changes: threads may share one.
using Function = std::function<std::vector<double>(std::span<const double> in)>;

// Reads a function of type 0, 2, 3 or 4, or an array of them, which gives the outputs of all.
// @return empty for anything else, and for a function that is damaged or has more than 32 inputs or outputs.
[[nodiscard]] Function ParseFunction(QPDFObjectHandle object);

// The program of a function of type 4: `{ dup 0.5 gt { 1 exch sub } if }`. Its inputs are put on the stack, its outputs
// taken from there; all are 0 if an operator finds too little on the stack or too much. True is -1, as all bits are
// set.
// @return empty if the text is no such program.
[[nodiscard]] Function ParseProgram(const std::string& text, std::size_t outputs);

}  // namespace pdf
