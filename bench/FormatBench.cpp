// What formatting into a text costs: an error line that fits the first try, and a text that
// doesn't. Beside it the bare formatter into a buffer on the stack, {fmt}'s printf-style
// call, and the bare formatter with the copy that sets a text.

#include <benchmark/benchmark.h>
#include <fmt/printf.h>

#include <cstdio>
#include <string>

#include "LarkspurCommon/tstring.h"

namespace {

constexpr char kErrorLine[] =
    "%s - failed to delete file \"%s\", error \"%s\" has occurred after %d of %lu.";
constexpr char kLongText[] = "%s: %d\n";

const char* const kPath = "/var/rec/2024/05/17.wav";
const char* const kError = "Permission denied";
const std::string kLong(1990, 'x');

// `call` gets a format and its arguments.
template <class Call>
void ErrorLine(benchmark::State& state, Call call) {
  for (auto _ : state) call(kErrorLine, "Seal", kPath, kError, 17, 4711UL);
}

template <class Call>
void LongText(benchmark::State& state, Call call) {
  for (auto _ : state) call(kLongText, kLong.c_str(), 4711);
}

#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"

const auto kCorvo = [](const char* format, auto... values) {
  static tstring text;  // with its memory, as the stack's is there
  text.Format(format, values...);
  benchmark::DoNotOptimize(text.c_str());
};
const auto kCorvoNew = [](const char* format, auto... values) {
  tstring text;  // as fmt makes one
  text.Format(format, values...);
  benchmark::DoNotOptimize(text.c_str());
};
const auto kSnprintf = [](const char* format, auto... values) {
  char text[4096];
  std::snprintf(text, sizeof text, format, values...);
  benchmark::DoNotOptimize(static_cast<const char*>(text));
};
// The least that sets a text: the arguments may point into it.
const auto kCopied = [](const char* format, auto... values) {
  static std::string text;
  char made[4096];
  const int length = std::snprintf(made, sizeof made, format, values...);
  text.assign(made, static_cast<std::size_t>(length));
  benchmark::DoNotOptimize(text.c_str());
};
const auto kFmt = [](const char* format, auto... values) {
  const std::string text = fmt::sprintf(format, values...);
  benchmark::DoNotOptimize(text.c_str());
};

BENCHMARK_CAPTURE(ErrorLine, Corvo, kCorvo);
BENCHMARK_CAPTURE(ErrorLine, CorvoNew, kCorvoNew);
BENCHMARK_CAPTURE(ErrorLine, Snprintf, kSnprintf);
BENCHMARK_CAPTURE(ErrorLine, Copied, kCopied);
BENCHMARK_CAPTURE(ErrorLine, Fmt, kFmt);
BENCHMARK_CAPTURE(LongText, Corvo, kCorvo);
BENCHMARK_CAPTURE(LongText, CorvoNew, kCorvoNew);
BENCHMARK_CAPTURE(LongText, Snprintf, kSnprintf);
BENCHMARK_CAPTURE(LongText, Copied, kCopied);
BENCHMARK_CAPTURE(LongText, Fmt, kFmt);

}  // namespace

BENCHMARK_MAIN();
