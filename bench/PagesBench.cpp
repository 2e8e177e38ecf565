#include "PagesBench.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <thread>

#include "PixmanPeer.h"
#include "RecordedPage.h"
#include "Timing.h"

namespace vantu::bench {
namespace {

using Page = std::vector<RecordedImage>;
using Replay = std::function<void()>;

constexpr double kDotsPerInch = 96;
constexpr double kThreadedDotsPerInch = 384;  ///< so that a page takes much longer than a thread to start
constexpr int kBands = 128;  ///< of the threaded page: what a group of one holds stays in a core's cache

/// pixman rounds where the library cuts, which adds up where a page paints often.
constexpr int kRoundingOnPages = 5;

/// Reads a page once. One that cannot be read makes no calls.
const Page& Load(const std::string& path) {
    static std::map<std::string, Page> pages;
    const auto [entry, isNew] = pages.try_emplace(path);
    if (!isNew) return entry->second;
    try {
        entry->second = RecordPage(path, kDotsPerInch);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", path.c_str(), error.what());
    }
    return entry->second;
}

/// Makes calls by the library, in a part of the image.
Replay MakePainterReplay(const RecordedImage& image, const std::vector<pdf::Call>& calls, const pdf::Pixels& visible) {
    const auto painter = std::make_shared<Painter>(image.scene.page);
    painter->SetClip({visible});
    return [painter, &calls] {
        for (const pdf::Call& call : calls) pdf::Make(call, *painter);
    };
}

Replay MakeAll(const RecordedImage& image) {
    return MakePainterReplay(image, image.calls, image.visible);
}

Replay MakeShared(const RecordedImage& image) {
    return MakePainterReplay(image, image.shared, image.visible);
}

Replay MakeScalar(const RecordedImage& image) {
    return MakeScalarReplay(image.scene);
}

Replay MakePixman(const RecordedImage& image) {
    return MakePixmanReplay(image.scene);
}

/// One way to make the calls of a page.
struct Way {
    const char* name;
    Replay (*make)(const RecordedImage&);
    std::vector<pdf::Call> RecordedImage::*calls;
    bool (*isRight)(const RecordedImage&, const Replay&);
};

/// All calls paint what the host painted, the shared ones what the plain loop paints.
const Way kWays[] = {
    {"All", MakeAll, &RecordedImage::calls,
     [](const RecordedImage& image, const Replay& replay) { return Painted(image.scene, replay) == image.painted; }},
    {"Library", MakeShared, &RecordedImage::shared,
     [](const RecordedImage& image, const Replay& replay) {
         return Painted(image.scene, replay) == Painted(image.scene, MakeScalar(image));
     }},
    {"Scalar", MakeScalar, &RecordedImage::shared, nullptr},
    {"Pixman", MakePixman, &RecordedImage::shared,
     [](const RecordedImage& image, const Replay& replay) {
         return Alike(Painted(image.scene, replay), Painted(image.scene, MakeScalar(image)), kRoundingOnPages);
     }},
};

std::size_t CountPixels(const std::vector<pdf::Call>& calls) {
    std::size_t count = 0;
    for (const pdf::Call& call : calls) {
        if (call.what == pdf::Call::What::BeginGroup || pdf::IsEmpty(call.box)) continue;
        count += static_cast<std::size_t>(pdf::Width(call.box)) * static_cast<std::size_t>(pdf::Height(call.box));
    }
    return count;
}

void Run(benchmark::State& state, const std::string& path, const Way& way) {
    const Page& page = Load(path);
    std::vector<Replay> replays;
    std::size_t calls = 0, pixels = 0;
    for (const RecordedImage& image : page) {
        replays.push_back(way.make(image));
        calls += (image.*way.calls).size();
        pixels += CountPixels(image.*way.calls);
    }
    const auto check = [&] {
        for (std::size_t i = 0; i < page.size(); ++i) {
            if (way.isRight != nullptr && !way.isRight(page[i], replays[i])) return false;
        }
        return true;
    };
    if (!IsRight(way.name + path, check)) {
        state.SkipWithError("does not draw what it should");
        return;
    }
    Measure(
        state,
        [&] {
            for (const RecordedImage& image : page) image.scene.Restore();
        },
        [&] {
            for (const Replay& replay : replays) replay();
        },
        calls, pixels);
}

void Register(const std::filesystem::path& folder, const std::string& group) {
    std::set<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() == ".pdf") files.insert(entry.path());
    }
    for (const auto& file : files) {
        for (const Way& way : kWays) {
            if (way.make == MakePixman && !HasPixman()) continue;
            const std::string name = "Pages/" + std::string(way.name) + '/' + group + '/' + file.stem().string();
            benchmark::RegisterBenchmark(name.c_str(), [path = file.string(), &way](benchmark::State& state) {
                Run(state, path, way);
            })->UseManualTime();
        }
    }
}

/// Does pieces of a work, each by the next thread that is free: `work(thread, piece)`.
void Share(int pieces, int threads, const std::function<void(std::size_t thread, int piece)>& work) {
    std::atomic<int> next = 0;
    const auto doPieces = [&](std::size_t thread) {
        for (int piece = next++; piece < pieces; piece = next++) work(thread, piece);
    };
    std::vector<std::thread> others;
    for (int i = 1; i < threads; ++i) others.emplace_back(doPieces, i);
    doPieces(0);
    for (std::thread& other : others) other.join();
}

/// The image of a page that takes most calls, in bands of rows, by a painter for each thread.
void RunBands(benchmark::State& state, const std::string& path, int threads) {
    static const Page page = RecordPage(path, kThreadedDotsPerInch);
    static const RecordedImage& image =
        *std::ranges::max_element(page, {}, [](const RecordedImage& i) { return i.calls.size(); });
    std::vector<Painter> painters;
    for (int i = 0; i < threads; ++i) painters.emplace_back(image.scene.page);
    const auto paintBand = [&](std::size_t thread, int band) {
        const auto edge = [&](int n) { return image.visible.y1 * n / kBands; };
        painters[thread].SetClip({{image.visible.x0, edge(band), image.visible.x1, edge(band + 1)}});
        for (const pdf::Call& call : image.calls) pdf::Make(call, painters[thread]);
    };
    const auto restore = [&] { image.scene.Restore(); };
    const auto paint = [&] { Share(kBands, threads, paintBand); };
    const auto isAsByOne = [&] {
        return Painted(image.scene, paint) == Painted(image.scene, [&] { Share(kBands, 1, paintBand); });
    };
    if (!IsRight("Threads/" + std::to_string(threads), isAsByOne)) {
        state.SkipWithError("does not draw what it should");
        return;
    }
    Measure(state, restore, paint, image.calls.size(), CountPixels(image.calls), Clock::Wall);
}

/// Arithmetic without memory, to say how much more two threads can do on this machine than one.
void RunArithmetic(benchmark::State& state, int threads) {
    const auto work = [](std::size_t, int) {
        double x = 1;
        for (int i = 0; i < 8000000 / kBands; ++i) x = x * 1.0000001 + 1e-9;
        benchmark::DoNotOptimize(x);
    };
    Measure(
        state, [] {}, [&] { Share(kBands, threads, work); }, 1, 0, Clock::Wall);
}

}  // namespace

void RegisterPagesBenchmarks() {
    Register(IMAGEOP_PICTURES, "own");
    Register(IMAGEOP_TEST_PAGES, "own");
    if (const char* const folder = std::getenv("IMAGEOP_BENCH_PAGES"); folder != nullptr && *folder != '\0') {
        if (std::filesystem::is_directory(folder)) {
            Register(folder, "others");
        } else {
            std::fprintf(stderr, "imageop_bench: %s is no folder\n", folder);
        }
    }
    for (const int threads : {1, 2, 4, 8}) {
        const std::string number = std::to_string(threads);
        benchmark::RegisterBenchmark(("Threads/" + number).c_str(), [threads](benchmark::State& state) {
            RunBands(state, std::string(IMAGEOP_PICTURES) + "/page.pdf", threads);
        })->UseManualTime();
        benchmark::RegisterBenchmark(("Arithmetic/" + number).c_str(), [threads](benchmark::State& state) {
            RunArithmetic(state, threads);
        })->UseManualTime();
    }
}

}  // namespace vantu::bench
