// What holds for every loader, and what is particular to PNG and JPEG.

#include <new>

#include "codec/Files.h"

namespace vantu::test {
namespace {

const char* const kPictures[] = {"bits24.bmp", "rgb8.png", "baseline.jpg"};

class ThrowingFactory : public IGraphicsFactory {
    ImagePtr CreateImage(unsigned int, unsigned int, PixelFormat, bool, void**) override { throw std::bad_alloc(); }
};

/// The descriptor that the next file would get.
int NextDescriptor() {
    const int fd = dup(STDERR_FILENO);
    close(fd);
    return fd;
}

TEST(Loaders, CloseWhatTheyOpenAndPassMemoryOn) {
    const int next = NextDescriptor();
    for (const std::string file : kPictures) {
        SCOPED_TRACE(file);
        const std::string path = FixturePath(file);
        void* host = nullptr;
        TestFactory factory;
        EXPECT_TRUE(LoadPath(Kind(file), path, &factory, &host));
        EXPECT_EQ(factory.lastMemory, &host);
        EXPECT_TRUE(LoadPath(Kind(file), std::wstring(path.begin(), path.end()), nullptr));
        EXPECT_FALSE(LoadPath(Kind(file), FixturePath("no such file"), nullptr));
        EXPECT_FALSE(LoadPath(Kind(file), FixturePath("expected.txt"), nullptr));
        EXPECT_FALSE(LoadFrom(Kind(file), -1, nullptr));
        ThrowingFactory throwing;
        EXPECT_THROW(static_cast<void>(LoadPath(Kind(file), path, &throwing)), std::bad_alloc);
        const TempFile open(ReadAll(path));
        EXPECT_TRUE(LoadFrom(Kind(file), open.Descriptor(), nullptr));
        EXPECT_GE(lseek(open.Descriptor(), 0, SEEK_CUR), 0) << "a caller's file stays open";
    }
    EXPECT_EQ(NextDescriptor(), next);
}

TEST(Loaders, SayWhyThereIsNoImage) {
    for (const std::string file : kPictures) {
        SCOPED_TRACE(file);
        const std::string kind = Kind(file), path = FixturePath(file);
        const auto why = [&](const auto& from, IGraphicsFactory* factory = nullptr) {
            LoadResult result{-1};
            const auto image = LoadWhy(kind, from, factory, result);
            EXPECT_EQ(image != nullptr, result == LoadResult::Loaded);
            return result;
        };
        const Bytes bytes = ReadAll(path);
        EXPECT_EQ(why(path), LoadResult::Loaded);
        EXPECT_EQ(why(FixturePath("no such file")), LoadResult::NoFile);
        EXPECT_EQ(why(std::wstring(L"no such file")), LoadResult::NoFile);
        for (const std::string other : kPictures) {
            EXPECT_EQ(why(FixturePath(other)), other == file ? LoadResult::Loaded : LoadResult::NotThisKind);
        }
        EXPECT_EQ(why(-1), LoadResult::NotThisKind);
        EXPECT_EQ(why(MemoryFile({}).Descriptor()), LoadResult::NotThisKind);
        for (const int size : {8, 13, 20, 30}) {
            EXPECT_EQ(why(MemoryFile(Bytes(bytes.begin(), bytes.begin() + size)).Descriptor()), LoadResult::Damaged);
        }
        TestFactory none, withoutMemory;
        none.refuse = withoutMemory.withoutMemory = true;
        EXPECT_EQ(why(path, &none), LoadResult::NoImage);
        EXPECT_EQ(why(path, &withoutMemory), kind == "bmp" ? LoadResult::Loaded : LoadResult::NoImage);
    }
    for (int result = 0; result <= static_cast<int>(LoadResult::NoMemory); ++result) {
        EXPECT_STRNE(TextOf(LoadResult{result}), TextOf(LoadResult{-1}));
    }
}

TEST(Loaders, TellTheSizeOfFilesByPath) {
    for (const std::string file : kPictures) {
        const std::string path = FixturePath(file);
        const auto tell = [&](const auto& loader, const auto& from) {
            Shape shape{7, 8, PixelFormat::Index1};
            const bool told = loader.GetImageSize(from, shape.width, shape.height, shape.format);
            EXPECT_EQ(shape.width, told ? 37U : 7U);
            EXPECT_EQ(shape.height, told ? 23U : 8U);
            EXPECT_EQ(shape.format, told ? PixelFormat::Bgr24 : PixelFormat::Index1);
            return told;
        };
        for (const bool wide : {false, true}) {
            const auto from = [&](const auto& loader) {
                return wide ? tell(loader, std::wstring(path.begin(), path.end())) : tell(loader, path);
            };
            EXPECT_EQ(from(CDIBLoader()), Kind(file) == "bmp");
            EXPECT_EQ(from(CPNGLoader()), Kind(file) == "png");
            EXPECT_EQ(from(CJPEGLoader()), Kind(file) == "jpg");
        }
    }
    EXPECT_EQ(SizeOf("bmp", MemoryFile(ReadAll(FixturePath("bits8rle.bmp"))).Descriptor()).width, 0U);
}

TEST(Loaders, KeepInsideTheImageThatAFactoryMakes) {
    for (const std::string file : kPictures) {
        SCOPED_TRACE(file);
        const std::string path = FixturePath(file);
        TestFactory none;
        none.refuse = true;
        EXPECT_FALSE(LoadPath(Kind(file), path, &none));
        TestFactory withoutMemory;
        withoutMemory.withoutMemory = true;
        EXPECT_EQ(LoadPath(Kind(file), path, &withoutMemory) != nullptr, Kind(file) == "bmp");
        for (const unsigned char alignment : kAlignments) {
            for (const unsigned int rowsLeftOut : {0U, 1U, 22U, 23U}) {
                TestFactory factory(alignment);
                factory.rowsLeftOut = rowsLeftOut;
                const auto image = LoadPath(Kind(file), path, &factory);
                if (Kind(file) == "png") {
                    EXPECT_EQ(image != nullptr, rowsLeftOut == 0) << "a PNG is read whole or not at all";
                }
                EXPECT_TRUE(factory.last->GuardsIntact());
            }
        }
    }
}

TEST(Loaders, LeaveSpareBytesOfRowsAlone) {
    for (const std::string file : {"rgb8.png", "baseline.jpg", "grey.jpg"}) {
        TestFactory factory(8);
        ASSERT_TRUE(LoadPath(Kind(file), FixturePath(file), &factory));
        const Bytes bytes = factory.last->Bytes();
        for (std::size_t end = 112; end <= bytes.size(); end += 112) {
            ASSERT_EQ(bytes[end - 1], TestImage::kFreshByte) << file;  // 37 pixels are 111 bytes
        }
    }
}

TEST(JpegLoader, TellsTheSizeOfFilesItDoesNotLoad) {
    for (const char* const name : {"baseline.jpg", "progressive.jpg", "grey.jpg", "cmyk.jpg"}) {
        const std::string path = FixturePath(name);
        unsigned int width = 0;
        unsigned int height = 0;
        PixelFormat format{};
        EXPECT_TRUE(CJPEGLoader().GetImageSize(path, width, height, format)) << name;
        EXPECT_EQ(width, 37U);
        EXPECT_EQ(height, 23U);
        EXPECT_EQ(format, PixelFormat::Bgr24);
        EXPECT_TRUE(CJPEGLoader().GetImageSize(std::wstring(path.begin(), path.end()), width, height, format));
    }
    unsigned int width = 7;
    unsigned int height = 8;
    PixelFormat format = PixelFormat::Index1;
    EXPECT_FALSE(CJPEGLoader().GetImageSize(TempFile().Descriptor(), width, height, format)) << "empty";
    EXPECT_FALSE(CJPEGLoader().GetImageSize(FixturePath("no such file"), width, height, format));
    EXPECT_TRUE(width == 7 && height == 8 && format == PixelFormat::Index1);
}

TEST(JpegLoader, ACutFileKeepsItsUpperRows) {
    Bytes bytes = ReadAll(IMAGEOP_PICTURES "/rocket.jpg");
    TempFile file(bytes);
    const auto whole = LoadFrom("jpg", file.Descriptor(), nullptr);
    bytes.resize(bytes.size() / 2);
    file.Replace(bytes);
    const auto cut = LoadFrom("jpg", file.Descriptor(), nullptr);
    ASSERT_TRUE(whole && cut);
    EXPECT_EQ(cut->GetHeight(), 427U);
    const auto top = [&](const IQorImage& image, unsigned int rows) {
        const unsigned char* const end = image.GetPixelData() + 427 * 1920;
        return Bytes(end - rows * 1920, end);
    };
    EXPECT_EQ(top(*cut, 100), top(*whole, 100));
    EXPECT_NE(top(*cut, 427), top(*whole, 427));
}

}  // namespace
}  // namespace vantu::test
