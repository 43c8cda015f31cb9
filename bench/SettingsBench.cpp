// The settings store over a file of 200 keys: reading it, a look-up, a change. Beside it two
// libraries that read and write such files, the `stat` that a look-up can't do without,
// and all that one is made of.

#define _TIME_BITS 64     // a stat that works after 2038, as ours does
#define SI_NO_CONVERSION  // bytes are kept as they are

#include <INIReader.h>
#include <SimpleIni.h>
#include <benchmark/benchmark.h>
#include <sys/stat.h>

#include <cstdlib>
#include <locale>
#include <map>
#include <string>

#include "LarkspurCommon/CorvoIniData.h"
#include "bench/BarePeers.h"
#include "bench/TemporaryFile.h"

namespace {

constexpr int kKeys = 200;

std::string Key(int i) {
  return "SETTINGNUMBER" + std::to_string(1000 + i);
}

std::string Value(int i) {
  return "/var/rec/value/" + std::to_string(i * 7919);
}

std::string Settings() {
  std::string text;
  for (int i = 0; i < kKeys; ++i) text += Key(i) + '=' + Value(i) + "\r\n";
  return text;
}

void LoadCorvo(benchmark::State& state) {
  const TemporaryFile file(Settings());
  for (auto _ : state) {
    CorvoIniData store(file.Path());
    benchmark::DoNotOptimize(store);
  }
}
BENCHMARK(LoadCorvo);

void LoadInih(benchmark::State& state) {
  const TemporaryFile file(Settings());
  for (auto _ : state) {
    INIReader reader(file.Path());
    benchmark::DoNotOptimize(reader);
  }
}
BENCHMARK(LoadInih);

void GetCorvo(benchmark::State& state) {
  const TemporaryFile file(Settings());
  CorvoIniData store(file.Path());
  for (auto _ : state) benchmark::DoNotOptimize(store.Get("SETTINGNUMBER1117"));
}
BENCHMARK(GetCorvo);

void GetStat(benchmark::State& state) {
  const TemporaryFile file(Settings());
  struct stat status;
  for (auto _ : state) {
    ::stat(file.Path(), &status);
    benchmark::DoNotOptimize(status);
  }
}
BENCHMARK(GetStat);

// The least that a look-up is made of: the lock, the `stat`, the upper-case key, the search and the
// copy of the value.
void GetLeast(benchmark::State& state) {
  const TemporaryFile file(Settings());
  std::map<std::string, std::string> entries;
  for (int i = 0; i < kKeys; ++i) entries[Key(i)] = Value(i);
  StampedMutex lock;
  const auto& facet = std::use_facet<std::ctype<char>>(std::locale::classic());
  struct stat status;
  for (auto _ : state) {
    lock.LockAt("bench", 1, true);
    ::stat(file.Path(), &status);
    std::string key("SETTINGNUMBER1117");
    facet.toupper(key.data(), key.data() + key.size());
    const std::string value = entries.find(key)->second;
    lock.UnlockAt("bench", 2, nullptr, nullptr, true);
    benchmark::DoNotOptimize(value.c_str());
    benchmark::DoNotOptimize(status);
  }
}
BENCHMARK(GetLeast);

const char* NextValue(int& count) {
  return ++count % 2 == 0 ? "/var/rec/value/1" : "/var/rec/value/2";
}

void SetCorvo(benchmark::State& state) {
  const TemporaryFile file(Settings());
  CorvoIniData store(file.Path());
  int count = 0;
  for (auto _ : state) store.Set("SETTINGNUMBER1117", NextValue(count));
}
BENCHMARK(SetCorvo);

void SetSimpleIni(benchmark::State& state) {
  const TemporaryFile file(Settings());
  CSimpleIniA store;
  if (store.LoadFile(file.Path()) < 0) std::abort();
  int count = 0;
  for (auto _ : state) {
    store.SetValue("", "SETTINGNUMBER1117", NextValue(count));
    store.SaveFile(file.Path(), false);
  }
}
BENCHMARK(SetSimpleIni);

}  // namespace

BENCHMARK_MAIN();
