#include "Functions.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "Calculator.h"
#include "Objects.h"

namespace pdf {

namespace {

constexpr int kMostFunctions = 256;           // in one, counting parts of parts
constexpr std::size_t kMostSampleInputs = 6;  // 64 corners to mix for an output
constexpr std::size_t kMostSamples = 1U << 22;

// x from one interval to another, in proportion.
double Interpolate(double x, double fromLow, double fromHigh, double toLow, double toHigh) {
    return fromHigh == fromLow ? toLow : toLow + (x - fromLow) * (toHigh - toLow) / (fromHigh - fromLow);
}

// Numbers of 1 to 32 bits one after the other, each of them as a part of the greatest, 0 to 1.
std::vector<double> Unpack(const std::string& bytes, unsigned int bits, std::size_t count) {
    std::vector<double> samples;
    const double greatest = std::exp2(bits) - 1;
    std::size_t at = 0;
    for (std::size_t i = 0; i < count; ++i) {
        unsigned long long value = 0;
        for (unsigned int bit = 0; bit < bits; ++bit, ++at) {
            const unsigned int byte = at / 8 < bytes.size() ? static_cast<unsigned char>(bytes[at / 8]) : 0U;
            value = 2 * value + (byte >> (7 - at % 8)) % 2;
        }
        samples.push_back(static_cast<double>(value) / greatest);
    }
    return samples;
}

}  // namespace

// Several functions of the same inputs.
struct Function::Joined final : Function {
    std::vector<std::shared_ptr<const Function>> parts;

    bool Read(QPDFObjectHandle array, int& budget) override {
        for (int i = 0; i < array.getArrayNItems(); ++i) {
            const auto part = Parse(array.getArrayItem(i), budget);
            if (!part || (i > 0 && part->Inputs() != parts[0]->Inputs())) return false;
            outputs_ += part->Outputs();
            parts.push_back(part);
        }
        if (parts.empty() || outputs_ > kMost) return false;
        domain_.assign(parts[0]->Inputs(), {-HUGE_VAL, HUGE_VAL});  // each part has its own
        return true;
    }
    void Compute(std::span<const double> in, std::span<double> out) const override {
        for (const auto& part : parts) {
            part->Evaluate(in, out);
            out = out.subspan(part->Outputs());
        }
    }
};

// Type 0: samples on a grid, and straight lines between them.
struct Function::Sampled final : Function {
    std::vector<double> samples;  // the outputs of a grid point together; the first input varies fastest
    std::vector<std::size_t> sizes;
    Intervals encode;

    bool Read(QPDFObjectHandle stream, int&) override {
        outputs_ = range_.size();
        const int bits = ToInteger(Entry(stream, "/BitsPerSample"), 0);
        if (outputs_ < 1 || domain_.empty() || domain_.size() > kMostSampleInputs || bits < 1 || bits > 32)
            return false;
        encode = ReadIntervals(Entry(stream, "/Encode"));
        Intervals decode = ReadIntervals(Entry(stream, "/Decode"));
        if (decode.size() != outputs_) decode = range_;
        std::size_t count = outputs_;
        const bool isEncoded = encode.size() == domain_.size();
        if (!isEncoded) encode.clear();
        for (std::size_t i = 0; i < domain_.size(); ++i) {
            const int size = ToInteger(Item(Entry(stream, "/Size"), static_cast<int>(i)), 0);
            if (size < 1 || static_cast<std::size_t>(size) > kMostSamples / count) return false;
            sizes.push_back(static_cast<std::size_t>(size));
            count *= sizes.back();
            if (!isEncoded) encode.push_back({0, size - 1.0});
        }
        samples = Unpack(ToBytes(stream), static_cast<unsigned int>(bits), count);
        for (std::size_t i = 0; i < count; ++i) {
            const Interval& interval = decode[i % outputs_];
            samples[i] = interval.low + samples[i] * (interval.high - interval.low);
        }
        return true;
    }
    void Compute(std::span<const double> in, std::span<double> out) const override {
        // The cell of the grid around a point has a corner for each choice of a lower or upper neighbour; a corner
        // counts by the product of the distances to the opposite sides.
        std::array<double, kMostSampleInputs> part{};
        std::array<std::size_t, kMostSampleInputs> lower{};
        for (std::size_t i = 0; i < sizes.size(); ++i) {
            const double x = Interpolate(in[i], domain_[i].low, domain_[i].high, encode[i].low, encode[i].high);
            const double place = std::clamp(x, 0.0, static_cast<double>(sizes[i] - 1));
            lower[i] = std::min(static_cast<std::size_t>(place), sizes[i] - 1);
            part[i] = place - static_cast<double>(lower[i]);
        }
        std::fill(out.begin(), out.begin() + static_cast<std::ptrdiff_t>(outputs_), 0.0);
        for (std::size_t corner = 0; corner < std::size_t{1} << sizes.size(); ++corner) {
            double weight = 1;
            std::size_t at = 0;
            std::size_t stride = outputs_;
            for (std::size_t i = 0; i < sizes.size(); ++i) {
                const std::size_t upper = corner >> i & 1U;
                weight *= upper != 0 ? part[i] : 1 - part[i];
                at += std::min(lower[i] + upper, sizes[i] - 1) * stride;
                stride *= sizes[i];
            }
            if (weight == 0) continue;
            for (std::size_t j = 0; j < outputs_; ++j) out[j] += weight * samples[at + j];
        }
    }
};

// Type 2: C0 + x^N (C1 - C0)
struct Function::Exponential final : Function {
    std::vector<double> c0;
    std::vector<double> c1;
    double exponent = 1;

    bool Read(QPDFObjectHandle dictionary, int&) override {
        c0 = ToNumbers(Entry(dictionary, "/C0"));
        c1 = ToNumbers(Entry(dictionary, "/C1"));
        if (c0.empty()) c0 = {0};
        if (c1.empty()) c1 = {1};
        exponent = ToNumber(Entry(dictionary, "/N"), 1);
        outputs_ = std::min(c0.size(), c1.size());
        return !domain_.empty();
    }
    void Compute(std::span<const double> in, std::span<double> out) const override {
        const double power = exponent == 1 ? in[0] : std::pow(in[0], exponent);
        for (std::size_t j = 0; j < outputs_; ++j) out[j] = c0[j] + power * (c1[j] - c0[j]);
    }
};

// Type 3: one function after the other along the domain.
struct Function::Stitching final : Function {
    std::vector<std::shared_ptr<const Function>> parts;
    std::vector<double> bounds;  // where one ends and the next begins
    Intervals encode;

    bool Read(QPDFObjectHandle dictionary, int& budget) override {
        const QPDFObjectHandle functions = Entry(dictionary, "/Functions");
        bounds = ToNumbers(Entry(dictionary, "/Bounds"));
        encode = ReadIntervals(Entry(dictionary, "/Encode"));
        if (domain_.empty() || encode.size() <= bounds.size()) return false;
        for (std::size_t i = 0; i <= bounds.size(); ++i) {
            const auto part = Parse(Item(functions, static_cast<int>(i)), budget);
            if (!part || part->Inputs() != 1 || (i > 0 && part->Outputs() != parts[0]->Outputs())) return false;
            parts.push_back(part);
        }
        outputs_ = parts[0]->Outputs();
        return std::is_sorted(bounds.begin(), bounds.end());
    }
    void Compute(std::span<const double> in, std::span<double> out) const override {
        const auto next = std::upper_bound(bounds.begin(), bounds.end(), in[0]);
        const auto i = static_cast<std::size_t>(next - bounds.begin());
        const double low = i == 0 ? domain_[0].low : bounds[i - 1];
        const double high = i == bounds.size() ? domain_[0].high : bounds[i];
        const double x = Interpolate(in[0], low, high, encode[i].low, encode[i].high);
        parts[i]->Evaluate({&x, 1}, out);
    }
};

// Type 4: a program.
struct Function::Calculated final : Function {
    Calculator program;

    bool Read(QPDFObjectHandle stream, int&) override {
        outputs_ = range_.size();
        return outputs_ > 0 && program.Read(ToBytes(stream));
    }
    void Compute(std::span<const double> in, std::span<double> out) const override {
        program.Run(in, out.first(outputs_));
    }
};

double Function::Interval::Clamp(double x) const {
    return std::max(low, std::min(x, high));
}

Function::Intervals Function::ReadIntervals(QPDFObjectHandle array) {
    const std::vector<double> numbers = ToNumbers(array);
    Intervals intervals;
    for (std::size_t i = 0; i + 1 < numbers.size(); i += 2) intervals.push_back({numbers[i], numbers[i + 1]});
    return intervals;
}

std::shared_ptr<const Function> Function::Parse(QPDFObjectHandle object) {
    int budget = kMostFunctions;
    return Parse(object, budget);
}

std::shared_ptr<const Function> Function::Parse(QPDFObjectHandle object, int& budget) {
    if (--budget < 0) return nullptr;
    std::shared_ptr<Function> function;
    if (object.isArray()) {
        function = std::make_shared<Joined>();
    } else {
        switch (ToInteger(Entry(object, "/FunctionType"), -1)) {
            case 0: function = std::make_shared<Sampled>(); break;
            case 2: function = std::make_shared<Exponential>(); break;
            case 3: function = std::make_shared<Stitching>(); break;
            case 4: function = std::make_shared<Calculated>(); break;
            default: return nullptr;
        }
    }
    function->domain_ = ReadIntervals(Entry(object, "/Domain"));
    function->range_ = ReadIntervals(Entry(object, "/Range"));
    if (!function->Read(object, budget)) return nullptr;
    const auto isCount = [](std::size_t count) { return count >= 1 && count <= kMost; };
    if (!isCount(function->Inputs()) || !isCount(function->Outputs())) return nullptr;
    if (function->range_.size() != function->Outputs()) function->range_.clear();
    return function;
}

void Function::Evaluate(std::span<const double> in, std::span<double> out) const {
    std::array<double, kMost> clamped{};
    for (std::size_t i = 0; i < domain_.size(); ++i) clamped[i] = domain_[i].Clamp(i < in.size() ? in[i] : 0);
    Compute({clamped.data(), domain_.size()}, out);
    for (std::size_t j = 0; j < range_.size(); ++j) out[j] = range_[j].Clamp(out[j]);
}

double Function::operator()(double x) const {
    std::array<double, kMost> out{};
    Evaluate({&x, 1}, out);
    return out[0];
}

}  // namespace pdf
