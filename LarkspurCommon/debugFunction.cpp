// Each thread's indentation, and the scoped objects that raise it.

#include <pthread.h>

#include <cstddef>
#include <cstdint>

#include "LarkspurCommon/debug.h"
#include "LarkspurCommon/debugState.h"
#include "platform/HoldCancellation.h"

namespace {

constexpr DWORD kIndentStep = 2;
constexpr DWORD kMaxIndent = 0xFFFFFFFF;

// The thread-specific value is the indentation itself. 0: no key.
std::atomic<pthread_key_t> s_dwIndentTlsIndex{0};

DWORD Indent(pthread_key_t key) {
  return static_cast<DWORD>(reinterpret_cast<std::uintptr_t>(pthread_getspecific(key)));
}

void SetIndent(pthread_key_t key, DWORD indent) {
  pthread_setspecific(key, reinterpret_cast<void*>(std::uintptr_t{indent}));
}

// A key other than 0, which here means that there is none. 0: no more keys.
pthread_key_t CreateNonZeroKey() {
  pthread_key_t key = 0;
  if (pthread_key_create(&key, nullptr) != 0) return 0;
  if (key != 0) return key;
  pthread_key_t another = 0;
  if (pthread_key_create(&another, nullptr) != 0) another = 0;
  pthread_key_delete(key);
  return another;
}

// The key of the process, created if need be. 0: no more keys.
pthread_key_t IndentKey() {
  pthread_key_t current = s_dwIndentTlsIndex.load();
  if (current != 0) return current;
  const pthread_key_t created = CreateNonZeroKey();
  if (created == 0 || s_dwIndentTlsIndex.compare_exchange_strong(current, created)) return created;
  pthread_key_delete(created);  // another thread was first
  return current;
}

void DeleteKey(pthread_key_t key) {
  if (s_dwIndentTlsIndex.compare_exchange_strong(key, 0)) pthread_key_delete(key);
}

// "> function(format)", cut at 255 characters, with no conversion but the caller's.
template <class Char>
class EnterTemplate {
 public:
  EnterTemplate(char const* function, Char const* format) {
    Put('>');
    Put(' ');
    if (function != nullptr) PutName(function);
    Put('(');
    for (; format != nullptr && *format != 0; ++format) Put(*format);
    Put(')');
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

  Char m_text[kMaxLength + 1];
  std::size_t m_length = 0;
};

}  // namespace

unsigned int GetThreadIndentLevel() {
  const pthread_key_t key = s_dwIndentTlsIndex.load();
  return key == 0 ? 0 : Indent(key);
}

void IncreaseThreadIndentLevel() {
  const pthread_key_t key = IndentKey();
  if (key == 0) return;
  const DWORD indent = Indent(key);
  SetIndent(key, indent < kMaxIndent - kIndentStep ? indent + kIndentStep : kMaxIndent);
}

void DecreaseThreadIndentLevel() {
  const pthread_key_t key = s_dwIndentTlsIndex.load();
  if (key == 0) return;
  const DWORD indent = Indent(key);
  if (indent < kIndentStep) {
    DeleteKey(key);
  } else {
    SetIndent(key, indent - kIndentStep);
  }
}

void DeleteIndentKey() {
  const pthread_key_t key = s_dwIndentTlsIndex.load();
  if (key != 0) DeleteKey(key);
}

CDebugIndentOutput::CDebugIndentOutput() {
  IncreaseThreadIndentLevel();
}

CDebugIndentOutput::~CDebugIndentOutput() {
  DecreaseThreadIndentLevel();
}

CDebugTraceFn::CDebugTraceFn(DWORD id, char const* function)
    : m_function(IsDebugEnabled(id) ? function : nullptr), m_id(id) {
  if (m_function == nullptr) return;
  DebugA(id, "> %s()", function);
  IncreaseThreadIndentLevel();
}

CDebugTraceFn::CDebugTraceFn(DWORD id, char const* function, char const* format, ...)
    : m_function(IsDebugEnabled(id) ? function : nullptr), m_id(id) {
  if (m_function == nullptr) return;
  va_list args;
  va_start(args, format);
  InternalTraceFnA(id, function, format, args);
  va_end(args);
}

CDebugTraceFn::CDebugTraceFn(DWORD id, char const* function, wchar_t const* format, ...)
    : m_function(IsDebugEnabled(id) ? function : nullptr), m_id(id) {
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
