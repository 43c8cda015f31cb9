// Comparing, searching, trimming and changing text.

#include <algorithm>
#include <cstring>
#include <mutex>

#include "LarkspurCommon/tstring.h"

namespace {

constexpr char kSource[] = "tstringText.cpp";

void CutAtNul(std::string& s) {
  s.resize(std::strlen(s.c_str()));
}

int ComparedWithNull(std::string const& s, char const* function) {
  tstring::TraceAndBreak("%s: Invalid string parameter\n", function);
  return s.empty() ? 0 : -1;
}

}  // namespace

std::locale const* tstring::m_pLoc = nullptr;

std::locale const& tstring::Locale() {
  static std::once_flag created;
  std::call_once(created, [] { m_pLoc = new std::locale; });
  return *m_pLoc;
}

std::ctype<char> const& tstring::Facet() {
  static auto const& facet = std::use_facet<std::ctype<char>>(Locale());
  return facet;
}

int tstring::Compare(char const* s, unsigned int n) const {
  if (s == nullptr) return ComparedWithNull(*this, "tstring::Compare");
  return std::strncmp(c_str(), s, n);
}

int tstring::CompareNoCase(char const* s, unsigned int n) const {
  if (s == nullptr) return ComparedWithNull(*this, "tstring::CompareNoCase");
  return ::strncasecmp(c_str(), s, n);
}

bool operator<(tstring const& left, tstring const& right) {
  return std::strcmp(left.c_str(), right.c_str()) < 0;
}

bool operator>(char const* left, tstring const& right) {
  return right.Compare(left) < 0;
}

int tstring::Find(char const* s) const {
  if (!IsValidString(s, 0)) {
    Assert(kSource, __LINE__, "Invalid string passed to tstring::Find");
    return -1;
  }
  const std::size_t pos = empty() ? npos : find(s);
  return pos == npos ? -1 : static_cast<int>(pos);
}

tstring tstring::Left(unsigned int n) const {
  return tstring(*this, 0, n);
}

tstring tstring::Mid(unsigned int pos) const {
  return pos < size() ? Right(static_cast<unsigned int>(size() - pos)) : tstring();
}

tstring tstring::Right(unsigned int n) const {
  return n < size() ? tstring(*this, static_cast<unsigned int>(size() - n), n) : *this;
}

tstring& tstring::MakeUpper() {
  Facet().toupper(data(), data() + size());
  return *this;
}

tstring& tstring::MakeLower() {
  Facet().tolower(data(), data() + size());
  return *this;
}

tstring& tstring::TrimLeft() {
  CutAtNul(*this);
  char const* first = Facet().scan_not(std::ctype_base::space, c_str(), c_str() + size());
  erase(0, static_cast<std::size_t>(first - c_str()));
  return *this;
}

tstring& tstring::TrimLeft(char ch) {
  const char set[] = {ch, '\0'};
  return TrimLeft(set);
}

tstring& tstring::TrimLeft(char const* set) {
  CutAtNul(*this);
  if (set != nullptr) erase(0, find_first_not_of(set));
  return *this;
}

tstring& tstring::TrimRight() {
  CutAtNul(*this);
  std::ctype<char> const& facet = Facet();
  while (!empty() && facet.is(std::ctype_base::space, back())) pop_back();
  return *this;
}

tstring& tstring::TrimRight(char ch) {
  const char set[] = {ch, '\0'};
  return TrimRight(set);
}

tstring& tstring::TrimRight(char const* set) {
  CutAtNul(*this);
  if (set != nullptr) resize(find_last_not_of(set) + 1);  // npos + 1 is 0
  return *this;
}

tstring& tstring::Trim() {
  return TrimLeft().TrimRight();
}

int tstring::Replace(char from, char to) {
  if (from == to) return 0;
  const auto found = std::count(begin(), end(), from);
  std::replace(begin(), end(), from, to);
  return static_cast<int>(found);
}

int tstring::Replace(char const* from, char const* to) {
  if (from == nullptr || *from == '\0') return 0;
  if (to == nullptr) to = "";
  if (std::strcmp(from, to) == 0) return 0;
  const std::size_t length = std::strlen(from);
  std::size_t pos = find(from, 0, length);
  if (pos == npos) return 0;
  std::string result;  // apart from this string, which from and to may point into
  std::size_t copied = 0;
  int count = 0;
  for (; pos != npos; pos = find(from, copied, length)) {
    result.append(*this, copied, pos - copied).append(to);
    copied = pos + length;
    ++count;
  }
  result.append(*this, copied, npos);
  swap(result);
  return count;
}

int tstring::Remove(char ch) {
  const auto kept = std::remove(begin(), end(), ch);
  const auto removed = end() - kept;
  erase(kept, end());
  return static_cast<int>(removed);
}
