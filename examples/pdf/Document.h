#pragma once

#include <set>
#include <string>
#include <vector>

#include "Geometry.h"
#include "Qpdf.h"

namespace pdf {

// The page as it lies on the paper.
struct PageGeometry {
    Matrix toDevice;  // from user space to pixels
    Pixels area;      // all pixels of the page, from 0, 0
};

// A PDF file in memory. One thread at a time: threads that paint one page open it once each.
class Document {
public:
    // @throws std::exception with a text for people if the file cannot be read or is no PDF file.
    explicit Document(const std::string& path);

    [[nodiscard]] int PageCount() const { return static_cast<int>(pages_.size()); }

    // The dictionary of a page. REQUIRES: 0 <= number < PageCount().
    [[nodiscard]] QPDFObjectHandle Page(int number) const { return pages_[static_cast<std::size_t>(number)]; }

    // An entry of a page; its boxes, rotation and resources may stand above it.
    [[nodiscard]] QPDFObjectHandle Inherited(int number, const std::string& key) const;

    // How a page lies on pixels: its crop box inside its media box, turned by its rotation, scaled by its user unit.
    // @param dotsPerInch pixels an inch.
    // @throws std::runtime_error if the page would be larger than 2^28 pixels.
    [[nodiscard]] PageGeometry Geometry(int number, double dotsPerInch) const;

    // Whether the content of an optional content group, or of a membership of several, is shown by default.
    // @param group the entry OC of an object, or what the operator BDC names; anything else is shown.
    [[nodiscard]] bool IsShown(QPDFObjectHandle group) const;

private:
    // Whether a visibility expression, `[/And a b]`, `[/Or a b]` or `[/Not a]` of groups and expressions, is true.
    // @param[in,out] steps how many parts are looked at yet.
    bool IsTrue(QPDFObjectHandle expression, int& steps) const;

    QPDF file_;
    std::vector<QPDFObjectHandle> pages_;
    std::set<QPDFObjGen> hiddenGroups_;
};

}  // namespace pdf
