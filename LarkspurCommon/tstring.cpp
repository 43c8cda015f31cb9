// Making, assigning, appending and concatenating strings, from each type that can become text.

#include "LarkspurCommon/tstring.h"

#include "platform/Win32Compat.h"

// The types that NumberText formats.
#define FOR_EACH_NUMBER(X) \
  X(int)                   \
  X(unsigned int)          \
  X(long)                  \
  X(unsigned long)         \
  X(long long)             \
  X(unsigned long long)    \
  X(float)                 \
  X(double)                \
  X(void const*)

// The types besides tstring itself that stand on either side of a plus.
#define FOR_EACH_OPERAND(X) \
  FOR_EACH_NUMBER(X)        \
  X(char)                   \
  X(unsigned char)          \
  X(wchar_t)                \
  X(std::string const&)     \
  X(std::wstring const&)    \
  X(char const*)            \
  X(wchar_t const*)         \
  X(unsigned char*)         \
  X(GUID const&)

namespace {

constexpr char kSource[] = "tstring.cpp";
constexpr unsigned int kAll = 0xFFFFFFFF;

// A number as text. The buffer holds the longest, a negative double's 27 characters.
struct NumberText {
  explicit NumberText(int value) { sprintf_s(text, sizeof text, "%d", value); }
  explicit NumberText(unsigned int value) { sprintf_s(text, sizeof text, "%u", value); }
  explicit NumberText(long value) { sprintf_s(text, sizeof text, "%ld", value); }
  explicit NumberText(unsigned long value) : NumberText(static_cast<DWORD>(value)) {}
  explicit NumberText(long long value) { sprintf_s(text, sizeof text, "%lld", value); }
  explicit NumberText(unsigned long long value) { sprintf_s(text, sizeof text, "%llu", value); }
  explicit NumberText(float value) : NumberText(double{value}) {}
  explicit NumberText(double value) { sprintf_s(text, sizeof text, "%.*g", 20, value); }
  explicit NumberText(void const* value) { sprintf_s(text, sizeof text, "%p", value); }

  char text[40] = "";
};

// s, or an empty string in place of a null one, which is reported.
char const* Checked(char const* s, char const* message, int line = __builtin_LINE()) {
  if (tstring::IsValidString(s, kAll)) return s;
  tstring::Assert(kSource, line, message);
  return "";
}

char const* Checked(unsigned char const* s, char const* message, int line = __builtin_LINE()) {
  return Checked(reinterpret_cast<char const*>(s), message, line);
}

// Reports a null wide string, then traces it once more in the form that shows wide characters.
void CheckWide(wchar_t const* s, char const* message, int line = __builtin_LINE()) {
  if (tstring::IsValidString(s, kAll)) return;
  tstring::Assert(kSource, line, message);
  tstring::Trace("%s (0x%p: 0x%02x, 0x%02x, 0x%02x, 0x%02x)", message, static_cast<void const*>(s),
                 0u, 0u, 0u, 0u);
}

unsigned int Length(std::string const& s) {
  return static_cast<unsigned int>(s.size());
}

template <class Left, class Right>
tstring Concatenation(Left const& left, Right const& right) {
  tstring result(left);
  result += right;
  return result;
}

}  // namespace

tstring::tstring(char ch, unsigned int n) : std::string(n, ch) {
}

tstring::tstring(unsigned char ch, unsigned int n) : std::string(n, static_cast<char>(ch)) {
}

tstring::tstring(wchar_t ch, unsigned int n) {
  tstring once;
  once += ch;
  reserve(once.size() * n);
  for (unsigned int i = 0; i < n; ++i) append(once);
}

tstring::tstring(char const* s)
    : std::string(Checked(s, "Invalid string passed to tstring::tstring")) {
}

tstring::tstring(unsigned char const* s)
    : std::string(Checked(s, "Invalid string passed to tstring::tstring")) {
}

tstring::tstring(char const* s, unsigned int n)
    : std::string(Checked(s, "Invalid string passed to tstring::tstring"), s == nullptr ? 0 : n) {
}

tstring::tstring(wchar_t const* s) {
  ConvertToMultiByte(s, kAll, false);
}

tstring::tstring(tstring const& s, unsigned int pos, unsigned int n) : std::string(s, pos, n) {
}

tstring::tstring(std::string const& s) : std::string(s.c_str()) {
}

tstring::tstring(std::wstring const& s) : tstring(s.c_str()) {
}

tstring::tstring(GUID const& guid) {
  FromGuid2(guid, *this);
}

#define DEFINE_FOR_NUMBER(Number)                                        \
  tstring::tstring(Number value) : std::string(NumberText(value).text) { \
  }                                                                      \
  tstring& tstring::operator=(Number value) {                            \
    assign(NumberText(value).text);                                      \
    return *this;                                                        \
  }                                                                      \
  tstring& tstring::operator+=(Number value) {                           \
    append(NumberText(value).text);                                      \
    return *this;                                                        \
  }
FOR_EACH_NUMBER(DEFINE_FOR_NUMBER)
#undef DEFINE_FOR_NUMBER

tstring& tstring::operator=(char const* s) {
  assign(Checked(s, "Invalid string passed to tstring::operator="));
  return *this;
}

tstring& tstring::operator=(unsigned char const* s) {
  assign(Checked(s, "Invalid string passed to tstring::operator="));
  return *this;
}

tstring& tstring::operator=(wchar_t const* s) {
  CheckWide(s, "Invalid wide string passed to tstring::operator=");
  ConvertToMultiByte(s, kAll, true);
  return *this;
}

tstring& tstring::operator=(GUID const& guid) {
  return FromGuid2(guid, *this);
}

tstring& tstring::operator+=(char ch) {
  push_back(ch);
  return *this;
}

tstring& tstring::operator+=(unsigned char ch) {
  return *this += static_cast<char>(ch);
}

tstring& tstring::operator+=(wchar_t ch) {
  ConvertToMultiByte(&ch, 1, false);
  return *this;
}

tstring& tstring::operator+=(tstring const& s) {
  append(s);
  return *this;
}

tstring& tstring::operator+=(std::string const& s) {
  append(s);
  return *this;
}

tstring& tstring::operator+=(std::wstring const& s) {
  return *this += s.c_str();
}

tstring& tstring::operator+=(char const* s) {
  append(Checked(s, "Invalid string passed to tstring::operator+="));
  return *this;
}

tstring& tstring::operator+=(unsigned char const* s) {
  append(Checked(s, "Invalid string passed to tstring::operator+"));
  return *this;
}

tstring& tstring::operator+=(wchar_t const* s) {
  CheckWide(s, "Invalid wide string passed to tstring::operator+=");
  ConvertToMultiByte(s, kAll, false);
  return *this;
}

tstring& tstring::operator+=(GUID const& guid) {
  return *this += FromGuid(guid);
}

unsigned int tstring::Append(char ch) {
  return Length(*this += ch);
}

unsigned int tstring::Append(wchar_t ch) {
  return Length(*this += ch);
}

unsigned int tstring::Append(char const* s, int n) {
  char const* text = Checked(s, "Invalid string passed to tstring::Append");
  if (n < 0 || s == nullptr) return Length(append(text));
  return Length(append(text, static_cast<unsigned int>(n)));
}

unsigned int tstring::Append(wchar_t const* s, int n) {
  CheckWide(s, "Invalid wide string passed to tstring::Append");
  ConvertToMultiByte(s, n < 0 ? kAll : static_cast<unsigned int>(n), false);
  return Length(*this);
}

unsigned int tstring::Append(tstring const& s) {
  return Length(append(s));
}

unsigned int tstring::Delete(unsigned int pos, unsigned int n) {
  if (pos < size()) erase(pos, n);
  return Length(*this);
}

bool tstring::IsValidString(char const* s, unsigned int) {
  return s != nullptr;
}

bool tstring::IsValidString(wchar_t const* s, unsigned int) {
  return s != nullptr;
}

unsigned int tstring::Hash() const {
  unsigned int hash = Length(*this) * Length(*this);
  for (const char ch : *this) {
    hash = static_cast<unsigned char>(ch) ^ ((hash << 4) | (hash >> 28));
  }
  return hash;
}

tstring operator+(tstring const& left, tstring const& right) {
  return Concatenation(left, right);
}

#define DEFINE_FOR_OPERAND(Operand)                       \
  tstring operator+(tstring const& left, Operand right) { \
    return Concatenation(left, right);                    \
  }                                                       \
  tstring operator+(Operand left, tstring const& right) { \
    return Concatenation(left, right);                    \
  }
FOR_EACH_OPERAND(DEFINE_FOR_OPERAND)
#undef DEFINE_FOR_OPERAND
