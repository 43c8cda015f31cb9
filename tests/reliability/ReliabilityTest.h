#ifndef TESTS_RELIABILITY_RELIABILITYTEST_H
#define TESTS_RELIABILITY_RELIABILITYTEST_H

#include <cstdio>
#include <string>

#include "EngineTest.h"

namespace corvo_test {

// How the sealed copy takes the recording's place.
enum class Replacement { kMove, kCopy };
constexpr Replacement kReplacements[] = {Replacement::kMove, Replacement::kCopy};

// A recording that is sealed again and again, each time from the same bytes into the same bytes.
class ReliabilityTest : public EngineTest {
 protected:
  ReliabilityTest() : m_original(G726Recording(Audio(2500))) {
    Record(m_original);
    EXPECT_TRUE(Seal());
    m_sealed = Recorded();
  }

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

  const std::string m_original;
  std::string m_sealed;
};

// The settings file of a store that changes, before and after.
struct SettingsChange {
  const char* name;
  std::string before;
  const char* key;
  const char* value;
  std::string after;
};

inline const SettingsChange kSettingsChanges[] = {
    {"grows", "A=1\r\nB=2\r\nC=3\r\n", "b", "a longer value", "A=1\r\nB=a longer value\r\nC=3\r\n"},
    {"shrinks", "A=1\r\nB=a=longer=value=than=that\r\nC=3\r\n", "b", "2", "A=1\r\nB=2\r\nC=3\r\n"},
    {"stays as long", "A=1\r\nB=2\r\nC=3\r\n", "b", "4", "A=1\r\nB=4\r\nC=3\r\n"},
    {"is new", "", "b", "2", "B=2\r\n"},
};

// Makes `bytes` a settings file that was written long ago; none where there are no bytes.
void ReplaceByOlder(const std::string& path, const std::string& bytes);

// The entries of a settings file as a store reads them.
std::string Entries(const std::string& path);

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
