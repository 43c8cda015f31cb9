// What the file system knows of a file besides its contents: size, times, and whether it is hidden.

#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "LarkspurCommon/FileHandler.h"
#include "LarkspurCommon/FileHandlerBoundary.h"
#include "LarkspurCommon/FileHandlerChange.h"
#include "LarkspurCommon/FileHandlerPaths.h"
#include "LarkspurCommon/FileHandlerReport.h"
#include "LarkspurCommon/FileHandlerSystem.h"
#include "LarkspurCommon/FileHandlerTimes.h"
#include "platform/PathLookup.h"
#include "platform/Win32Compat.h"

using namespace file_layer;

namespace {

constexpr char kSize[] = "static LONGLONG TFileHandler::GetFileSize(const TCHAR*)";
constexpr char kLastWrite[] = "bool TFileHandler::GetLastWriteTime(SYSTEMTIME&)";
constexpr char kCreation[] = "bool TFileHandler::GetCreationTime(SYSTEMTIME&)";
constexpr char kLastWriteByName[] =
    "static bool TFileHandler::GetLastWriteTime(const TCHAR*, time_t&)";
constexpr char kSetLastWrite[] =
    "static bool TFileHandler::SetLastWriteTime(const TCHAR*, SYSTEMTIME&)";
constexpr char kHasChanged[] =
    "static bool TFileHandler::HasFileChanged(const TCHAR*, bool&, time_t&)";
constexpr char kGetMark[] = "bool TFileHandler::GetMark(FileMark&)";
constexpr char kGetMarkByName[] = "static bool TFileHandler::GetMark(const TCHAR*, FileMark&)";
constexpr char kMakeHidden[] = "static bool TFileHandler::MakeHidden(const TCHAR*)";
constexpr char kMakeVisible[] = "static bool TFileHandler::MakeVisible(const TCHAR*)";

constexpr char kGettingSize[] = "getting file size for";
constexpr char kObtainingStatus[] = "obtaining status information for";

constexpr mode_t kPermissionBits = 07777;
constexpr mode_t kOwnersReadAndWrite = 0600;

// A file that a caller names.
class NamedFile {
 public:
  explicit NamedFile(const char* path) : m_path(ResolveBareName(path)), m_found(m_path.c_str()) {}

  bool Exists() const { return m_found.Exists(); }
  const char* Path() const { return m_path.c_str(); }  // as messages have it
  const char* OnDisk() const { return m_found.Text(); }

  // False: there is no such file, or there is a report.
  bool ReadStatus(const char* label, const char* doing, struct statx& status) const {
    return Exists() && (GetStatus(OnDisk(), status) || Fail(label, errno, doing));
  }

  bool Fail(const char* label, int error, const char* doing) const {
    return ReportFailure(label, error, doing, Path());
  }

 private:
  const tstring m_path;
  const FoundPath m_found;
};

// Most paths are spelled as they are on the disk: then one call tells all, unless a host looks them
// up. A bare name is another file, as is one with the other separator, and a longer path none.
bool GetStatusAsSpelled(const char* path, struct statx& status) {
  const char* const separator = std::strpbrk(path, "/\\");
  return separator != nullptr && std::strchr(separator, '\\') == nullptr &&
         std::strlen(path) < _MAX_DIR && platform::FindsFilesItself() && GetStatus(path, status);
}

// False with errno set.
bool GetTime(int descriptor, statx_timestamp statx::*which, SYSTEMTIME& utc) {
  struct statx status;
  return GetStatus(descriptor, status) && ToSystemTime((status.*which).tv_sec, utc);
}

// Puts a value where a caller keeps it; whether that is a change.
template <class Value>
bool Update(Value& kept, Value value) {
  const bool changed = kept != value;
  kept = value;
  return changed;
}

// Both empty where there is nothing to change.
tstring HiddenName(const tstring& name) {
  return name.empty() || name.front() == '.' ? tstring() : "." + name;
}

tstring VisibleName(const tstring& name) {
  return name.empty() || name.front() != '.' ? tstring() : name.Mid(1);
}

// Whoever hides or shows a file goes on to use it.
void LetOwnerReadAndWrite(const char* path) {
  struct statx status;
  if (!GetStatus(path, status)) return;
  const mode_t mode = status.stx_mode & kPermissionBits;
  if ((mode & kOwnersReadAndWrite) != kOwnersReadAndWrite) {
    ::chmod(path, mode | kOwnersReadAndWrite);
  }
}

bool Rename(const NamedFile& file, const tstring& target) {
  if (target.size() >= MAX_PATH || MoveFile(file.Path(), target.c_str()) == 0) return false;
  LetOwnerReadAndWrite(target.c_str());
  return true;
}

// Gives the file the name that `newName` makes of its own.
bool RenameOnDisk(const char* path, tstring (*newName)(const tstring&)) {
  const NamedFile file(path);
  if (!file.Exists()) return true;
  const PathParts parts(file.OnDisk());
  const tstring name = newName(parts.Name());
  return name.empty() ? parts.Fit() : Rename(file, parts.Directory() + name);
}

}  // namespace

LONGLONG TFileHandler::GetFileSize(const char* path) {
  return AtBoundary(kSize, __LINE__, LONGLONG{0}, [&]() -> LONGLONG {
    const NamedFile file(path);
    struct statx status;
    if (!file.ReadStatus(kSize, kGettingSize, status)) return 0;
    if (SizeFits(status)) return static_cast<LONGLONG>(status.stx_size);
    file.Fail(kSize, errno, kGettingSize);
    return 0;
  });
}

bool TFileHandler::GetLastWriteTime(SYSTEMTIME& utc) {
  return AtBoundary(kLastWrite, __LINE__, false, [&] {
    return GetIsOpen() && (GetTime(m_descriptor, &statx::stx_mtime, utc) ||
                           Fail(kLastWrite, errno, "getting last write time for"));
  });
}

bool TFileHandler::GetCreationTime(SYSTEMTIME& utc) {
  return AtBoundary(kCreation, __LINE__, false, [&] {
    return GetIsOpen() && (GetTime(m_descriptor, &statx::stx_ctime, utc) ||
                           Fail(kCreation, errno, "getting creation time for"));
  });
}

bool TFileHandler::GetLastWriteTime(const char* path, FileSeconds& time) {
  time = -1;
  return AtBoundary(kLastWriteByName, __LINE__, false, [&] {
    const NamedFile file(path);
    struct statx status;
    if (!file.ReadStatus(kLastWriteByName, kObtainingStatus, status)) return false;
    const auto written = static_cast<FileSeconds>(status.stx_mtime.tv_sec);
    if (written != status.stx_mtime.tv_sec) {
      return file.Fail(kLastWriteByName, EOVERFLOW, kObtainingStatus);
    }
    time = written;
    return true;
  });
}

bool TFileHandler::GetLastWriteTime(const char* path, SYSTEMTIME& utc) {
  return AtBoundary(kLastWriteByName, __LINE__, false, [&] {
    const NamedFile file(path);
    struct statx status;
    return file.ReadStatus(kLastWriteByName, kObtainingStatus, status) &&
           (ToSystemTime(status.stx_mtime.tv_sec, utc) ||
            file.Fail(kLastWriteByName, errno, kObtainingStatus));
  });
}

bool TFileHandler::SetLastWriteTime(const char* path, SYSTEMTIME& local) {
  return AtBoundary(kSetLastWrite, __LINE__, false, [&] {
    const NamedFile file(path);
    struct statx status;
    return file.ReadStatus(kSetLastWrite, kObtainingStatus, status) &&
           (SetTimes(file.OnDisk(), status.stx_atime, FromLocalTime(local)) ||
            file.Fail(kSetLastWrite, errno, "changing file modification time for"));
  });
}

bool TFileHandler::HasFileChanged(const char* path, bool& exists, FileSeconds& lastWriteTime) {
  return LookForChange(path, exists, lastWriteTime) == FileChange::kChanged;
}

FileChange file_layer::LookForChange(const char* path, bool& exists, FileSeconds& lastWriteTime) {
  const auto told = [](bool changed) { return changed ? FileChange::kChanged : FileChange::kNone; };
  return AtBoundary(kHasChanged, __LINE__, FileChange::kUnknown, [&] {
    if (path == nullptr || *path == '\0') return FileChange::kNone;
    struct statx status;
    if (!GetStatusAsSpelled(path, status)) {
      const NamedFile file(path);
      if (!file.Exists()) return told(Update(exists, false));
      exists = true;
      if (!file.ReadStatus(kHasChanged, "retrieving file times for", status)) {
        return FileChange::kUnknown;
      }
    }
    exists = true;
    return told(Update(lastWriteTime, static_cast<FileSeconds>(status.stx_mtime.tv_sec)));
  });
}

bool TFileHandler::GetMark(FileMark& mark) {
  return AtBoundary(kGetMark, __LINE__, false, [&] {
    struct statx status;
    if (!GetIsOpen()) return false;
    if (!GetStatus(m_descriptor, status)) return Fail(kGetMark, errno, kObtainingStatus);
    mark = MarkOf(status);
    return true;
  });
}

bool TFileHandler::GetMark(const char* path, FileMark& mark) {
  return AtBoundary(kGetMarkByName, __LINE__, false, [&] {
    struct statx status;
    if (!NamedFile(path).ReadStatus(kGetMarkByName, kObtainingStatus, status)) return false;
    mark = MarkOf(status);
    return true;
  });
}

bool TFileHandler::MakeHidden(const char* path) {
  return AtBoundary(kMakeHidden, __LINE__, false, [&] { return RenameOnDisk(path, HiddenName); });
}

bool TFileHandler::MakeVisible(const char* path) {
  return AtBoundary(kMakeVisible, __LINE__, false, [&] { return RenameOnDisk(path, VisibleName); });
}
