// A text that takes the place of what a file holds, without a moment at which neither is there.

#include "LarkspurCommon/InPlaceText.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "LarkspurCommon/FileHandlerSystem.h"
#include "platform/Uninterrupted.h"

using namespace file_layer;

namespace {

bool CannotBeReserved(int error) {
  return error == EOPNOTSUPP || error == ENOSYS || error == EINVAL || error == ENODEV ||
         error == ESPIPE || error == EPERM;
}

// Takes the blocks that a longer file needs, so that what is written over it finds room. Where the
// file system can't, a full disk shows later.
bool Reserve(int descriptor, off_t size) {
  const int result =
      Uninterrupted([=] { return ::fallocate(descriptor, FALLOC_FL_KEEP_SIZE, 0, size); });
  return result == 0 || CannotBeReserved(errno);
}

bool WriteAll(int descriptor, const std::string& bytes) {
  for (std::size_t done = 0; done < bytes.size();) {
    const ssize_t written = Uninterrupted([&] {
      return ::pwrite(descriptor, bytes.data() + done, bytes.size() - done,
                      static_cast<off_t>(done));
    });
    if (written < 0) return false;
    done += static_cast<std::size_t>(written);
  }
  return true;
}

// The lines are on their way to the disk before the file is cut behind them.
bool Cut(int descriptor, off_t size) {
  ::sync_file_range(descriptor, 0, 0, SYNC_FILE_RANGE_WRITE);
  return SetSize(descriptor, size);
}

}  // namespace

bool ReplaceInPlace(int descriptor, std::string text) {
  struct statx status;
  if (!GetStatus(descriptor, status)) return false;
  if (status.stx_size > text.max_size()) {
    errno = EFBIG;
    return false;
  }
  const auto oldSize = static_cast<std::size_t>(status.stx_size);
  const std::size_t size = text.size();
  if (size > oldSize && !Reserve(descriptor, static_cast<off_t>(size))) return false;
  if (size < oldSize) text.resize(oldSize, '\n');
  return WriteAll(descriptor, text) &&
         (size >= oldSize || Cut(descriptor, static_cast<off_t>(size)));
}
