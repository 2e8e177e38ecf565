#pragma once

#include <cstddef>
#include <limits>
#include <new>
#include <utility>

#include <gtest/gtest.h>

// Memory that runs out on command. The program's own malloc and operator new stand before everybody's: the library's,
// the C++ library's and those of the C libraries that decode files. (Under a sanitizer operator new alone.)

namespace vantu::test {

/// Blocks that are allocated and not yet freed.
long LiveBlocks();

/// While it lives, an allocation of more than `most` bytes fails: a machine of a known size.
class MemoryLimit {
public:
    explicit MemoryLimit(std::size_t most);
    ~MemoryLimit();
    MemoryLimit(const MemoryLimit&) = delete;
    MemoryLimit& operator=(const MemoryLimit&) = delete;
};

enum class Outcome { Threw, False, True };

/// One failure to come: the n-th allocation, alone or with all that follow it.
class Failure {
public:
    Failure(unsigned long n, bool lasting) : n_(n), lasting_(lasting) {}

    /// Runs `step`, whose result says whether it did what it should, with the failure in it.
    template <typename Step>
    Outcome In(Step step) {
        Arm();
        Outcome outcome = Outcome::Threw;
        try {
            outcome = step() ? Outcome::True : Outcome::False;
        } catch (const std::bad_alloc&) {
        }
        Disarm();
        return outcome;
    }
    /// Whether the allocation that was to fail was asked for.
    [[nodiscard]] bool Met() const { return met_; }

private:
    void Arm() const;
    void Disarm();

    unsigned long n_;
    bool lasting_;
    bool met_ = false;
};

/// Calls `body(failure)` again and again, so that each allocation inside its `failure.In(...)` fails once alone and
/// once with all after it. The body begins anew each time; what it allocates it frees.
/// @return the number of those allocations.
template <typename Body>
unsigned long WithEveryAllocationFailing(Body body) {
    unsigned long n = 0;
    Failure none(std::numeric_limits<unsigned long>::max(), false);
    body(none);  // what is made at first use is there from now on
    for (const bool lasting : {false, true}) {
        for (n = 1;; ++n) {
            SCOPED_TRACE(testing::Message() << "allocation " << n << (lasting ? " and all after it" : ""));
            Failure failure(n, lasting);
            const long before = LiveBlocks();
            body(failure);
            EXPECT_EQ(LiveBlocks(), before) << "a leak";
            if (!failure.Met() || testing::Test::HasFailure()) break;
        }
    }
    return n - 1;
}

}  // namespace vantu::test
