// Each thread's indentation, and the scoped objects that raise it.

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "LarkspurCommon/debug.h"
#include "LarkspurCommon/debugState.h"
#include "platform/HoldCancellation.h"

namespace {

constexpr DWORD kIndentStep = 2;
constexpr DWORD kMaxIndent = 0xFFFFFFFF;

// A thread's indentation counts while its era is the process's, so one thread can restart all.
// Deleting a thread-specific-data key would do that too, but a thread that has just looked the key
// up would write through it into whoever was given it next.
struct ThreadIndent {
  DWORD era;
  DWORD spaces;
};
thread_local ThreadIndent t_indent;

// The era, in the place of such a key.
std::atomic<DWORD> s_dwIndentTlsIndex{0};

DWORD& Indent() {
  const DWORD era = s_dwIndentTlsIndex.load(std::memory_order_relaxed);
  if (t_indent.era != era) t_indent = {era, 0};
  return t_indent.spaces;
}

// The characters between a conversion's % and the letter that ends it.
template <class Char>
bool IsModifier(Char character) {
  constexpr std::string_view kModifiers = " #'*+-.$0123456789ILhjlqtz";
  return std::find(kModifiers.begin(), kModifiers.end(), character) != kModifiers.end();
}

// A format's next character or, where there is one, its next conversion.
template <class Char>
std::size_t PieceLength(Char const* format) {
  std::size_t length = 1;
  if (*format != '%') return length;
  while (IsModifier(format[length])) ++length;
  return format[length] == 0 ? length : length + 1;
}

// "> function(format)", cut at 255 characters, with no conversion but the caller's whole ones.
template <class Char>
class EnterTemplate {
 public:
  EnterTemplate(char const* function, Char const* format) {
    Put('>');
    Put(' ');
    if (function != nullptr) PutName(function);
    Put('(');
    if (format == nullptr || PutFormat(format)) Put(')');
    m_text[m_length] = 0;
  }
  Char const* Text() const { return m_text; }

 private:
  static constexpr std::size_t kMaxLength = 255;

  void Put(Char character) {
    if (m_length < kMaxLength) m_text[m_length++] = character;
  }

  // Byte by byte, also into wide characters. A % in it ("operator%") must not become a conversion.
  void PutName(char const* name) {
    for (; *name != '\0'; ++name) {
      if (*name == '%') {
        if (m_length + 2 > kMaxLength) return;
        Put('%');
      }
      Put(static_cast<Char>(static_cast<unsigned char>(*name)));
    }
  }

  // False: not all of it had room.
  bool PutFormat(Char const* format) {
    while (*format != 0) {
      const std::size_t length = PieceLength(format);
      if (m_length + length > kMaxLength) return false;
      std::copy_n(format, length, m_text + m_length);
      m_length += length;
      format += length;
    }
    return true;
  }

  Char m_text[kMaxLength + 1];
  std::size_t m_length = 0;
};

// What is to be traced: `function`, or null where the filter, which may be a host's, lets nothing
// through.
char const* Traced(DWORD id, char const* function) {
  const KeepErrno keep;
  bool isWanted = false;
  RunGuarded("CDebugTraceFn::CDebugTraceFn(DWORD, const char*)", __LINE__,
             [&] { isWanted = IsDebugEnabled(id); });
  return isWanted ? function : nullptr;
}

}  // namespace

unsigned int GetThreadIndentLevel() {
  return Indent();
}

void IncreaseThreadIndentLevel() {
  DWORD& indent = Indent();
  indent = indent < kMaxIndent - kIndentStep ? indent + kIndentStep : kMaxIndent;
}

void DecreaseThreadIndentLevel() {
  DWORD& indent = Indent();
  if (indent < kIndentStep) {
    RestartIndentation();
  } else {
    indent -= kIndentStep;
  }
}

void RestartIndentation() {
  s_dwIndentTlsIndex.fetch_add(1, std::memory_order_relaxed);
}

CDebugIndentOutput::CDebugIndentOutput() {
  IncreaseThreadIndentLevel();
}

CDebugIndentOutput::~CDebugIndentOutput() {
  DecreaseThreadIndentLevel();
}

CDebugTraceFn::CDebugTraceFn(DWORD id, char const* function)
    : m_function(Traced(id, function)), m_id(id) {
  if (m_function == nullptr) return;
  DebugA(id, "> %s()", function);
  IncreaseThreadIndentLevel();
}

CDebugTraceFn::CDebugTraceFn(DWORD id, char const* function, char const* format, ...)
    : m_function(Traced(id, function)), m_id(id) {
  if (m_function == nullptr) return;
  va_list args;
  va_start(args, format);
  InternalTraceFnA(id, function, format, args);
  va_end(args);
}

CDebugTraceFn::CDebugTraceFn(DWORD id, char const* function, wchar_t const* format, ...)
    : m_function(Traced(id, function)), m_id(id) {
  if (m_function == nullptr) return;
  va_list args;
  va_start(args, format);
  InternalTraceFnW(id, function, format, args);
  va_end(args);
}

CDebugTraceFn::~CDebugTraceFn() {
  if (m_function == nullptr) return;
  const HoldCancellation hold;
  RunGuarded("virtual CDebugTraceFn::~CDebugTraceFn()", __LINE__, [this] {
    DecreaseThreadIndentLevel();
    DebugA(m_id, "< %s()", m_function);
  });
}

void InternalTraceFnA(DWORD id, char const* function, char const* format, va_list args) {
  RunGuarded("void InternalTraceFnA(DWORD, const char*, const char*, va_list)", __LINE__, [&] {
    __DebugA(id, EnterTemplate<char>(function, format).Text(), args);
    IncreaseThreadIndentLevel();
  });
}

void InternalTraceFnW(DWORD id, char const* function, wchar_t const* format, va_list args) {
  RunGuarded("void InternalTraceFnW(DWORD, const char*, const wchar_t*, va_list)", __LINE__, [&] {
    __DebugW(id, EnterTemplate<wchar_t>(function, format).Text(), args);
    IncreaseThreadIndentLevel();
  });
}
