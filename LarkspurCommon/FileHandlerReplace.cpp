// A text that takes the place of what the file holds, without a moment at which neither is there.

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "LarkspurCommon/FileHandler.h"
#include "LarkspurCommon/FileHandlerBoundary.h"
#include "LarkspurCommon/FileHandlerSystem.h"
#include "LarkspurCommon/InPlaceText.h"
#include "platform/HoldCancellation.h"
#include "platform/Uninterrupted.h"

using namespace file_layer;

namespace {

constexpr char kReplace[] = "bool TFileHandler::ReplaceText(const TCHAR*)";

std::string WithLineEnds(const char* text) {
  std::string lines;
  for (; *text != '\0'; ++text) {
    if (*text == '\n') lines += '\r';
    lines += *text;
  }
  return lines;
}

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

bool Replace(int descriptor, std::string& text) {
  struct statx status;
  if (!GetStatus(descriptor, status)) return false;
  const auto size = static_cast<std::size_t>(text.size());
  const bool grows = size > status.stx_size;
  if (grows && !Reserve(descriptor, static_cast<off_t>(size))) return false;
  PadWithLineEnds(text, static_cast<std::size_t>(status.stx_size));
  return WriteAll(descriptor, text) &&
         (text.size() == size || Cut(descriptor, static_cast<off_t>(size)));
}

}  // namespace

bool TFileHandler::ReplaceText(const char* text) {
  return AtBoundary(kReplace, __LINE__, false, [&] {
    if (!GetIsOpen()) return false;
    std::string lines = WithLineEnds(text);
    const HoldCancellation hold;
    EmptyCache();
    m_room = 0;
    return Replace(m_descriptor, lines) || FailData(kReplace, errno, "writing data to");
  });
}
