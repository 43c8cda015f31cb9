// Removes what a crash has left and nobody needs.

#include "tools/corvo/recovery/Removal.h"

#include <errno.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <iostream>

#include "tools/corvo/Flush.h"
#include "tools/corvo/InputError.h"
#include "tools/corvo/archive/Check.h"
#include "tools/corvo/archive/Names.h"
#include "tools/corvo/archive/Verdicts.h"
#include "tools/corvo/recovery/Leftover.h"

namespace corvo {
namespace {

bool HoldSameSeal(const RecordingExamination& a, const RecordingExamination& b) {
  return a.startTime == b.startTime &&
         std::memcmp(a.record.bySignature, b.record.bySignature, kDigestSize) == 0;
}

// Why the file isn't what takes the leftover's place; empty when it is, and is on disk.
std::string WhyNotTheSame(const Leftover& leftover, const std::string& path) {
  const RecordingFile file(path);
  RecordingExamination found;
  Check(file, found);
  if (found.verdict != RecordingVerdict::kOk) {
    return "is " + (VerdictWord(found.verdict) + (": " + found.reason));
  }
  if (file.State()->IsFile(leftover.state)) return "is this very file";
  if (!HoldSameSeal(leftover.found, found)) return "is another recording";
  const int error = std::max(FlushFile(path), FlushDirectoryOf(path));
  return error == 0 ? "" : "can't be flushed to disk: " + ErrorText(error);
}

// Empty: it may be removed.
std::string RefusalOf(const Leftover& leftover, const std::string& sealedAs) {
  const bool isNeeded = leftover.kind != LeftoverKind::kIncomplete;
  if (leftover.isRecent || (isNeeded && sealedAs.empty())) return Describe(leftover);
  if (!isNeeded) return {};
  const std::string reason = WhyNotTheSame(leftover, sealedAs);
  return reason.empty() ? reason : NameInLine(sealedAs) + ' ' + reason;
}

Outcome RemoveOne(const std::string& path, const RemovalPlan& plan) {
  const Leftover leftover = LookAtNamed(path, plan.olderThan);
  const std::string refusal = RefusalOf(leftover, plan.sealedAs);
  if (!refusal.empty()) {
    std::cout << NameInLine(path) << ": NOT REMOVED: " << refusal << '\n';
    return Outcome::kRefused;
  }
  RequireUnchanged(leftover);
  if (::unlink(path.c_str()) != 0) throw InputError(NameInLine(path), ErrorText(errno));
  std::cout << NameInLine(path) << ": removed\n";
  return Outcome::kFine;
}

}  // namespace

Outcome Remove(const RemovalPlan& plan) {
  Outcome worst = Outcome::kFine;
  for (const std::string& path : plan.files) {
    try {
      worst = std::max(worst, RemoveOne(path, plan));
    } catch (const InputError& error) {
      std::cerr << "corvo: " << error.what() << '\n';
      worst = Outcome::kBadInput;
    }
  }
  return worst;
}

}  // namespace corvo
