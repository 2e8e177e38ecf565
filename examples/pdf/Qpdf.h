#pragma once

// What the host needs of qpdf.

#if defined(__clang__) && __clang_major__ < 15
// It cannot read qpdf's JSON.hh as C++20; of JSON nothing but the name is needed here.
#define JSON_HH
class JSON;
#endif

#include <qpdf/Buffer.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>
