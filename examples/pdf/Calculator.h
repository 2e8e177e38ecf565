#pragma once

#include <span>
#include <string>
#include <vector>

namespace pdf {

// The program of a function of type 4: `{ dup 0.5 gt { 1 exch sub } if }`. It never changes once it is read.
class Calculator {
public:
    // @return false if the text is no such program.
    [[nodiscard]] bool Read(const std::string& text);

    // Puts `in` on the stack, runs the program and takes `out` from the stack. All is 0 if an operator finds too little
    // on the stack or too much.
    void Run(std::span<const double> in, std::span<double> out) const;

private:
    // One step: an operator, by its place in the list of names, or one of these.
    enum Special : int { kPush = -1, kJump = -2, kJumpUnless = -3 };
    struct Step {
        int what;
        double number;       // to push
        std::size_t target;  // to jump to
    };

    bool ReadBlock(const std::vector<std::string>& words, std::size_t& at, int depth);

    std::vector<Step> steps_;
};

}  // namespace pdf
