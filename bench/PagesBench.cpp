#include "PagesBench.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <deque>
#include <exception>
#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <string>

#include "PixmanPeer.h"
#include "RecordedPage.h"
#include "Timing.h"

namespace vantu::bench {
namespace {

using Page = std::vector<RecordedImage>;
using Replay = std::function<void()>;

/// pixman rounds where the library cuts, which adds up where a page paints often.
constexpr int kRoundingOnPages = 5;

/// Reads a page once. One that cannot be read makes no calls.
const Page& Load(const std::string& path) {
    static std::map<std::string, Page> pages;
    const auto [entry, isNew] = pages.try_emplace(path);
    if (!isNew) return entry->second;
    try {
        entry->second = RecordPage(path);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", path.c_str(), error.what());
    }
    return entry->second;
}

/// Makes calls by the library.
Replay MakePainterReplay(const RecordedImage& image, const std::vector<pdf::Call>& calls) {
    const auto painter = std::make_shared<Painter>(image.scene.page);
    painter->SetClip({image.visible});
    return [painter, &calls] {
        for (const pdf::Call& call : calls) pdf::Make(call, *painter);
    };
}

Replay MakeAll(const RecordedImage& image) {
    return MakePainterReplay(image, image.calls);
}

Replay MakeShared(const RecordedImage& image) {
    return MakePainterReplay(image, image.shared);
}

Replay MakeScalar(const RecordedImage& image) {
    return MakeScalarReplay(image.scene);
}

Replay MakePixman(const RecordedImage& image) {
    return MakePixmanReplay(image.scene);
}

std::vector<unsigned char> Painted(const RecordedImage& image, const Replay& replay) {
    const PageScene& scene = image.scene;
    scene.Restore();
    replay();
    return {scene.page->GetPixelData(), scene.page->GetPixelData() + scene.pristine.size()};
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
     [](const RecordedImage& image, const Replay& replay) { return Painted(image, replay) == image.painted; }},
    {"Library", MakeShared, &RecordedImage::shared,
     [](const RecordedImage& image, const Replay& replay) {
         return Painted(image, replay) == Painted(image, MakeScalar(image));
     }},
    {"Scalar", MakeScalar, &RecordedImage::shared, nullptr},
    {"Pixman", MakePixman, &RecordedImage::shared,
     [](const RecordedImage& image, const Replay& replay) {
         return Alike(Painted(image, replay), Painted(image, MakeScalar(image)), kRoundingOnPages);
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
        if (way.isRight != nullptr && !way.isRight(image, replays.back())) {
            state.SkipWithError("does not draw what it should");
            return;
        }
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
            const std::string name = "Pages/" + std::string(way.name) + '/' + group + '/' + file.stem().string();
            benchmark::RegisterBenchmark(name.c_str(), [path = file.string(), &way](benchmark::State& state) {
                Run(state, path, way);
            })->UseManualTime();
        }
    }
}

}  // namespace

void RegisterPagesBenchmarks() {
    Register(IMAGEOP_PICTURES, "own");
    Register(IMAGEOP_TEST_PAGES, "own");
    if (const char* const folder = std::getenv("IMAGEOP_BENCH_PAGES"); folder != nullptr && *folder != '\0') {
        Register(folder, "others");
    }
}

}  // namespace vantu::bench
