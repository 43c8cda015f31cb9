// Verifies an archive.

#include "tools/corvo/archive/VerifyArchive.h"

#include <iostream>
#include <optional>

#include "tools/corvo/InputError.h"
#include "tools/corvo/archive/Check.h"
#include "tools/corvo/archive/HostCheck.h"
#include "tools/corvo/archive/Interruption.h"
#include "tools/corvo/archive/Journal.h"
#include "tools/corvo/archive/Names.h"
#include "tools/corvo/archive/OrderedWork.h"
#include "tools/corvo/archive/Progress.h"

namespace corvo {
namespace {

// What a worker hands on.
struct Work {
  Result result;
  bool isKnown = false;  // from the journal
};

// The seal doesn't look at all of the layout; a strict run does.
void BeStrict(RecordingExamination& found) {
  if (found.verdict != RecordingVerdict::kOk || found.departureCount == 0) return;
  found.verdict = RecordingVerdict::kMalformed;
  found.reason = "intact, but it departs from the sealed layout:";
  for (int i = 0; i < found.departureCount; ++i) {
    found.reason += i == 0 ? " " : ", ";
    found.reason += found.departures[i].field;
  }
}

class Run {
 public:
  explicit Run(const VerifyPlan& plan)
      : m_plan(plan), m_inputs(plan.inputs), m_progress(plan.inputs) {
    if (!plan.journal.empty()) m_journal.emplace(plan.journal, plan.options);
  }

  Outcome Do() {
    NoteInterruptions();
    WorkThrough();
    if (const int signal = NotedSignal(); signal != 0) throw Interrupted(signal, Note());
    return Finish();
  }

 private:
  void WorkThrough() {
    OrderedWork<Input, Work> work;
    work.next = [this](Input& input) { return m_inputs.Next(input); };
    work.work = [this](const Input& input) { return Verify(input); };
    work.put = [this](Work& done) { Put(done); };
    work.tick = [this] { m_progress.Draw(); };
    work.mustStop = [] { return NotedSignal() != 0; };
    work.stopNext = [this] { m_inputs.Stop(); };
    work.Run(m_plan.jobs);
    m_progress.Erase();
  }

  Work Verify(const Input& input) const {
    const std::optional<Result> old = m_journal ? m_journal->Find(input) : std::nullopt;
    if (!input.refusal.empty()) return {Refuse(input), false};
    const RecordingFile file(input.name);
    if (old && file.State() && old->state == StateText(*file.State())) return {*old, true};
    RecordingExamination found;
    Check(file, found, m_plan.options.throughHostCall ? AskLibrary : Examine);
    if (m_plan.options.strict) BeStrict(found);
    return {MakeResult(input, file.State(), found), false};
  }

  Result Refuse(const Input& input) const {
    RecordingExamination found;
    found.reason = input.refusal;
    return MakeResult(input, {}, found);
  }

  Result MakeResult(const Input& input, const std::optional<FileState>& state,
                    const RecordingExamination& found) const {
    Result result;
    result.input = input.number;
    result.name = input.name;
    result.verdict = found.verdict;
    result.reason = found.reason;
    if (state) result.size = state->size;
    if (m_plan.print.json || m_journal) result.json = JsonLine(result, state, found);
    return result;
  }

  void Put(const Work& done) {
    const Result& result = done.result;
    m_counts.Add(result.verdict);
    if (m_journal && !done.isKnown) m_journal->Add(result);
    if (IsPrinted(m_plan.print, result)) m_progress.MakeRoom();
    Print(m_plan.print, result);
    m_progress.Add(result.size, done.isKnown);
    m_progress.Draw();
  }

  Outcome Finish() {
    const RunTotals totals{m_plan.options, m_counts, m_inputs.Seen()};
    if (m_journal) m_journal->Finish(totals);
    Print(m_plan.print, totals);
    for (const std::string& line : m_inputs.Hidden()) std::cerr << "corvo: " << line << '\n';
    if (totals.seen.count == 0) throw InputError("nothing to check");
    return m_inputs.Hidden().empty() ? m_counts.Worst() : Outcome::kBadInput;
  }

  std::string Note() const {
    const std::string done = "interrupted after " + std::to_string(m_counts.All()) + " inputs; ";
    if (!m_journal) return done + "a run with --resume JOURNAL can be continued";
    return done + "the same command with --resume " + NameInLine(m_plan.journal) + " continues";
  }

  const VerifyPlan& m_plan;
  Inputs m_inputs;
  std::optional<Journal> m_journal;
  Progress m_progress;
  VerdictCounts m_counts;
};

}  // namespace

Outcome VerifyArchive(const VerifyPlan& plan) {
  return Run(plan).Do();
}

}  // namespace corvo
