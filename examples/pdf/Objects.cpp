#include "Objects.h"

#include <qpdf/Pl_String.hh>

namespace pdf {

QPDFObjectHandle Entry(QPDFObjectHandle object, const std::string& key) {
    if (object.isStream()) object = object.getDict();
    return object.isDictionary() ? object.getKey(key) : QPDFObjectHandle::newNull();
}

QPDFObjectHandle Item(QPDFObjectHandle array, int index) {
    const bool isInside = array.isArray() && index >= 0 && index < array.getArrayNItems();
    return isInside ? array.getArrayItem(index) : QPDFObjectHandle::newNull();
}

double ToNumber(QPDFObjectHandle object, double fallback) {
    const double value = object.isNumber() ? object.getNumericValue() : fallback;
    return std::isfinite(value) ? value : fallback;
}

int ToInteger(QPDFObjectHandle object, int fallback) {
    const double value = ToNumber(object, fallback);
    return std::abs(value) <= std::numeric_limits<int>::max() ? static_cast<int>(value) : fallback;
}

bool ToBool(QPDFObjectHandle object, bool fallback) {
    return object.isBool() ? object.getBoolValue() : fallback;
}

std::string ToName(QPDFObjectHandle object) {
    return object.isName() ? object.getName() : std::string();
}

std::vector<QPDFObjectHandle> Items(QPDFObjectHandle array) {
    return array.isArray() ? array.getArrayAsVector() : std::vector<QPDFObjectHandle>();
}

std::vector<double> ToNumbers(QPDFObjectHandle array) {
    std::vector<double> numbers;
    for (const QPDFObjectHandle& item : Items(array)) numbers.push_back(ToNumber(item, 0));
    return numbers;
}

Box ToBox(QPDFObjectHandle array, const Box& fallback) {
    const std::vector<double> n = ToNumbers(array);
    if (n.size() != 4) return fallback;
    return {std::min(n[0], n[2]), std::min(n[1], n[3]), std::max(n[0], n[2]), std::max(n[1], n[3])};
}

Matrix ToMatrix(QPDFObjectHandle array) {
    const std::vector<double> n = ToNumbers(array);
    return n.size() == 6 ? Matrix{n[0], n[1], n[2], n[3], n[4], n[5]} : Matrix{};
}

std::string ToBytes(QPDFObjectHandle stream) {
    std::string bytes;
    Pl_String sink("bytes", nullptr, bytes);
    bool isFiltered = false;
    try {
        if (stream.isStream()) stream.pipeStreamData(&sink, &isFiltered, 0, qpdf_dl_specialized, true);
    } catch (const std::exception&) {  // damaged
    }
    return isFiltered ? bytes : std::string();
}

}  // namespace pdf
