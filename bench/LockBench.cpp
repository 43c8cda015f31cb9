// A lock taken and given back with nobody waiting, beside the least that does what it promises: a
// recursive pthread mutex, the owner tested before it is asked, and the time of the acquisition;
// and beside the same with our arguments and the place of the acquisition.

#include <benchmark/benchmark.h>

#include "LarkspurCommon/CritSect.h"
#include "bench/BarePeers.h"

namespace {

void CriticalSectionLock(benchmark::State& state) {
  CriticalSection lock(false, "bench", false);
  for (auto _ : state) {
    lock.Lock("bench", 1, true);
    lock.Unlock("bench", 2, nullptr, nullptr, true);
  }
}
BENCHMARK(CriticalSectionLock);

void RecursiveMutex(benchmark::State& state) {
  StampedMutex lock;
  for (auto _ : state) {
    lock.Lock();
    lock.Unlock();
  }
}
BENCHMARK(RecursiveMutex);

void RecursiveMutexAt(benchmark::State& state) {
  StampedMutex lock;
  for (auto _ : state) {
    lock.LockAt("bench", 1, true);
    lock.UnlockAt("bench", 2, nullptr, nullptr, true);
  }
}
BENCHMARK(RecursiveMutexAt);

}  // namespace

BENCHMARK_MAIN();
