// Tests for text that consists of one kind of character.

#include <algorithm>

#include "LarkspurCommon/tstring.h"

bool tstring::IsCharType(unsigned short mask, unsigned int pos, unsigned int n) const {
  if (empty() || pos > size()) return false;
  char const* const first = c_str() + pos;
  char const* const last = first + std::min<std::size_t>(n, size() - pos);
  return Facet().scan_not(mask, first, last) == last;
}

bool tstring::isdigit() const {
  return IsCharType(std::ctype_base::digit);
}

bool tstring::isxdigit() const {
  return IsCharType(std::ctype_base::xdigit);
}

bool tstring::isbdigit() const {
  return !empty() && find_first_not_of("01") == npos;
}

bool tstring::isASCII() const {
  constexpr unsigned char kLastAscii = 127;
  return !empty() && std::all_of(begin(), end(), [](char ch) {
    return static_cast<unsigned char>(ch) <= kLastAscii;
  });
}
