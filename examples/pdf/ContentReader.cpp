#include "ContentReader.h"

#include <map>
#include <stdexcept>

#include "Objects.h"

namespace pdf {

namespace {

// More operands than any operator takes; those of a character map have up to 300.
constexpr std::size_t kMostOperands = 1024;

std::string LongName(const std::string& name) {
    static const std::map<std::string, std::string> names{
        {"/BPC", "/BitsPerComponent"}, {"/CS", "/ColorSpace"}, {"/D", "/Decode"},
        {"/DP", "/DecodeParms"},       {"/F", "/Filter"},      {"/H", "/Height"},
        {"/IM", "/ImageMask"},         {"/W", "/Width"}};
    const auto found = names.find(name);
    return found == names.end() ? name : found->second;
}

std::string BytesOf(QPDFObjectHandle content) {
    std::string bytes = ToBytes(content);
    for (const QPDFObjectHandle& part : Items(content)) bytes += ToBytes(part) + '\n';
    return bytes;
}

class Reader : public QPDFObjectHandle::ParserCallbacks {
public:
    Reader(Budget& budget, const OperatorHandler& handle) : budget_(budget), handle_(handle) {
        owner_->setSuppressWarnings(true);
    }

    void Read(QPDFObjectHandle content) {
        QPDFObjectHandle::parseContentStream(QPDFObjectHandle::newStream(owner_.get(), BytesOf(content)), this);
    }

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
        HandleOperator(object.getOperatorValue());
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
    std::shared_ptr<QPDF> owner_ = QPDF::create();  // of streams that are in no document
    QPDFObjectHandle picture_ = QPDFObjectHandle::newStream(owner_.get(), std::string());
    bool isSpent_ = false;
};

}  // namespace

bool ReadContent(QPDFObjectHandle content, Budget& budget, const OperatorHandler& handle) {
    Reader reader(budget, handle);
    try {
        reader.Read(content);
    } catch (const QPDFExc&) {
        // What came before the damage has been handled.
    } catch (const std::range_error&) {
        // The same of a number that qpdf cannot hold.
    }
    return !reader.IsSpent();
}

}  // namespace pdf
