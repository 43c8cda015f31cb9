// A file handler's life: opening by path, closing, and how it reports a failure.

#include "LarkspurCommon/FileHandler.h"

#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <new>

#include "LarkspurCommon/FileHandlerBoundary.h"
#include "LarkspurCommon/FileHandlerPaths.h"
#include "LarkspurCommon/FileHandlerSystem.h"
#include "LarkspurCommon/FileLayerSettings.h"
#include "platform/HoldCancellation.h"
#include "platform/Uninterrupted.h"
#include "platform/Win32Compat.h"

using namespace file_layer;

LONG TFileHandler::count = 0;

namespace {

constexpr char kOpen[] =
    "bool TFileHandler::Open(const TCHAR*, OpenFileMode, NewLine_Mode, bool, bool)";
constexpr char kDestructor[] = "virtual TFileHandler::~TFileHandler()";
constexpr char kInit[] = "void TFileHandler::Init()";

constexpr DWORD kTraceMissingFile = 0x280005;
constexpr mode_t kCreationMask = 002;
constexpr mode_t kNewFileMode = 0664;

constexpr int kNoSuchMode = -1;

int OpenFlags(OpenFileMode mode) {
  switch (mode) {
    case OFM_READ:
      return O_RDONLY;
    case OFM_WRITE:
      return O_WRONLY | O_CREAT;
    case OFM_READWRITE:
      return O_RDWR | O_CREAT;
  }
  return kNoSuchMode;
}

// Makes the directory where it is missing. Its name, or empty when nothing was to be made.
tstring CreateMissingDirectory(const tstring& directory) {
  if (TFileHandler::FileExists(directory.c_str())) return {};
  TFileHandler::CreateDirectory(directory.c_str());
  return directory;
}

// Undoes CreateMissingDirectory: only the server's own directories are removed.
void RemoveCreatedDirectory(const tstring& directory) {
  const tstring database = FileLayerDatabaseDirectory();
  if (!database.empty() &&
      ::strncasecmp(directory.c_str(), database.c_str(), database.size()) == 0) {
    TFileHandler::Delete(directory.c_str(), true);
    return;
  }
  LogFileError(3,
               "%s - Directory \"%s\" does not exist within \"%s\", therefore ignoring request to "
               "delete directory tree.",
               kOpen, directory.c_str(), database.c_str());
}

// Whether an open file can be handled; where it is to be truncated, it is, and not before.
bool Admit(int descriptor, bool truncate) {
  struct statx status;
  if (!GetStatus(descriptor, status) || !SizeFits(status)) return false;
  return !truncate || !S_ISREG(status.stx_mode) || SetSize(descriptor, 0);
}

}  // namespace

TFileHandler::TFileHandler() {
  Init();
}

TFileHandler::~TFileHandler() {
  const HoldCancellation hold;
  try {
    Close();
    InterlockedDecrement(&count);
  } catch (...) {
    TraceException("FileHandler", kDestructor, __LINE__);
  }
}

void TFileHandler::Init() {
  AtBoundary(kInit, __LINE__, [] { InterlockedIncrement(&count); });
  Close();
  m_endOfFile = false;
  m_cache.reset();
  EmptyCache();
}

bool TFileHandler::Open(const char* path, OpenFileMode mode, NewLine_Mode newLine, bool truncate,
                        bool createDirectory) {
  return OpenAs(path, mode, newLine, truncate, createDirectory, false);
}

bool TFileHandler::OpenAs(const char* path, OpenFileMode mode, NewLine_Mode newLine, bool truncate,
                          bool createDirectory, bool mustBeNew) {
  return AtBoundary(kOpen, __LINE__, false, [&] {
    EmptyCache();
    Close();
    m_newLineMode = newLine;
    m_openMode = mode;
    m_truncate = truncate;
    m_createDirectory = createDirectory;
    tstring resolved;
    if (!ResolvePath(path, resolved) || !OpenResolved(resolved, m_truncate, mustBeNew))
      return false;
    m_failedSinceOpen = false;
    return true;
  });
}

void TFileHandler::Close() {
  if (m_descriptor == -1) return;
  const HoldCancellation hold;  // a thread cancelled here would leave the descriptor in doubt
  ::close(m_descriptor);        // never repeated: the descriptor is gone even when this fails
  m_descriptor = -1;
}

bool TFileHandler::GetIsOpen() {
  return m_descriptor != -1;
}

const char* TFileHandler::GetPathname() const {
  return m_path.c_str();
}

const char* TFileHandler::DisplayLastError() const {
  return m_lastError.c_str();
}

bool TFileHandler::FailedSinceOpen() const {
  return m_failedSinceOpen;
}

// Where the file is on the disk. False, reported, when the path can't name a file.
bool TFileHandler::ResolvePath(const char* path, tstring& resolved) {
  if (path == nullptr || *path == '\0') {
    m_lastError = "No file has been specified";
    return RefuseOpening();
  }
  const tstring requested = path;  // `path` may be our own path, which goes now
  m_path.clear();
  resolved = FoundPath(requested.c_str()).Text();
  if (PathParts(resolved.c_str()).IsBareName() && !resolved.empty()) {
    const tstring beside = GetFullPathRelativeToCorvoPath(requested.c_str(), nullptr);
    resolved = FoundPath(beside.c_str()).Text();
  }
  const PathParts parts(resolved.c_str());
  if (resolved.empty() || !parts.Fit()) return FailOpening(ENAMETOOLONG, requested);
  if (parts.HasName()) return true;
  m_lastError.Format("Cannot open file \"%s\" as it is a directory", requested.c_str());
  return RefuseOpening();
}

bool TFileHandler::OpenResolved(const tstring& path, bool truncate, bool mustBeNew) {
  tstring created;
  if (m_openMode != OFM_READ && m_createDirectory) {
    created = CreateMissingDirectory(PathParts(path.c_str()).Directory());
  }
  if (OpenDescriptor(path, truncate && m_openMode != OFM_READ, mustBeNew)) return true;
  FailOpening(errno, path);
  if (!created.empty()) RemoveCreatedDirectory(created);
  return false;
}

// Opens the same path as it was opened before, but leaves what the file holds. What failed since
// then stays remembered.
bool TFileHandler::Reopen() {
  EmptyCache();
  Close();
  tstring path;
  return ResolvePath(m_path.c_str(), path) && OpenResolved(path, false);
}

// False with errno set. A new file that can't be used doesn't stay.
bool TFileHandler::OpenDescriptor(const tstring& path, bool truncate, bool mustBeNew) {
  tstring opened = path;  // taken over once all has worked, and then without failing
  ::umask(kCreationMask);
  const int access = OpenFlags(m_openMode);
  if (access == kNoSuchMode) return false;
  const bool creates = mustBeNew && m_openMode != OFM_READ;
  const int flags = access | O_CLOEXEC | (creates ? O_EXCL : 0);
  m_descriptor = Uninterrupted([&] { return ::open(path.c_str(), flags, kNewFileMode); });
  if (m_descriptor == -1) return false;
  if (!Admit(m_descriptor, truncate)) {
    const int error = errno;
    Close();
    if (creates) ::unlink(path.c_str());
    errno = error;
    return false;
  }
  m_path.swap(opened);
  m_endOfFile = false;
  m_room = 0;
  if (m_openMode != OFM_WRITE && !m_cache) m_cache.reset(new (std::nothrow) char[kCacheSize]);
  return true;
}

// Logs a last error that says why there was nothing to open.
bool TFileHandler::RefuseOpening() {
  LogFileError(5, "%s - %s.", kOpen, m_lastError.c_str());
  return false;
}

bool TFileHandler::FailOpening(int error, const tstring& path) {
  DescribeError(error, "opening", path.c_str());
  if (error == ENOENT) {  // a missing file is nobody's fault: it isn't worth an entry in the log
    DebugA(kTraceMissingFile, "%s - %s.", kOpen, m_lastError.c_str());
  } else {
    LogFileError(2, "%s - %s.", kOpen, m_lastError.c_str());
  }
  return false;
}

bool TFileHandler::Fail(const char* label, int error, const char* doing) {
  DescribeError(error, doing, m_path.c_str());
  LogFileError(2, "%s - %s.", label, m_lastError.c_str());
  return false;
}

bool TFileHandler::FailData(const char* label, int error, const char* doing) {
  m_failedSinceOpen = true;
  return Fail(label, error, doing);
}

void TFileHandler::DescribeError(int error, const char* doing, const char* path) {
  tstring text;
  m_lastError.Format("Error %lu (%s) %s file \"%s\"", static_cast<unsigned long>(error),
                     text.GetErrorText(error).c_str(), doing, path);
}
