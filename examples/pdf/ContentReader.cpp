#include "ContentReader.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <stdexcept>

#include "Objects.h"

namespace pdf {

namespace {

// More operands than any operator takes; those of a character map have up to 300.
constexpr std::size_t kMostOperands = 1024;
constexpr std::size_t kMostOperatorsKept = 20'000;
constexpr std::size_t kLongestKept = 256;  // operators

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

// Takes an operator from the budget. @return false if nothing is left.
bool Take(Budget& budget) {
    if (budget.operators == 0) return false;
    --budget.operators;
    return true;
}

}  // namespace

struct ContentReader::Content {
    struct Operator {
        std::string name;
        Operands operands;
    };
    std::shared_ptr<QPDF> owner = QPDF::create();  // of the streams of inline pictures
    std::vector<Operator> operators;
    bool isShort = true;  // whether these are all
};

class ContentReader::Parser : public QPDFObjectHandle::ParserCallbacks {
public:
    // @param[out] content what is read, as long as it is short.
    Parser(Budget& budget, const OperatorHandler& handle, Content& content)
        : budget_(budget), handle_(handle), content_(content) {}

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
        if (!Take(budget_)) {
            isSpent_ = true;
            terminateParsing();
        }
        if (!object.isOperator()) return;
        std::string word = object.getOperatorValue();
        while (!word.empty() && kNumberStarts.find(word[0]) != std::string::npos && operands_.size() < kMostOperands)
            operands_.push_back(QPDFObjectHandle::newReal(TakeNumber(word)));
        if (word.empty()) return;
        if (word == "ID")
            BeginPicture();
        else
            HandOn({word, word == "EI" ? Operands{picture_} : operands_});
        operands_.clear();
    }

    void handleEOF() override {}

    [[nodiscard]] bool IsSpent() const { return isSpent_; }

private:
    void BeginPicture() {
        QPDFObjectHandle dictionary = QPDFObjectHandle::newDictionary();
        for (std::size_t i = 0; i + 1 < operands_.size(); i += 2)
            if (operands_[i].isName()) dictionary.replaceKey(LongName(operands_[i].getName()), operands_[i + 1]);
        if (content_.isShort || picture_.isNull())
            picture_ = QPDFObjectHandle::newStream(content_.owner.get(), std::string());
        picture_.replaceDict(dictionary);
    }

    void HandOn(Content::Operator&& one) {
        handle_(one.name, one.operands);
        content_.isShort = content_.isShort && content_.operators.size() < kLongestKept;
        if (content_.isShort) content_.operators.push_back(std::move(one));
    }

    Budget& budget_;
    const OperatorHandler& handle_;
    Content& content_;
    Operands operands_;
    QPDFObjectHandle picture_ = QPDFObjectHandle::newNull();
    bool isSpent_ = false;
};

bool ContentReader::Read(QPDFObjectHandle stream, Budget& budget, const OperatorHandler& handle) {
    if (const auto known = kept_.find(stream.getObjGen()); known != kept_.end()) {
        const std::shared_ptr<const Content> content = known->second;
        return std::ranges::all_of(content->operators, [&](const Content::Operator& one) {
            return Take(budget) && (handle(one.name, one.operands), true);
        });
    }
    const auto content = std::make_shared<Content>();
    content->owner->setSuppressWarnings(true);
    Parser parser(budget, handle, *content);
    try {
        QPDFObjectHandle::parseContentStream(QPDFObjectHandle::newStream(content->owner.get(), BytesOf(stream)),
                                             &parser);
    } catch (const std::runtime_error&) {
        // Damaged, or a number that qpdf cannot hold. What came before has been handled.
    }
    if (content->isShort && stream.isIndirect() && !parser.IsSpent()) Keep(stream.getObjGen(), content);
    return !parser.IsSpent();
}

void ContentReader::Keep(const QPDFObjGen& id, const std::shared_ptr<const Content>& content) {
    const std::size_t size = content->operators.size() + 1;  // an empty one takes room, too
    if (operatorsKept_ + size > kMostOperatorsKept) {
        kept_.clear();
        operatorsKept_ = 0;
    }
    operatorsKept_ += size;
    kept_.emplace(id, content);
}

}  // namespace pdf
