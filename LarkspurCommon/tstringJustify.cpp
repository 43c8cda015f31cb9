// Justifying, inserting and reversing text.

#include <algorithm>

#include "LarkspurCommon/tstring.h"

namespace {

constexpr char kSource[] = "tstringJustify.cpp";

}  // namespace

tstring& tstring::MakeReverse() {
  std::reverse(begin(), end());
  return *this;
}

unsigned int tstring::Insert(unsigned int pos, char ch) {
  insert(std::min<std::size_t>(pos, size()), 1, ch);
  return static_cast<unsigned int>(size());
}

unsigned int tstring::Insert(unsigned int pos, char const* s) {
  if (!IsValidString(s, 0)) {
    Assert(kSource, __LINE__, "Invalid string passed to tstring::Insert");
    s = "";
  }
  insert(std::min<std::size_t>(pos, size()), s);
  return static_cast<unsigned int>(size());
}

tstring& tstring::LeftJustify(unsigned int n, char pad) {
  TrimLeft(pad).TrimRight(pad);
  resize(n, pad);
  return *this;
}

tstring& tstring::RightJustify(unsigned int n, char pad) {
  TrimLeft(pad).TrimRight(pad);
  if (size() < n) {
    insert(0, n - size(), pad);
  } else {
    erase(0, size() - n);
  }
  return *this;
}

tstring& tstring::Center(unsigned int n, char pad) {
  TrimLeft(pad).TrimRight(pad);
  if (size() < n) {
    insert(0, (n - size()) / 2, pad);
  } else {
    erase(0, (size() - n) / 2);
  }
  resize(n, pad);
  return *this;
}
