// What keeps a file safe under its name: flushing by name, and taking over another's owner and
// mode.

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "LarkspurCommon/FileHandler.h"
#include "LarkspurCommon/FileHandlerBoundary.h"
#include "LarkspurCommon/FileHandlerPaths.h"
#include "LarkspurCommon/FileHandlerReport.h"
#include "LarkspurCommon/FileHandlerSystem.h"
#include "platform/Attributes.h"
#include "platform/HoldCancellation.h"
#include "platform/Uninterrupted.h"

using namespace file_layer;

namespace {

constexpr char kFlushToDisk[] = "static bool TFileHandler::FlushToDisk(const TCHAR*)";
constexpr char kCopyOwnerAndMode[] =
    "static bool TFileHandler::CopyOwnerAndMode(const TCHAR*, const TCHAR*)";

// Opens what stands under a path for an action that is false with errno set. 0, or what failed.
template <class Action>
int WithDescriptor(const char* path, Action action) {
  const HoldCancellation hold;
  const int descriptor =
      Uninterrupted([&] { return ::open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC); });
  if (descriptor == -1) return errno;
  const int error = action(descriptor) ? 0 : errno;
  ::close(descriptor);
  return error;
}

// A directory that this process may change but not read can't be flushed alone: everything is.
int FlushByName(const char* path) {
  const int error = WithDescriptor(path, FlushDescriptor);
  if (error != EACCES || !TFileHandler::IsDirectory(path)) return error;
  ::sync();
  return 0;
}

}  // namespace

bool TFileHandler::FlushToDisk(const char* path) {
  return AtBoundary(kFlushToDisk, __LINE__, false, [&] {
    const tstring fullPath = ResolveBareName(path);
    const int error = FlushByName(FoundPath(fullPath.c_str()).Text());
    return error == 0 || ReportFailure(kFlushToDisk, error, "flushing file", fullPath.c_str());
  });
}

bool TFileHandler::CopyOwnerAndMode(const char* from, const char* to) {
  return AtBoundary(kCopyOwnerAndMode, __LINE__, false, [&] {
    const tstring source = ResolveBareName(from);
    const tstring target = ResolveBareName(to);
    struct statx status;
    if (!GetStatus(FoundPath(source.c_str()).Text(), status)) {
      return ReportFailure(kCopyOwnerAndMode, errno, "obtaining status information for",
                           source.c_str());
    }
    const int error = WithDescriptor(FoundPath(target.c_str()).Text(), [&](int descriptor) {
      return platform::GiveAttributes(descriptor,
                                      {status.stx_uid, status.stx_gid, status.stx_mode});
    });
    return error == 0 ||
           ReportFailure(kCopyOwnerAndMode, error, "changing owner and mode of", target.c_str());
  });
}
