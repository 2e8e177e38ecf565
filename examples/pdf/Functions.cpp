#include "Functions.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "Objects.h"
#include "Samples.h"

namespace pdf {

namespace {

constexpr std::size_t kMost = 32;             // inputs, and outputs
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

Function Parse(QPDFObjectHandle object, int& budget);

// The functions of an array; none if one of them cannot be read.
std::vector<Function> ParseAll(QPDFObjectHandle array, int& budget) {
    std::vector<Function> parts;
    for (const QPDFObjectHandle& item : Items(array)) {
        parts.push_back(Parse(item, budget));
        if (!parts.back()) return {};
    }
    return parts;
}

// Several functions of the same inputs; each has its own domain.
Function Join(const std::vector<Function>& parts) {
    if (parts.empty()) return nullptr;
    return [parts](std::span<const double> in) {
        std::vector<double> out;
        for (const Function& part : parts) {
            const std::vector<double> some = part(in);
            out.insert(out.end(), some.begin(), some.end());
        }
        return out;
    };
}

// Type 0: samples on a grid, the first input varying fastest, and straight lines between them.
Function ReadSampled(QPDFObjectHandle stream, const Intervals& domain, const Intervals& range) {
    const auto bits = static_cast<unsigned int>(ToInteger(Entry(stream, "/BitsPerSample"), 0));
    if (domain.size() > kMostSampleInputs || bits < 1 || bits > 32) return nullptr;
    std::vector<std::size_t> sizes;
    std::size_t count = range.size();
    Intervals encode = ToIntervals(Entry(stream, "/Encode"));
    for (std::size_t i = 0; i < domain.size(); ++i) {
        const int size = ToInteger(Item(Entry(stream, "/Size"), static_cast<int>(i)), 0);
        if (size < 1 || static_cast<std::size_t>(size) > kMostSamples / count) return nullptr;
        sizes.push_back(static_cast<std::size_t>(size));
        count *= sizes.back();
        if (encode.size() == i) encode.push_back({0, size - 1.0});
    }
    Intervals decode = ToIntervals(Entry(stream, "/Decode"));
    if (decode.size() != range.size()) decode = range;
    return [=, bytes = ToBytes(stream)](std::span<const double> in) {
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
        std::vector<double> out(range.size());
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
        return out;
    };
}

// Type 2: C0 + x^N (C1 - C0)
Function ReadExponential(QPDFObjectHandle dictionary) {
    std::vector<double> c0 = ToNumbers(Entry(dictionary, "/C0"));
    std::vector<double> c1 = ToNumbers(Entry(dictionary, "/C1"));
    if (c0.empty()) c0 = {0};
    if (c1.empty()) c1 = {1};
    if (c0.size() != c1.size() || c0.size() > kMost) return nullptr;
    return [c0, c1, n = ToNumber(Entry(dictionary, "/N"), 1)](std::span<const double> in) {
        const double power = n == 1 ? in[0] : std::pow(in[0], n);
        std::vector<double> out = c0;
        for (std::size_t j = 0; j < out.size(); ++j) out[j] += power * (c1[j] - c0[j]);
        return out;
    };
}

// Type 3: one function after the other along the domain; bounds say where one ends and the next begins.
Function ReadStitching(QPDFObjectHandle dictionary, const Interval& domain, int& budget) {
    const std::vector<double> bounds = ToNumbers(Entry(dictionary, "/Bounds"));
    const Intervals encode = ToIntervals(Entry(dictionary, "/Encode"));
    const std::vector<Function> parts = ParseAll(Entry(dictionary, "/Functions"), budget);
    if (parts.size() != bounds.size() + 1 || encode.size() < parts.size() || !std::ranges::is_sorted(bounds))
        return nullptr;
    return [=](std::span<const double> in) {
        const auto next = std::upper_bound(bounds.begin(), bounds.end(), in[0]);
        const auto i = static_cast<std::size_t>(next - bounds.begin());
        const Interval own{i == 0 ? domain.low : bounds[i - 1], i == bounds.size() ? domain.high : bounds[i]};
        return parts[i](std::array{Interpolate(in[0], own, encode[i])});
    };
}

Function Parse(QPDFObjectHandle object, int& budget) {
    if (--budget < 0) return nullptr;
    if (object.isArray()) return Join(ParseAll(object, budget));
    const Intervals domain = ToIntervals(Entry(object, "/Domain"));
    const Intervals range = ToIntervals(Entry(object, "/Range"));
    const int type = ToInteger(Entry(object, "/FunctionType"), -1);
    const bool needsRange = type == 0 || type == 4;
    if (domain.empty() || std::max(domain.size(), range.size()) > kMost || (needsRange && range.empty()))
        return nullptr;
    const Function function = type == 0   ? ReadSampled(object, domain, range)
                              : type == 2 ? ReadExponential(object)
                              : type == 3 ? ReadStitching(object, domain[0], budget)
                              : type == 4 ? ParseProgram(ToBytes(object), range.size())
                                          : nullptr;
    if (!function) return nullptr;
    return [=](std::span<const double> in) {
        std::vector<double> inside(domain.size());
        for (std::size_t i = 0; i < inside.size(); ++i) inside[i] = Clamp(i < in.size() ? in[i] : 0, domain[i]);
        std::vector<double> out = function(inside);
        for (std::size_t j = 0; j < std::min(out.size(), range.size()); ++j) out[j] = Clamp(out[j], range[j]);
        return out;
    };
}

}  // namespace

Intervals ToIntervals(QPDFObjectHandle array) {
    const std::vector<double> numbers = ToNumbers(array);
    Intervals intervals;
    for (std::size_t i = 0; i + 1 < numbers.size(); i += 2) intervals.push_back({numbers[i], numbers[i + 1]});
    return intervals;
}

Function ParseFunction(QPDFObjectHandle object) {
    int budget = kMostFunctions;
    return Parse(object, budget);
}

}  // namespace pdf
