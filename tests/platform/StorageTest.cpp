#include <gtest/gtest.h>
#include <vantu/CQorStorage.h>

namespace vantu {
namespace {

using Bytes = std::vector<unsigned char>;

TEST(CQorStorage, LittleEndianAndInOrder) {
    CQorStorage storage;
    EXPECT_EQ(storage.WriteByte(7), 1U);
    EXPECT_EQ(storage.Write(-2.0), 8U);
    EXPECT_EQ(storage.Write(std::string("a\0b", 3)), 7U);
    EXPECT_EQ(storage.GetBytes(), (Bytes{7, 0, 0, 0, 0, 0, 0, 0, 0xC0, 3, 0, 0, 0, 'a', 0, 'b'}));
    unsigned char byte = 0;
    double number = 0;
    std::string text;
    EXPECT_EQ(storage.Read(byte), 1U);
    EXPECT_EQ(storage.Read(number), 8U);
    EXPECT_EQ(storage.Read(text), 7U);
    EXPECT_TRUE(byte == 7 && number == -2.0 && text == std::string("a\0b", 3));
    EXPECT_EQ(storage.Read(byte), 0U);
}

TEST(CQorStorage, ShortReads) {
    CQorStorage threeBytes(Bytes{1, 2, 3});
    double number = 5;
    std::string text = "kept";
    EXPECT_EQ(threeBytes.Read(number), 0U);
    EXPECT_EQ(threeBytes.Read(text), 0U);
    EXPECT_TRUE(number == 5 && text == "kept");
    unsigned char byte = 0;
    EXPECT_EQ(threeBytes.Read(byte), 1U) << "a read that fails takes nothing";
    EXPECT_EQ(byte, 1);

    CQorStorage announcesTooMuch(Bytes{0xFF, 0xFF, 0xFF, 0xFF, 'x', 'y'});
    EXPECT_EQ(announcesTooMuch.Read(text), 2U);
    EXPECT_EQ(text, "xy");
}

}  // namespace
}  // namespace vantu
