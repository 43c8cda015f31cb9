#ifndef BENCH_SEALTIMES_H
#define BENCH_SEALTIMES_H

#include <time.h>

#include <cstdio>
#include <cstring>

// How long sealing or verifying takes, file by file, in this process alone: what starting it costs
// is not the question. The program's arguments are "seal" or "verify", a directory with the host's
// settings and "tempfiles" in it, and the recordings; a line each tells processor time in
// microseconds and pauses.

struct SealTimes {
  bool (*seal)(const char* path);
  bool (*verify)(const char* path);
  const unsigned* pauses;  // how many there have been
};

inline long long ProcessorMicroseconds() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return time.tv_sec * 1000000LL + time.tv_nsec / 1000;
}

inline int PrintSealTimes(const SealTimes& times, int count, char** arguments) {
  const bool seals = std::strcmp(arguments[1], "seal") == 0;
  for (int i = 3; i < count; ++i) {
    const unsigned pauses = *times.pauses;
    const long long start = ProcessorMicroseconds();
    if (!(seals ? times.seal : times.verify)(arguments[i])) {
      std::fprintf(stderr, "%s %s failed\n", arguments[1], arguments[i]);
      return 1;
    }
    std::printf("%lld %u\n", ProcessorMicroseconds() - start, *times.pauses - pauses);
  }
  return 0;
}

// The recorded call that all of them are given.
constexpr long long kStart = 133603686000000000;  // 2024-05-17 09:30 UTC, as a file time
constexpr long long kEnd = kStart + 65LL * 10000000;
constexpr char kCallDuration[] = "1min:5sec";

#endif
