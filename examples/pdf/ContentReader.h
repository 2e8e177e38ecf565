#pragma once

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "Qpdf.h"

namespace pdf {

// How much a page may ask for before the rest of it is left out: content streams that call each other can ask for more
// than anyone can wait for.
struct Budget {
    unsigned long operators = 3'000'000;  // of all content of the page
    int nesting = 24;                     // forms, patterns, glyphs and soft masks inside each other
    double pixelsForOperator = 2048;      // that take the time of one to paint
    std::set<QPDFObjGen> open = {};       // forms, tiles and glyphs that are being painted: none is inside itself

    // Counts painting as operators, one at least.
    void Spend(double pixels) {
        operators -= std::min(operators, static_cast<unsigned long>(std::ceil(pixels / pixelsForOperator)));
    }
};

// Operands before an operator, the last at the back.
using Operands = std::vector<QPDFObjectHandle>;

// Who is told of the operators of a content stream. An inline picture is one with the name EI whose operand is a stream
// with long names in its dictionary; it lives as long as the call.
using OperatorHandler = std::function<void(const std::string& name, const Operands& operands)>;

// Reads content streams of one document and keeps short ones, as glyphs and tiles are painted again and again. One
// thread at a time.
class ContentReader {
public:
    // Hands on the operators of a content stream, or of an array of them as one. What cannot be read is left out.
    // @return false if the budget was spent before the end.
    bool Read(QPDFObjectHandle content, Budget& budget, const OperatorHandler& handle);

private:
    struct Content;  // what has been read
    class Parser;

    void Keep(const QPDFObjGen& id, const std::shared_ptr<const Content>& content);

    std::map<QPDFObjGen, std::shared_ptr<const Content>> kept_;
    std::size_t operatorsKept_ = 0;
};

}  // namespace pdf
