#pragma once

// What the host needs of qpdf. clang 14 cannot read its JSON.hh as C++20; of JSON nothing but the name is needed here.
#define JSON_HH
class JSON;

#include <qpdf/Buffer.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>
