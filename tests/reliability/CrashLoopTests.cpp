// The process dies before, within and after every file-system call of an operation: what it leaves
// on the disk is a whole recording, or the settings as they were or are to be.

#include <sys/wait.h>
#include <unistd.h>

#include "ReliabilityTest.h"
#include "support/FileCalls.h"

namespace corvo_test {
namespace {

enum class Death { kBefore, kWithin, kAfter };  // within: a call that moves bytes has moved half

constexpr int kDied = 99;

class DiesAt : public FileCallObserver {
 public:
  DiesAt(int nth, Death death, Replacement replacement_)
      : FileCallObserver(replacement_), m_left(nth), m_death(death) {}

  Fate Before(const FileCall&) override {
    --m_left;
    if (m_left == 0 && m_death == Death::kBefore) ::_exit(kDied);
    return {0, m_left == 0 && m_death == Death::kWithin};
  }

  void After(const FileCall&, bool) override {
    if (m_left == 0) ::_exit(kDied);
  }

 private:
  int m_left;
  const Death m_death;
};

class CrashLoopTest : public ReliabilityTest {
 protected:
  // Sets up, has `act` die in a process of its own, and checks what it leaves; so for each call and
  // death, until a run makes no more calls. `check` gets whether it died.
  template <class SetUp, class Act, class Check>
  void ForEachDeath(SetUp setUp, Act act, Check check) {
    for (const Death death : m_deaths) {
      bool died = true;
      for (int nth = 1; died; ++nth) {
        SCOPED_TRACE("death " + std::to_string(static_cast<int>(death)) + " at call " +
                     std::to_string(nth));
        setUp();
        const pid_t child = ::fork();
        if (child == 0) {
          const DiesAt crash(nth, death, m_replacement);
          act();
          ::_exit(0);
        }
        int status = 0;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status));
        died = WEXITSTATUS(status) == kDied;
        check(died);
        if (died) ++m_counts.strikes;
      }
    }
  }

  std::vector<Death> m_deaths{Death::kBefore, Death::kAfter, Death::kWithin};
  Replacement m_replacement = Replacement::kMove;
  Counts m_counts{"crashes"};
};

TEST_F(CrashLoopTest, ARecordingIsWholeUnderOneOfItsNames) {
  for (const Replacement replacement : kReplacements) {
    m_replacement = replacement;
    ForEachDeath(
        [&] { StartAgain(m_original); }, [&] { Seal(); },
        [&](bool died) {
          const std::string recorded = Recorded();
          m_counts.Check(
              recorded == m_original || recorded == m_sealed || (recorded.empty() && IsKept()),
              "the recording is lost");
          m_counts.Check(TemporaryFiles().size() <= 1, "more than one temporary file is left");
          m_counts.Check(died || recorded == m_sealed, "without a crash, it isn't sealed");
        });
  }
}

TEST_F(CrashLoopTest, VerificationLeavesTheRecordingAlone) {
  ForEachDeath([&] { StartAgain(m_sealed); }, [&] { Verify(); },
               [&](bool) {
                 m_counts.Check(Recorded() == m_sealed, "the recording has changed");
                 m_counts.Check(!IsKept(), "what is left passes for a sealed recording");
               });
}

TEST_F(CrashLoopTest, SettingsAreOldOrNew) {
  const std::string path = ScratchPath("crashes.ini");
  m_deaths.pop_back();  // a death can't cut a write of so few bytes
  for (const SettingsChange& change : kSettingsChanges) {
    SCOPED_TRACE(change.name);
    ForEachDeath([&] { change.WriteBefore(path); },
                 [&] { CorvoIniData(path.c_str()).Set(change.key, change.value); },
                 [&](bool) {
                   const std::string entries = Entries(path);
                   m_counts.Check(entries == change.before || entries == change.after,
                                  "settings are lost");
                 });
  }
}

}  // namespace
}  // namespace corvo_test
