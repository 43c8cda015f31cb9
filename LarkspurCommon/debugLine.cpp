// Building one trace line, narrow or wide, in the caller's stack, and handing it out.

#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <iterator>

#include "LarkspurCommon/FlagScope.h"
#include "LarkspurCommon/debug.h"
#include "LarkspurCommon/debugState.h"
#include "platform/HostServices.h"
#include "platform/OwnFunction.h"
#include "platform/Win32Compat.h"

char s_szModuleNameA[9];
wchar_t s_szModuleNameW[9];
std::atomic<bool> s_moduleNamed{false};

namespace {

constexpr std::size_t kMaxLength = 1023;
constexpr std::size_t kModuleNameLength = sizeof s_szModuleNameA - 1;
constexpr unsigned long kConsoleMask = 0xFFFFFFFF;

constexpr unsigned long long Power(unsigned base, int exponent) {
  return exponent == 0 ? 1 : base * Power(base, exponent - 1);
}

constexpr char kDigits[] = "0123456789abcdef";

// With as many digits as it takes.
template <unsigned kBase, class Char>
[[gnu::noinline]] Char* PutWideNumber(Char* out, unsigned long value) {
  Char* end = out;
  for (unsigned long above = value; above != 0; above /= kBase) ++end;
  for (Char* at = end; at != out; value /= kBase) *--at = static_cast<Char>(kDigits[value % kBase]);
  return end;
}

// Numbers as printf writes them with a zero flag and this minimum width; printf itself would cost
// several times the rest of the line.
template <unsigned kBase, int kWidth, class Char>
[[gnu::always_inline]] inline Char* PutNumber(Char* out, unsigned long value) {
  if (value >= Power(kBase, kWidth)) return PutWideNumber<kBase>(out, value);
  auto rest = static_cast<std::uint32_t>(value);
  for (int i = kWidth; i-- > 0; rest /= kBase) out[i] = static_cast<Char>(kDigits[rest % kBase]);
  return out + kWidth;
}

// A part of the prefix that a thread keeps from line to line.
struct KeptText {
  char text[40];
  unsigned length;  // 0 until it is first used

  void End(char const* end) { length = static_cast<unsigned>(end - text); }
};

// All of it is copied, since a fixed number is faster. Behind the prefix there is room for that.
[[gnu::always_inline]] inline char* PutKept(char* out, KeptText const& kept) {
  std::memcpy(out, kept.text, sizeof kept.text);
  return out + kept.length;
}

[[gnu::always_inline]] inline wchar_t* PutKept(wchar_t* out, KeptText const& kept) {
  std::copy(std::begin(kept.text), std::end(kept.text), out);
  return out + kept.length;
}

// What the calling thread keeps.
struct ThreadState {
  SYSTEMTIME second;    // whose text is kept
  KeptText time;        // "day/month hour:minute:second."
  KeptText ids;         // "process,thread handle,kernel thread: "
  bool inGetLocalTime;  // the host's version is running
};
thread_local ThreadState t_state;

// Apart, so that the address is worked out once a line.
[[gnu::noinline]] ThreadState& State() {
  return t_state;
}

bool IsSameSecond(SYSTEMTIME const& a, SYSTEMTIME const& b) {
  return a.wSecond == b.wSecond && a.wMinute == b.wMinute && a.wHour == b.wHour &&
         a.wDay == b.wDay && a.wMonth == b.wMonth;
}

// A signal's handler may trace meanwhile: it finds nothing kept. At worst the interrupted line
// mixes the two seconds, and with it lines of its own second, should the clock be set back into
// that.
void RememberSecond(ThreadState& state, SYSTEMTIME const& now) {
  state.time.length = 0;
  std::atomic_signal_fence(std::memory_order_seq_cst);
  char* out = PutNumber<10, 2>(state.time.text, now.wDay);
  *out++ = '/';
  out = PutNumber<10, 2>(out, now.wMonth);
  *out++ = ' ';
  out = PutNumber<10, 2>(out, now.wHour);
  *out++ = ':';
  out = PutNumber<10, 2>(out, now.wMinute);
  *out++ = ':';
  out = PutNumber<10, 2>(out, now.wSecond);
  *out++ = '.';
  std::atomic_signal_fence(std::memory_order_seq_cst);
  state.second = now;
  state.time.End(out);
}

// In a new process the forking thread, the only one left, has other ids.
void ForgetIds() {
  t_state.ids.length = 0;
}

void RememberIds(ThreadState& state) {
  [[maybe_unused]] static const int watching = pthread_atfork(nullptr, nullptr, ForgetIds);
  char* out = PutNumber<16, 4>(state.ids.text, static_cast<unsigned>(getpid()));
  *out++ = ',';
  out = PutNumber<16, 8>(out, pthread_self());
  *out++ = ',';
  out = PutNumber<10, 5>(out, static_cast<unsigned>(syscall(SYS_gettid)));
  *out++ = ':';
  *out++ = ' ';
  state.ids.End(out);
}

// A host's GetLocalTime may trace: those lines show no time instead of asking for it again.
void AskLocalTime(ThreadState& state, SYSTEMTIME& now) {
  if (state.inGetLocalTime) return;
  const FlagScope asking(state.inGetLocalTime);
  GetLocalTime(&now);
}

char* PutModuleName(char* out) {
  return std::copy_n(s_szModuleNameA, kModuleNameLength, out);
}

wchar_t* PutModuleName(wchar_t* out) {
  return std::copy_n(s_szModuleNameW, std::wcslen(s_szModuleNameW), out);
}

__attribute__((format(printf, 3, 0))) int FormatText(char* out, std::size_t size,
                                                     char const* format, va_list args) {
  return std::vsnprintf(out, size, format, args);
}

int FormatText(wchar_t* out, std::size_t size, wchar_t const* format, va_list args) {
  return std::vswprintf(out, size, format, args);
}

template <class Char>
class TraceLine {
 public:
  explicit TraceLine(DWORD id) {
    PutPrefix(id);
    PutIndentation();
  }

  // Appends the message and ends the line. False: nothing of the message could be formatted.
  bool Finish(Char const* format, va_list args) {
    if (!PutMessage(format, args)) return false;
    End();
    return true;
  }

  Char const* Text() const { return m_text; }
  unsigned int Length() const { return static_cast<unsigned int>(m_length); }

 private:
  void PutPrefix(DWORD id);
  void PutIndentation();
  bool PutMessage(Char const* format, va_list args);
  void End();

  Char m_text[kMaxLength + 1];
  std::size_t m_length;
};

// "%02hu/%02hu %02hu:%02hu:%02hu.%03hu %s (%02hx,%c) %04x,%08lx,%05ld: ", which always fits.
template <class Char>
void TraceLine<Char>::PutPrefix(DWORD id) {
  ThreadState& state = State();
  SYSTEMTIME now{};
  AskLocalTime(state, now);
  if (!IsSameSecond(now, state.second) || state.time.length == 0) RememberSecond(state, now);
  Char* out = PutKept(m_text, state.time);
  out = PutNumber<10, 3>(out, now.wMilliseconds);
  *out++ = ' ';
  if (s_moduleNamed.load(std::memory_order_acquire)) out = PutModuleName(out);
  *out++ = ' ';
  *out++ = '(';
  out = PutNumber<16, 2>(out, id >> 16);
  *out++ = ',';
  const DWORD level = id & 0xFFFF;
  *out++ = static_cast<Char>(level <= 9 ? '0' + level : '?');
  *out++ = ')';
  *out++ = ' ';
  if (state.ids.length == 0) RememberIds(state);
  out = PutKept(out, state.ids);
  m_length = static_cast<std::size_t>(out - m_text);
}

template <class Char>
void TraceLine<Char>::PutIndentation() {
  const std::size_t spaces = std::min<std::size_t>(GetThreadIndentLevel(), kMaxLength - m_length);
  if (spaces > 0) std::fill_n(m_text + m_length, spaces, Char(' '));
  m_length += spaces;
  m_text[m_length] = 0;
}

template <class Char>
bool TraceLine<Char>::PutMessage(Char const* format, va_list args) {
  if (m_length == kMaxLength) return true;  // the indentation took it all
  Char* const message = m_text + m_length;
  const std::size_t room = kMaxLength - m_length;
  const int length = FormatText(message, room, format, args);
  if (length >= 0 && static_cast<std::size_t>(length) < room) {
    m_length += static_cast<std::size_t>(length);
    return true;
  }
  // Truncated, or refused part of the way: then blanks stand for what is missing. (The wide
  // formatter doesn't tell the two apart.)
  Char* const last = m_text + kMaxLength - 1;
  Char* const end = length < 0 ? std::find(message, last, Char(0)) : last;
  if (end == message) return false;
  std::fill(end, last, Char(' '));
  m_length = kMaxLength;
  return true;
}

// A line that was cut is a character longer than the longest that wasn't.
template <class Char>
void TraceLine<Char>::End() {
  if (m_length == kMaxLength) {
    m_text[kMaxLength - 1] = '\n';
  } else if (m_text[m_length - 1] != '\n') {
    if (m_length < kMaxLength - 1) ++m_length;
    m_text[m_length - 1] = '\n';
  }
  m_text[m_length] = 0;
}

// For the console: multibyte, at most 1023 bytes and a line feed at the end whatever was cut. What
// the encoding doesn't have becomes a question mark.
class ConsoleText {
 public:
  explicit ConsoleText(wchar_t const* line) {
    std::size_t length = 0;
    std::mbstate_t state{};
    for (; *line != 0; ++line) {
      char bytes[16];  // MB_LEN_MAX
      std::size_t count = std::wcrtomb(bytes, *line, &state);
      if (count == static_cast<std::size_t>(-1)) {
        state = {};
        bytes[0] = '?';
        count = 1;
      }
      if (length + count >= kMaxLength) break;
      std::copy_n(bytes, count, m_text + length);
      length += count;
    }
    if (m_text[length - 1] != '\n') m_text[length++] = '\n';
    m_text[length] = '\0';
  }
  char const* Text() const { return m_text; }

 private:
  char m_text[kMaxLength + 1];
};

void HandOut(TraceLine<char> const& line) {
  if (const NarrowHook hook = s_lpfndbgAHook.load()) {
    hook(line.Text(), line.Length());
  } else {
    ConsolePrint(kConsoleMask, "%s", line.Text());
  }
}

void HandOut(TraceLine<wchar_t> const& line) {
  if (const WideHook hook = s_lpfndbgWHook.load()) {
    hook(line.Text(), line.Length());
  } else {
    ConsolePrint(kConsoleMask, "%s", ConsoleText(line.Text()).Text());
  }
}

// Apart from the filter: what a line needs must not cost those that aren't written.
template <class Char>
[[gnu::noinline]] void Write(DWORD id, Char const* format, va_list args) {
  const KeepErrno keep;
  TraceLine<Char> line(id);
  keep.Restore();
  if (line.Finish(format, args)) HandOut(line);
}

bool IsWanted(DWORD id) {
  return id == kUnconditional || IsDebugEnabled(id);
}

// A host's filter may change errno. Ours doesn't, and so costs less.
template <class Char>
[[gnu::noinline]] void AskHost(DWORD id, Char const* format, va_list args) {
  const KeepErrno keep;
  if (!IsWanted(id)) return;
  keep.Restore();
  Write(id, format, args);
}

template <class Char>
[[gnu::always_inline]] inline void WriteIfWanted(DWORD id, Char const* format, va_list args) {
  if (!IsOwn(&IsDebugEnabled, &OwnIsDebugEnabled)) return AskHost(id, format, args);
  if (IsWanted(id)) Write(id, format, args);
}

}  // namespace

void __InternalDebugA(DWORD id, char const* format, va_list args) {
  WriteIfWanted(id, format, args);
}

void __InternalDebugW(DWORD id, wchar_t const* format, va_list args) {
  WriteIfWanted(id, format, args);
}

// How symbols name a va_list.
#ifdef __i386__
#define VA_LIST_SYMBOL "Pc"
#else
#define VA_LIST_SYMBOL "P13__va_list_tag"
#endif

void OwnInternalDebugA(DWORD id, char const* format, va_list args)
    __attribute__((alias("_Z16__InternalDebugAjPKc" VA_LIST_SYMBOL)));
void OwnInternalDebugW(DWORD id, wchar_t const* format, va_list args)
    __attribute__((alias("_Z16__InternalDebugWjPKw" VA_LIST_SYMBOL)));

// Where the next call isn't a host's, what it does is done here: a call less for each that the
// filter stops.
void __DebugA(DWORD id, char const* format, va_list args) {
  RunGuarded("void __DebugA(DWORD, const char*, va_list)", __LINE__, [&] {
    if (IsOwn(&__InternalDebugA, &OwnInternalDebugA)) return WriteIfWanted(id, format, args);
    __InternalDebugA(id, format, args);
  });
}

void __DebugW(DWORD id, wchar_t const* format, va_list args) {
  RunGuarded("void __DebugW(DWORD, const wchar_t*, va_list)", __LINE__, [&] {
    if (IsOwn(&__InternalDebugW, &OwnInternalDebugW)) return WriteIfWanted(id, format, args);
    __InternalDebugW(id, format, args);
  });
}
