#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

#include "Calculator.h"
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

// A function of a document: numbers in, numbers out. It never changes: threads may share one.
class Function {
public:
    static constexpr std::size_t kMost = 32;  // inputs, and outputs
    using Pointer = std::shared_ptr<const Function>;

    // Reads a function of type 0, 2, 3 or 4, or an array of them, which gives the outputs of all.
    // @return null for anything else, and for a function that is damaged.
    [[nodiscard]] static Pointer Parse(QPDFObjectHandle object);

    [[nodiscard]] std::size_t Inputs() const { return domain_.size(); }
    [[nodiscard]] std::size_t Outputs() const { return outputs_; }

    // Numbers outside the function's domain count as its nearest end. Inputs that are missing count as 0.
    // REQUIRES: `out` has room for Outputs() numbers.
    void Evaluate(std::span<const double> in, std::span<double> out) const;

    // The first output for one number.
    [[nodiscard]] double operator()(double x) const;

private:
    // @param[in,out] budget how many functions there may be yet, so that loops of them end.
    static Pointer Parse(QPDFObjectHandle object, int& budget);
    static std::vector<Pointer> ParseAll(QPDFObjectHandle array, int& budget);
    // Read what a type has beside its domain and range. @return empty if it is damaged.
    Formula ReadArray(QPDFObjectHandle array, int& budget);
    Formula ReadSampled(QPDFObjectHandle stream);
    Formula ReadExponential(QPDFObjectHandle dictionary);
    Formula ReadStitching(QPDFObjectHandle dictionary, int& budget);
    Formula ReadProgram(QPDFObjectHandle stream);

    Intervals domain_;
    Intervals range_;  // as many as outputs, or none
    std::size_t outputs_ = 0;
    Formula formula_;  // for numbers within the domain
};

}  // namespace pdf
