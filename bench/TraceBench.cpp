// What a trace call costs: one that the filter stops, a line to a hook that does nothing, and a
// traced function. Beside it what a host would write without this module. Unit: one call or line.

#include <benchmark/benchmark.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <mutex>

#include "LarkspurCommon/debug.h"
#include "platform/HostServices.h"
#include "platform/Win32Compat.h"
#ifdef CORVO_BENCH_SPDLOG
#include <spdlog/sinks/base_sink.h>
#include <spdlog/spdlog.h>
#endif

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

// Part of every line, and the host's to make faster.
BENCHMARK_F(Trace, PartGetLocalTime)(benchmark::State& state) {
  SYSTEMTIME now;
  for (auto _ : state) {
    GetLocalTime(&now);
    benchmark::DoNotOptimize(now);
  }
}

// The same line, written as its description reads.
BENCHMARK_F(Trace, PeerSnprintf)(benchmark::State& state) {
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

#ifdef CORVO_BENCH_SPDLOG
// Builds the line, as its null_sink doesn't.
class LineSink : public spdlog::sinks::base_sink<std::mutex> {
  void sink_it_(const spdlog::details::log_msg& message) override {
    spdlog::memory_buf_t line;
    formatter_->format(message, line);
    benchmark::DoNotOptimize(line.data());
  }
  void flush_() override {}
};

void PeerSpdlog(benchmark::State& state, spdlog::level::level_enum level) {
  spdlog::logger logger("Recorder", std::make_shared<LineSink>());
  logger.set_pattern("%d/%m %H:%M:%S.%e %n (27,2) %P,%t: %v");
  for (auto _ : state) logger.log(level, "> VerifySignature(\"{}\")", "/rec/a.wav");
}
BENCHMARK_CAPTURE(PeerSpdlog, Line, spdlog::level::info);
BENCHMARK_CAPTURE(PeerSpdlog, Disabled, spdlog::level::debug);
#endif

}  // namespace

BENCHMARK_MAIN();
