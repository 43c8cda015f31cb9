// The settings store over a file of 200 keys: reading it, a look-up, a change. Beside it two
// libraries that read and write such files, and the `stat` that a look-up can't do without.

#define _TIME_BITS 64     // a stat that works after 2038, as ours does
#define SI_NO_CONVERSION  // bytes are kept as they are

#include <INIReader.h>
#include <SimpleIni.h>
#include <benchmark/benchmark.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "LarkspurCommon/CorvoIniData.h"

namespace {

constexpr int kKeys = 200;

// The file, removed at the end.
class SettingsFile {
 public:
  SettingsFile() {
    const int file = ::mkstemp(m_path.data());
    if (file == -1) std::abort();
    ::close(file);
    std::ofstream out(m_path);
    for (int i = 0; i < kKeys; ++i) {
      out << "SETTINGNUMBER" << 1000 + i << "=/var/rec/value/" << i * 7919 << "\r\n";
    }
  }
  ~SettingsFile() { ::unlink(m_path.c_str()); }
  SettingsFile(const SettingsFile&) = delete;
  SettingsFile& operator=(const SettingsFile&) = delete;
  const char* Path() const { return m_path.c_str(); }

 private:
  std::string m_path = "/tmp/settings-bench-XXXXXX";
};

void LoadCorvo(benchmark::State& state) {
  const SettingsFile file;
  for (auto _ : state) {
    CorvoIniData store(file.Path());
    benchmark::DoNotOptimize(store);
  }
}
BENCHMARK(LoadCorvo);

void LoadInih(benchmark::State& state) {
  const SettingsFile file;
  for (auto _ : state) {
    INIReader reader(file.Path());
    benchmark::DoNotOptimize(reader);
  }
}
BENCHMARK(LoadInih);

void GetCorvo(benchmark::State& state) {
  const SettingsFile file;
  CorvoIniData store(file.Path());
  for (auto _ : state) benchmark::DoNotOptimize(store.Get("SETTINGNUMBER1117"));
}
BENCHMARK(GetCorvo);

void GetStat(benchmark::State& state) {
  const SettingsFile file;
  struct stat status;
  for (auto _ : state) {
    ::stat(file.Path(), &status);
    benchmark::DoNotOptimize(status);
  }
}
BENCHMARK(GetStat);

const char* NextValue(int& count) {
  return ++count % 2 == 0 ? "/var/rec/value/1" : "/var/rec/value/2";
}

void SetCorvo(benchmark::State& state) {
  const SettingsFile file;
  CorvoIniData store(file.Path());
  int count = 0;
  for (auto _ : state) store.Set("SETTINGNUMBER1117", NextValue(count));
}
BENCHMARK(SetCorvo);

void SetSimpleIni(benchmark::State& state) {
  const SettingsFile file;
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
