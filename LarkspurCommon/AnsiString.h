#ifndef LARKSPURCOMMON_ANSISTRING_H
#define LARKSPURCOMMON_ANSISTRING_H

#include <algorithm>
#include <cstring>  // a C library's own strlcpy must be declared before ours
#include <limits>
#include <string>
#include <type_traits>
#include <utility>

#include "LarkspurCommon/tstring.h"
#include "platform/Export.h"
#include "platform/InterfaceCheck.h"

class AnsiString;

// What stands beside an AnsiString in an expression. The operators take it as it is: an AnsiString
// is a tstring and a tstring becomes an AnsiString, so that after any conversion the operators of
// tstring, std::string and plain pointers fit as well.
namespace ansi_operand {

template <class T>
inline constexpr bool kIsAnsiString = std::is_base_of_v<AnsiString, std::decay_t<T>>;

template <class T>
inline constexpr bool kIsString = std::is_base_of_v<std::string, std::decay_t<T>> ||
                                  (std::is_pointer_v<std::decay_t<T>> &&
                                   std::is_convertible_v<std::decay_t<T>, char const*>);

template <class T>
using IfNumber =
    std::enable_if_t<std::is_arithmetic_v<T> && std::is_constructible_v<tstring, T>, int>;

template <class T>
using IfJoins =
    std::enable_if_t<!kIsAnsiString<T> && !std::is_same_v<std::decay_t<T>, char const*> &&
                         std::is_constructible_v<tstring, T>,
                     int>;

template <class T>
using IfCompares = std::enable_if_t<!kIsAnsiString<T> && kIsString<T>, int>;

inline char const* Text(char const* s) {
  return s;
}
inline char const* Text(std::string const& s) {
  return s.c_str();
}

}  // namespace ansi_operand

// A tstring whose positions count from 1, and which lends itself as wide text. What it inherits
// (Compare, CompareNoCase, c_str, operator char const* ...) is as tstring has it, counting from 0;
// null pointers are reported as there.
//
// A position outside the string is no error: reading there gives NUL, an empty text or "no", and
// changing there changes nothing. A count below 1 takes nothing, one beyond the end all the rest.
//
// One thread at a time per object: the wide conversions change it, the const one too.
class CORVO_API AnsiString : public tstring {
 public:
  AnsiString() = default;
  AnsiString(AnsiString const& s);  // the text alone: no two share a wide buffer
  AnsiString(AnsiString&& s) noexcept : tstring(std::move(s)) {}
  AnsiString(char const* s);
  AnsiString(wchar_t const* s);
  AnsiString(unsigned char const* s);
  AnsiString(tstring const& s);
  AnsiString(char const* s, int n);  // exactly n bytes; none when n is negative
  AnsiString(char ch);
  AnsiString(int value);
  AnsiString(unsigned long value);
  // Any other number or character, as a tstring made from it.
  template <class Number, ansi_operand::IfNumber<Number> = 0>
  AnsiString(Number value) : AnsiString(tstring(value)) {}
  ~AnsiString();

  AnsiString& operator=(AnsiString const& s);
  AnsiString& operator=(AnsiString&& s) noexcept {
    tstring::operator=(std::move(s));
    return *this;
  }
  AnsiString& operator=(tstring const& s);
  AnsiString& operator=(char const* s);
  AnsiString& operator=(wchar_t const* s);
  AnsiString& operator=(unsigned char const* s);
  AnsiString& operator=(char ch);
  // With `char` alone a number would be taken as a character's code.
  template <class Number, ansi_operand::IfNumber<Number> = 0>
  AnsiString& operator=(Number value) {
    return *this = tstring(value);
  }

  using tstring::operator+=;
  AnsiString& operator+=(long value);
  AnsiString& operator+=(int value);
  AnsiString& operator+=(unsigned int value);
  AnsiString& operator+=(unsigned long value);
  AnsiString& operator+=(char ch);
  AnsiString& operator+=(unsigned char ch);
  AnsiString& operator+=(wchar_t ch);
  AnsiString& operator+=(AnsiString const& s);
  AnsiString& operator+=(char const* s);
  AnsiString& operator+=(wchar_t const* s);
  AnsiString& operator+=(unsigned char const* s);

  // The text as wide characters, empty when it isn't valid in the process's encoding; bstrEmpty
  // when there is no memory. The string owns it: it stays until the next such call on this object
  // or the object's end, whatever becomes of the text.
  operator wchar_t const*() const;
  operator wchar_t*();

  int AnsiCompare(char const* s, unsigned int n = 0x7FFFFFFF) const;
  int AnsiCompareIC(char const* s, unsigned int n = 0x7FFFFFFF) const;

  int Length() const;
  bool IsEmpty() const;
  void Clear();
  void SetLength(int n);  // filling with NULs; a negative n changes nothing

  // Any index type: with `int` and `unsigned int` alone, an index of another type would fit the
  // pointers that the string converts to as well. What is written outside the string is lost.
  template <class Index, class = std::enable_if_t<std::is_integral_v<Index>>>
  char& operator[](Index i) {
    return At(static_cast<long long>(i));
  }
  template <class Index, class = std::enable_if_t<std::is_integral_v<Index>>>
  char const& operator[](Index i) const {
    return At(static_cast<long long>(i));
  }

  AnsiString SubString(int start, int count) const;
  AnsiString& Delete(int start, int count);
  AnsiString Trim() const;  // without blanks, line feeds, carriage returns and tabs at both ends

  int LastDelimiter(char const* delimiters) const;  // 0: none of them
  bool IsDelimiter(AnsiString const& delimiters, int i) const;
  int AnsiPos(char const* s) const;  // 0: not found, or this string is empty
  int Pos(char const* s) const;

  AnsiString& sprintf(char const* format, ...) __attribute__((format(printf, 2, 3)));
  int ToInt() const;
  AnsiString UpperCase() const;

  // Concatenation with whatever else a tstring concatenates with.
  template <class Right, ansi_operand::IfJoins<Right> = 0>
  friend AnsiString operator+(AnsiString const& left, Right&& right) {
    AnsiString result(left);
    result += right;
    return result;
  }
  template <class Left, ansi_operand::IfJoins<Left> = 0>
  friend AnsiString operator+(Left&& left, AnsiString const& right) {
    AnsiString result{tstring(left)};
    result += right;
    return result;
  }

  // Comparison with other strings, as with AnsiString.
  template <class Right, ansi_operand::IfCompares<Right> = 0>
  friend bool operator==(AnsiString const& left, Right const& right) {
    return left.Compare(ansi_operand::Text(right)) == 0;
  }
  template <class Left, ansi_operand::IfCompares<Left> = 0>
  friend bool operator==(Left const& left, AnsiString const& right) {
    return right.Compare(ansi_operand::Text(left)) == 0;
  }
  template <class Right, ansi_operand::IfCompares<Right> = 0>
  friend bool operator!=(AnsiString const& left, Right const& right) {
    return !(left == right);
  }
  template <class Left, ansi_operand::IfCompares<Left> = 0>
  friend bool operator!=(Left const& left, AnsiString const& right) {
    return !(left == right);
  }
  template <class Right, ansi_operand::IfCompares<Right> = 0>
  friend bool operator<(AnsiString const& left, Right const& right) {
    return left.Compare(ansi_operand::Text(right)) < 0;
  }
  template <class Left, ansi_operand::IfCompares<Left> = 0>
  friend bool operator<(Left const& left, AnsiString const& right) {
    return right.Compare(ansi_operand::Text(left)) > 0;
  }

 private:
  char& At(long long position);
  char const& At(long long position) const;

  mutable wchar_t* m_wide = nullptr;  // the last wide conversion, from malloc
};
CORVO_SIZE(28, 40, AnsiString);

// By bytes, as Compare orders them: up to the first NUL.
CORVO_API bool operator==(AnsiString const& left, AnsiString const& right);
CORVO_API bool operator==(AnsiString const& left, char const* right);
CORVO_API bool operator!=(AnsiString const& left, AnsiString const& right);
CORVO_API bool operator!=(AnsiString const& left, char const* right);
CORVO_API bool operator<(AnsiString const& left, AnsiString const& right);

CORVO_API AnsiString operator+(AnsiString const& left, AnsiString const& right);
CORVO_API AnsiString operator+(AnsiString const& left, char const* right);
CORVO_API AnsiString operator+(char const* left, AnsiString const& right);

// The empty text that a wide conversion gives when it has no other. Never to be written to; not
// const only since operator wchar_t* gives it as well.
extern CORVO_API wchar_t bstrEmpty[1];

// The value of a text of digits alone, at most INT_MAX; `def` for any other, "-1" and "" included.
CORVO_API int StrToIntDef(char const* s, int def);

// A backslash or slash at the end counts as trailing; an empty path stays empty.
CORVO_API AnsiString IncludeTrailingBackslash(AnsiString const& path);
CORVO_API AnsiString ExcludeTrailingBackslash(AnsiString const& path);  // takes one at most

// `text` with every `from` replaced, left to right, none within a replacement. A null `to`
// deletes; a null or empty `from` changes nothing.
CORVO_API AnsiString StringReplace(char const* text, char const* from, char const* to);

// Copies as much of `src` as fits into `size` bytes with a NUL behind it; writes nothing when size
// is 0. Returns the length of `src`: truncated if that is `size` or more. They must not overlap.
//
// A C library's own function does the same. Where its size_t is an `unsigned int` this declares
// that function once more, hence noexcept, and the export mark only at the definition (Clang wants
// none behind an inline one); elsewhere the two overload each other.
unsigned int strlcpy(char* dst, char const* src, unsigned int size) noexcept;

// Sizes of other types, which may lie between the two. A negative one counts as 0.
template <class Size, class = std::enable_if_t<std::is_integral_v<Size>>>
unsigned int strlcpy(char* dst, char const* src, Size size) noexcept {
  constexpr unsigned long long kLargest = std::numeric_limits<unsigned int>::max();
  const auto bytes = size > 0 ? static_cast<unsigned long long>(size) : 0;
  return strlcpy(dst, src, static_cast<unsigned int>(std::min(bytes, kLargest)));
}

#endif
