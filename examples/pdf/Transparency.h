#pragma once

#include <vantu/BlendMode.h>

#include "Qpdf.h"

#include "Notes.h"

namespace pdf {

// The blend mode of an entry BM: a name, or the first name of a list that is known. The four modes that mix the
// channels are not the library's; they are painted as Normal, and noted.
vantu::BlendMode ToBlendMode(QPDFObjectHandle value, Notes& notes);

// Whether anything that a form's or page's resources name, however deep, is painted with another mode than Normal. If
// not, a group of it comes out the same whether it is isolated or not.
bool UsesBlendModes(QPDFObjectHandle form);

}  // namespace pdf
