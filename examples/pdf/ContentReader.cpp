#include "ContentReader.h"

#include <cstdlib>
#include <map>
#include <stdexcept>

#include "Objects.h"

namespace pdf {

namespace {

// More operands than any operator takes; those of a character map have up to 300.
constexpr std::size_t kMostOperands = 1024;

const std::string kNumberStarts = "+-.0123456789";

std::string LongName(const std::string& name) {
    static const std::map<std::string, std::string> names{
        {"/BPC", "/BitsPerComponent"}, {"/CS", "/ColorSpace"}, {"/D", "/Decode"},
        {"/DP", "/DecodeParms"},       {"/F", "/Filter"},      {"/H", "/Height"},
        {"/IM", "/ImageMask"},         {"/W", "/Width"}};
    const auto found = names.find(name);
    return found == names.end() ? name : found->second;
}

// Takes the number from the front of a word. Some programs write `--5` or `1.-5`, where but the first sign counts for
// nothing, or leave out the space before an operator.
double TakeNumber(std::string& word) {
    word.erase(std::remove(word.begin() + 1, word.end(), '-'), word.end());
    char* end = nullptr;
    const double number = std::strtod(word.c_str(), &end);
    word.erase(0, std::max<std::size_t>(static_cast<std::size_t>(end - word.c_str()), 1));
    return number;
}

std::string BytesOf(QPDFObjectHandle content) {
    std::string bytes = ToBytes(content);
    for (const QPDFObjectHandle& part : Items(content)) bytes += ToBytes(part) + '\n';
    return bytes;
}

class Reader : public QPDFObjectHandle::ParserCallbacks {
public:
    // @param picture a stream that inline pictures are handed on in.
    Reader(Budget& budget, const OperatorHandler& handle, const QPDFObjectHandle& picture)
        : budget_(budget), handle_(handle), picture_(picture) {}

    void handleObject(QPDFObjectHandle object) override {
        if (object.isInlineImage()) {
            picture_.replaceStreamData(object.getInlineImageValue(), Entry(picture_, "/Filter"),
                                       Entry(picture_, "/DecodeParms"));
            return;
        }
        if (!object.isOperator() && operands_.size() < kMostOperands) {
            operands_.push_back(object);
            return;
        }
        if (budget_.operators == 0) {
            isSpent_ = true;
            terminateParsing();
        }
        --budget_.operators;
        if (!object.isOperator()) return;
        std::string word = object.getOperatorValue();
        while (!word.empty() && kNumberStarts.find(word[0]) != std::string::npos && operands_.size() < kMostOperands)
            operands_.push_back(QPDFObjectHandle::newReal(TakeNumber(word)));
        if (word.empty()) return;
        HandleOperator(word);
        operands_.clear();
    }

    void handleEOF() override {}

    [[nodiscard]] bool IsSpent() const { return isSpent_; }

private:
    void HandleOperator(const std::string& name) {
        if (name == "ID") {
            QPDFObjectHandle dictionary = QPDFObjectHandle::newDictionary();
            for (std::size_t i = 0; i + 1 < operands_.size(); i += 2)
                if (operands_[i].isName()) dictionary.replaceKey(LongName(operands_[i].getName()), operands_[i + 1]);
            picture_.replaceDict(dictionary);
        } else {
            handle_(name, name == "EI" ? Operands{picture_} : operands_);
        }
    }

    Budget& budget_;
    const OperatorHandler& handle_;
    Operands operands_;
    QPDFObjectHandle picture_;
    bool isSpent_ = false;
};

}  // namespace

bool ReadContent(QPDFObjectHandle content, Budget& budget, const OperatorHandler& handle) {
    const auto owner = QPDF::create();  // of streams that are in no document
    owner->setSuppressWarnings(true);
    Reader reader(budget, handle, QPDFObjectHandle::newStream(owner.get(), std::string()));
    try {
        QPDFObjectHandle::parseContentStream(QPDFObjectHandle::newStream(owner.get(), BytesOf(content)), &reader);
    } catch (const std::runtime_error&) {
        // Damaged, or a number that qpdf cannot hold. What came before has been handled.
    }
    return !reader.IsSpent();
}

}  // namespace pdf
