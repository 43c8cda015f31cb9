#ifndef LARKSPURCOMMON_FILEHANDLERPATHS_H
#define LARKSPURCOMMON_FILEHANDLERPATHS_H

#include <sys/stat.h>

#include <cerrno>

#include "LarkspurCommon/FileHandlerSystem.h"
#include "LarkspurCommon/tstring.h"
#include "platform/Win32Types.h"

// How the file layer reads a path and finds it on the disk.
namespace file_layer {

// Stands for the program's directory when that isn't known. A missing file to everyone who asks,
// since the file layer never makes it: even "/dev" may be missing, and then root could make that.
constexpr char kNowhere[] = "/program directory unknown/";
bool IsNowhere(const char* path);  // or in it

// The running program's directory, or kNowhere. What the host's calls throw goes through.
tstring ProgramDirectory();

// A path as the host splits it. All parts are empty when one of them doesn't fit.
class PathParts {
 public:
  explicit PathParts(const char* path);

  bool Fit() const { return m_fit; }
  bool IsBareName() const { return m_fit && *m_drive == '\0' && *m_directory == '\0'; }
  bool HasName() const { return *m_name != '\0'; }
  tstring Directory() const;  // with its drive
  tstring Name() const;       // with its extension

 private:
  char m_drive[_MAX_DRIVE];
  char m_directory[_MAX_DIR];
  char m_name[_MAX_FNAME];
  char m_extension[_MAX_EXT];
  bool m_fit;
};

// A path as the host finds it on the disk, in any letter case. Null and empty paths find nothing.
class FoundPath {
 public:
  explicit FoundPath(const char* path);

  const char* Text() const { return m_text; }  // empty when the path doesn't fit
  bool Exists() const { return m_exists; }

 private:
  char m_text[MAX_PATH];
  bool m_exists;
};

// What is on the disk under a path.
class DiskEntry {
 public:
  explicit DiskEntry(const char* path)
      : m_found(path), m_isThere(m_found.Exists() && GetStatus(m_found.Text(), m_status)) {
    if (m_found.Exists() && !m_isThere && errno != ENOENT) m_error = errno;
  }

  const char* Path() const { return m_found.Text(); }
  bool IsThere() const { return m_isThere; }
  int Error() const { return m_error; }  // why what is there can't be told; 0: it can
  bool IsDirectory() const { return m_isThere && S_ISDIR(m_status.stx_mode); }

 private:
  FoundPath m_found;
  struct statx m_status;
  bool m_isThere;
  int m_error = 0;
};

// A bare file name in the running program's directory; any other path as it is; empty when the path
// is null, empty or doesn't fit.
tstring ResolveBareName(const char* path);

}  // namespace file_layer

#endif
