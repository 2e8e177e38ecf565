#include "Calculator.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <map>
#include <numbers>
#include <sstream>
#include <variant>
#include <vector>

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

// Operators that make one number of one, one of two, and others.
using OfOne = double (*)(double);
using OfTwo = double (*)(double, double);
using OfStack = void (*)(Stack&);

const std::map<std::string, std::variant<OfOne, OfTwo, OfStack>> kOperators{
    {"abs", OfOne(std::abs)},
    {"ceiling", OfOne(std::ceil)},
    {"cos", [](double a) { return std::cos(a * kDegree); }},
    {"cvi", OfOne(std::trunc)},
    {"cvr", [](double a) { return a; }},
    {"floor", OfOne(std::floor)},
    {"ln", OfOne(std::log)},
    {"log", OfOne(std::log10)},
    {"neg", [](double a) { return -a; }},
    {"not", [](double a) { return -1 - std::trunc(a); }},  // all bits turned
    {"round", [](double a) { return std::floor(a + 0.5); }},
    {"sin", [](double a) { return std::sin(a * kDegree); }},
    {"sqrt", OfOne(std::sqrt)},
    {"truncate", OfOne(std::trunc)},

    {"add", [](double a, double b) { return a + b; }},
    {"and", [](double a, double b) -> double { return ToWhole(a) & ToWhole(b); }},
    {"atan", AngleOf},
    {"bitshift", Shift},
    {"div", [](double a, double b) { return b == 0 ? 0 : a / b; }},
    {"eq", [](double a, double b) -> double { return -(a == b); }},
    {"exp", OfTwo(std::pow)},
    {"ge", [](double a, double b) -> double { return -(a >= b); }},
    {"gt", [](double a, double b) -> double { return -(a > b); }},
    {"idiv", [](double a, double b) { return std::trunc(b) == 0 ? 0 : std::trunc(std::trunc(a) / std::trunc(b)); }},
    {"le", [](double a, double b) -> double { return -(a <= b); }},
    {"lt", [](double a, double b) -> double { return -(a < b); }},
    {"mod", [](double a, double b) { return b == 0 ? 0 : std::fmod(a, b); }},
    {"mul", [](double a, double b) { return a * b; }},
    {"ne", [](double a, double b) -> double { return -(a != b); }},
    {"or", [](double a, double b) -> double { return ToWhole(a) | ToWhole(b); }},
    {"sub", [](double a, double b) { return a - b; }},
    {"xor", [](double a, double b) -> double { return ToWhole(a) ^ ToWhole(b); }},

    {"copy", Copy},
    {"dup", [](Stack& stack) { stack.Push(stack.Top(1).empty() ? 0 : stack.Top(1)[0]); }},
    {"exch", [](Stack& stack) { std::ranges::reverse(stack.Top(2)); }},
    {"false", [](Stack& stack) { stack.Push(0); }},
    {"index", Index},
    {"pop", [](Stack& stack) { stack.Pop(); }},
    {"roll", Roll},
    {"true", [](Stack& stack) { stack.Push(-1); }},
};

struct Step;
using Block = std::vector<Step>;
struct Branch {
    Block ifTrue;
    Block ifFalse;
};
// A number is pushed, an operator or one of two blocks run.
struct Step {
    std::variant<double, OfOne, OfTwo, OfStack, Branch> what;
};

void Run(const Block& block, Stack& stack) {
    for (const auto& [what] : block) {
        if (const auto* number = std::get_if<double>(&what)) {
            stack.Push(*number);
        } else if (const auto* ofOne = std::get_if<OfOne>(&what)) {
            stack.Push((*ofOne)(stack.Pop()));
        } else if (const auto* ofTwo = std::get_if<OfTwo>(&what)) {
            const double b = stack.Pop();
            stack.Push((*ofTwo)(stack.Pop(), b));
        } else if (const auto* ofStack = std::get_if<OfStack>(&what)) {
            (*ofStack)(stack);
        } else if (const auto* branch = std::get_if<Branch>(&what)) {
            Run(stack.Pop() != 0 ? branch->ifTrue : branch->ifFalse, stack);
        }
        if (stack.Failed()) return;
    }
}

// Words apart by spaces, without comments.
std::string SpacedOut(const std::string& text) {
    std::string spaced;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%') i = std::min(text.find_first_of("\r\n", i), text.size() - 1);
        const bool isBrace = text[i] == '{' || text[i] == '}';
        if (isBrace) spaced += ' ';
        spaced += text[i] == '\0' ? ' ' : text[i];
        if (isBrace) spaced += ' ';
    }
    return spaced;
}

// Reads up to the brace that ends a block.
bool ReadBlock(std::istream& words, Block& block, int depth) {
    std::vector<Block> inner;  // blocks that wait for their `if` or `ifelse`
    for (std::string word; words >> word;) {
        if (word == "}") return inner.empty();
        if (word == "{") {
            if (depth == 0 || !ReadBlock(words, inner.emplace_back(), depth - 1)) return false;
            continue;
        }
        if (inner.size() != (word == "if" ? 1U : word == "ifelse" ? 2U : 0U)) return false;
        if (!inner.empty()) {
            block.push_back({Branch{std::move(inner[0]), inner.size() == 2 ? std::move(inner[1]) : Block()}});
            inner.clear();
        } else if (const auto found = kOperators.find(word); found != kOperators.end()) {
            std::visit([&](auto run) { block.push_back({run}); }, found->second);
        } else {
            char* end = nullptr;
            const double number = std::strtod(word.c_str(), &end);
            if (*end != 0 || !std::isfinite(number)) return false;
            block.push_back({number});
        }
    }
    return false;
}

}  // namespace

Formula ParseProgram(const std::string& text) {
    std::istringstream words(SpacedOut(text));
    std::string brace;
    Block program;
    if (!(words >> brace) || brace != "{" || !ReadBlock(words, program, kDeepestBlock)) return nullptr;
    return [program](std::span<const double> in, std::span<double> out) {
        Stack stack;
        for (const double number : in) stack.Push(number);
        Run(program, stack);
        for (std::size_t j = out.size(); j > 0; --j) out[j - 1] = stack.Pop();
        if (stack.Failed()) std::ranges::fill(out, 0.0);
    };
}

}  // namespace pdf
