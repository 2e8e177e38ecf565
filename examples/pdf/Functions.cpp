#include "Functions.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "Objects.h"
#include "Samples.h"

namespace pdf {

namespace {

constexpr int kMostFunctions = 256;           // in one, counting parts of parts
constexpr std::size_t kMostSampleInputs = 6;  // 64 corners to mix for an output
constexpr std::size_t kMostSamples = 1U << 28;

double Clamp(double x, const Interval& interval) {
    return std::max(interval.low, std::min(x, interval.high));
}

// x from one interval to another, in proportion.
double Interpolate(double x, const Interval& from, const Interval& to) {
    return from.high == from.low ? to.low : to.low + (x - from.low) * (to.high - to.low) / (from.high - from.low);
}

}  // namespace

Intervals ToIntervals(QPDFObjectHandle array) {
    const std::vector<double> numbers = ToNumbers(array);
    Intervals intervals;
    for (std::size_t i = 0; i + 1 < numbers.size(); i += 2) intervals.push_back({numbers[i], numbers[i + 1]});
    return intervals;
}

// The functions of an array; none if one of them cannot be read.
std::vector<Function::Pointer> Function::ParseAll(QPDFObjectHandle array, int& budget) {
    std::vector<Pointer> parts;
    for (const QPDFObjectHandle& item : Items(array)) {
        parts.push_back(Parse(item, budget));
        if (!parts.back()) return {};
    }
    return parts;
}

// Several functions of the same inputs; each has its own domain.
Formula Function::ReadArray(QPDFObjectHandle array, int& budget) {
    const std::vector<Pointer> parts = ParseAll(array, budget);
    for (const Pointer& part : parts) outputs_ += part->Outputs();
    if (!parts.empty()) domain_.assign(parts[0]->Inputs(), {-HUGE_VAL, HUGE_VAL});
    return [parts](std::span<const double> in, std::span<double> out) {
        for (const Pointer& part : parts) {
            part->Evaluate(in, out);
            out = out.subspan(part->Outputs());
        }
    };
}

// Type 0: samples on a grid, the first input varying fastest, and straight lines between them.
Formula Function::ReadSampled(QPDFObjectHandle stream) {
    outputs_ = range_.size();
    const auto bits = static_cast<unsigned int>(ToInteger(Entry(stream, "/BitsPerSample"), 0));
    if (outputs_ < 1 || domain_.size() > kMostSampleInputs || bits < 1 || bits > 32) return nullptr;
    std::vector<std::size_t> sizes;
    std::size_t count = outputs_;
    Intervals encode = ToIntervals(Entry(stream, "/Encode"));
    for (std::size_t i = 0; i < domain_.size(); ++i) {
        const int size = ToInteger(Item(Entry(stream, "/Size"), static_cast<int>(i)), 0);
        if (size < 1 || static_cast<std::size_t>(size) > kMostSamples / count) return nullptr;
        sizes.push_back(static_cast<std::size_t>(size));
        count *= sizes.back();
        if (encode.size() == i) encode.push_back({0, size - 1.0});
    }
    Intervals decode = ToIntervals(Entry(stream, "/Decode"));
    if (decode.size() != outputs_) decode = range_;
    return [bytes = ToBytes(stream), bits, sizes, encode, decode, domain = domain_](std::span<const double> in,
                                                                                    std::span<double> out) {
        // The cell of the grid around a point has a corner for each choice of a lower or upper neighbour; a corner
        // counts by the product of the distances to the opposite sides.
        std::array<double, kMostSampleInputs> part{};
        std::array<std::size_t, kMostSampleInputs> lower{};
        for (std::size_t i = 0; i < sizes.size(); ++i) {
            const double place =
                Clamp(Interpolate(in[i], domain[i], encode[i]), {0, static_cast<double>(sizes[i] - 1)});
            lower[i] = static_cast<std::size_t>(place);
            part[i] = place - static_cast<double>(lower[i]);
        }
        std::ranges::fill(out, 0.0);
        for (std::size_t corner = 0; corner < std::size_t{1} << sizes.size(); ++corner) {
            double weight = 1;
            std::size_t at = 0;
            std::size_t stride = out.size();
            for (std::size_t i = 0; i < sizes.size(); ++i) {
                const std::size_t upper = corner >> i & 1U;
                weight *= upper != 0 ? part[i] : 1 - part[i];
                at += (lower[i] + upper) * stride;
                stride *= sizes[i];
            }
            if (weight == 0) continue;  // also beyond the last sample
            for (std::size_t j = 0; j < out.size(); ++j) {
                const double sample = BitsAt(bytes, (at + j) * bits, bits);
                out[j] += weight * Interpolate(sample, {0, std::exp2(bits) - 1}, decode[j]);
            }
        }
    };
}

// Type 2: C0 + x^N (C1 - C0)
Formula Function::ReadExponential(QPDFObjectHandle dictionary) {
    std::vector<double> c0 = ToNumbers(Entry(dictionary, "/C0"));
    std::vector<double> c1 = ToNumbers(Entry(dictionary, "/C1"));
    if (c0.empty()) c0.resize(std::max<std::size_t>(c1.size(), 1), 0);
    if (c1.empty()) c1.resize(c0.size(), 1);
    outputs_ = std::min(c0.size(), c1.size());
    return [c0, c1, n = ToNumber(Entry(dictionary, "/N"), 1)](std::span<const double> in, std::span<double> out) {
        const double power = n == 1 ? in[0] : std::pow(in[0], n);
        for (std::size_t j = 0; j < out.size(); ++j) out[j] = c0[j] + power * (c1[j] - c0[j]);
    };
}

// Type 3: one function after the other along the domain; bounds say where one ends and the next begins.
Formula Function::ReadStitching(QPDFObjectHandle dictionary, int& budget) {
    const std::vector<double> bounds = ToNumbers(Entry(dictionary, "/Bounds"));
    const Intervals encode = ToIntervals(Entry(dictionary, "/Encode"));
    const std::vector<Pointer> parts = ParseAll(Entry(dictionary, "/Functions"), budget);
    const auto isAlike = [&](const Pointer& part) { return part->Outputs() == parts[0]->Outputs(); };
    if (parts.size() != bounds.size() + 1 || encode.size() < parts.size() || domain_.empty() ||
        !std::ranges::is_sorted(bounds) || !std::ranges::all_of(parts, isAlike))
        return nullptr;
    outputs_ = parts[0]->Outputs();
    return [parts, bounds, encode, domain = domain_[0]](std::span<const double> in, std::span<double> out) {
        const auto next = std::upper_bound(bounds.begin(), bounds.end(), in[0]);
        const auto i = static_cast<std::size_t>(next - bounds.begin());
        const Interval own{i == 0 ? domain.low : bounds[i - 1], i == bounds.size() ? domain.high : bounds[i]};
        const double x = Interpolate(in[0], own, encode[i]);
        parts[i]->Evaluate({&x, 1}, out);
    };
}

// Type 4: a program.
Formula Function::ReadProgram(QPDFObjectHandle stream) {
    outputs_ = range_.size();
    return ParseProgram(ToBytes(stream));
}

Function::Pointer Function::Parse(QPDFObjectHandle object) {
    int budget = kMostFunctions;
    return Parse(object, budget);
}

Function::Pointer Function::Parse(QPDFObjectHandle object, int& budget) {
    if (--budget < 0) return nullptr;
    const auto function = std::make_shared<Function>();
    function->domain_ = ToIntervals(Entry(object, "/Domain"));
    function->range_ = ToIntervals(Entry(object, "/Range"));
    switch (object.isArray() ? -1 : ToInteger(Entry(object, "/FunctionType"), -2)) {
        case -1: function->formula_ = function->ReadArray(object, budget); break;
        case 0: function->formula_ = function->ReadSampled(object); break;
        case 2: function->formula_ = function->ReadExponential(object); break;
        case 3: function->formula_ = function->ReadStitching(object, budget); break;
        case 4: function->formula_ = function->ReadProgram(object); break;
        default: break;
    }
    const auto isCount = [](std::size_t count) { return count >= 1 && count <= kMost; };
    if (!function->formula_ || !isCount(function->Inputs()) || !isCount(function->Outputs())) return nullptr;
    if (function->range_.size() != function->Outputs()) function->range_.clear();
    return function;
}

void Function::Evaluate(std::span<const double> in, std::span<double> out) const {
    std::array<double, kMost> clamped{};
    for (std::size_t i = 0; i < domain_.size(); ++i) clamped[i] = Clamp(i < in.size() ? in[i] : 0, domain_[i]);
    formula_({clamped.data(), domain_.size()}, out.first(outputs_));
    for (std::size_t j = 0; j < range_.size(); ++j) out[j] = Clamp(out[j], range_[j]);
}

double Function::operator()(double x) const {
    std::array<double, kMost> out{};
    Evaluate({&x, 1}, out);
    return out[0];
}

}  // namespace pdf
