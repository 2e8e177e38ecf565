// tiles [THREADS]: paints a page tile by tile on the host's own threads, one painter per tile, and once more as a whole
// on one thread. The bytes are the same; how much faster it was is printed.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <thread>
#include <vector>

#include "Pictures.h"

using namespace examples;
using namespace vantu;

namespace {

constexpr int kPage = 1024;
constexpr int kTile = 256;
constexpr int kTilesInARow = kPage / kTile;
constexpr int kLayers = 240;

using Image = std::shared_ptr<IQorImage>;

// A picture at a place of the page. All tiles read the same pictures, which is safe: nobody writes them.
struct Layer {
    Image picture;
    Point<int, 2> corner;
    unsigned char alpha;
    BlendMode mode;
};

std::vector<Layer> MakeLayers() {
    std::vector<Image> pictures;
    for (const char* file : {"/chelsea.png", "/coffee.png", "/rocket.jpg", "/horse.png"})
        pictures.push_back(Fit(*ReadPicture(IMAGEOP_EXAMPLE_DATA + std::string(file)), 320, 240, Framing::Fill));
    std::vector<Layer> layers;
    unsigned int state = 1;  // any sequence will do, if it is always the same
    const auto next = [&state](unsigned int below) { return ((state = state * 1664525 + 1013904223) >> 8) % below; };
    for (int i = 0; i < kLayers; ++i) {
        const Point<int, 2> corner{static_cast<int>(next(kPage)) - 160, static_cast<int>(next(kPage)) - 120};
        layers.push_back({pictures[next(4)], corner, static_cast<unsigned char>(64 + next(192)),
                          static_cast<BlendMode>(next(kBlendModeCount))});
    }
    return layers;
}

// Paints what of the layers lies on `image`, whose top left corner stands at `origin` of the page.
void PaintLayers(const Image& image, const Point<int, 2>& origin, const std::vector<Layer>& layers) {
    Painter painter(image);
    for (const Layer& layer : layers) {
        painter.Draw(layer.picture, {layer.corner.x - origin.x, layer.corner.y - origin.y},
                     {.mode = layer.mode, .alpha = layer.alpha});
    }
}

// Tiles in reading order; each is a task for whichever thread comes first.
std::vector<Image> PaintTiles(const std::vector<Layer>& layers, unsigned int threadCount) {
    std::vector<Image> tiles(kTilesInARow * kTilesInARow);
    std::atomic<std::size_t> next{0};
    std::vector<std::thread> threads;
    for (unsigned int i = 0; i < threadCount; ++i) {
        threads.emplace_back([&] {
            for (std::size_t tile = next++; tile < tiles.size(); tile = next++) {
                const int number = static_cast<int>(tile);
                tiles[tile] = MakeSheet(kTile, kTile, 0xFFFFFFFF);
                PaintLayers(tiles[tile], {number % kTilesInARow * kTile, number / kTilesInARow * kTile}, layers);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    return tiles;
}

bool Same(const IQorImage& page, const std::vector<Image>& tiles) {
    for (int y = 0; y < kPage; ++y) {
        for (int column = 0; column < kTilesInARow; ++column) {
            const IQorImage& tile = *tiles[static_cast<std::size_t>(y / kTile * kTilesInARow + column)];
            const unsigned char* const row = RowOf(tile, static_cast<unsigned int>(y % kTile));
            const unsigned char* const pageRow = RowOf(page, static_cast<unsigned int>(y)) + column * kTile * 3;
            if (!std::equal(row, row + kTile * 3, pageRow)) return false;
        }
    }
    return true;
}

template <typename Work>
double Milliseconds(Work work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

bool ComparePages(unsigned int threadCount) {
    const std::vector<Layer> layers = MakeLayers();
    const Image page = MakeSheet(kPage, kPage, 0xFFFFFFFF);
    std::vector<Image> tiles;
    const double whole = Milliseconds([&] { PaintLayers(page, {0, 0}, layers); });
    const double tiled = Milliseconds([&] { tiles = PaintTiles(layers, threadCount); });
    const bool same = Same(*page, tiles);
    std::cout << kLayers << " layers on a page of " << kPage << 'x' << kPage << ": whole " << whole << " ms, "
              << tiles.size() << " tiles on " << threadCount << " threads " << tiled << " ms, " << whole / tiled
              << " times as fast; the bytes are " << (same ? "the same" : "NOT the same") << '\n';
    return same;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        const int asked = argc > 1 ? std::atoi(argv[1]) : 0;
        const unsigned int threadCount =
            asked > 0 ? static_cast<unsigned int>(asked) : std::max(2U, std::thread::hardware_concurrency());
        return ComparePages(threadCount) ? EXIT_SUCCESS : EXIT_FAILURE;
    } catch (const std::exception& error) {
        std::cerr << "tiles: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
}
