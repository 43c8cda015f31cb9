// What the sealed copy costs beside the bare system calls: the same bytes in the same 1000-byte
// steps, read through the file handler's cache or 16384 bytes at a time by `read`. 1 MB to a file
// in the page cache; pauses are left out (this program's Sleep returns at once).

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "LarkspurCommon/XTTime.h"
#include "engine/CorvoVerifiedRecording.h"

extern "C" void Sleep(DWORD) {
}

namespace {

constexpr unsigned long kSize = 1'000'000;
constexpr unsigned long kStep = 1000;
constexpr unsigned long kBlock = 16'384;

// A file of kSize bytes and a name for its copy, removed at the end.
struct Files {
  Files() {
    const int source = ::mkstemp(from.data());
    const std::string bytes(kSize, 'a');
    if (source == -1 || ::write(source, bytes.data(), kSize) != kSize) std::abort();
    ::close(source);
    ::close(::mkstemp(to.data()));
  }
  ~Files() {
    ::unlink(from.c_str());
    ::unlink(to.c_str());
  }
  std::string from = "/tmp/copy-bench-from-XXXXXX";
  std::string to = "/tmp/copy-bench-to-XXXXXX";
};

void CopyData(benchmark::State& state) {
  const Files files;
  TFileHandler source;
  TFileHandler destination;
  if (!source.Open(files.from.c_str(), OFM_READ, NLM_BINARY, false, false) ||
      !destination.Open(files.to.c_str(), OFM_READWRITE, NLM_BINARY, false, false)) {
    state.SkipWithError("can't open the files");
    return;
  }
  VerifyRecording engine;
  for (auto _ : state) {
    state.PauseTiming();
    source.MoveToPosition(0, 0);
    destination.MoveToPosition(0, 0);
    state.ResumeTiming();
    unsigned long timer = os_clock();
    engine.CopyData(timer, destination, source, kSize);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kSize));
}
BENCHMARK(CopyData);

void BareSystemCalls(benchmark::State& state) {
  const Files files;
  const int source = ::open(files.from.c_str(), O_RDONLY);
  const int destination = ::open(files.to.c_str(), O_RDWR);
  char block[kBlock];
  for (auto _ : state) {
    ::lseek(source, 0, SEEK_SET);
    ::lseek(destination, 0, SEEK_SET);
    unsigned long held = 0;
    unsigned long next = 0;
    for (unsigned long left = kSize; left != 0; left -= kStep) {
      if (held - next < kStep) {  // as far as it goes: the bytes don't matter here
        held = static_cast<unsigned long>(::read(source, block, sizeof block));
        next = 0;
      }
      if (::write(destination, block + next, kStep) != kStep) std::abort();
      next += kStep;
    }
  }
  ::close(source);
  ::close(destination);
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kSize));
}
BENCHMARK(BareSystemCalls);

}  // namespace

BENCHMARK_MAIN();
