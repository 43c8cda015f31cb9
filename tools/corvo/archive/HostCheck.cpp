// Verifies through the function that hosts call.

#include "tools/corvo/archive/HostCheck.h"

#include "engine/RecordingSeal.h"
#include "tools/corvo/HostServices.h"
#include "tools/corvo/InputError.h"
#include "tools/corvo/Paths.h"
#include "tools/corvo/Recording.h"

namespace corvo {
namespace {

struct FailureLine {
  const char* text;
  RecordingVerdict verdict;
};
constexpr FailureLine kFailureLines[] = {
    {"Legal authentication failed", RecordingVerdict::kBroken},
    {"no signature found", RecordingVerdict::kUnsealed},
};

RecordingVerdict VerdictOf(const std::string& reason) {
  for (const FailureLine& line : kFailureLines) {
    if (reason.find(line.text) != std::string::npos) return line.verdict;
  }
  return RecordingVerdict::kUnreadable;
}

}  // namespace

void AskLibrary(const RecordingFile& file, RecordingExamination& found) {
  Recording recording{file.Name(), {}, {}};
  try {
    recording.path = ExistingFile(file.Name());
  } catch (const InputError& error) {
    const std::string text = error.what();
    found.reason = text.substr(file.Name().size() + 2);  // without "NAME: "
    return;
  }
  TakeReason();
  if (VerifySignature(recording.path.c_str())) {
    found.verdict = RecordingVerdict::kOk;
    return;
  }
  const std::string reason = InUsersWords(recording, TakeReason());
  found.verdict = VerdictOf(reason);
  found.reason = reason;
}

}  // namespace corvo
