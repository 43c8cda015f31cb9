// Reading: through a cache, and in text mode line by line.
//
// Without a cache (the file is open for writing, or there was no memory) a single character stands
// in for it, so that lines are read by the same steps; blocks then go past it.

#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "LarkspurCommon/FileHandler.h"
#include "LarkspurCommon/FileHandlerBoundary.h"
#include "LarkspurCommon/FileHandlerSystem.h"

using namespace file_layer;

namespace {

constexpr char kRead[] = "bool TFileHandler::Read(void*, DWORD, DWORD*)";
constexpr char kCachedRead[] = "bool TFileHandler::CachedRead(void*, DWORD, DWORD*)";

bool IsLineEnd(char ch) {
  return ch == '\r' || ch == '\n';
}

// The length of what comes up to and including the first CR or LF: all of it when there is none.
DWORD LinePartLength(const char* text, DWORD size) {
  if (const void* lf = std::memchr(text, '\n', size)) {
    size = static_cast<DWORD>(static_cast<const char*>(lf) - text) + 1;
  }
  if (const void* cr = std::memchr(text, '\r', size)) {
    size = static_cast<DWORD>(static_cast<const char*>(cr) - text) + 1;
  }
  return size;
}

// Turns the line end, of one character or two, into one LF.
void NormaliseLineEnd(char* line, DWORD& length) {
  if (length > 1 && IsLineEnd(line[length - 2])) --length;
  line[length - 1] = '\n';
}

}  // namespace

bool TFileHandler::Read(void* buffer, DWORD length, DWORD* got) {
  DWORD ignored;
  DWORD& delivered = got != nullptr ? *got : ignored;
  delivered = 0;
  return AtBoundary(kRead, __LINE__, false, [&] {
    if (!GetIsOpen()) return false;
    if (m_newLineMode != NLM_TEXT) return CachedRead(buffer, length, &delivered);
    return ReadLine(static_cast<char*>(buffer), length, delivered);
  });
}

bool TFileHandler::CachedRead(void* buffer, DWORD length, DWORD* got) {
  DWORD ignored;
  DWORD& delivered = got != nullptr ? *got : ignored;
  delivered = 0;
  return AtBoundary(kCachedRead, __LINE__, false,
                    [&] { return ReadBytes(static_cast<char*>(buffer), length, delivered); });
}

bool TFileHandler::EndOfFile() {
  return m_endOfFile;
}

char* TFileHandler::Window() {
  return m_cache ? m_cache.get() : &m_reserve;
}

DWORD TFileHandler::WindowSize() const {
  return m_cache ? kCacheSize : DWORD{sizeof m_reserve};
}

DWORD TFileHandler::Unread() const {
  return m_cacheCount - m_cachePosition;
}

void TFileHandler::EmptyCache() {
  m_cachePosition = 0;
  m_cacheCount = 0;
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

bool TFileHandler::ReadBytes(char* out, DWORD length, DWORD& got) {
  got = TakeUnread(out, length);
  const DWORD left = length - got;
  if (left == 0) return true;
  bool ok;
  DWORD more;
  if (left < WindowSize()) {
    ok = Refill(got);
    more = TakeUnread(out + got, left);
  } else {
    EmptyCache();
    ok = ReadDescriptor(out + got, left, got, more);
  }
  got += more;
  return ok;
}

bool TFileHandler::ReadLine(char* line, DWORD length, DWORD& got) {
  if (length == 0) return false;
  const DWORD room = length - 1;  // the terminator's place is kept
  bool ok = true;
  bool ended = false;
  while (ok && got < room && !ended && !m_endOfFile) {
    if (Unread() == 0) {
      ok = Refill(0);
    } else if (got > 0 && IsLineEnd(line[got - 1])) {
      got += TakeSecondLineEnd(line + got);
      ended = true;
    } else {
      got += TakeLinePart(line + got, room - got);
    }
  }
  line[got] = '\0';
  if (!ok || got == 0) return ok;
  if (ended) {
    NormaliseLineEnd(line, got);
    line[got] = '\0';
  }
  m_endOfFile = false;
  return true;
}

DWORD TFileHandler::TakeLinePart(char* out, DWORD room) {
  return TakeUnread(out, LinePartLength(Window() + m_cachePosition, std::min(room, Unread())));
}

// Takes the next character, which follows a CR or LF, if it makes a pair with that one.
DWORD TFileHandler::TakeSecondLineEnd(char* out) {
  const char next = Window()[m_cachePosition];
  return IsLineEnd(next) && next != out[-1] ? TakeUnread(out, 1) : 0;
}
