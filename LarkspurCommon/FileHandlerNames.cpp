// Files by name: whether they exist, temporary names, deletion and renaming.

#include <unistd.h>

#include <cerrno>

#include "LarkspurCommon/FileHandler.h"
#include "LarkspurCommon/FileHandlerBoundary.h"
#include "LarkspurCommon/FileHandlerPaths.h"
#include "LarkspurCommon/FileHandlerReport.h"
#include "LarkspurCommon/FileLayerSettings.h"
#include "LarkspurCommon/XTTime.h"
#include "platform/Win32Compat.h"

using namespace file_layer;

namespace {

constexpr char kDelete[] = "bool TFileHandler::Delete()";
constexpr char kRename[] = "bool TFileHandler::RenameFile(const TCHAR*)";
constexpr char kDeleteByName[] = "static bool TFileHandler::Delete(const TCHAR*, bool)";
constexpr char kExists[] = "static bool TFileHandler::FileExists(const TCHAR*)";
constexpr char kIsDirectory[] = "static bool TFileHandler::IsDirectory(const TCHAR*)";
constexpr char kCreate[] = "static bool TFileHandler::CreateDirectory(const TCHAR*)";
constexpr char kTempFilename[] =
    "static bool TFileHandler::GetTempFilename(tstring&, const TCHAR*, const TCHAR*)";
constexpr char kGetName[] = "void TFileHandler::GetName(tstring&) const";

constexpr int kTempNameAttempts = 100;  // where names are random, the first is free

constexpr char kDeleting[] = "deleting";

bool RefuseDirectory(const char* label, const DiskEntry& entry) {
  LogFileError(5, "%s - Not deleting directory \"%s\".", label, entry.Path());
  return false;
}

// Hands a directory with all it holds to the host.
bool DeleteTree(const DiskEntry& directory) {
  unsigned long clock = os_clock();
  return RemoveDirectoryTree(clock, directory.Path());
}

bool DeleteNamedFile(const DiskEntry& entry, const tstring& path) {
  return ::unlink(entry.Path()) == 0 ||
         ReportFailure(kDeleteByName, errno, "deleting file", path.c_str());
}

// A handler's path is spelled as on disk. Found under another spelling, it is another file: the one
// that was open has gone since.
bool IsSpelledAs(const tstring& path, const DiskEntry& entry) {
  return path == entry.Path();
}

// link(2), with the limit that holds for every path here.
bool Link(const char* from, const tstring& to) {
  if (to.size() < MAX_PATH) return ::link(from, to.c_str()) == 0;
  errno = ENAMETOOLONG;
  return false;
}

}  // namespace

bool TFileHandler::OpenTempFile(OpenFileMode mode, NewLine_Mode newLine, bool truncate,
                                const char* prefix, const char* extension) {
  tstring name;
  if (GetTempFilename(name, prefix, extension)) {
    return OpenAs(name.c_str(), mode, newLine, truncate, false, true);
  }
  return AtBoundary(kTempFilename, __LINE__, false, [&] {
    m_lastError = "No free temporary file name has been found";
    return RefuseOpening();
  });
}

bool TFileHandler::Delete() {
  return AtBoundary(kDelete, __LINE__, false, [&] {
    Close();
    const DiskEntry entry(m_path.c_str());
    if (entry.Error() != 0) return Fail(kDelete, entry.Error(), kDeleting);
    if (!entry.IsThere() || !IsSpelledAs(m_path, entry)) return false;
    if (entry.IsDirectory()) return RefuseDirectory(kDelete, entry);
    return ::unlink(entry.Path()) == 0 || Fail(kDelete, errno, kDeleting);
  });
}

bool TFileHandler::RenameFile(const char* newName) {
  return AtBoundary(kRename, __LINE__, false, [&] {
    Close();
    const DiskEntry entry(m_path.c_str());
    if (!entry.IsThere() || !IsSpelledAs(m_path, entry)) return false;
    if (entry.IsDirectory()) return RefuseDirectory(kRename, entry);
    const tstring target = newName != nullptr ? newName : "";
    // The message speaks of deleting; whoever reads the log knows it so.
    if (!Link(entry.Path(), target)) return Fail(kRename, errno, kDeleting);
    return ::unlink(entry.Path()) == 0;
  });
}

void TFileHandler::GetName(tstring& name) const {
  AtBoundary(kGetName, __LINE__, [&] { name = PathParts(m_path.c_str()).Name(); });
}

bool TFileHandler::FileExists(const char* path) {
  return AtBoundary(kExists, __LINE__, false,
                    [&] { return FoundPath(ResolveBareName(path).c_str()).Exists(); });
}

bool TFileHandler::IsDirectory(const char* path) {
  return AtBoundary(kIsDirectory, __LINE__, false, [&] { return DiskEntry(path).IsDirectory(); });
}

bool TFileHandler::CreateDirectory(const char* path) {
  return AtBoundary(kCreate, __LINE__, false, [&] {
    if (IsNowhere(path)) {
      errno = ENOENT;
      return false;
    }
    return static_cast<unsigned char>(::CreateDirectory(path, nullptr)) != 0;  // its low byte tells
  });
}

bool TFileHandler::Delete(const char* path, bool recursive) {
  return AtBoundary(kDeleteByName, __LINE__, false, [&] {
    const tstring fullPath = ResolveBareName(path);
    const DiskEntry entry(fullPath.c_str());
    if (!entry.IsThere()) return false;
    if (!entry.IsDirectory()) return DeleteNamedFile(entry, fullPath);
    return recursive ? DeleteTree(entry) : RefuseDirectory(kDeleteByName, entry);
  });
}

bool TFileHandler::GetTempFilename(tstring& name, const char* prefix, const char* extension) {
  return AtBoundary(kTempFilename, __LINE__, false, [&] {
    for (int attempt = 0; attempt < kTempNameAttempts; ++attempt) {
      GUID guid{};
      CoCreateGuid(&guid);  // hosts differ in what it returns
      name = FileLayerTempDirectory() + "\\" + prefix + GetMsgFileName(guid, extension);
      if (!FileExists(name.c_str())) return true;
    }
    return false;
  });
}

tstring TFileHandler::GetMsgFileName(const GUID& guid, const char* extension) {
  tstring name = tstring::FromGuid(guid);
  name.TrimLeft('{');
  name.TrimRight('}');
  name.Remove('-');
  return name + extension;
}
