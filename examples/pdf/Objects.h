#pragma once

#include <string>
#include <vector>

#include "Geometry.h"
#include "Qpdf.h"

namespace pdf {

// Readers of PDF objects that answer for objects of any type, as damaged files need it.

// The entry of a dictionary or of a stream's dictionary; null of anything else.
QPDFObjectHandle Entry(QPDFObjectHandle object, const std::string& key);

// The item of an array; null of anything else and outside of it.
QPDFObjectHandle Item(QPDFObjectHandle array, int index);

// A finite number, or the fallback.
double ToNumber(QPDFObjectHandle object, double fallback);

// A number that is whole after truncation and that an int can hold, or the fallback.
int ToInteger(QPDFObjectHandle object, int fallback);

// true or false, or the fallback.
bool ToBool(QPDFObjectHandle object, bool fallback);

// A name with its slash; empty for anything else.
std::string ToName(QPDFObjectHandle object);

// The items of an array; none of anything else.
std::vector<QPDFObjectHandle> Items(QPDFObjectHandle array);

// The numbers of an array, 0 for an item that is none; empty for anything else.
std::vector<double> ToNumbers(QPDFObjectHandle array);

// The rectangle of an array of four numbers, its corners put in order; the fallback for anything else.
Box ToBox(QPDFObjectHandle array, const Box& fallback);

// The matrix of an array of six numbers; the identity for anything else.
Matrix ToMatrix(QPDFObjectHandle array);

// The bytes of a stream with its filters undone, but for those of pictures: of damaged ones those before the damage, of
// one with another filter none.
std::string ToBytes(QPDFObjectHandle stream);

}  // namespace pdf
