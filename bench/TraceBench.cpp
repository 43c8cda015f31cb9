// What a trace call costs: one that the filter stops, a line to a hook that does nothing, and a
// traced function. Beside it the bare filter, a logging library with the same pattern, the line as
// its description reads, by snprintf, and the calls that a line can't do without. Unit: one call or
// line.

#define _TIME_BITS 64  // clocks that work after 2038, as ours do

#include <benchmark/benchmark.h>
#include <pthread.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/spdlog.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <mutex>

#include "LarkspurCommon/debug.h"
#include "bench/BarePeers.h"
#include "platform/HostServices.h"
#include "platform/Win32Compat.h"

// The machine's own settings stay as they are.
extern "C" const char* CorvoSettingsDirectory() {
  return "/nonexistent";
}

namespace {

constexpr DWORD kEnabled = 0x00270002;
constexpr DWORD kDisabled = 0x00270008;

class Trace : public benchmark::Fixture {
 public:
  void SetUp(const benchmark::State&) override {
    InitDebug(nullptr, "Recorder", nullptr);
    SetDebugHooks([](wchar_t const* line, unsigned) { benchmark::DoNotOptimize(line); },
                  [](char const* line, unsigned) { benchmark::DoNotOptimize(line); });
  }
};

BENCHMARK_F(Trace, Disabled)(benchmark::State& state) {
  for (auto _ : state) DebugA(kDisabled, "> VerifySignature(\"%s\")", "/rec/a.wav");
}

BENCHMARK_F(Trace, Line)(benchmark::State& state) {
  for (auto _ : state) DebugA(kEnabled, "> VerifySignature(\"%s\")", "/rec/a.wav");
}

BENCHMARK_F(Trace, WideLine)(benchmark::State& state) {
  for (auto _ : state) DebugW(kEnabled, L"> VerifySignature(\"%s\")", "/rec/a.wav");
}

BENCHMARK_F(Trace, Function)(benchmark::State& state) {
  for (auto _ : state) const CDebugTraceFn trace(kEnabled, "VerifySignature", "%s", "/rec/a.wav");
}

BENCHMARK_F(Trace, FunctionDisabled)(benchmark::State& state) {
  for (auto _ : state) const CDebugTraceFn trace(kDisabled, "VerifySignature", "%s", "/rec/a.wav");
}

void BareFilter(benchmark::State& state) {
  for (auto _ : state) BareTrace(kDisabled, "> VerifySignature(\"%s\")", "/rec/a.wav");
}
BENCHMARK(BareFilter);

// The same line, written as its description reads.
void Snprintf(benchmark::State& state) {
  char line[1024];
  for (auto _ : state) {
    SYSTEMTIME now;
    GetLocalTime(&now);
    std::snprintf(line, sizeof line,
                  "%02hu/%02hu %02hu:%02hu:%02hu.%03hu %s (%02x,%c) %04x,%08lx,%05ld: "
                  "> VerifySignature(\"%s\")\n",
                  now.wDay, now.wMonth, now.wHour, now.wMinute, now.wSecond, now.wMilliseconds,
                  "Recorder", 0x27, '2', static_cast<unsigned>(getpid()), pthread_self(),
                  syscall(SYS_gettid), "/rec/a.wav");
    benchmark::DoNotOptimize(line);
  }
}
BENCHMARK(Snprintf);

// The least that a line is made of: a look at the coarse clock, the time, and the C library's text.
void Least(benchmark::State& state) {
  char line[1024];
  timespec coarse{};
  timespec now{};
  for (auto _ : state) {
    clock_gettime(CLOCK_REALTIME_COARSE, &coarse);
    clock_gettime(CLOCK_REALTIME, &now);
    std::snprintf(line, sizeof line, "> VerifySignature(\"%s\")", "/rec/a.wav");
    benchmark::DoNotOptimize(line);
    benchmark::DoNotOptimize(coarse);
    benchmark::DoNotOptimize(now);
  }
}
BENCHMARK(Least);

// Builds the line, as its null_sink doesn't.
class LineSink : public spdlog::sinks::base_sink<std::mutex> {
  void sink_it_(const spdlog::details::log_msg& message) override {
    spdlog::memory_buf_t line;
    formatter_->format(message, line);
    benchmark::DoNotOptimize(line.data());
  }
  void flush_() override {}
};

void Spdlog(benchmark::State& state, spdlog::level::level_enum level) {
  spdlog::logger logger("Recorder", std::make_shared<LineSink>());
  logger.set_pattern("%d/%m %H:%M:%S.%e %n (27,2) %P,%t: %v");
  for (auto _ : state) logger.log(level, "> VerifySignature(\"{}\")", "/rec/a.wav");
}
BENCHMARK_CAPTURE(Spdlog, Line, spdlog::level::info);
BENCHMARK_CAPTURE(Spdlog, Disabled, spdlog::level::debug);

}  // namespace

BENCHMARK_MAIN();
