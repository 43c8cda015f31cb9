#ifndef TOOLS_CORVO_RECOVERY_LEFTOVER_H
#define TOOLS_CORVO_RECOVERY_LEFTOVER_H

#include <optional>
#include <string>

#include "engine/Examination.h"
#include "tools/corvo/archive/ReadOnly.h"

namespace corvo {

// Temporary files of sealing and verifying that a crash has left. Sealing deletes a recording only
// when its temporary file is complete, sealed and on disk: such a file may be the only copy. All
// others are copies of recordings that are still there.

enum class LeftoverKind {
  kComplete,    // a sealed recording, and intact
  kDamaged,     // it holds a seal, but isn't what was sealed: not to be removed lightly
  kIncomplete,  // no seal in it yet
  kUnreadable,
};

struct Leftover {
  std::string path;
  FileState state;  // before it was examined
  LeftoverKind kind = LeftoverKind::kUnreadable;
  bool isRecent = false;  // a server may be writing it, or about to move it
  RecordingExamination found;
};

// Whether the last component of a path is such a file's name: "QRT", 32 hexadecimal digits, ".tmp".
bool IsLeftoverName(const std::string& path);

// Examines a file. One that was last written within `seconds` is recent; with 0 none is. Nothing,
// with errno set, when there is none of that name; throws InputError when it is no regular file.
std::optional<Leftover> LookAt(const std::string& path, long long seconds);

// The same for a file that a user named: throws InputError for whatever isn't a leftover that can
// be read.
Leftover LookAtNamed(const std::string& path, long long seconds);

// Throws InputError unless the name still leads to the file as it was examined.
void RequireUnchanged(const Leftover& leftover);

// "complete", "damaged", "incomplete", "unreadable"
const char* KindWord(LeftoverKind kind);

// The word, whether it is recent, and the reason, such as
// "incomplete, recent (malformed: it is no WAVE file)".
std::string Describe(const Leftover& leftover);

}  // namespace corvo

#endif
