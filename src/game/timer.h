#pragma once
#include <cstdint>
#include <type_traits>

// Wall-clock milliseconds: (seconds % 1000000) * 1000 + milliseconds. Never
// returns a value whose millisecond part is 0.
int get_ms();

// Budget and start stamp of the running search. Lives in the record shared
// by all engine processes, so it stays a plain pair of 32-bit words.
class timer {
public:
    int32_t allottedMs;  // 0 ends the search at once
    int32_t startMs;

    void startTimer() { startMs = get_ms(); }
    int getTimePassedBy() const;
    bool timeIsUp() const;
};

static_assert(std::is_trivially_copyable_v<timer>);
static_assert(std::is_trivially_default_constructible_v<timer>);
static_assert(std::is_standard_layout_v<timer>);
static_assert(sizeof(timer) == 8);
