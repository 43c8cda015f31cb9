// The system calls that the file layer shares, with the errors it tolerates or adds.

#include "LarkspurCommon/FileHandlerSystem.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "platform/Uninterrupted.h"

namespace file_layer {
namespace {

bool CannotBeFlushed(int error) {
  return error == EINVAL || error == EROFS || error == ENOTSUP;
}

// Beyond the year 2262 it wraps: marks are only compared.
LONGLONG Nanoseconds(const statx_timestamp& time) {
  constexpr unsigned long long kPerSecond = 1'000'000'000;
  return static_cast<LONGLONG>(static_cast<unsigned long long>(time.tv_sec) * kPerSecond +
                               time.tv_nsec);
}

}  // namespace

bool GetStatus(int descriptor, struct statx& status) {
  return ::statx(descriptor, "", AT_EMPTY_PATH, STATX_BASIC_STATS, &status) == 0;
}

bool GetStatus(const char* path, struct statx& status) {
  return ::statx(AT_FDCWD, path, 0, STATX_BASIC_STATS, &status) == 0;
}

FileMark MarkOf(const struct statx& status) {
  constexpr int kMinorBits = 32;
  const auto major = static_cast<unsigned long long>(status.stx_dev_major);
  return {major << kMinorBits | status.stx_dev_minor, status.stx_ino,
          static_cast<LONGLONG>(status.stx_size), Nanoseconds(status.stx_mtime),
          Nanoseconds(status.stx_ctime)};
}

bool SizeFits(const struct statx& status) {
  if (status.stx_size <= kLargestFile) return true;
  errno = EOVERFLOW;
  return false;
}

bool FlushDescriptor(int descriptor) {
  return Uninterrupted([&] { return ::fsync(descriptor); }) == 0 || CannotBeFlushed(errno);
}

off_t Seek(int descriptor, off_t distance, int whence) {
  const off_t before = ::lseek(descriptor, 0, SEEK_CUR);
  if (before == -1) return -1;
  const off_t position = ::lseek(descriptor, distance, whence);
  if (position <= kLargestFile) return position;
  ::lseek(descriptor, before, SEEK_SET);
  errno = EOVERFLOW;
  return -1;
}

bool GetRoom(int descriptor, DWORD& room) {
  off_t position = ::lseek(descriptor, 0, SEEK_CUR);
  if (position == -1 && errno != ESPIPE) return false;
  position = std::clamp(position, off_t{0}, kLargestFile);
  room = static_cast<DWORD>(kLargestFile - position);
  return true;
}

bool SetSize(int descriptor, off_t size) {
  return Uninterrupted([&] { return ::ftruncate(descriptor, size); }) == 0;
}

}  // namespace file_layer
