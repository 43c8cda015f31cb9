// Positions, sizes and what is on the disk: all that goes to the descriptor other than data.

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "LarkspurCommon/FileHandler.h"
#include "LarkspurCommon/FileHandlerBoundary.h"
#include "LarkspurCommon/FileHandlerSystem.h"

using namespace file_layer;

namespace {

constexpr char kMove[] = "bool TFileHandler::MoveToPosition(DWORD, LONG)";
constexpr char kMakeEnd[] = "void TFileHandler::MakeThisEndOfFile()";
constexpr char kPosition[] = "DWORD TFileHandler::GetFilePosition()";
constexpr char kSize[] = "LONGLONG TFileHandler::GetCurrentFileSize()";
constexpr char kFlush[] = "bool TFileHandler::Flush()";

constexpr DWORD kNoPosition = 0xFFFFFFFF;
constexpr DWORD kFromCurrent = 1;
constexpr DWORD kFromEnd = 2;

constexpr int kWhence[] = {SEEK_SET, SEEK_CUR, SEEK_END};

}  // namespace

bool TFileHandler::MoveToPosition(DWORD origin, LONG distance) {
  return AtBoundary(kMove, __LINE__, false, [&] {
    const bool wasOpen = GetIsOpen();
    bool moved = SeekStep(origin, distance);
    if (!moved && wasOpen) FailData(kMove, errno, "changing file position in");
    if (!moved && origin != kFromCurrent && Reopen()) moved = SeekStep(origin, distance);
    EmptyCache();
    return moved;
  });
}

// Flushes and moves the descriptor; false with errno set.
bool TFileHandler::SeekStep(DWORD origin, LONG distance) {
  if (!GetIsOpen()) return false;
  FlushAs(kMove);
  if (origin > kFromEnd) {
    errno = EINVAL;
    return false;
  }
  m_room = 0;
  if (Seek(m_descriptor, distance, kWhence[origin]) == -1) return false;
  m_endOfFile = origin == kFromEnd && distance >= 0;
  return true;
}

void TFileHandler::MakeThisEndOfFile() {
  AtBoundary(kMakeEnd, __LINE__, [&] {
    if (!GetIsOpen()) return;
    FlushAs(kMakeEnd);
    const off_t end = Seek(m_descriptor, 0, SEEK_CUR);
    if (end == -1 || !SetSize(m_descriptor, end)) {
      FailData(kMakeEnd, errno, "setting end of file to current position for");
    } else {
      m_endOfFile = true;
    }
  });
}

DWORD TFileHandler::GetFilePosition() {
  return AtBoundary(kPosition, __LINE__, kNoPosition, [&]() -> DWORD {
    if (!GetIsOpen()) return 0;
    FlushAs(kPosition);
    const off_t position = Seek(m_descriptor, 0, SEEK_CUR);
    if (position == -1) {
      FailData(kPosition, errno, "determining current position for");
      return kNoPosition;
    }
    return static_cast<DWORD>(position) - Unread();
  });
}

LONGLONG TFileHandler::GetCurrentFileSize() {
  return AtBoundary(kSize, __LINE__, LONGLONG{0}, [&]() -> LONGLONG {
    if (!GetIsOpen()) {
      m_lastError.Format("Error getting file size for file \"%s\" has it has not been opened",
                         m_path.c_str());
      LogFileError(2, "%s - %s.", kSize, m_lastError.c_str());
      return 0;
    }
    struct statx status;
    if (!GetStatus(m_descriptor, status) || !SizeFits(status)) {
      FailData(kSize, errno, "getting file size for");
      return 0;
    }
    return static_cast<LONGLONG>(status.stx_size);
  });
}

bool TFileHandler::Flush() {
  return AtBoundary(kFlush, __LINE__, false, [&] { return GetIsOpen() && FlushAs(kFlush); });
}

// A failed flush doesn't keep an operation from going on: it is reported, and remembered.
bool TFileHandler::FlushAs(const char* label) {
  return FlushDescriptor(m_descriptor) || FailData(label, errno, "flushing");
}
