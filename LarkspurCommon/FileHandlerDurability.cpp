// What keeps a file safe under its name: flushing by name, and taking over another's owner and
// mode.

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "LarkspurCommon/FileHandler.h"
#include "LarkspurCommon/FileHandlerBoundary.h"
#include "LarkspurCommon/FileHandlerPaths.h"
#include "LarkspurCommon/FileHandlerSystem.h"
#include "platform/HoldCancellation.h"
#include "platform/Uninterrupted.h"

using namespace file_layer;

namespace {

constexpr char kFlushToDisk[] = "static bool TFileHandler::FlushToDisk(const TCHAR*)";
constexpr char kCopyOwnerAndMode[] =
    "static bool TFileHandler::CopyOwnerAndMode(const TCHAR*, const TCHAR*)";

constexpr mode_t kPermissionBits = 0777;
constexpr uid_t kSameOwner = static_cast<uid_t>(-1);

bool Report(const char* label, int error, const char* doing, const char* path) {
  tstring text;
  LogFileError(2, "%s - Error %lu (%s) %s \"%s\".", label, static_cast<unsigned long>(error),
               text.GetErrorText(error).c_str(), doing, path);
  return false;
}

// 0, or what failed.
int FlushByName(const char* path) {
  const HoldCancellation hold;
  const int descriptor =
      Uninterrupted([&] { return ::open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC); });
  if (descriptor == -1) return errno;
  const int error = FlushDescriptor(descriptor) ? 0 : errno;
  ::close(descriptor);
  return error;
}

// As far as the process may: the group alone where the owner is out of its reach, or neither.
bool GiveOwner(const char* path, uid_t owner, gid_t group) {
  if (::chown(path, owner, group) == 0) return true;
  if (errno != EPERM) return false;
  return ::chown(path, kSameOwner, group) == 0 || errno == EPERM;
}

}  // namespace

bool TFileHandler::FlushToDisk(const char* path) {
  return AtBoundary(kFlushToDisk, __LINE__, false, [&] {
    const tstring fullPath = ResolveBareName(path);
    const int error = FlushByName(FoundPath(fullPath.c_str()).Text());
    return error == 0 || Report(kFlushToDisk, error, "flushing file", fullPath.c_str());
  });
}

bool TFileHandler::CopyOwnerAndMode(const char* from, const char* to) {
  return AtBoundary(kCopyOwnerAndMode, __LINE__, false, [&] {
    const tstring source = ResolveBareName(from);
    const tstring target = ResolveBareName(to);
    struct statx status;
    if (!GetStatus(FoundPath(source.c_str()).Text(), status)) {
      return Report(kCopyOwnerAndMode, errno, "obtaining status information for", source.c_str());
    }
    const FoundPath found(target.c_str());
    // The owner first: a change of owner may take permission bits away.
    if (GiveOwner(found.Text(), status.stx_uid, status.stx_gid) &&
        ::chmod(found.Text(), status.stx_mode & kPermissionBits) == 0) {
      return true;
    }
    return Report(kCopyOwnerAndMode, errno, "changing owner and mode of", target.c_str());
  });
}
