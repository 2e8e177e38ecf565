// gallery FOLDER: draws the pictures of the documents into a folder, as PNG files.
// gallery --check FOLDER: compares the files of a folder with what is drawn now, pixel by pixel. What differs is
// written to the current directory as it is drawn now.

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>

#include "Gallery.h"

using namespace examples;
using namespace vantu;

namespace {

std::vector<Drawing> AllDrawings() {
    std::vector<Drawing> all;
    for (const auto& drawings : {ModeDrawings(), MaskDrawings(), GroupDrawings(), FormatDrawings(), UtilityDrawings()})
        all.insert(all.end(), drawings.begin(), drawings.end());
    return all;
}

bool SamePixels(const IQorImage& a, const IQorImage& b) {
    if (a.GetPixelFormat() != b.GetPixelFormat() || a.GetWidth() != b.GetWidth() || a.GetHeight() != b.GetHeight())
        return false;
    const unsigned int bytes = RowStride(a.GetWidth(), a.GetPixelFormat(), 0);
    for (unsigned int y = 0; y < a.GetHeight(); ++y) {
        if (!std::equal(RowOf(a, y), RowOf(a, y) + bytes, RowOf(b, y))) return false;
    }
    return true;
}

void DrawAll(const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    for (const Drawing& drawing : AllDrawings()) Save(*drawing.draw(), (folder / (drawing.name + ".png")).string());
}

// The number of pictures that differ, are missing or are drawn by nothing.
int CountFaults(const std::filesystem::path& folder) {
    int faults = 0;
    const auto complain = [&faults](const std::string& text) {
        std::cerr << "gallery: " << text << '\n';
        ++faults;
    };
    std::vector<std::filesystem::path> drawn;
    for (const Drawing& drawing : AllDrawings()) {
        const std::filesystem::path& file = drawn.emplace_back(folder / (drawing.name + ".png"));
        const Image now = drawing.draw();
        if (!std::filesystem::exists(file)) {
            complain(file.string() + " is missing");
        } else if (!SamePixels(*ReadPicture(file.string()), *now)) {
            Save(*now, drawing.name + "-now.png");
            complain(file.string() + " is not what is drawn now: see " + drawing.name + "-now.png");
        }
    }
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        const bool isPicture = entry.path().extension() == ".png";
        if (isPicture && std::find(drawn.begin(), drawn.end(), entry.path()) == drawn.end())
            complain(entry.path().string() + " is drawn by nothing");
    }
    std::cout << drawn.size() << " pictures, " << faults << " faults\n";
    return faults;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    try {
        if (arguments.size() == 2 && arguments[0] == "--check")
            return CountFaults(arguments[1]) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
        if (arguments.size() == 1) {
            DrawAll(arguments[0]);
            return EXIT_SUCCESS;
        }
    } catch (const std::exception& error) {
        std::cerr << "gallery: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
    std::cerr << "usage: gallery FOLDER | gallery --check FOLDER\n";
    return EXIT_FAILURE;
}
