// The file functions give short reads at every offset, fail for good or once, do not open and do not seek.

#include <vantu/CDIBSaver.h>
#include <vantu/CPNGSaver.h>
#include <vantu/CQorImage.h>

#include <span>

#include "codec/Files.h"
#include "faults/FaultyFile.h"

namespace vantu::test {
namespace {

/// Loads the file as it is, into an image whose surroundings are watched.
std::shared_ptr<TestImage> LoadWatched(const std::string& name) {
    TestFactory factory;
    const auto image = LoadPath(Kind(name), name, &factory);
    EXPECT_EQ(TheFile().open, 0);
    EXPECT_TRUE(factory.last == nullptr || factory.last->GuardsIntact());
    EXPECT_TRUE(image == nullptr || image == factory.last);
    return image ? factory.last : nullptr;
}

constexpr std::size_t kDibHeaders = 54;

/// Where the rows of a bitmap lie in its file.
std::size_t RowOffset(const Bytes& file) {
    return file[10] + std::size_t{file[11]} * 256;
}

TEST(FileFault, ShortReadsAtEveryOffset) {
    for (const std::string name : {"bits4.bmp", "bits24.bmp", "grey1interlaced.png", "rgb8.png", "palette8trns.png",
                                   "baseline.jpg", "progressive.jpg", "restart.jpg", "grey.jpg"}) {
        SCOPED_TRACE(name);
        const Bytes file = ReadAll(FixturePath(name));
        TheFile() = {.bytes = file};
        const Bytes whole = LoadWatched(name)->Bytes();
        const std::size_t end = TheFile().position;  // the decoder may have had enough before the end
        for (const bool heals : {false, true}) {
            for (std::size_t offset = 0; offset < file.size(); ++offset) {
                SCOPED_TRACE(testing::Message() << "short at " << offset << (heals ? " once" : ""));
                TheFile() = {.bytes = file, .badOffset = offset, .heals = heals};
                const auto image = LoadWatched(name);
                if (Kind(name) == "bmp") {
                    ASSERT_EQ(image != nullptr, offset >= kDibHeaders);
                    if (!image) continue;
                    // What was not read is as the image was born; a short palette does not move the rows.
                    Bytes expected = whole;
                    const std::size_t read = heals && offset < RowOffset(file) ? expected.size()
                                             : offset < RowOffset(file)        ? 0
                                                                               : offset - RowOffset(file);
                    std::fill(expected.begin() + static_cast<std::ptrdiff_t>(read), expected.end(),
                              TestImage::kFreshByte);
                    EXPECT_EQ(image->Bytes(), expected);
                } else if (Kind(name) == "png") {
                    EXPECT_TRUE(image == nullptr || offset >= end || image->Bytes() == whole) << "a checksum fails";
                } else if (heals && offset > 0 && offset % 4096 != 0) {
                    ASSERT_TRUE(image);
                    EXPECT_EQ(image->Bytes(), whole) << "a short read is not the end";
                }
                unsigned int width = 0, height = 0;
                PixelFormat format{};
                TheFile().position = 0;
                const bool sized = CJPEGLoader().GetImageSize(name, width, height, format);
                EXPECT_TRUE(sized ? width == 37 && height == 23 : width == 0 && height == 0);
            }
        }
    }
}

TEST(FileFault, ReadsOfAFewBytesAtATime) {
    for (const std::size_t most : {1U, 13U, 4095U}) {
        for (const std::string name : {"bits24.bmp", "rgb8.png", "rgb.jpg"}) {
            SCOPED_TRACE(testing::Message() << name << " by " << most);
            TheFile() = {.bytes = ReadAll(FixturePath(name))};
            const Bytes whole = LoadWatched(name)->Bytes();
            TheFile().mostPerCall = most;
            const auto image = LoadWatched(name);
            EXPECT_EQ(image != nullptr && image->Bytes() == whole, Kind(name) == "jpg" || most == 4095);
        }
    }
}

TEST(FileFault, DamagedFilesLoadWhatIsWholeAndEndSoon) {
    const struct {
        const char* what;
        std::string name, edits;
        bool loads;
    } cases[] = {
        {"nothing behind the rows", "rgb8.png", "1585-99", true},
        {"the rows without the end of their checksum", "rgb8.png", "1584-99", false},
        {"an error in the middle of the rows", "rgb8.png", "811=D8", false},
        {"a chunk of 2 GiB that the file has not", "rgb8.png", "33-9999 33+7FFFFFFF70725674", false},
        {"a marker longer than what is read at once", "baseline.jpg", "2+FFE54E20 6~19998", true},
        {"a marker that the file has not", "baseline.jpg", "2+FFE5FFFF", false},
    };
    for (const auto& [what, name, edits, loads] : cases) {
        SCOPED_TRACE(what);
        TheFile() = {.bytes = ReadAll(FixturePath(name))};
        const Bytes whole = LoadWatched(name)->Bytes();
        TheFile() = {.bytes = Edited(name, edits)};
        const auto image = LoadWatched(name);
        EXPECT_EQ(image != nullptr, loads);
        EXPECT_TRUE(image == nullptr || image->Bytes() == whole);
        EXPECT_LT(TheFile().calls, 100U);
    }
}

TEST(FileFault, FilesThatDoNotOpenOrSeek) {
    for (const std::string name : {"bits24.bmp", "rgb8.png", "baseline.jpg"}) {
        SCOPED_TRACE(name);
        const Bytes file = ReadAll(FixturePath(name));
        TheFile() = {.bytes = file, .seeks = false};
        EXPECT_TRUE(LoadWatched(name)) << "read where it stands";
        TheFile() = {.bytes = file, .opens = false};
        EXPECT_FALSE(LoadWatched(name));
        EXPECT_FALSE(LoadPath(Kind(name), std::wstring(L"any"), nullptr));
        EXPECT_EQ(TheFile().moved, 0U);
        EXPECT_EQ(TheFile().open, 0);
    }
    EXPECT_FALSE(CDIBSaver().Save(CQorImage(3, 2, PixelFormat::Index4, 4, false), std::wstring(L"any")));
    EXPECT_FALSE(CPNGSaver().Save(CQorImage(3, 2, PixelFormat::Index4, 4, false), std::wstring(L"any")));
}

TEST(FileFault, AnImageWithoutPixelsIsSavedAsHeadersAlone) {
    TestImage hidden({3, 2, PixelFormat::Bgr24});
    hidden.HideMemory();
    TheFile() = {};
    EXPECT_TRUE(CDIBSaver().Save(hidden, std::string("file")));
    EXPECT_EQ(TheFile().bytes.size(), kDibHeaders);
}

TEST(FileFault, WritesThatStopLeaveTheBeginningOfTheFile) {
    const CQorImage image(3, 2, PixelFormat::Index4, 4, false);
    const auto save = [&](bool png) {
        return png ? CPNGSaver().Save(image, std::string("file")) : CDIBSaver().Save(image, std::string("file"));
    };
    for (const bool png : {false, true}) {
        TheFile() = {};
        EXPECT_TRUE(save(png));
        const Bytes whole = TheFile().bytes;
        EXPECT_TRUE(png || whole.size() == kDibHeaders + 16 * 4 + 2 * 4);
        for (std::size_t offset = 0; offset < whole.size(); ++offset) {
            TheFile() = {.badOffset = offset};
            EXPECT_EQ(save(png), !png) << "a bitmap's saver does not report writing errors";
            EXPECT_TRUE(std::ranges::equal(TheFile().bytes, std::span(whole).first(offset)));
            EXPECT_EQ(TheFile().open, 0);
        }
    }
}

}  // namespace
}  // namespace vantu::test
