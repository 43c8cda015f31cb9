// Reading 10 MB of text line by line in text mode, beside POSIX getline. Lines of one to 99
// characters, as settings and logs have them, in the page cache.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "LarkspurCommon/FileHandler.h"
#include "bench/TemporaryFile.h"

namespace {

constexpr std::size_t kSize = 10'000'000;

std::string Lines() {
  std::string text;
  for (std::size_t i = 0; text.size() < kSize; ++i) text.append(1 + i * 37 % 99, 'a') += '\n';
  return text;
}

void TextModeLines(benchmark::State& state) {
  const TemporaryFile text(Lines());
  TFileHandler file;
  if (!file.Open(text.Path(), OFM_READ, NLM_TEXT, false, false)) std::abort();
  char line[1024];
  for (auto _ : state) {
    file.MoveToPosition(0, 0);
    DWORD length;
    for (file.Read(line, sizeof line, &length); !file.EndOfFile();
         file.Read(line, sizeof line, &length)) {
      benchmark::DoNotOptimize(line);
    }
  }
}
BENCHMARK(TextModeLines)->Unit(benchmark::kMillisecond);

void GetLine(benchmark::State& state) {
  const TemporaryFile text(Lines());
  std::FILE* const file = std::fopen(text.Path(), "r");
  char* line = nullptr;
  std::size_t room = 0;
  for (auto _ : state) {
    std::rewind(file);
    while (::getline(&line, &room, file) != -1) benchmark::DoNotOptimize(line);
  }
  std::free(line);
  std::fclose(file);
}
BENCHMARK(GetLine)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
