#include "ContentReader.h"

#include <map>
#include <stdexcept>

#include "Qpdf.h"

namespace pdf {

namespace {

// More operands than any operator takes; those of a character map have up to 300.
constexpr std::size_t kMostOperands = 1024;

std::string LongName(const std::string& name) {
    static const std::map<std::string, std::string> names{{"/BPC", "/BitsPerComponent"},
                                                          {"/CS", "/ColorSpace"},
                                                          {"/D", "/Decode"},
                                                          {"/DP", "/DecodeParms"},
                                                          {"/F", "/Filter"},
                                                          {"/H", "/Height"},
                                                          {"/I", "/Interpolate"},
                                                          {"/IM", "/ImageMask"},
                                                          {"/L", "/Length"},
                                                          {"/W", "/Width"}};
    const auto found = names.find(name);
    return found == names.end() ? name : found->second;
}

class Reader : public QPDFObjectHandle::ParserCallbacks {
public:
    Reader(Budget& budget, ContentHandler& handler) : budget_(budget), handler_(handler) {}

    void handleObject(QPDFObjectHandle object) override {
        if (object.isInlineImage()) {
            picture_ = object.getInlineImageValue();
        } else if (!object.isOperator()) {
            if (operands_.size() < kMostOperands) operands_.push_back(object);
        } else {
            HandleOperator(object.getOperatorValue());
        }
    }

    void handleEOF() override {}

    [[nodiscard]] bool IsSpent() const { return isSpent_; }

private:
    void HandleOperator(const std::string& name) {
        if (budget_.operators == 0) {
            isSpent_ = true;
            terminateParsing();
        }
        --budget_.operators;
        if (name == "ID") {
            dictionary_ = QPDFObjectHandle::newDictionary();
            for (std::size_t i = 0; i + 1 < operands_.size(); i += 2) {
                if (operands_[i].isName()) dictionary_.replaceKey(LongName(operands_[i].getName()), operands_[i + 1]);
            }
        } else if (name == "EI") {
            handler_.HandleInlinePicture(dictionary_, picture_);
        } else if (name != "BI") {
            handler_.HandleOperator(name, operands_);
        }
        operands_.clear();
    }

    Budget& budget_;
    ContentHandler& handler_;
    Operands operands_;
    QPDFObjectHandle dictionary_ = QPDFObjectHandle::newDictionary();
    std::string picture_;
    bool isSpent_ = false;
};

}  // namespace

bool ReadContent(QPDFObjectHandle content, Budget& budget, ContentHandler& handler) {
    Reader reader(budget, handler);
    try {
        QPDFObjectHandle::parseContentStream(content, &reader);
    } catch (const QPDFExc&) {
        // What came before the damage has been handled.
    } catch (const std::range_error&) {
        // The same of a number that qpdf cannot hold.
    }
    return !reader.IsSpent();
}

}  // namespace pdf
