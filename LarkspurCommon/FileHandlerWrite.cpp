// Writing: bytes, and text with its line ends made CR LF.

#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>

#include "LarkspurCommon/FileHandler.h"
#include "LarkspurCommon/FileHandlerBoundary.h"
#include "LarkspurCommon/FileHandlerSystem.h"
#include "platform/Uninterrupted.h"

using namespace file_layer;

namespace {

constexpr char kWrite[] = "bool TFileHandler::Write(const void*, DWORD)";
constexpr char kWriting[] = "writing data to";
constexpr char kLineEnd[] = {'\r', '\n'};

}  // namespace

// A short write counts as done, as callers know it, but isn't forgotten. Inline as
// Uninterrupted is.
[[gnu::always_inline]] inline bool TFileHandler::WriteBytes(const void* bytes, std::size_t size) {
  if (!HasRoomFor(size)) return FailData(kWrite, errno, kWriting);
  const ssize_t written = Uninterrupted([&] { return ::write(m_descriptor, bytes, size); });
  if (written < 0) return FailData(kWrite, errno, kWriting);
  m_room -= static_cast<DWORD>(written);
  if (static_cast<std::size_t>(written) < size) FailData(kWrite, ENOSPC, kWriting);
  return true;
}

bool TFileHandler::Write(const void* buffer, DWORD length) {
  return AtDataBoundary(kWrite, __LINE__, m_failedSinceOpen, [&] {
    if (!GetIsOpen()) return false;
    if (m_newLineMode != NLM_TEXT) return WriteBytes(buffer, length);
    return WriteText(static_cast<const char*>(buffer));
  });
}

void TFileHandler::WriteFormatString(const char* format, ...) {
  tstring text;
  va_list args;
  va_start(args, format);
  text.FormatV(format, args);
  va_end(args);
  Write(text.c_str(), static_cast<DWORD>(text.size()));
}

// Whether a write ends where 32-bit positions reach; false with errno set.
bool TFileHandler::HasRoomFor(std::size_t size) {
  if (size <= m_room) return true;
  if (!GetRoom(m_descriptor, m_room)) return false;
  if (size <= m_room) return true;
  errno = EFBIG;
  return false;
}

bool TFileHandler::WriteText(const char* text) {
  bool ok = false;  // as it stays for an empty text
  while (*text != '\0') {
    const std::size_t segment = std::strcspn(text, "\n");
    ok = WriteBytes(text, segment);
    text += segment;
    if (!ok || *text == '\0') break;
    ok = WriteBytes(kLineEnd, sizeof kLineEnd);
    if (!ok) break;
    ++text;
  }
  return ok;
}
