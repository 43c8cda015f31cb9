#ifndef TOOLS_CORVO_ARCHIVE_READONLY_H
#define TOOLS_CORVO_ARCHIVE_READONLY_H

#include <optional>
#include <string>

#include "tools/corvo/archive/Descriptor.h"

namespace corvo {

// Looking at an archive without leaving a trace in it. Paths are any bytes of any length.

struct FileTime {
  long long seconds = 0;  // since 1970, UTC
  unsigned nanoseconds = 0;

  bool operator==(const FileTime& other) const {
    return seconds == other.seconds && nanoseconds == other.nanoseconds;
  }
};

// "2024-05-17T09:30:00.000000000Z"
std::string UtcText(const FileTime& time);

// What tells one state of one file from any other, as far as the system records it.
struct FileState {
  unsigned long long device = 0;
  unsigned long long inode = 0;
  unsigned mode = 0;
  long long size = 0;
  FileTime modified;
  FileTime statusChanged;  // also by what leaves the content alone; nobody can set it back

  bool operator==(const FileState& other) const;

  // Whether it is the same file, in whatever state.
  bool IsFile(const FileState& other) const {
    return device == other.device && inode == other.inode;
  }
};

// Nothing, with errno set, when it fails. A path's links are followed.
std::optional<FileState> StateOf(const std::string& path);
std::optional<FileState> StateOf(const Descriptor& file);
std::optional<FileState> StateOfLinkItself(const std::string& path);

// Opens for reading. The access time stays what it is where the kernel allows it: for the file's
// owner and for root. `flags` are added. Not open, with errno set, when it fails.
Descriptor OpenReadOnly(const std::string& path, int flags);

// The system's text for an errno value.
std::string ErrorText(int error);

}  // namespace corvo

#endif
