// Verifies through the function that hosts call.

#include "tools/corvo/archive/HostCheck.h"

#include <algorithm>

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

// Reasons hold file names, which may say anything.
RecordingVerdict VerdictOf(const std::vector<std::string>& reasons) {
  for (const FailureLine& line : kFailureLines) {
    const auto says = [&line](const std::string& reason) {
      return reason.rfind(line.text, 0) == 0;
    };
    if (std::any_of(reasons.begin(), reasons.end(), says)) return line.verdict;
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
  TakeReasons();
  if (VerifySignature(recording.path.c_str())) {
    found.verdict = RecordingVerdict::kOk;
    return;
  }
  const std::vector<std::string> reasons = TakeReasons();
  found.verdict = VerdictOf(reasons);
  found.reason = InUsersWords(recording, JoinReasons(reasons));
}

}  // namespace corvo
