#include "Calculator.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <numbers>
#include <string_view>

namespace pdf {

namespace {

constexpr std::size_t kDeepestStack = 100;
constexpr int kDeepestBlock = 32;
constexpr double kDegree = std::numbers::pi / 180;

struct Value {
    double number = 0;
    bool isTruth = false;  // true or false, and no number
};

class Stack {
public:
    void Push(const Value& value) {
        if (size_ < values_.size())
            values_[size_++] = value;
        else
            failed_ = true;
    }
    void Push(double number) { Push(Value{number, false}); }
    void PushTruth(bool truth) { Push(Value{truth ? 1.0 : 0.0, true}); }
    Value Pop() {
        if (size_ > 0) return values_[--size_];
        failed_ = true;
        return {};
    }
    double Number() { return Pop().number; }
    // A whole number that an int can hold.
    int Whole() { return static_cast<int>(std::max(-2e9, std::min(2e9, Number()))); }

    // The uppermost values, lowest first. None if there are not so many.
    std::span<Value> Top(int count) {
        failed_ = failed_ || count < 0 || static_cast<std::size_t>(count) > size_;
        if (failed_) return {};
        return std::span(values_).subspan(size_ - static_cast<std::size_t>(count), static_cast<std::size_t>(count));
    }
    [[nodiscard]] bool Failed() const { return failed_; }

private:
    std::array<Value, kDeepestStack> values_;
    std::size_t size_ = 0;
    bool failed_ = false;
};

template <typename Formula>
void One(Stack& stack, Formula formula) {
    stack.Push(formula(stack.Number()));
}

template <typename Formula>
void Two(Stack& stack, Formula formula) {
    const double b = stack.Number();
    const double a = stack.Number();
    stack.Push(formula(a, b));
}

template <typename Formula>
void Compare(Stack& stack, Formula formula) {
    const double b = stack.Number();
    const double a = stack.Number();
    stack.PushTruth(formula(a, b));
}

// Bit by bit; two truths give a truth.
template <typename Formula>
void Bits(Stack& stack, Formula formula) {
    const bool isTruth = std::ranges::all_of(stack.Top(2), [](const Value& value) { return value.isTruth; });
    const int b = stack.Whole();
    const int a = stack.Whole();
    stack.Push(Value{static_cast<double>(formula(a, b)), isTruth});
}

double Divide(double a, double b) {
    return b == 0 ? 0 : a / b;
}

int Shift(int a, int by) {
    if (by < -31 || by > 31) return 0;
    const auto bits = static_cast<unsigned int>(a);
    return static_cast<int>(by >= 0 ? bits << by : bits >> -by);
}

double AngleOf(double numerator, double denominator) {
    const double degrees = std::atan2(numerator, denominator) / kDegree;
    return degrees < 0 ? degrees + 360 : degrees;
}

void Not(Stack& stack) {
    const Value value = stack.Pop();
    if (value.isTruth)
        stack.PushTruth(value.number == 0);
    else
        stack.Push(-1 - std::trunc(value.number));  // all bits turned
}

void Copy(Stack& stack) {
    for (const Value& value : stack.Top(stack.Whole())) stack.Push(value);
}

void Exchange(Stack& stack) {
    std::ranges::reverse(stack.Top(2));
}

void Index(Stack& stack) {
    const auto values = stack.Top(std::min(stack.Whole(), 1000) + 1);
    if (!values.empty()) stack.Push(Value(values.front()));
}

void Roll(Stack& stack) {
    const int by = stack.Whole();
    const int count = stack.Whole();
    const auto values = stack.Top(count);
    if (values.empty()) return;
    const int upward = (by % count + count) % count;
    std::rotate(values.begin(), values.end() - upward, values.end());
}

struct Operator {
    std::string_view name;
    void (*run)(Stack&);
};

constexpr Operator kOperators[] = {
    {"abs", [](Stack& s) { One(s, [](double a) { return std::abs(a); }); }},
    {"add", [](Stack& s) { Two(s, [](double a, double b) { return a + b; }); }},
    {"and", [](Stack& s) { Bits(s, [](int a, int b) { return a & b; }); }},
    {"atan", [](Stack& s) { Two(s, AngleOf); }},
    {"bitshift", [](Stack& s) { Bits(s, Shift); }},
    {"ceiling", [](Stack& s) { One(s, [](double a) { return std::ceil(a); }); }},
    {"copy", Copy},
    {"cos", [](Stack& s) { One(s, [](double a) { return std::cos(a * kDegree); }); }},
    {"cvi", [](Stack& s) { One(s, [](double a) { return std::trunc(a); }); }},
    {"cvr", [](Stack& s) { One(s, [](double a) { return a; }); }},
    {"div", [](Stack& s) { Two(s, Divide); }},
    {"dup",
     [](Stack& s) {
         for (const Value& value : s.Top(1)) s.Push(Value(value));
     }},
    {"eq", [](Stack& s) { Compare(s, [](double a, double b) { return a == b; }); }},
    {"exch", Exchange},
    {"exp", [](Stack& s) { Two(s, [](double a, double b) { return std::pow(a, b); }); }},
    {"false", [](Stack& s) { s.PushTruth(false); }},
    {"floor", [](Stack& s) { One(s, [](double a) { return std::floor(a); }); }},
    {"ge", [](Stack& s) { Compare(s, [](double a, double b) { return a >= b; }); }},
    {"gt", [](Stack& s) { Compare(s, [](double a, double b) { return a > b; }); }},
    {"idiv",
     [](Stack& s) { Two(s, [](double a, double b) { return std::trunc(Divide(std::trunc(a), std::trunc(b))); }); }},
    {"index", Index},
    {"le", [](Stack& s) { Compare(s, [](double a, double b) { return a <= b; }); }},
    {"ln", [](Stack& s) { One(s, [](double a) { return std::log(a); }); }},
    {"log", [](Stack& s) { One(s, [](double a) { return std::log10(a); }); }},
    {"lt", [](Stack& s) { Compare(s, [](double a, double b) { return a < b; }); }},
    {"mod", [](Stack& s) { Two(s, [](double a, double b) { return b == 0 ? 0 : std::fmod(a, b); }); }},
    {"mul", [](Stack& s) { Two(s, [](double a, double b) { return a * b; }); }},
    {"ne", [](Stack& s) { Compare(s, [](double a, double b) { return a != b; }); }},
    {"neg", [](Stack& s) { One(s, [](double a) { return -a; }); }},
    {"not", Not},
    {"or", [](Stack& s) { Bits(s, [](int a, int b) { return a | b; }); }},
    {"pop", [](Stack& s) { s.Pop(); }},
    {"roll", Roll},
    {"round", [](Stack& s) { One(s, [](double a) { return std::floor(a + 0.5); }); }},
    {"sin", [](Stack& s) { One(s, [](double a) { return std::sin(a * kDegree); }); }},
    {"sqrt", [](Stack& s) { One(s, [](double a) { return std::sqrt(a); }); }},
    {"sub", [](Stack& s) { Two(s, [](double a, double b) { return a - b; }); }},
    {"true", [](Stack& s) { s.PushTruth(true); }},
    {"truncate", [](Stack& s) { One(s, [](double a) { return std::trunc(a); }); }},
    {"xor", [](Stack& s) { Bits(s, [](int a, int b) { return a ^ b; }); }},
};

// Numbers, names and braces; comments are left out.
std::vector<std::string> WordsOf(const std::string& text) {
    constexpr std::string_view kSpaces{"\0\t\n\f\r ", 6};
    std::vector<std::string> words;
    bool inWord = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '%') i = std::min(text.find_first_of("\r\n", i), text.size());
        const bool isBrace = c == '{' || c == '}';
        const bool isLetter = !isBrace && c != '%' && kSpaces.find(c) == std::string_view::npos;
        if (isBrace || (isLetter && !inWord)) words.emplace_back();
        if (isBrace || isLetter) words.back() += c;
        inWord = isLetter;
    }
    return words;
}

}  // namespace

bool Calculator::Read(const std::string& text) {
    const std::vector<std::string> words = WordsOf(text);
    std::size_t at = 0;
    return ReadBlock(words, at, 0);
}

// A block stands where it is run: `{ a } if` becomes a jump past a, `{ a } { b } ifelse` one to b and one past b. Both
// are known only after the blocks, so a place is kept for the jump before each.
bool Calculator::ReadBlock(const std::vector<std::string>& words, std::size_t& at, int depth) {
    if (depth > kDeepestBlock || at >= words.size() || words[at++] != "{") return false;
    while (at < words.size()) {
        const std::string& word = words[at];
        if (word == "}") {
            ++at;
            return true;
        }
        if (word == "{") {
            const std::size_t first = steps_.size();
            steps_.push_back({kJumpUnless, 0, 0});
            if (!ReadBlock(words, at, depth + 1)) return false;
            if (at < words.size() && words[at] == "{") {
                const std::size_t second = steps_.size();
                steps_.push_back({kJump, 0, 0});
                steps_[first].target = steps_.size();
                if (!ReadBlock(words, at, depth + 1) || at >= words.size() || words[at] != "ifelse") return false;
                steps_[second].target = steps_.size();
            } else {
                if (at >= words.size() || words[at] != "if") return false;
                steps_[first].target = steps_.size();
            }
        } else if (const auto found = std::ranges::find(kOperators, word, &Operator::name);
                   found != std::end(kOperators)) {
            steps_.push_back({static_cast<int>(found - std::begin(kOperators)), 0, 0});
        } else {
            char* end = nullptr;
            const double number = std::strtod(word.c_str(), &end);
            if (*end != 0 || !std::isfinite(number)) return false;
            steps_.push_back({kPush, number, 0});
        }
        ++at;
    }
    return false;
}

void Calculator::Run(std::span<const double> in, std::span<double> out) const {
    Stack stack;
    for (const double number : in) stack.Push(number);
    for (std::size_t i = 0; i < steps_.size() && !stack.Failed(); ++i) {
        const Step& step = steps_[i];
        if (step.what == kPush)
            stack.Push(step.number);
        else if (step.what == kJump || (step.what == kJumpUnless && stack.Number() == 0))
            i = step.target - 1;
        else if (step.what >= 0)
            kOperators[step.what].run(stack);
    }
    for (std::size_t j = out.size(); j > 0; --j) out[j - 1] = stack.Number();
    if (stack.Failed()) std::ranges::fill(out, 0.0);
}

}  // namespace pdf
