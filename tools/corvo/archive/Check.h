#ifndef TOOLS_CORVO_ARCHIVE_CHECK_H
#define TOOLS_CORVO_ARCHIVE_CHECK_H

#include <functional>
#include <optional>
#include <string>

#include "engine/Examination.h"
#include "tools/corvo/archive/ReadOnly.h"

namespace corvo {

// A file as the user named it, opened to be examined. Unlike the library's own paths, the name may
// be of any length, hold any byte, and means this very file.
class RecordingFile {
 public:
  explicit RecordingFile(std::string name);

  const std::string& Name() const { return m_name; }

  // What stood under the name before it was opened; nothing where nobody can tell.
  const std::optional<FileState>& State() const { return m_state; }

  // Why it isn't open; empty when it is.
  const std::string& Refusal() const { return m_refusal; }
  const Descriptor& File() const { return m_file; }

  // Whether the name still leads to the same file in the same state.
  bool IsUnchanged() const;

 private:
  std::string m_name;
  std::optional<FileState> m_state;
  std::string m_refusal;
  Descriptor m_file;
};

// Finds a verdict for an open file.
using Examiner = std::function<void(const RecordingFile& file, RecordingExamination& found)>;

// The streaming examination: VerifyRecording::Examine.
void Examine(const RecordingFile& file, RecordingExamination& found);

// Examines, and looks whether the file has changed meanwhile. A file that isn't open is
// kUnreadable. Reasons hold no bytes that a line of text can't. Any thread.
void Check(const RecordingFile& file, RecordingExamination& found,
           const Examiner& examine = Examine);

}  // namespace corvo

#endif
