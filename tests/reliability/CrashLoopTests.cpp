// The process dies before, within and after every file-system call of an operation: what it leaves
// on the disk is a whole recording, or the settings as they were or are to be.

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "FileCalls.h"
#include "LarkspurCommon/CorvoIniData.h"
#include "ReliabilityTest.h"

namespace corvo_test {
namespace {

enum class Death { kBefore, kWithin, kAfter };  // within: a call that moves bytes has moved half
constexpr Death kDeaths[] = {Death::kBefore, Death::kAfter, Death::kWithin};

constexpr int kDied = 99;

class DiesAt : public FileCallObserver {
 public:
  DiesAt(int nth, Death death, Replacement replacement = Replacement::kMove)
      : m_left(nth), m_death(death), m_replacement(replacement) {}

  Fate Before(const FileCall& call) override {
    --m_left;
    if (m_left == 0 && m_death == Death::kBefore) ::_exit(kDied);
    const bool crosses = std::strcmp(call.name, "renameat2") == 0;
    return {m_replacement == Replacement::kCopy && crosses ? EXDEV : 0,
            m_left == 0 && m_death == Death::kWithin};
  }

  void After(const FileCall&, bool) override {
    if (m_left == 0) ::_exit(kDied);
  }

 private:
  int m_left;
  const Death m_death;
  const Replacement m_replacement;
};

// Whether `act`, in a process of its own, has died.
template <class Act>
bool Dies(Act act) {
  const pid_t child = ::fork();
  if (child == 0) {
    act();
    ::_exit(0);
  }
  int status = 0;
  EXPECT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status));
  return WEXITSTATUS(status) == kDied;
}

// Runs `attempt` for each call and death, until a run makes no more calls; it gives whether it
// died.
template <class Attempt>
void ForEachDeath(Counts& counts, Attempt attempt) {
  for (const Death death : kDeaths) {
    for (int nth = 1;; ++nth) {
      SCOPED_TRACE("death " + std::to_string(static_cast<int>(death)) + " at call " +
                   std::to_string(nth));
      if (!attempt(nth, death)) break;
      ++counts.strikes;
    }
  }
}

using CrashLoopTest = ReliabilityTest;

TEST_F(CrashLoopTest, ARecordingIsWholeUnderOneOfItsNames) {
  Counts counts{"crashes in sealing"};
  for (const Replacement replacement : kReplacements) {
    ForEachDeath(counts, [&](int nth, Death death) {
      StartAgain(m_original);
      const bool died = Dies([&] {
        DiesAt crash(nth, death, replacement);
        Seal();
      });
      const std::string recorded = Recorded();
      counts.Check(recorded == m_original || recorded == m_sealed || (recorded.empty() && IsKept()),
                   "the recording is lost");
      counts.Check(TemporaryFiles().size() <= 1, "more than one temporary file is left");
      counts.Check(died || recorded == m_sealed, "without a crash, it isn't sealed");
      return died;
    });
  }
}

TEST_F(CrashLoopTest, VerificationLeavesTheRecordingAlone) {
  Counts counts{"crashes in verification"};
  ForEachDeath(counts, [&](int nth, Death death) {
    StartAgain(m_sealed);
    const bool died = Dies([&] {
      DiesAt crash(nth, death);
      Verify();
    });
    counts.Check(Recorded() == m_sealed, "the recording has changed");
    counts.Check(!IsKept(), "what is left passes for a sealed recording");
    return died;
  });
}

TEST_F(CrashLoopTest, SettingsAreOldOrNew) {
  Counts counts{"crashes in changes of settings"};
  const std::string path = ScratchPath("crashes.ini");
  for (const SettingsChange& change : kSettingsChanges) {
    SCOPED_TRACE(change.name);
    ForEachDeath(counts, [&](int nth, Death death) {
      ReplaceByOlder(path, change.before);
      CorvoIniData store(path.c_str());
      if (death == Death::kWithin) return false;  // a death can't cut a write of so few bytes
      const bool died = Dies([&] {
        DiesAt crash(nth, death);
        store.Set(change.key, change.value);
      });
      const std::string entries = Entries(path);
      counts.Check(entries == change.before || entries == change.after, "settings are lost");
      return died;
    });
  }
}

}  // namespace
}  // namespace corvo_test
