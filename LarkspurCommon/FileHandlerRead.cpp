// Reading: through a cache, and in text mode line by line.
//
// Without a cache (the file is open for writing, or there was no memory) a single character stands
// in for it, so that lines are read by the same steps; blocks then go past it.

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "LarkspurCommon/FileHandler.h"
#include "LarkspurCommon/FileHandlerBoundary.h"
#include "LarkspurCommon/FileHandlerSystem.h"
#include "LarkspurCommon/LinePart.h"
#include "platform/Uninterrupted.h"

using namespace file_layer;

namespace {

constexpr char kRead[] = "bool TFileHandler::Read(void*, DWORD, DWORD*)";
constexpr char kCachedRead[] = "bool TFileHandler::CachedRead(void*, DWORD, DWORD*)";

bool IsLineEnd(char ch) {
  return ch == '\r' || ch == '\n';
}

// A line on its way into the caller's buffer, whose last place it leaves to the terminator.
class Line {
 public:
  Line(char* text, DWORD size) : m_text(text), m_room(size - 1) {}

  DWORD Length() const { return m_length; }
  bool IsComplete() const { return m_ended || m_length == m_room; }

  // Takes what belongs to the line from the front of `bytes`: how many, perhaps none.
  DWORD Take(const char* bytes, DWORD size) {
    if (m_lineEnd != '\0') return TakeSecondLineEnd(*bytes);
    const auto part = static_cast<DWORD>(
        CopyLinePart(m_text + m_length, bytes, std::min(size, m_room - m_length)));
    m_length += part;
    // The copy isn't read again: that would wait for it.
    const char last = bytes[part - 1];
    if (!IsLineEnd(last)) return part;
    m_lineEnd = last;
    if (part == size || m_length == m_room) return part;
    return part + TakeSecondLineEnd(bytes[part]);
  }

  // The length, with the line end, of one character or two, made one LF.
  DWORD Finish() {
    if (m_ended) m_text[m_length - 1] = '\n';
    m_text[m_length] = '\0';
    return m_length;
  }

 private:
  // The line ends before `next`, unless that makes a pair with the line end before it.
  DWORD TakeSecondLineEnd(char next) {
    m_ended = true;
    return IsLineEnd(next) && next != m_lineEnd ? 1 : 0;
  }

  char* const m_text;
  const DWORD m_room;
  DWORD m_length = 0;
  char m_lineEnd = '\0';
  bool m_ended = false;
};

}  // namespace

bool TFileHandler::Read(void* buffer, DWORD length, DWORD* got) {
  DWORD ignored;
  DWORD& delivered = got != nullptr ? *got : ignored;
  delivered = 0;
  bool thrown = false;
  const bool ok = AtDataBoundary(kRead, __LINE__, thrown, [&] {
    if (!GetIsOpen()) return false;
    if (m_newLineMode != NLM_TEXT) return CachedRead(buffer, length, &delivered);
    return ReadLine(static_cast<char*>(buffer), length, delivered);
  });
  if (thrown) {  // by a host's version of one of these
    m_failedSinceOpen = true;
    m_endOfFile = delivered == 0;
  }
  return ok;
}

// What the cache holds is there at once; the rest may fail.
bool TFileHandler::CachedRead(void* buffer, DWORD length, DWORD* got) {
  auto* const out = static_cast<char*>(buffer);
  DWORD delivered = TakeUnread(out, length);
  bool ok = true;
  if (delivered < length) {
    ok = AtBoundary(kCachedRead, __LINE__, false,
                    [&] { return ReadPastCache(out, length, delivered); });
  }
  if (got != nullptr) *got = delivered;
  return ok;
}

bool TFileHandler::EndOfFile() {
  return m_endOfFile;
}

DWORD TFileHandler::TakeUnread(char* out, DWORD length) {
  const DWORD taken = std::min(length, Unread());
  if (taken == 0) return 0;
  std::memcpy(out, Window() + m_cachePosition, taken);
  m_cachePosition += taken;
  return taken;
}

// One `read`. `taken` is what the caller got from the cache: the file ends, or a failure ends it,
// where nothing at all is delivered.
bool TFileHandler::ReadDescriptor(char* out, DWORD size, DWORD taken, DWORD& delivered) {
  m_room = 0;
  const ssize_t result = Uninterrupted([&] { return ::read(m_descriptor, out, size); });
  const int error = errno;
  delivered = result > 0 ? static_cast<DWORD>(result) : 0;
  m_endOfFile = taken == 0 && delivered == 0;
  return result >= 0 || FailData(kCachedRead, error, "reading data from");
}

bool TFileHandler::Refill(DWORD taken) {
  EmptyCache();
  return ReadDescriptor(Window(), WindowSize(), taken, m_cacheCount);
}

// Goes on where the cache has ended, with `got` of the `length` bytes delivered.
bool TFileHandler::ReadPastCache(char* out, DWORD length, DWORD& got) {
  const DWORD left = length - got;
  bool ok;
  DWORD more;
  if (left < WindowSize()) {
    ok = Refill(got);
    more = TakeUnread(out + got, left);
  } else {
    ok = ReadDescriptor(out + got, left, got, more);
  }
  got += more;
  return ok;
}

bool TFileHandler::ReadLine(char* buffer, DWORD length, DWORD& got) {
  if (length == 0) return false;
  Line line(buffer, length);
  bool ok = true;
  while (ok && !line.IsComplete() && !m_endOfFile) {
    if (Unread() == 0) {
      ok = Refill(0);
    } else {
      m_cachePosition += line.Take(Window() + m_cachePosition, Unread());
    }
  }
  got = line.Finish();
  if (ok && got > 0) m_endOfFile = false;
  return ok;
}
