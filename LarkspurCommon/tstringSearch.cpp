// Searching backwards, for sets of characters, and for the parts around an occurrence.

#include <cstring>

#include "LarkspurCommon/tstring.h"

namespace {

constexpr char kSource[] = "tstringSearch.cpp";

bool IsSet(char const* set, char const* function) {
  if (tstring::IsValidString(set, 0)) return true;
  tstring::TraceAndBreak("%s: Invalid string parameter\n", function);
  return false;
}

std::size_t Position(std::string const& text, std::string const& s, bool fromEnd) {
  if (s.empty()) return std::string::npos;
  return fromEnd ? text.rfind(s) : text.find(s);
}

}  // namespace

int tstring::ReverseFind(char const* s) const {
  if (!IsValidString(s, 0)) {
    Assert(kSource, __LINE__, "Invalid string passed to tstring::Find");
    return -1;
  }
  const std::size_t pos = empty() ? npos : rfind(s);
  return pos == npos ? -1 : static_cast<int>(pos);
}

tstring tstring::SpanIncluding(char const* set) const {
  if (!IsSet(set, "tstring::SpanIncluding")) return {};
  return Left(static_cast<unsigned int>(std::strspn(c_str(), set)));
}

tstring tstring::SpanExcluding(char const* set) const {
  if (!IsSet(set, "tstring::SpanExcluding")) return {};
  return Left(static_cast<unsigned int>(std::strcspn(c_str(), set)));
}

int tstring::LengthToSubString(tstring const& s, bool fromEnd) const {
  const std::size_t pos = Position(*this, s, fromEnd);
  return pos == npos ? 0 : static_cast<int>(pos);
}

int tstring::LengthFromSubString(tstring const& s, bool fromEnd) const {
  const std::size_t pos = Position(*this, s, fromEnd);
  return pos == npos ? 0 : static_cast<int>(size() - pos);
}

tstring tstring::CopyToSubString(tstring const& s, bool fromEnd) const {
  return Left(static_cast<unsigned int>(LengthToSubString(s, fromEnd)));
}

tstring tstring::CopyFromSubString(tstring const& s, bool fromEnd) const {
  return Right(static_cast<unsigned int>(LengthFromSubString(s, fromEnd)));
}
