#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/Fuzz.h"

// Gives files, and the files in folders, to a fuzz target, one after the other: so each kept input is a test in any
// build.

namespace {

void Replay(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    const std::vector<char> bytes(std::istreambuf_iterator<char>(in), {});
    vantu::fuzz::Require(!in.bad() && in.is_open(), "a kept input can be read");
    std::puts(path.c_str());  // the last line names the input at which the program stopped
    std::fflush(stdout);
    // A copy of just this size, so that a read past its end is seen.
    const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(input.data(), input.size());
}

}  // namespace

int main(int count, char** arguments) {
    std::size_t replayed = 0;
    for (int i = 1; i < count; ++i) {
        const std::filesystem::path path = arguments[i];
        if (!std::filesystem::is_directory(path)) {
            Replay(path);
            ++replayed;
            continue;
        }
        for (const auto& file : std::filesystem::directory_iterator(path)) {
            Replay(file);
            ++replayed;
        }
    }
    std::printf("%zu inputs\n", replayed);
    return replayed == 0 ? 1 : 0;
}
