// Every file-system call of an operation fails in turn, in every way; whatever fails, no recording
// and no setting is lost, no answer is wrong, and nothing is left behind.

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>

#include "ReliabilityTest.h"
#include "support/FileCalls.h"

namespace corvo_test {
namespace {

constexpr struct {
  const char* name;
  Fate fate;
} kFaults[] = {
    {"EIO", {EIO}},       {"ENOSPC", {ENOSPC}}, {"EACCES", {EACCES}},           {"EINTR", {EINTR}},
    {"EMFILE", {EMFILE}}, {"short", {0, true}}, {"full disk", {0, false, true}}};

// Whether each temporary file that is left is one that could not be deleted, or is kept because
// the recording's place couldn't be taken, and a failure line says so.
bool IsToldOrGone(const TraceLog& trace) {
  std::string told;
  for (const TraceLine& line : trace.Lines()) {
    const bool isReason = line.text.find(" deleting file ") != std::string::npos ||
                          line.text.find(" failed to copy file ") != std::string::npos;
    if (line.level == '2' && isReason) told += line.text;
  }
  const std::vector<std::string> names = TemporaryFiles();
  return std::all_of(names.begin(), names.end(),
                     [&](const std::string& name) { return told.find(name) != std::string::npos; });
}

class FaultLoopTest : public ReliabilityTest {
 protected:
  // Runs `attempt` with each call struck in each way, until a run passes all its calls. `attempt`
  // gets the call and its fate, and gives whether that has struck.
  template <class Attempt>
  void ForEachFault(Attempt attempt) {
    for (const auto& fault : kFaults) {
      for (int nth = 1;; ++nth) {
        SCOPED_TRACE(std::string(fault.name) + " at call " + std::to_string(nth));
        if (!attempt(nth, fault.fate)) break;
        ++m_counts.strikes;
      }
    }
  }

  // Sets up, acts under the fault, and checks; `check` gets the call that was struck, "" where
  // none was, and what was traced.
  template <class SetUp, class Act, class Check>
  void ForEachFault(SetUp setUp, Act act, Check check) {
    ForEachFault([&](int nth, const Fate& fate) {
      setUp();
      const std::size_t descriptors = OpenDescriptors();
      const TraceLog trace;
      std::optional<Fault> fault(
          std::in_place, "", nth, [&] { return fate; }, m_replacement);
      act();
      const std::string struck = fault->Struck();
      fault.reset();
      SCOPED_TRACE(struck);
      m_counts.Check(OpenDescriptors() == descriptors, "a descriptor leaks");
      check(struck, trace);
      return !struck.empty();
    });
  }

  Replacement m_replacement = Replacement::kMove;
  Counts m_counts{"faults"};

 private:
  static std::size_t OpenDescriptors() { return ListDirectory("/proc/self/fd").size(); }
};

TEST_F(FaultLoopTest, SealingLosesNothing) {
  for (const Replacement replacement : kReplacements) {
    m_replacement = replacement;
    bool result = false;
    const auto check = [&](const std::string& struck, const TraceLog& trace) {
      const std::string recorded = Recorded();
      const bool kept = IsKept();
      m_counts.Check(recorded == m_original || recorded == m_sealed || kept,
                     "the recording is lost");
      if (result) {
        m_counts.Check(recorded == m_sealed, "true, but it isn't sealed");
      } else {
        m_counts.Check(recorded == m_original || kept, "false, but it isn't as it was");
        m_counts.Check(!Failures(trace).empty(), "false, and nothing says why");
      }
      m_counts.Check(IsToldOrGone(trace), "a temporary file stays for no reason told");
      m_counts.Check(ListDirectory(ScratchPath("rec")).size() <= 1 || struck == "unlink",
                     "another file is left");
    };
    ForEachFault([&] { StartAgain(m_original); }, [&] { result = Seal(); }, check);
  }
}

TEST_F(FaultLoopTest, VerificationIsNeverWrong) {
  for (const bool good : {true, false}) {
    const std::string bytes = good ? m_sealed : With(m_sealed, 3500, "broken");
    bool result = false;
    const auto check = [&](const std::string& struck, const TraceLog& trace) {
      m_counts.Check(!result || good, "a broken recording verifies");
      m_counts.Check(result || !struck.empty() || !good, "a good one doesn't");
      m_counts.Check(Recorded() == bytes, "the recording has changed");
      m_counts.Check(IsToldOrGone(trace), "a temporary file stays for no reason told");
    };
    ForEachFault([&] { StartAgain(bytes); }, [&] { result = Verify(); }, check);
  }
}

// What can't be read is not called broken.
TEST_F(FaultLoopTest, ExaminationIsNeverWrong) {
  using Verdict = RecordingVerdict;
  for (const bool good : {true, false}) {
    StartAgain(good ? m_sealed : With(m_sealed, 3500, "broken"));
    Verdict verdict{};
    const auto check = [&](const std::string& struck, const TraceLog&) {
      m_counts.Check(verdict == (good ? Verdict::kOk : Verdict::kBroken) ||
                         (!struck.empty() && verdict == Verdict::kUnreadable),
                     "the verdict is wrong");
    };
    ForEachFault([] {}, [&] { verdict = Examine().verdict; }, check);
  }
}

TEST_F(FaultLoopTest, SettingsAreOldOrNew) {
  const std::string path = ScratchPath("faults.ini");
  for (const SettingsChange& change : kSettingsChanges) {
    SCOPED_TRACE(change.name);
    std::optional<CorvoIniData> store;
    const auto setUp = [&] {
      RemoveTree(path);
      WriteFile(path, "stale=1\n");
      store.emplace(path.c_str());
      change.WriteBefore(path);  // the store reads it again, under the fault
    };
    const auto check = [&](const std::string& struck, const TraceLog&) {
      const std::string entries = Entries(path);
      m_counts.Check(entries == change.before || entries == change.after, "settings are lost");
      m_counts.Check(!struck.empty() || ReadFile(path) == change.after,
                     "without a fault, it isn't written");
      m_counts.Check(store->Get(change.key) == change.value, "the store forgets the change");
    };
    ForEachFault(
        setUp, [&] { store->Set(change.key, change.value); }, check);
  }
}

// The configuration's start, in a process of its own each time.
TEST_F(FaultLoopTest, StartKeepsTheSettings) {
  const std::string path = std::string(CorvoSettingsDirectory()) + "/corvo_settings.ini";
  VMRegistry::global()->ReInitRegistry();  // what is spelled otherwise on the disk is now so here
  const std::string before = ReadFile(path);
  ForEachFault([&](int nth, const Fate& fate) {
    WriteFile(path, before);
    const pid_t child = ::fork();
    if (child == 0) {
      const Fault fault("", nth, [&] { return fate; });
      VMRegistry::global()->ReInitRegistry();
      ::_exit(fault.HasStruck() ? 1 : 0);
    }
    int status = 0;
    m_counts.Check(::waitpid(child, &status, 0) == child && WIFEXITED(status), "the host has died");
    const std::string after = Entries(path);
    for (std::size_t at = 0, end; (end = before.find('\n', at)) != std::string::npos;
         at = end + 1) {
      m_counts.Check(after.find(before.substr(at, end - at)) != std::string::npos,
                     "a setting is lost: " + before.substr(at, end - at));
    }
    return WEXITSTATUS(status) == 1;
  });
}

}  // namespace
}  // namespace corvo_test
