// Holds an archive against a manifest.

#include "tools/corvo/trust/CheckManifest.h"

#include <errno.h>

#include <algorithm>
#include <array>
#include <iostream>

#include "tools/corvo/InputError.h"
#include "tools/corvo/archive/Interruption.h"
#include "tools/corvo/archive/Names.h"
#include "tools/corvo/archive/OrderedWork.h"
#include "tools/corvo/archive/Progress.h"
#include "tools/corvo/archive/Verdicts.h"
#include "tools/corvo/trust/Manifest.h"
#include "tools/corvo/trust/ManifestRun.h"

namespace corvo {
namespace {

// What became of a file since it was listed.
enum class Fate { kOk, kResealed, kAltered, kMissing, kUnreadable, kUnlisted };

struct FateRow {
  Fate fate;
  const char* word;
  Outcome outcome;
};
constexpr FateRow kFates[] = {
    {Fate::kOk, "ok", Outcome::kFine},
    {Fate::kResealed, "resealed", Outcome::kRefused},
    {Fate::kAltered, "altered", Outcome::kRefused},
    {Fate::kMissing, "missing", Outcome::kRefused},
    {Fate::kUnreadable, "unreadable", Outcome::kBadInput},
    {Fate::kUnlisted, "unlisted", Outcome::kRefused},  // in a strict check
};

const FateRow& RowOf(Fate fate) {
  return *std::find_if(std::begin(kFates), std::end(kFates),
                       [fate](const FateRow& row) { return row.fate == fate; });
}

struct Finding {
  std::string path;
  Fate fate = Fate::kOk;
  std::string reason;
  long long size = 0;
};

bool IsGone(const std::string& path) {
  return !StateOfLinkItself(path) && (errno == ENOENT || errno == ENOTDIR);
}

// A file whose content isn't the listed one. Its seal can't tell, if whoever changed it has
// sealed it again.
void LookAtSeal(const RecordingFile& file, Finding& finding) {
  RecordingExamination found;
  Check(file, found);
  if (OutcomeOf(found.verdict) == Outcome::kBadInput) {
    finding.fate = Fate::kUnreadable;
    finding.reason = found.reason.c_str();
  } else if (found.verdict == RecordingVerdict::kOk) {
    finding.fate = Fate::kResealed;
    finding.reason = "it is not what was listed, though its seal is intact";
  } else {
    finding.fate = Fate::kAltered;
    finding.reason = std::string("it is not what was listed, and is ") + VerdictWord(found.verdict);
  }
}

class Run {
 public:
  explicit Run(const CheckManifestPlan& plan)
      : m_plan(plan),
        m_directory(plan.directory),
        m_manifest(ReadManifest(plan.manifest)),
        m_progress(m_directory.Inputs()) {}

  Outcome Do() {
    LookAtPrevious();
    CheckListed();
    LookForUnlisted();
    m_progress.Erase();
    if (const int signal = NotedSignal(); signal != 0) {
      throw Interrupted(signal, "interrupted: not all files were checked");
    }
    PrintLine(Totals());
    return m_outcome;
  }

 private:
  void LookAtPrevious() {
    if (m_plan.previous.empty()) return;
    std::string digest;
    std::string refusal;
    if (!DigestUnchanged(RecordingFile(m_plan.previous), digest, refusal)) {
      throw InputError(NameInLine(m_plan.previous), refusal);
    }
    if (digest == m_manifest.previous) return;
    PrintLine(NameInLine(m_plan.previous) + ": FAILED (it is not the manifest before this one)");
    m_outcome = Outcome::kRefused;
  }

  void CheckListed() {
    OrderedWork<const ManifestEntry*, Finding> work;
    auto next = m_manifest.entries.begin();
    work.next = [this, &next](const ManifestEntry*& entry) {
      if (next == m_manifest.entries.end()) return false;
      entry = &*next++;
      return true;
    };
    work.work = [this](const ManifestEntry* entry) { return Hold(*entry); };
    work.put = [this](const Finding& finding) { Put(finding); };
    work.tick = [this] { m_progress.Draw(); };
    work.mustStop = [] { return NotedSignal() != 0; };
    work.Run(m_plan.jobs);
  }

  Finding Hold(const ManifestEntry& entry) const {
    Finding finding;
    finding.path = m_directory.PathOf(entry.name);
    const RecordingFile file(finding.path);
    std::string digest;
    if (DigestUnchanged(file, digest, finding.reason)) {
      finding.size = file.State()->size;
      if (digest != entry.digest) LookAtSeal(file, finding);
    } else {
      finding.fate = IsGone(finding.path) ? Fate::kMissing : Fate::kUnreadable;
    }
    return finding;
  }

  void LookForUnlisted() {
    Inputs inputs(m_directory.Inputs());
    for (Input input; inputs.Next(input);) {
      if (input.name.back() == '/') {
        Put({input.name, Fate::kUnreadable, input.refusal, 0});
      } else if (!m_manifest.Lists(m_directory.NameOf(input.name))) {
        Put({input.name, Fate::kUnlisted, "it is not in the manifest", 0});
      }
    }
  }

  void Put(const Finding& finding) {
    const FateRow& row = RowOf(finding.fate);
    ++m_counts[static_cast<std::size_t>(finding.fate)];
    const bool isFine = finding.fate == Fate::kOk;
    if (finding.fate != Fate::kUnlisted || m_plan.strict) {
      m_outcome = std::max(m_outcome, row.outcome);
      const std::string verdict =
          isFine ? "OK" : std::string("FAILED (") + row.word + ": " + finding.reason + ")";
      if (!isFine || !m_plan.quiet) PrintLine(NameInLine(finding.path) + ": " + verdict);
    }
    m_progress.Add(finding.size, false);
    m_progress.Draw();
  }

  std::string Totals() const {
    std::string text = std::to_string(m_manifest.entries.size()) + " listed:";
    for (const FateRow& row : kFates) {
      text +=
          ' ' + std::to_string(m_counts[static_cast<std::size_t>(row.fate)]) + ' ' + row.word + ',';
    }
    text.pop_back();
    return text;
  }

  void PrintLine(const std::string& line) {
    if (m_plan.silent) return;
    m_progress.MakeRoom();
    if (!(std::cout << line << '\n')) throw InputError("the output can't be written");
  }

  const CheckManifestPlan& m_plan;
  const ListedDirectory m_directory;
  const Manifest m_manifest;
  Progress m_progress;
  std::array<unsigned long long, std::size(kFates)> m_counts{};
  Outcome m_outcome = Outcome::kFine;
};

}  // namespace

Outcome CheckManifest(const CheckManifestPlan& plan) {
  NoteInterruptions();
  return Run(plan).Do();
}

}  // namespace corvo
