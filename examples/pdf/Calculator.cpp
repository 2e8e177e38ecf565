#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <map>
#include <numbers>
#include <qpdf/BufferInputSource.hh>
#include <qpdf/QPDFTokenizer.hh>
#include <vector>

#include "Functions.h"

namespace pdf {

namespace {

constexpr std::size_t kDeepestStack = 100;
constexpr int kDeepestBlock = 32;
constexpr double kDegree = std::numbers::pi / 180;

// Whole numbers, as the operators on bits see them.
int ToWhole(double x) {
    return static_cast<int>(std::max(-2e9, std::min(2e9, x)));
}

class Stack {
public:
    void Push(double number) {
        failed_ = failed_ || size_ == numbers_.size();
        if (!failed_) numbers_[size_++] = number;
    }
    double Pop() {
        failed_ = failed_ || size_ == 0;
        return failed_ ? 0 : numbers_[--size_];
    }
    // The uppermost numbers, lowest first. None if there are not so many.
    std::span<double> Top(int count) {
        failed_ = failed_ || count < 0 || static_cast<std::size_t>(count) > size_;
        if (failed_) return {};
        return std::span(numbers_).subspan(size_ - static_cast<std::size_t>(count), static_cast<std::size_t>(count));
    }
    [[nodiscard]] bool Failed() const { return failed_; }

private:
    std::array<double, kDeepestStack> numbers_;
    std::size_t size_ = 0;
    bool failed_ = false;
};

double AngleOf(double numerator, double denominator) {
    const double degrees = std::atan2(numerator, denominator) / kDegree;
    return degrees < 0 ? degrees + 360 : degrees;
}

double Shift(double a, double b) {
    const auto bits = static_cast<unsigned int>(ToWhole(a));
    const int by = ToWhole(b);
    if (by < -31 || by > 31) return 0;
    return static_cast<int>(by >= 0 ? bits << by : bits >> -by);
}

void Copy(Stack& stack) {
    for (const double number : stack.Top(ToWhole(stack.Pop()))) stack.Push(number);
}

void Index(Stack& stack) {
    const auto numbers = stack.Top(std::min(ToWhole(stack.Pop()), 1000) + 1);
    if (!numbers.empty()) stack.Push(numbers.front());
}

void Roll(Stack& stack) {
    const int by = ToWhole(stack.Pop());
    const int count = ToWhole(stack.Pop());
    const auto numbers = stack.Top(count);
    if (numbers.empty()) return;
    const int upward = (by % count + count) % count;
    std::rotate(numbers.begin(), numbers.end() - upward, numbers.end());
}

// A step of a program: a number that is pushed, an operator, or a choice between two blocks.
using Step = std::function<void(Stack&)>;
using Block = std::vector<Step>;

// Operators that make one number of one, and one of two.
Step OfOne(double (*operate)(double)) {
    return [operate](Stack& stack) { stack.Push(operate(stack.Pop())); };
}
Step OfTwo(double (*operate)(double, double)) {
    return [operate](Stack& stack) {
        const double b = stack.Pop();
        stack.Push(operate(stack.Pop(), b));
    };
}

const std::map<std::string, Step> kOperators{
    {"abs", OfOne(std::abs)},
    {"ceiling", OfOne(std::ceil)},
    {"cos", OfOne([](double a) { return std::cos(a * kDegree); })},
    {"cvi", OfOne(std::trunc)},
    {"cvr", OfOne([](double a) { return a; })},
    {"floor", OfOne(std::floor)},
    {"ln", OfOne(std::log)},
    {"log", OfOne(std::log10)},
    {"neg", OfOne([](double a) { return -a; })},
    {"not", OfOne([](double a) { return -1 - std::trunc(a); })},  // all bits turned
    {"round", OfOne([](double a) { return std::floor(a + 0.5); })},
    {"sin", OfOne([](double a) { return std::sin(a * kDegree); })},
    {"sqrt", OfOne(std::sqrt)},
    {"truncate", OfOne(std::trunc)},

    {"add", OfTwo([](double a, double b) { return a + b; })},
    {"and", OfTwo([](double a, double b) -> double { return ToWhole(a) & ToWhole(b); })},
    {"atan", OfTwo(AngleOf)},
    {"bitshift", OfTwo(Shift)},
    {"div", OfTwo([](double a, double b) { return b == 0 ? 0 : a / b; })},
    {"eq", OfTwo([](double a, double b) -> double { return -(a == b); })},
    {"exp", OfTwo(std::pow)},
    {"ge", OfTwo([](double a, double b) -> double { return -(a >= b); })},
    {"gt", OfTwo([](double a, double b) -> double { return -(a > b); })},
    {"idiv",
     OfTwo([](double a, double b) { return std::trunc(b) == 0 ? 0 : std::trunc(std::trunc(a) / std::trunc(b)); })},
    {"le", OfTwo([](double a, double b) -> double { return -(a <= b); })},
    {"lt", OfTwo([](double a, double b) -> double { return -(a < b); })},
    {"mod", OfTwo([](double a, double b) { return b == 0 ? 0 : std::fmod(a, b); })},
    {"mul", OfTwo([](double a, double b) { return a * b; })},
    {"ne", OfTwo([](double a, double b) -> double { return -(a != b); })},
    {"or", OfTwo([](double a, double b) -> double { return ToWhole(a) | ToWhole(b); })},
    {"sub", OfTwo([](double a, double b) { return a - b; })},
    {"xor", OfTwo([](double a, double b) -> double { return ToWhole(a) ^ ToWhole(b); })},

    {"copy", Copy},
    {"dup", [](Stack& stack) { stack.Push(stack.Top(1).empty() ? 0 : stack.Top(1)[0]); }},
    {"exch", [](Stack& stack) { std::ranges::reverse(stack.Top(2)); }},
    {"false", [](Stack& stack) { stack.Push(0); }},
    {"index", Index},
    {"pop", [](Stack& stack) { stack.Pop(); }},
    {"roll", Roll},
    {"true", [](Stack& stack) { stack.Push(-1); }},
};

void Run(const Block& block, Stack& stack) {
    for (const Step& step : block) {
        step(stack);
        if (stack.Failed()) return;
    }
}

// Reads up to the brace that ends a block.
bool ReadBlock(const std::function<std::string()>& next, Block& block, int depth) {
    std::vector<Block> inner;  // blocks that wait for their `if` or `ifelse`
    for (std::string word = next(); !word.empty(); word = next()) {
        if (word == "}") return inner.empty();
        if (word == "{") {
            if (depth == 0 || !ReadBlock(next, inner.emplace_back(), depth - 1)) return false;
            continue;
        }
        if (inner.size() != (word == "if" ? 1U : word == "ifelse" ? 2U : 0U)) return false;
        if (!inner.empty()) {
            inner.resize(2);
            block.emplace_back([inner](Stack& stack) { Run(inner[stack.Pop() != 0 ? 0 : 1], stack); });
            inner.clear();
        } else if (const auto found = kOperators.find(word); found != kOperators.end()) {
            block.push_back(found->second);
        } else {
            char* end = nullptr;
            const double number = std::strtod(word.c_str(), &end);
            if (*end != 0 || !std::isfinite(number)) return false;
            block.emplace_back([number](Stack& stack) { stack.Push(number); });
        }
    }
    return false;
}

}  // namespace

Function ParseProgram(const std::string& text, std::size_t outputs) {
    const auto input = std::make_shared<BufferInputSource>("program", text);
    QPDFTokenizer tokenizer;
    const auto next = [&] { return tokenizer.readToken(input, "program", true).getValue(); };
    Block program;
    if (next() != "{" || !ReadBlock(next, program, kDeepestBlock)) return nullptr;
    return [program, outputs](std::span<const double> in) {
        Stack stack;
        for (const double number : in) stack.Push(number);
        Run(program, stack);
        std::vector<double> out(outputs);
        for (std::size_t j = outputs; j > 0; --j) out[j - 1] = stack.Pop();
        return stack.Failed() ? std::vector<double>(outputs) : out;
    };
}

}  // namespace pdf
