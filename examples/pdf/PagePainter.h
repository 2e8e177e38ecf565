#pragma once

#include <vantu/IQorImage.h>

#include <memory>
#include <vector>

#include "Interpreter.h"

namespace pdf {

// Paints the content and the annotations of a page in some rows of its picture. A pixel comes out the same whatever the
// rows are, unless the budget is spent.
// @param number of the page, from 0. @param image of the size of `geometry`, opaque.
// @return how many operators of the budget were spent.
unsigned long PaintRows(PageContext& context, int number, const PageGeometry& geometry,
                        const std::shared_ptr<vantu::IQorImage>& image, const Pixels& rows);

// Paints a page on white with a thread for each context.
// @param contexts of the same file, at least one; the budget of each is that of a page.
std::shared_ptr<vantu::IQorImage> PaintPage(const std::vector<std::unique_ptr<PageContext>>& contexts, int number,
                                            double dotsPerInch);

}  // namespace pdf
