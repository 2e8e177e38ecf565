#include "Timing.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <map>

namespace vantu::bench {
namespace {

/// Seconds that the thread has run for.
double ThreadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

double Seconds(const std::function<void()>& work, Clock clock) {
    using WallClock = std::chrono::steady_clock;
    const double threadStart = ThreadSeconds();
    const auto start = WallClock::now();
    work();
    benchmark::ClobberMemory();
    const std::chrono::duration<double> wall = WallClock::now() - start;
    return clock == Clock::Wall ? wall.count() : std::min(wall.count(), ThreadSeconds() - threadStart);
}

}  // namespace

bool Same(const std::vector<unsigned char>& a, const std::vector<unsigned char>& b) {
    return a == b;
}

bool Alike(const std::vector<unsigned char>& a, const std::vector<unsigned char>& b, int apart) {
    std::size_t far = 0;
    for (std::size_t i = 0; i < a.size(); ++i) far += std::abs(a[i] - b[i]) > apart;
    return far * 100 <= a.size();
}

bool IsRight(const std::string& name, const std::function<bool()>& check) {
    static std::map<std::string, bool> verdicts;
    if (const auto verdict = verdicts.find(name); verdict != verdicts.end()) return verdict->second;
    return verdicts[name] = check();
}

void Measure(benchmark::State& state, const std::function<void()>& restore, const std::function<void()>& paint,
             std::size_t calls, std::size_t pixels, Clock clock) {
    std::vector<double> seconds;
    for (auto _ : state) {
        restore();
        seconds.push_back(Seconds(paint, clock));
        state.SetIterationTime(seconds.back());
    }
    const auto middle = seconds.begin() + static_cast<std::ptrdiff_t>(seconds.size() / 2);
    std::nth_element(seconds.begin(), middle, seconds.end());
    state.counters["calls"] = static_cast<double>(calls);
    state.counters["pixels"] = static_cast<double>(pixels);
    state.counters["ns"] = calls == 0 ? 0 : 1e9 * *middle / static_cast<double>(calls);
    state.counters["pixels_per_second"] = static_cast<double>(pixels) / *middle;
}

}  // namespace vantu::bench
