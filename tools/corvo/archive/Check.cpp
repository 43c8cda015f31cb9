// One file: opened, examined, and looked at again.

#include "tools/corvo/archive/Check.h"

#include <errno.h>
#include <sys/stat.h>

#include "engine/CorvoVerifiedRecording.h"
#include "tools/corvo/archive/Names.h"

namespace corvo {

// Devices and the like aren't opened at all: that alone can have effects.
RecordingFile::RecordingFile(std::string name) : m_name(std::move(name)), m_state(StateOf(m_name)) {
  if (m_state && S_ISDIR(m_state->mode)) {
    m_refusal = "it is a directory";
  } else if (m_state && !S_ISREG(m_state->mode)) {
    m_refusal = "it is not a regular file";
  } else {
    if (m_state) m_file = OpenReadOnly(m_name, 0);
    if (!m_file.IsOpen()) m_refusal = ErrorText(errno);
  }
}

bool RecordingFile::IsUnchanged() const {
  return StateOf(m_file) == m_state && StateOf(m_name) == m_state;
}

void Examine(const RecordingFile& file, RecordingExamination& found) {
  VerifyRecording().Examine(file.File().Number(), found);
}

void Check(const RecordingFile& file, RecordingExamination& found, const Examiner& examine) {
  found = {};
  if (!file.File().IsOpen()) {
    found.reason = file.Refusal();
    return;
  }
  examine(file, found);
  if (found.verdict != RecordingVerdict::kUnreadable && !file.IsUnchanged()) {
    found.verdict = RecordingVerdict::kChanged;
    found.reason = "it changed while it was read";
  }
  const std::string reason = found.reason;
  if (NeedsEscaping(reason)) found.reason = EscapeName(reason);
}

}  // namespace corvo
