#pragma once

#include <vantu/BlendMode.h>

#include <map>

#include "Notes.h"
#include "Qpdf.h"

namespace pdf {

// The blend mode of an entry BM: a name, or the first name of a list that is known. The four modes that mix the
// channels are not the library's; they are painted as Normal, and noted.
vantu::BlendMode ToBlendMode(QPDFObjectHandle value, Notes& notes);

// Finds out which forms use other modes than Normal. What a form's resources do not name, however deep, it cannot use.
// A group without them comes out the same whether it is isolated or not. One thread at a time.
class BlendModeUse {
public:
    // Whether a form may use another mode; true of resources too deep to be looked through.
    bool IsIn(QPDFObjectHandle form);

private:
    std::map<QPDFObjGen, bool> known_;
};

}  // namespace pdf
