#pragma once

#include <vantu/BlendMode.h>

#include <bitset>
#include <map>

#include "Notes.h"
#include "Qpdf.h"

namespace pdf {

// The blend mode of an entry BM: a name, or the first name of a list that is known. The four modes that mix the
// channels are not the library's; they are painted as Normal, and noted.
vantu::BlendMode ToBlendMode(QPDFObjectHandle value, Notes& notes);

using BlendModes = std::bitset<vantu::kBlendModeCount>;

// Finds out which modes but Normal a form may use: what its resources do not name, however deep, it cannot. One thread
// at a time.
class BlendModeUse {
public:
    // @param form anything that has resources. @return all modes for resources too deep to be looked through.
    BlendModes In(QPDFObjectHandle form);

private:
    std::map<QPDFObjGen, BlendModes> known_;
};

}  // namespace pdf
