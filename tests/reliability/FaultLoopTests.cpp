// Every file-system call of an operation fails in turn, in every way; whatever fails, no recording
// and no setting is lost, no answer is wrong, and nothing is left behind.

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "FileCalls.h"
#include "LarkspurCommon/CorvoIniData.h"
#include "ReliabilityTest.h"

namespace corvo_test {
namespace {

constexpr struct {
  const char* name;
  Fate fate;
} kFaults[] = {
    {"EIO", {EIO}},       {"ENOSPC", {ENOSPC}}, {"EACCES", {EACCES}},           {"EINTR", {EINTR}},
    {"EMFILE", {EMFILE}}, {"short", {0, true}}, {"full disk", {0, false, true}}};

// Strikes the `nth` call, from 1; a full disk stays full. Where recordings are replaced by a copy,
// no rename crosses over.
class OneFault : public FileCallObserver {
 public:
  OneFault(int nth, const Fate& fate, Replacement replacement = Replacement::kMove)
      : m_left(nth), m_fate(fate), m_replacement(replacement) {}

  Fate Before(const FileCall& call) override {
    const bool crosses = std::strcmp(call.name, "renameat2") == 0;
    if (--m_left == 0) {
      m_struck = call.name;
      m_struckRemoval = Removes(call);
      return m_fate;
    }
    if (m_left < 0 && m_fate.isFull) return m_fate;
    return {m_replacement == Replacement::kCopy && crosses ? EXDEV : 0};
  }

  bool HasStruck() const { return m_left <= 0; }
  const char* Struck() const { return m_struck; }
  bool StruckRemoval() const { return m_struckRemoval; }

 private:
  int m_left;
  const Fate m_fate;
  const Replacement m_replacement;
  const char* m_struck = "";
  bool m_struckRemoval = false;
};

std::size_t OpenDescriptors() {
  return ListDirectory("/proc/self/fd").size();
}

// Runs `attempt` with each call struck in each way, until a run passes all its calls. `attempt`
// sets up, makes the fault, acts and checks; it gives whether the fault has struck.
template <class Attempt>
void ForEachFault(Counts& counts, Attempt attempt) {
  for (const auto& fault : kFaults) {
    for (int nth = 1;; ++nth) {
      SCOPED_TRACE(std::string(fault.name) + " at call " + std::to_string(nth));
      if (!attempt(nth, fault.fate)) break;
      ++counts.strikes;
    }
  }
}

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

using FaultLoopTest = ReliabilityTest;

TEST_F(FaultLoopTest, SealingLosesNothing) {
  Counts counts{"faults in sealing"};
  for (const Replacement replacement : kReplacements) {
    ForEachFault(counts, [&](int nth, const Fate& fate) {
      StartAgain(m_original);
      const std::size_t descriptors = OpenDescriptors();
      TraceLog trace;
      bool result = false;
      bool struck = false;
      bool removal = false;
      const char* call = "";
      {
        OneFault fault(nth, fate, replacement);
        result = Seal();
        struck = fault.HasStruck();
        removal = fault.StruckRemoval();
        call = fault.Struck();
      }
      SCOPED_TRACE(call);
      const std::string recorded = Recorded();
      const bool kept = IsKept();
      counts.Check(recorded == m_original || recorded == m_sealed || kept, "the recording is lost");
      if (result) {
        counts.Check(recorded == m_sealed, "true, but it isn't sealed");
      } else {
        counts.Check(recorded == m_original || kept, "false, but it isn't as it was");
        counts.Check(!Failures(trace).empty(), "false, and nothing says why");
      }
      counts.Check(IsToldOrGone(trace), "a temporary file stays for no reason told");
      counts.Check(ListDirectory(ScratchPath("rec")).size() <= 1 || removal,
                   "another file is left");
      counts.Check(OpenDescriptors() == descriptors, "a descriptor leaks");
      return struck;
    });
  }
}

TEST_F(FaultLoopTest, VerificationIsNeverWrong) {
  Counts counts{"faults in verification"};
  const std::string broken = With(m_sealed, 3500, "broken");
  for (const std::string& bytes : {m_sealed, broken}) {
    ForEachFault(counts, [&](int nth, const Fate& fate) {
      StartAgain(bytes);
      const std::size_t descriptors = OpenDescriptors();
      TraceLog trace;
      bool result = false;
      bool struck = false;
      {
        OneFault fault(nth, fate);
        result = Verify();
        struck = fault.HasStruck();
      }
      counts.Check(!result || bytes == m_sealed, "a broken recording verifies");
      counts.Check(result || struck || bytes == broken, "a good one doesn't");
      counts.Check(Recorded() == bytes, "the recording has changed");
      counts.Check(IsToldOrGone(trace), "a temporary file stays for no reason told");
      counts.Check(OpenDescriptors() == descriptors, "a descriptor leaks");
      return struck;
    });
  }
}

// What can't be read is not called broken.
TEST_F(FaultLoopTest, ExaminationIsNeverWrong) {
  Counts counts{"faults in examinations"};
  for (const bool good : {true, false}) {
    StartAgain(good ? m_sealed : With(m_sealed, 3500, "broken"));
    ForEachFault(counts, [&](int nth, const Fate& fate) {
      const std::size_t descriptors = OpenDescriptors();
      RecordingExamination found;
      bool struck = false;
      {
        OneFault fault(nth, fate);
        VerifyRecording().Examine(m_path.c_str(), found);
        struck = fault.HasStruck();
      }
      const RecordingVerdict verdict = good ? RecordingVerdict::kOk : RecordingVerdict::kBroken;
      counts.Check(
          found.verdict == verdict || (struck && found.verdict == RecordingVerdict::kUnreadable),
          "the verdict is wrong");
      counts.Check(OpenDescriptors() == descriptors, "a descriptor leaks");
      return struck;
    });
  }
}

TEST_F(FaultLoopTest, SettingsAreOldOrNew) {
  Counts counts{"faults in changes of settings"};
  const std::string path = ScratchPath("faults.ini");
  for (const SettingsChange& change : kSettingsChanges) {
    SCOPED_TRACE(change.name);
    ForEachFault(counts, [&](int nth, const Fate& fate) {
      RemoveTree(path);
      WriteFile(path, "stale=1\n");
      CorvoIniData store(path.c_str());
      ReplaceByOlder(path, change.before);  // the store reads it again, under the fault
      const std::size_t descriptors = OpenDescriptors();
      bool struck = false;
      {
        OneFault fault(nth, fate);
        store.Set(change.key, change.value);
        struck = fault.HasStruck();
      }
      const std::string entries = Entries(path);
      counts.Check(entries == change.before || entries == change.after, "settings are lost");
      counts.Check(struck || ReadFile(path) == change.after, "without a fault, it isn't written");
      counts.Check(store.Get(change.key) == change.value, "the store forgets the change");
      counts.Check(OpenDescriptors() == descriptors, "a descriptor leaks");
      return struck;
    });
  }
}

// The configuration's start, in a process of its own each time.
TEST_F(FaultLoopTest, StartKeepsTheSettings) {
  Counts counts{"faults in the configuration's start"};
  const std::string path = std::string(CorvoSettingsDirectory()) + "/corvo_settings.ini";
  VMRegistry::global()->ReInitRegistry();  // what is spelled otherwise on the disk is now so here
  const std::string before = ReadFile(path);
  ForEachFault(counts, [&](int nth, const Fate& fate) {
    WriteFile(path, before);
    const pid_t child = ::fork();
    if (child == 0) {
      OneFault fault(nth, fate);
      VMRegistry::global()->ReInitRegistry();
      ::_exit(fault.HasStruck() ? 1 : 0);
    }
    int status = 0;
    counts.Check(::waitpid(child, &status, 0) == child && WIFEXITED(status), "the host has died");
    const std::string after = Entries(path);
    for (std::size_t at = 0, end; (end = before.find('\n', at)) != std::string::npos;
         at = end + 1) {
      counts.Check(after.find(before.substr(at, end - at)) != std::string::npos,
                   "a setting is lost: " + before.substr(at, end - at));
    }
    return WEXITSTATUS(status) == 1;
  });
}

}  // namespace
}  // namespace corvo_test
