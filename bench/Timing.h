#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace vantu::bench {

/// Whether two paintings have the same bytes.
bool Same(const std::vector<unsigned char>& a, const std::vector<unsigned char>& b);
/// Whether two paintings are the same to the eye: all but 1 % of the bytes within `apart`.
bool Alike(const std::vector<unsigned char>& a, const std::vector<unsigned char>& b, int apart = 3);

/// What a check says, which is made once for a name.
bool IsRight(const std::string& name, const std::function<bool()>& check);

/// What tells the time of a painting.
enum class Clock {
    Less,  ///< the wall's or the thread's, whichever says less: the wall's is finer, the thread's leaves out others'
           ///< time
    Wall,  ///< the wall's, for several threads
};

/// Times `paint`, each time after `restore`, which is not timed. What counts is the median over the paintings of a run,
/// as counters of pixels per second and of nanoseconds for a call.
/// @param calls, pixels that one `paint` paints.
void Measure(benchmark::State& state, const std::function<void()>& restore, const std::function<void()>& paint,
             std::size_t calls, std::size_t pixels, Clock clock = Clock::Less);

}  // namespace vantu::bench
