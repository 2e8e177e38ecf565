#include <gtest/gtest.h>
#include <vantu/CExponentialPDFTransferFunction.h>
#include <vantu/CIdentityPDFTransferFunction.h>
#include <vantu/CPostscriptPDFTransferFunction.h>

#include <algorithm>
#include <vector>

namespace vantu {
namespace {

using Source = IPDFTransferFunction::SourceType;
using Bytes = std::vector<unsigned char>;
using Function = std::shared_ptr<IPDFTransferFunction>;

/// Claims to have moved less than it did.
class StingyStorage : public CQorStorage {
public:
    using CQorStorage::CQorStorage;
    unsigned int Write(double value) override { return CQorStorage::Write(value) - 1; }
    unsigned int Read(double& value) override { return CQorStorage::Read(value) - 1; }
    unsigned int Read(std::string& text) override { return std::min(CQorStorage::Read(text), 3U); }
    using CQorStorage::Read;
    using CQorStorage::Write;
};

const CExponentialPDFTransferFunction& AsExponential(const Function& function) {
    return dynamic_cast<const CExponentialPDFTransferFunction&>(*function);
}

Bytes Record(const IPDFTransferFunction& function) {
    CQorStorage storage;
    const unsigned int written = IPDFTransferFunction::Save(function, &storage);
    EXPECT_EQ(written, storage.GetBytes().size());
    EXPECT_EQ(IPDFTransferFunction::Save(function, nullptr), written);
    return storage.GetBytes();
}

TEST(TransferRecord, TagsSizesAndRoundTrip) {
    for (const unsigned int bit : {0U, 1U}) {
        const auto source = static_cast<Source>(bit);
        const CIdentityPDFTransferFunction identity(source);
        const CExponentialPDFTransferFunction exponential(source, 0.5, -1.25, 2.2);
        const CPostscriptPDFTransferFunction postscript(source, "{ 1 exch sub }");
        const struct {
            const IPDFTransferFunction& function;
            unsigned int tag;
            std::size_t size;
        } cases[] = {{identity, 0x00, 1}, {exponential, 0x02, 25}, {postscript, 0x04, 5 + 14}};
        for (const auto& [function, tag, size] : cases) {
            const Bytes record = Record(function);
            ASSERT_EQ(record.size(), size);
            EXPECT_EQ(record[0], tag | bit << 7);
            CQorStorage storage(record);
            Function restored;
            ASSERT_TRUE(IPDFTransferFunction::Restore(restored, storage));
            EXPECT_EQ(restored->GetType(), function.GetType());
            EXPECT_EQ(restored->GetSourceType(), source);
            EXPECT_EQ(Record(*restored), record);
        }
    }
    EXPECT_EQ(Record(CIdentityPDFTransferFunction(static_cast<Source>(3)))[0], 0x80) << "one bit of source survives";
}

TEST(TransferRecord, RestoredProgramPassesTheSourceThrough) {
    CQorStorage storage(Record(CPostscriptPDFTransferFunction(Source::Alpha, "{ 1 exch sub }")));
    Function restored;
    ASSERT_TRUE(IPDFTransferFunction::Restore(restored, storage));
    EXPECT_EQ(dynamic_cast<CPostscriptPDFTransferFunction&>(*restored).GetCodeString(), "{ 1 exch sub }");
    EXPECT_EQ(restored->ComputeAlpha(Color(0xFF000000U)), 1.0);
}

TEST(TransferRecord, TagsThatNameNoClass) {
    const auto held = std::make_shared<CExponentialPDFTransferFunction>(Source::Alpha, 7, 8, 9);
    for (const unsigned int tag : {0x01U, 0x03U, 0x81U, 0x83U}) {
        CQorStorage storage(Bytes{static_cast<unsigned char>(tag), 42});
        Function out = held;
        EXPECT_FALSE(IPDFTransferFunction::Restore(out, storage));
        EXPECT_EQ(out, nullptr);
        unsigned char next = 0;
        EXPECT_EQ(storage.Read(next), 1U);
        EXPECT_EQ(next, 42);
    }
    CQorStorage nothing;
    Function out = held;
    EXPECT_FALSE(IPDFTransferFunction::Restore(out, nothing));
    EXPECT_EQ(out, held);

    Bytes record = Record(CExponentialPDFTransferFunction(Source::Alpha, 1, 2, 3));
    record[0] = 0x85;
    CQorStorage later(record);
    EXPECT_TRUE(IPDFTransferFunction::Restore(out, later)) << "the held object reads the payload";
    EXPECT_EQ(out, held);
    EXPECT_EQ(held->GetN(), 3.0);
    CQorStorage again(record);
    out.reset();
    EXPECT_FALSE(IPDFTransferFunction::Restore(out, again));
}

TEST(TransferRecord, ShortPayloadKeepsWhatWasRead) {
    Bytes record = Record(CExponentialPDFTransferFunction(Source::Alpha, 1, 2, 3));
    record.resize(1 + 16 + 7);
    CQorStorage cut(record);
    Function out;
    EXPECT_FALSE(IPDFTransferFunction::Restore(out, cut));
    EXPECT_EQ(AsExponential(out).GetC0(), 1.0);
    EXPECT_EQ(AsExponential(out).GetC1(), 2.0);
    EXPECT_EQ(AsExponential(out).GetN(), 1.0);

    Bytes text = Record(CPostscriptPDFTransferFunction(Source::Alpha, "{ 1 exch sub }"));
    for (; !text.empty(); text.pop_back()) {
        CQorStorage whole(text);
        EXPECT_EQ(IPDFTransferFunction::Restore(out, whole), text.size() == 5 + 14) << text.size();
    }
}

TEST(TransferRecord, CountsOfTheStorageDecide) {
    const CExponentialPDFTransferFunction function(Source::Alpha, 1, 2, 3);
    StingyStorage target;
    EXPECT_EQ(IPDFTransferFunction::Save(function, &target), 22U);
    StingyStorage numbers(Record(function));
    Function out;
    EXPECT_FALSE(IPDFTransferFunction::Restore(out, numbers));
    StingyStorage text(Record(CPostscriptPDFTransferFunction(Source::Alpha, "")));
    EXPECT_FALSE(IPDFTransferFunction::Restore(out, text));
}

}  // namespace
}  // namespace vantu
