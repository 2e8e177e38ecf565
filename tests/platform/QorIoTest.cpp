#include <gtest/gtest.h>
#include <vantu/QorIo.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <set>
#include <string>
#include <vector>

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

namespace vantu {
namespace {

using Bytes = std::vector<unsigned char>;

class QorIo : public testing::Test {
protected:
    QorIo() { EXPECT_NE(QorOpenFileW(widePath_, &fd_, QOR_OPEN_CREATE), 0); }
    ~QorIo() override {
        QorCloseFile(fd_);
        unlink(path_.c_str());
    }
    /// What the file holds, read by its narrow path.
    [[nodiscard]] Bytes Content() const {
        int fd = -1;
        EXPECT_NE(QorOpenFile(path_, &fd, QOR_OPEN_READ), 0);
        Bytes bytes(1000);
        bytes.resize(QorReadFile(bytes.data(), 1000, fd));
        EXPECT_NE(QorCloseFile(fd), 0);
        return bytes;
    }

    // Characters of two, three and four bytes in UTF-8, the last there is, the first after the surrogates; then the
    // last and the first surrogate, which are no characters.
    const std::string folder_ = testing::TempDir();
    const std::string path_ =
        folder_ + "qorio \xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF\xEE\x80\x80\xEF\xBF\xBD\xEF\xBF\xBD";
    const std::wstring widePath_ = std::wstring(folder_.begin(), folder_.end()) +
                                   L"qorio \u00E9\u20AC\U0001F600\U0010FFFF\uE000" + wchar_t{0xDFFF} + wchar_t{0xD800};
    int fd_ = -1;
};

TEST_F(QorIo, IntegersAndRecordsAreLittleEndian) {
    struct Record {
        std::uint32_t a;
        std::uint16_t b, c;
        std::uint32_t d;
    };
    static_assert(sizeof(Record) == 12);
    const Record record{0x04030201, 0x0605, 0x0807, 0x0C0B0A09};
    EXPECT_EQ(QorWriteIntelInt(fd_, 0xBBAA), 2U);
    EXPECT_EQ(QorWriteIntelLong(fd_, 0xFFEEDDCC), 4U);
    EXPECT_EQ(QorWriteIntelStruct(fd_, &record, 12, "P1,L1,I2,L1"), 12U);
    const Bytes expected = {0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    EXPECT_EQ(Content(), expected);
    for (const char* const wrong : {"", "L1", "L3,I1", "L4", "Q3", "P2,L3", "L99999999999", "I"}) {
        EXPECT_EQ(QorWriteIntelStruct(fd_, &record, 12, wrong), 0U) << wrong;
    }
    EXPECT_EQ(Content(), expected) << "a format that does not fit writes nothing";
}

TEST_F(QorIo, SeeksReadsToTheEndAndEmpties) {
    const Bytes bytes = {1, 2, 3, 4, 5};
    EXPECT_EQ(QorWriteFile(bytes.data(), 5, fd_), 5U);
    int fd = -1;
    ASSERT_NE(QorOpenFile(path_, &fd, QOR_OPEN_READ), 0);
    std::array<unsigned char, 4> buffer{};
    EXPECT_EQ(QorSeekFile(fd, 3, 0), 3);
    EXPECT_EQ(QorReadFile(buffer.data(), 4, fd), 2U);
    EXPECT_EQ(buffer, (std::array<unsigned char, 4>{4, 5, 0, 0}));
    EXPECT_EQ(QorReadFile(buffer.data(), 4, fd), 0U);
    EXPECT_EQ(QorSeekFile(fd, -4, 1), 1);
    EXPECT_EQ(QorSeekFile(fd, -1, 2), 4);
    EXPECT_EQ(QorSeekFile(fd, -9, 0), -1);
    QorCloseFile(fd);
    ASSERT_NE(QorOpenFile(path_, &fd, QOR_OPEN_CREATE), 0);
    QorCloseFile(fd);
    EXPECT_EQ(Content(), Bytes{});
}

/// Calls `call` while a signal comes, which breaks off what waits.
template <typename Call>
void WithSignal(void (*handler)(int), Call call) {
    struct sigaction wake {
    }, before{};
    wake.sa_handler = handler;
    ASSERT_EQ(sigaction(SIGALRM, &wake, &before), 0);
    const itimerval soon{{0, 0}, {0, 20000}};
    ASSERT_EQ(setitimer(ITIMER_REAL, &soon, nullptr), 0);
    call();
    sigaction(SIGALRM, &before, nullptr);
}

TEST_F(QorIo, SignalsCutNothingShortAndChildrenGetNoDescriptor) {
    EXPECT_NE(fcntl(fd_, F_GETFD) & FD_CLOEXEC, 0);
    static std::array<int, 2> ends;
    ASSERT_EQ(pipe(ends.data()), 0);
    std::array<unsigned char, 3> buffer{};
    WithSignal([](int) { static_cast<void>(write(ends[1], "abc", 3) == 3); },
               [&] { EXPECT_EQ(QorReadFile(buffer.data(), 3, ends[0]), 3U); });
    EXPECT_EQ(buffer[2], 'c');
    for (const int end : ends) QorCloseFile(end);

    // A named pipe is opened when somebody opens its other end.
    static const std::string pipe = folder_ + "qorio_pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    WithSignal([](int) { ends[1] = open(pipe.c_str(), O_RDWR); },
               [&] { EXPECT_NE(QorOpenFile(pipe, &ends[0], QOR_OPEN_READ), 0); });
    unlink(pipe.c_str());
    for (const int end : ends) QorCloseFile(end);
}

TEST_F(QorIo, WhatCannotBe) {
    int fd = -7;
    EXPECT_EQ(QorOpenFile(path_ + "/none", &fd, QOR_OPEN_READ), 0);
    EXPECT_EQ(QorOpenFileW(widePath_ + L"/none", &fd, QOR_OPEN_CREATE), 0);
    EXPECT_EQ(QorOpenFile(path_ + std::string("\0tail", 5), &fd, QOR_OPEN_READ), 0) << "a path is no prefix of another";
    EXPECT_EQ(fd, -7);
    unsigned char byte = 0;
    EXPECT_EQ(QorReadFile(&byte, 1, -1), 0U);
    EXPECT_EQ(QorWriteFile(&byte, 1, -1), 0U);
    EXPECT_EQ(QorSeekFile(-1, 0, 0), -1);
    EXPECT_EQ(QorCloseFile(-1), 0);
}

TEST(QorMemory, ReadsAndSeeksAsAFileAndWritesNothing) {
    const Bytes bytes = {1, 2, 3, 4, 5};
    int fd = -1;
    ASSERT_NE(QorOpenMemory(bytes.data(), bytes.size(), &fd), 0);
    EXPECT_LT(fd, -1) << "no number of the system's";
    std::array<unsigned char, 4> buffer{};
    EXPECT_EQ(QorReadFile(buffer.data(), 4, fd), 4U);
    EXPECT_EQ(QorReadFile(buffer.data(), 4, fd), 1U);
    EXPECT_EQ(buffer, (std::array<unsigned char, 4>{5, 2, 3, 4}));
    EXPECT_EQ(QorReadFile(buffer.data(), 4, fd), 0U);
    EXPECT_EQ(QorSeekFile(fd, 1, 0), 1);
    EXPECT_EQ(QorSeekFile(fd, 2, 1), 3);
    EXPECT_EQ(QorSeekFile(fd, -4, 2), 1);
    for (const int origin : {0, 1, 2, 3}) EXPECT_EQ(QorSeekFile(fd, -9, origin), -1);
    EXPECT_EQ(QorSeekFile(fd, std::numeric_limits<long long>::max(), 1), -1);
    EXPECT_EQ(QorSeekFile(fd, std::numeric_limits<long long>::min(), 1), -1);
    EXPECT_EQ(QorSeekFile(fd, 0, 1), 1) << "a seek that fails moves nothing";
    EXPECT_EQ(QorSeekFile(fd, 90, 0), 90);
    EXPECT_EQ(QorReadFile(buffer.data(), 4, fd), 0U);
    EXPECT_EQ(QorSeekFile(fd, 0, 0), 0);
    EXPECT_EQ(QorWriteFile(buffer.data(), 4, fd), 0U);
    EXPECT_EQ(QorReadFile(buffer.data(), 1, fd), 1U);
    EXPECT_EQ(buffer[0], 1);
    EXPECT_NE(QorCloseFile(fd), 0);
    EXPECT_EQ(QorCloseFile(fd), 0);
    EXPECT_EQ(QorReadFile(buffer.data(), 1, fd), 0U);
    EXPECT_EQ(QorSeekFile(fd, 0, 0), -1);
    ASSERT_NE(QorOpenMemory(nullptr, 0, &fd), 0);
    EXPECT_EQ(QorReadFile(buffer.data(), 1, fd), 0U);
    QorCloseFile(fd);
}

TEST(QorMemory, ManyAtOnceAndEachItsOwn) {
    constexpr std::size_t kFiles = 100'000;  // a process has not so many of the system's
    Bytes bytes(kFiles);
    for (std::size_t i = 0; i < kFiles; ++i) bytes[i] = static_cast<unsigned char>(i * 7 >> 3);
    std::vector<int> files(kFiles, -1);
    const auto open = [&](std::size_t i) { ASSERT_NE(QorOpenMemory(&bytes[i], 1, &files[i]), 0); };
    for (std::size_t i = 0; i < kFiles; ++i) open(i);
    const int last = *std::ranges::min_element(files);
    for (std::size_t i = 0; i < kFiles; i += 3) EXPECT_NE(QorCloseFile(files[i]), 0);
    for (std::size_t i = 0; i < kFiles; i += 3) open(i);
    EXPECT_EQ(*std::ranges::min_element(files), last) << "what is closed is used again";
    EXPECT_EQ(std::set<int>(files.begin(), files.end()).size(), kFiles);
    for (std::size_t i = 0; i < kFiles; ++i) {
        unsigned char byte = 0;
        ASSERT_EQ(QorReadFile(&byte, 1, files[i]), 1U);
        ASSERT_EQ(byte, bytes[i]);
        ASSERT_NE(QorCloseFile(files[i]), 0);
    }
}

}  // namespace
}  // namespace vantu
