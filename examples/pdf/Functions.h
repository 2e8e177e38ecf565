#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

#include "Qpdf.h"

namespace pdf {

// A function of a document: numbers in, numbers out. It never changes: threads may share one.
class Function {
public:
    static constexpr std::size_t kMost = 32;  // inputs, and outputs

    // Reads a function of type 0, 2, 3 or 4, or an array of them, which gives the outputs of all.
    // @return null for anything else, and for a function that is damaged.
    [[nodiscard]] static std::shared_ptr<const Function> Parse(QPDFObjectHandle object);

    Function(const Function&) = delete;
    Function& operator=(const Function&) = delete;
    virtual ~Function() = default;

    [[nodiscard]] std::size_t Inputs() const { return domain_.size(); }
    [[nodiscard]] std::size_t Outputs() const { return outputs_; }

    // Numbers outside the function's domain count as its nearest end. Inputs that are missing count as 0.
    // REQUIRES: `out` has room for Outputs() numbers.
    void Evaluate(std::span<const double> in, std::span<double> out) const;

    // The first output for one number.
    [[nodiscard]] double operator()(double x) const;

protected:
    struct Interval {
        double low;
        double high;

        [[nodiscard]] double Clamp(double x) const;
    };
    using Intervals = std::vector<Interval>;

    static Intervals ReadIntervals(QPDFObjectHandle array);

    Function() = default;

    // @param[in,out] budget how many functions there may be yet, so that loops of them end.
    static std::shared_ptr<const Function> Parse(QPDFObjectHandle object, int& budget);

    // Reads what a type has beside its domain and range, and says how many outputs it has. @return false if damaged.
    virtual bool Read(QPDFObjectHandle object, int& budget) = 0;

    // The formula itself, for numbers within the domain.
    virtual void Compute(std::span<const double> in, std::span<double> out) const = 0;

    Intervals domain_;
    Intervals range_;  // as many as outputs, or none
    std::size_t outputs_ = 0;

private:
    struct Joined;
    struct Sampled;
    struct Exponential;
    struct Stitching;
    struct Calculated;
};

}  // namespace pdf
