#ifndef TOOLS_CORVO_TIMES_H
#define TOOLS_CORVO_TIMES_H

#include <limits>
#include <string>

namespace corvo {

// Times are counts of 100 ns since 1601-01-01 UTC, durations counts of 100 ns; neither is negative.
constexpr long long kTicksPerSecond = 10'000'000;
constexpr long long kLatestTime = std::numeric_limits<long long>::max();

// Read "2024-05-17T09:30:00Z" (with up to seven decimals of a second) or a plain count of 100 ns.
// Throws InputError.
long long ParseTime(const std::string& text);

// Reads "65.9s", "1m5s", "1h0m5s" or plain seconds such as "65.9". Throws InputError.
long long ParseDuration(const std::string& text);

}  // namespace corvo

#endif
