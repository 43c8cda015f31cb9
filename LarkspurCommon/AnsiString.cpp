// The string class that counts from 1, and the functions that go with it.

#include "LarkspurCommon/AnsiString.h"

#include <cstdarg>
#include <cstdlib>

namespace {

using Self = AnsiString&;

constexpr char kBlanks[] = " \n\r\t";

bool IsInside(AnsiString const& s, long long position) {
  return position >= 1 && position <= static_cast<long long>(s.size());
}

bool HasTrailingSeparator(AnsiString const& path) {
  const char last = path[path.Length()];
  return last == '\\' || last == '/';
}

// A position in std::string's count in that of AnsiString: 0 for npos.
int Position(std::size_t index) {
  return static_cast<int>(index + 1);
}

}  // namespace

wchar_t bstrEmpty[1] = L"";

AnsiString::AnsiString(AnsiString const& s) : tstring(s) {
}

AnsiString::AnsiString(char const* s) : tstring(s) {
}

AnsiString::AnsiString(wchar_t const* s) : tstring(s) {
}

AnsiString::AnsiString(unsigned char const* s) : tstring(s) {
}

AnsiString::AnsiString(tstring const& s) : tstring(s) {
}

AnsiString::AnsiString(char const* s, int n) : tstring(s, n < 0 ? 0 : static_cast<unsigned>(n)) {
}

AnsiString::AnsiString(char ch) : tstring(ch) {
}

AnsiString::AnsiString(int value) : tstring(value) {
}

AnsiString::AnsiString(unsigned long value) : tstring(value) {
}

AnsiString::~AnsiString() {
  std::free(m_wide);
}

AnsiString& AnsiString::operator=(AnsiString const& s) {
  if (this != &s) tstring::operator=(s);
  return *this;
}

AnsiString& AnsiString::operator=(char ch) {
  return *this = tstring(ch);
}

#define DEFINE_AS_INHERITED(Operator, Operand) \
  Self AnsiString::Operator(Operand value) {   \
    tstring::Operator(value);                  \
    return *this;                              \
  }
DEFINE_AS_INHERITED(operator=, tstring const&)
DEFINE_AS_INHERITED(operator=, char const*)
DEFINE_AS_INHERITED(operator=, wchar_t const*)
DEFINE_AS_INHERITED(operator=, unsigned char const*)
DEFINE_AS_INHERITED(operator+=, long)
DEFINE_AS_INHERITED(operator+=, int)
DEFINE_AS_INHERITED(operator+=, unsigned int)
DEFINE_AS_INHERITED(operator+=, unsigned long)
DEFINE_AS_INHERITED(operator+=, char)
DEFINE_AS_INHERITED(operator+=, unsigned char)
DEFINE_AS_INHERITED(operator+=, wchar_t)
DEFINE_AS_INHERITED(operator+=, AnsiString const&)
DEFINE_AS_INHERITED(operator+=, char const*)
DEFINE_AS_INHERITED(operator+=, wchar_t const*)
DEFINE_AS_INHERITED(operator+=, unsigned char const*)
#undef DEFINE_AS_INHERITED

AnsiString::operator wchar_t const*() const {
  wchar_t* wide = nullptr;
  Convert(*this, &wide);  // before the free, so that two calls in a row give different buffers
  std::free(m_wide);
  m_wide = wide;
  return m_wide != nullptr ? m_wide : bstrEmpty;
}

AnsiString::operator wchar_t*() {
  return const_cast<wchar_t*>(static_cast<AnsiString const&>(*this).operator wchar_t const*());
}

int AnsiString::AnsiCompare(char const* s, unsigned int n) const {
  return Compare(s, n);
}

int AnsiString::AnsiCompareIC(char const* s, unsigned int n) const {
  return CompareNoCase(s, n);
}

int AnsiString::Length() const {
  return static_cast<int>(size());
}

bool AnsiString::IsEmpty() const {
  return empty();
}

void AnsiString::Clear() {
  clear();
}

void AnsiString::SetLength(int n) {
  if (n >= 0) resize(static_cast<std::size_t>(n));
}

AnsiString AnsiString::SubString(int start, int count) const {
  if (!IsInside(*this, start) || count < 1) return AnsiString();
  return tstring(*this, static_cast<unsigned int>(start - 1), static_cast<unsigned int>(count));
}

AnsiString& AnsiString::Delete(int start, int count) {
  if (IsInside(*this, start) && count > 0) {
    erase(static_cast<std::size_t>(start - 1), static_cast<std::size_t>(count));
  }
  return *this;
}

AnsiString AnsiString::Trim() const {
  const int first = Position(find_first_not_of(kBlanks));
  const int last = Position(find_last_not_of(kBlanks));
  return SubString(first, last - first + 1);
}

int AnsiString::LastDelimiter(char const* delimiters) const {
  return Position(find_last_of(tstring(delimiters)));
}

bool AnsiString::IsDelimiter(AnsiString const& delimiters, int i) const {
  return IsInside(*this, i) && delimiters.find((*this)[i]) != npos;
}

int AnsiString::AnsiPos(char const* s) const {
  return Find(s) + 1;
}

int AnsiString::Pos(char const* s) const {
  return Find(s) + 1;
}

AnsiString& AnsiString::sprintf(char const* format, ...) {
  va_list args;
  va_start(args, format);
  FormatV(format, args);
  va_end(args);
  return *this;
}

int AnsiString::ToInt() const {
  return tstring::operator int();
}

AnsiString AnsiString::UpperCase() const {
  AnsiString result(*this);
  result.MakeUpper();
  return result;
}

char& AnsiString::At(long long position) {
  thread_local char outside;
  if (IsInside(*this, position)) return data()[position - 1];
  outside = '\0';
  return outside;
}

char const& AnsiString::At(long long position) const {
  return IsInside(*this, position) ? data()[position - 1] : data()[size()];
}

bool operator==(AnsiString const& left, AnsiString const& right) {
  return left.Compare(right) == 0;
}

bool operator==(AnsiString const& left, char const* right) {
  return left.Compare(right) == 0;
}

bool operator!=(AnsiString const& left, AnsiString const& right) {
  return left.Compare(right) != 0;
}

bool operator!=(AnsiString const& left, char const* right) {
  return left.Compare(right) != 0;
}

bool operator<(AnsiString const& left, AnsiString const& right) {
  return left.Compare(right) < 0;
}

AnsiString operator+(AnsiString const& left, AnsiString const& right) {
  return AnsiString(left) += right;
}

AnsiString operator+(AnsiString const& left, char const* right) {
  return AnsiString(left) += right;
}

AnsiString operator+(char const* left, AnsiString const& right) {
  return AnsiString(left) += right;
}

int StrToIntDef(char const* s, int def) {
  const tstring text(s);
  char const* const end = text.c_str() + text.size();
  const bool digits = tstring::Facet().scan_not(std::ctype_base::digit, text, end) == end;
  return digits && !text.empty() ? static_cast<int>(text) : def;
}

AnsiString IncludeTrailingBackslash(AnsiString const& path) {
  return path.IsEmpty() || HasTrailingSeparator(path) ? path : path + "\\";
}

AnsiString ExcludeTrailingBackslash(AnsiString const& path) {
  return HasTrailingSeparator(path) ? path.SubString(1, path.Length() - 1) : path;
}

AnsiString StringReplace(char const* text, char const* from, char const* to) {
  AnsiString result(text);
  result.Replace(from, to);
  return result;
}
