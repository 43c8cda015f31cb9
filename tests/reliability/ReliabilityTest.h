#ifndef TESTS_RELIABILITY_RELIABILITYTEST_H
#define TESTS_RELIABILITY_RELIABILITYTEST_H

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <list>
#include <string>

#include "EngineTest.h"
#include "LarkspurCommon/CorvoIniData.h"

namespace corvo_test {

// A recording that is sealed again and again, each time from the same bytes into the same bytes.
class ReliabilityTest : public SealedTest {
 protected:
  void StartAgain(const std::string& bytes) {
    RemoveTree(ScratchPath("rec"));
    MakeDirectory(ScratchPath("rec"));
    Record(bytes);
    EmptyTemporaryDirectory();
  }

  // Whether a temporary file is the whole sealed recording.
  bool IsKept() const {
    for (const std::string& name : TemporaryFiles()) {
      if (ReadFile(TemporaryDirectory() + "/" + name) == m_sealed) return true;
    }
    return false;
  }
};

// The settings file of a store that changes, before and after.
struct SettingsChange {
  const char* name;
  std::string before;
  const char* key;
  const char* value;
  std::string after;

  // Makes `before` a settings file that was written long ago; none where it is empty.
  void WriteBefore(const std::string& path) const {
    RemoveTree(path);
    if (before.empty()) return;
    WriteFile(path, before);
    const auto written = std::filesystem::last_write_time(path);
    std::filesystem::last_write_time(path, written - std::chrono::hours(1));
  }
};

inline const SettingsChange kSettingsChanges[] = {
    {"grows", "A=1\r\nB=2\r\nC=3\r\n", "b", "a longer value", "A=1\r\nB=a longer value\r\nC=3\r\n"},
    {"shrinks", "A=1\r\nB=a=longer=value=than=that\r\nC=3\r\n", "b", "2", "A=1\r\nB=2\r\nC=3\r\n"},
    {"stays as long", "A=1\r\nB=2\r\nC=3\r\n", "b", "4", "A=1\r\nB=4\r\nC=3\r\n"},
    {"is new", "", "b", "2", "B=2\r\n"},
};

// The entries of a settings file as a store reads them.
inline std::string Entries(const std::string& path) {
  CorvoIniData store(path.c_str());
  std::list<tstring> keys;
  std::list<tstring> values;
  store.GetKeysAndValues(keys, values);
  std::string entries;
  for (const tstring& key : keys) {
    entries += key + "=" + values.front() + "\r\n";
    values.pop_front();
  }
  return entries;
}

// What a loop has done, shown as its test ends.
struct Counts {
  const char* what;
  int strikes = 0;
  int checks = 0;

  // Tells a check that failed; the test's other checks go on.
  void Check(bool holds, const std::string& what_) {
    ++checks;
    if (!holds) ADD_FAILURE() << what_;
  }
  ~Counts() { std::printf("[   COUNT  ] %d %s, %d invariants checked\n", strikes, what, checks); }
};

}  // namespace corvo_test

#endif
