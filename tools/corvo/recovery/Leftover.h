#ifndef TOOLS_CORVO_RECOVERY_LEFTOVER_H
#define TOOLS_CORVO_RECOVERY_LEFTOVER_H

#include <string>
#include <vector>

#include "engine/Examination.h"
#include "tools/corvo/archive/ReadOnly.h"

namespace corvo {

// A temporary file of the library: "QRT", 32 hexadecimal digits and ".tmp". Sealing and verifying
// make one and take it away; what a crash leaves is found here.
struct Leftover {
  std::string path;
  FileState state;
  RecordingExamination found;

  // A whole sealed recording, perhaps the only copy of it.
  bool IsComplete() const { return found.verdict == RecordingVerdict::kOk; }
  bool IsReadable() const {
    return found.verdict != RecordingVerdict::kUnreadable &&
           found.verdict != RecordingVerdict::kChanged;
  }

  // Written so short a time ago that a server may still be at work on it.
  bool IsRecent() const;
};

constexpr int kRecentMinutes = 10;

// Whether a path's last part is such a name.
bool IsLeftoverName(const std::string& path);

// Examines a file of such a name; nothing about it changes. What can't be read is a finding.
Leftover ExamineLeftover(const std::string& path);

// Those in a directory, in bytewise order. Throws InputError when it can't be read.
std::vector<std::string> FindLeftovers(const std::string& directory);

}  // namespace corvo

#endif
