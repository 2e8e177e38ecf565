#pragma once

#include <set>
#include <string>
#include <vector>

#include "Qpdf.h"

namespace pdf {

// How much a page may ask for before the rest of it is left out: content streams that call each other can ask for more
// than anyone can wait for.
struct Budget {
    unsigned long operators = 4'000'000;  // of all content of the page
    int nesting = 24;                     // forms, patterns, glyphs and soft masks inside each other
    std::set<QPDFObjGen> open = {};       // contents that are being read: none is read inside itself
};

// Operands before an operator, the last at the back.
using Operands = std::vector<QPDFObjectHandle>;

// Who is told what a content stream says.
class ContentHandler {
public:
    virtual ~ContentHandler() = default;
    // @param name the operator, without the end of an inline picture.
    virtual void HandleOperator(const std::string& name, const Operands& operands) = 0;
    // @param dictionary with long names. @param data as it is stored.
    virtual void HandleInlinePicture(QPDFObjectHandle dictionary, const std::string& data) = 0;

protected:
    ContentHandler() = default;
    ContentHandler(const ContentHandler&) = default;
    ContentHandler& operator=(const ContentHandler&) = default;
};

// Reads a content stream, or an array of them as one, and hands its operators on. What cannot be read is left out.
// @return false if the budget was spent before the end.
bool ReadContent(QPDFObjectHandle content, Budget& budget, ContentHandler& handler);

}  // namespace pdf
