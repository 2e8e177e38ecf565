#pragma once

#include <vantu/IQorImage.h>

#include <memory>
#include <string>
#include <vector>

#include "Calls.h"
#include "ContentReader.h"
#include "Document.h"
#include "Fonts.h"
#include "Notes.h"
#include "PictureReader.h"
#include "Transparency.h"

namespace pdf {

// Paints pages of one file, by one thread: each thread has its own.
class PagePainter {
public:
    // @param budget for each page.
    // @throws std::exception with a text for people if the file cannot be read.
    explicit PagePainter(const std::string& path, const Budget& budget = {}) : document_(path), budget_(budget) {}

    [[nodiscard]] const Document& GetDocument() const { return document_; }
    [[nodiscard]] const Budget& GetBudget() const { return budget_; }
    [[nodiscard]] const Notes& GetNotes() const { return notes_; }
    [[nodiscard]] const Calls& GetCalls() const { return calls_; }
    void KeepCalls() { calls_.Keep(); }

    // Paints the content and the annotations of a page in some rows of its picture. A pixel comes out the same
    // whatever the rows are, unless the budget is spent.
    // @param number of the page, from 0. @param image of the size of `geometry`, opaque.
    // @return how many operators of the budget were spent.
    unsigned long Paint(int number, const PageGeometry& geometry, const std::shared_ptr<vantu::IQorImage>& image,
                        const Pixels& rows);

private:
    Document document_;
    Budget budget_;
    FontCache fonts_;
    PictureCache pictures_;
    BlendModeUse blendModes_;
    Notes notes_;
    Calls calls_;
};

// Paints a page on white with a thread for each painter.
// @param painters of the same file, at least one.
std::shared_ptr<vantu::IQorImage> PaintPage(std::vector<std::unique_ptr<PagePainter>>& painters, int number,
                                            double dotsPerInch);

}  // namespace pdf
