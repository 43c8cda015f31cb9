#ifndef LARKSPURCOMMON_TSTRING_H
#define LARKSPURCOMMON_TSTRING_H

#include <atomic>
#include <cctype>  // takes away the macros of the C library that members are named like
#include <cstdarg>
#include <cstddef>
#include <locale>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "platform/Export.h"
#include "platform/InterfaceCheck.h"
#include "platform/Win32Types.h"

#define TSTRING_PRINTF(text, args) __attribute__((format(printf, text, args)))

// The system's string: a std::string of bytes in the process's multibyte encoding (LC_CTYPE),
// with conversions from and to wide strings, numbers and GUIDs, and printf-style formatting.
//
// Arguments may point into the string that is changed. A null pointer counts as an empty string:
// unless a comment says otherwise it is reported with Assert, never dereferenced. A count that is
// only an upper bound may be 0xFFFFFFFF, for all. Wide text that the encoding can't express adds
// nothing.
//
// One thread at a time per object; the static functions are safe from any thread.
class CORVO_API tstring : public std::string {
 public:
  tstring() = default;
  tstring(char ch, unsigned int n = 1);
  tstring(unsigned char ch, unsigned int n = 1);
  tstring(wchar_t ch, unsigned int n = 1);
  tstring(char const* s);
  tstring(unsigned char const* s);
  tstring(char const* s, unsigned int n);  // exactly n bytes
  tstring(wchar_t const* s);               // null isn't reported
  tstring(tstring const& s, unsigned int pos, unsigned int n);
  tstring(std::string const& s);  // up to its first NUL
  tstring(std::wstring const& s);
  // Numbers become decimal text, floating-point ones with 20 significant digits. An `unsigned long`
  // counts as its low 32 bits.
  tstring(int value);
  tstring(unsigned int value);
  tstring(long value);
  tstring(unsigned long value);
  tstring(long long value);
  tstring(unsigned long long value);
  tstring(float value);
  tstring(double value);
  tstring(void const* value);
  tstring(GUID const& guid);

  tstring& operator=(char const* s);
  tstring& operator=(unsigned char const* s);
  tstring& operator=(wchar_t const* s);
  tstring& operator=(int value);
  tstring& operator=(unsigned int value);
  tstring& operator=(long value);
  tstring& operator=(unsigned long value);
  tstring& operator=(long long value);
  tstring& operator=(unsigned long long value);
  tstring& operator=(float value);
  tstring& operator=(double value);
  tstring& operator=(void const* value);
  tstring& operator=(GUID const& guid);
  // A character would be taken as a number: say tstring(ch).
  tstring& operator=(char) = delete;
  tstring& operator=(unsigned char) = delete;
  tstring& operator=(wchar_t) = delete;

  tstring& operator+=(char ch);
  tstring& operator+=(unsigned char ch);
  tstring& operator+=(wchar_t ch);
  tstring& operator+=(tstring const& s);
  tstring& operator+=(std::string const& s);
  tstring& operator+=(std::wstring const& s);
  tstring& operator+=(char const* s);
  tstring& operator+=(unsigned char const* s);
  tstring& operator+=(wchar_t const* s);
  tstring& operator+=(int value);
  tstring& operator+=(unsigned int value);
  tstring& operator+=(long value);
  tstring& operator+=(unsigned long value);
  tstring& operator+=(long long value);
  tstring& operator+=(unsigned long long value);
  tstring& operator+=(float value);
  tstring& operator+=(double value);
  tstring& operator+=(void const* value);
  tstring& operator+=(GUID const& guid);

  // Each returns the new length. A negative n means all of s; else exactly n bytes, or at most n
  // wide characters.
  unsigned int Append(char ch);
  unsigned int Append(wchar_t ch);
  unsigned int Append(char const* s, int n = -1);
  unsigned int Append(wchar_t const* s, int n = -1);
  unsigned int Append(tstring const& s);
  unsigned int Delete(unsigned int pos, unsigned int n);  // nothing when pos is at or past the end

  // Numbers are read as the C library reads them, in base 10, and end at the limits of the type,
  // which for `unsigned long` are those of 32 bits. 0 when the text doesn't begin with a number.
  operator char const*() const { return c_str(); }
  operator int() const;
  operator unsigned int() const;
  operator long() const;
  operator unsigned long() const;
  operator long long() const;
  operator unsigned long long() const;
  operator GUID() const;  // braces optional; what isn't a GUID is traced and gives all zeros

  // Any index type: with `int` alone, the built-in s.operator char const*()[i] is as good a match.
  template <class Index, class = std::enable_if_t<std::is_integral_v<Index>>>
  char& operator[](Index pos) {
    return std::string::operator[](static_cast<std::size_t>(pos));
  }
  template <class Index, class = std::enable_if_t<std::is_integral_v<Index>>>
  char const& operator[](Index pos) const {
    return std::string::operator[](static_cast<std::size_t>(pos));
  }

  static void Convert(tstring const& s, std::string& out);
  static void Convert(tstring const& s, std::wstring& out);  // kept when s is empty or not valid
  // Copies that the caller frees with free(), stored in `out` and returned.
  static char* Convert(tstring const& s, char** out);
  static wchar_t* Convert(tstring const& s, wchar_t** out);
  wchar_t* AllocString() const;

  // Append s, after clearing the string if asked. A null s isn't reported. Whenever wide text was
  // converted, the whole string ends at its first NUL.
  void ConvertToMultiByte(wchar_t const* s, unsigned int n, bool clear);
  void ConvertToWideChar(char const* s, unsigned int n, bool clear);  // all of s, whatever n
  wchar_t ConvertToWideChar(char ch) const;  // 0 when ch alone isn't a character

  // Decoding ends at the first byte that isn't UTF-8; byte-order marks are dropped.
  tstring& FromUTF8(char const* utf8);
  static tstring ConvertFromUTF8(char const* utf8);
  static tstring FromGuid(GUID const& guid);  // "{00000000-0000-0000-0000-000000000000}"
  static tstring& FromGuid2(GUID const& guid, tstring& out);

  // Nothing that goes wrong is thrown. A null format changes nothing and isn't reported; a format
  // that the C library refuses is traced and makes the (appended) text empty. Without memory for
  // the whole text its first 4095 bytes are kept, or else the old text: that is traced too.
  tstring& Format(char const* format, ...) TSTRING_PRINTF(2, 3);
  tstring& FormatV(char const* format, va_list args) TSTRING_PRINTF(2, 0);
  tstring& AppendFormat(char const* format, ...) TSTRING_PRINTF(2, 3);
  tstring& AppendFormatV(char const* format, va_list args) TSTRING_PRINTF(2, 0);
  static tstring FromFormat(char const* format, ...) TSTRING_PRINTF(1, 2);

  tstring& GetErrorText(long error);  // the system's text for an errno value

  unsigned int Hash() const;  // for tables in memory only

  // `n` bounds a comparison. A null s is reported with TraceAndBreak; it equals an empty string and
  // comes after any other (-1).
  int Compare(char const* s, unsigned int n = 0x7FFFFFFF) const;
  int CompareNoCase(char const* s, unsigned int n = 0x7FFFFFFF) const;
  int Find(char const* s) const;         // -1: not found, or this string is empty
  int ReverseFind(char const* s) const;  // the last occurrence

  // The leading run of characters that are, or aren't, in `set`, ending at a NUL. A null set is
  // reported with TraceAndBreak and gives nothing.
  tstring SpanIncluding(char const* set) const;
  tstring SpanExcluding(char const* set) const;

  // How many characters stand before the first (fromEnd: the last) occurrence of s, and how many
  // from there to the end: 0 when s is empty or not found.
  int LengthToSubString(tstring const& s, bool fromEnd) const;
  int LengthFromSubString(tstring const& s, bool fromEnd) const;
  tstring CopyToSubString(tstring const& s, bool fromEnd) const;
  tstring CopyFromSubString(tstring const& s, bool fromEnd) const;

  // Whether all characters are of a kind; an empty string is of none. IsCharType takes a mask of
  // std::ctype_base and looks at n characters from pos on, to the end if fewer remain: true when
  // pos is the end itself, false when it lies past it.
  bool IsCharType(unsigned short mask, unsigned int pos = 0, unsigned int n = 0xFFFFFFFF) const;
  bool isdigit() const;
  bool isxdigit() const;
  bool isbdigit() const;  // '0' and '1'
  bool isASCII() const;

  tstring Left(unsigned int n) const;
  tstring Mid(unsigned int pos) const;
  tstring Right(unsigned int n) const;

  tstring& MakeUpper();
  tstring& MakeLower();
  tstring& MakeReverse();

  // Every trim first cuts the string at its first NUL. Without an argument white space goes; a null
  // or empty set, which isn't reported, takes nothing.
  tstring& TrimLeft();
  tstring& TrimLeft(char ch);
  tstring& TrimLeft(char const* set);
  tstring& TrimRight();
  tstring& TrimRight(char ch);
  tstring& TrimRight(char const* set);
  tstring& Trim();

  // Each returns how many were replaced or removed: none where both are equal. A null or empty
  // `from` changes nothing, a null `to` deletes; neither is reported.
  int Replace(char from, char to);
  int Replace(char const* from, char const* to);
  int Remove(char ch);

  // Each returns the new length. At or past the end they append.
  unsigned int Insert(unsigned int pos, char ch);
  unsigned int Insert(unsigned int pos, char const* s);

  // Each strips `pad` at both ends, then fills or cuts to exactly n characters: on the right, on
  // the left, or on both sides, an odd one on the right. More than memory holds is thrown, as
  // std::string does.
  tstring& LeftJustify(unsigned int n, char pad = ' ');
  tstring& RightJustify(unsigned int n, char pad = ' ');
  tstring& Center(unsigned int n, char pad = ' ');

  // Puts n `pad` in place of each run of white space before a word; one at the end stays.
  tstring& Space(unsigned int n, char pad = ' ');

  // Words are what white space separates, the first is number 1. `count` of them, at least one, are
  // selected with all that stands between them; with fewer there, all to the end of the string.
  // There is no such selection when word `first` doesn't exist.
  unsigned int NumWords() const;
  tstring Words(unsigned int first, unsigned int count) const;
  // False: no such selection, and both positions are as they were. `end` is one past the last.
  bool GetSelectedWords(unsigned int first, unsigned int count, unsigned int& begin,
                        unsigned int& end) const;

  // From bits ("01"), characters, decimal and hex digits to each other: text that isn't all of the
  // kind gives an empty string. Digits are grouped from the right; leading zeros count like others,
  // but d2x gives none. Decimal values are taken modulo 2^64.
  static tstring b2x(tstring const& bits);
  static tstring b2c(tstring const& bits);
  static tstring b2d(tstring const& bits);
  static tstring c2b(tstring const& bytes);
  static tstring c2x(tstring const& bytes);
  static tstring c2d(tstring const& bytes);
  static tstring x2b(tstring const& hex);
  static tstring x2c(tstring const& hex);
  static tstring x2d(tstring const& hex);
  static tstring d2x(tstring const& decimal);  // "" for 0, as the next two
  static tstring d2b(tstring const& decimal);
  static tstring d2c(tstring const& decimal);
  // Convert the string itself, in place.
  tstring& x2b();
  tstring& x2c();
  tstring& x2d();

  // Compares the whole string with `pattern`, in which '?' stands for one character and '*' for one
  // or more; case doesn't count. Returns -1, or a score that is higher the less the wildcards had
  // to match, up to INT_MAX. Takes time in proportion to the product of both lengths at worst.
  int Matches(char const* pattern) const;

  // Adds what stands before, between and behind the delimiters, each a single byte, to `tokens`:
  // empty ones too. The last one remains in `text`.
  static void Tokenize(tstring& text, char const* delimiters, std::vector<tstring>& tokens);

  // A copy of the global locale as it was at the first call, and its character classes.
  static std::locale const& Locale();
  static std::ctype<char> const& Facet();

  // Trace lines: unconditional, at level 8 and at level 9. Nothing is thrown.
  static void OutputDebugString(char const* format, ...) TSTRING_PRINTF(1, 2);
  static void OutputDebugStringV(char const* format, va_list args) TSTRING_PRINTF(1, 0);
  static void Trace(char const* format, ...) TSTRING_PRINTF(1, 2);
  static void TraceV(char const* format, va_list args) TSTRING_PRINTF(1, 0);
  static void TraceFn(char const* format, ...) TSTRING_PRINTF(1, 2);
  static void TraceFnV(char const* format, va_list args) TSTRING_PRINTF(1, 0);

  // Trace, and stop an attached debugger. Without one the process just goes on.
  static void TraceAndBreak(char const* format, ...) TSTRING_PRINTF(1, 2);
  static void Assert(char const* file, int line, char const* message);
  static bool IsValidString(char const* s, unsigned int n);  // not null, whatever n
  static bool IsValidString(wchar_t const* s, unsigned int n);

  static std::atomic<bool> m_bTrapInDebugger;  // whether TraceAndBreak stops a debugger

 private:
  CORVO_LOCAL static int InternalMatches(std::string_view subject, std::string_view pattern,
                                         bool afterStar);

  static std::locale const* m_pLoc;
};

CORVO_SIZE(4, 4, wchar_t);
CORVO_SIZE(24, 32, std::wstring);
CORVO_SIZE(24, 32, tstring);
CORVO_SIZE(12, 24, std::vector<tstring>);

// Concatenation: the left operand as a tstring, with the right one appended.
CORVO_API tstring operator+(tstring const& left, char right);
CORVO_API tstring operator+(tstring const& left, unsigned char right);
CORVO_API tstring operator+(tstring const& left, wchar_t right);
CORVO_API tstring operator+(tstring const& left, tstring const& right);
CORVO_API tstring operator+(tstring const& left, std::string const& right);
CORVO_API tstring operator+(tstring const& left, std::wstring const& right);
CORVO_API tstring operator+(tstring const& left, char const* right);
CORVO_API tstring operator+(tstring const& left, wchar_t const* right);
CORVO_API tstring operator+(tstring const& left, unsigned char* right);
CORVO_API tstring operator+(tstring const& left, int right);
CORVO_API tstring operator+(tstring const& left, unsigned int right);
CORVO_API tstring operator+(tstring const& left, long right);
CORVO_API tstring operator+(tstring const& left, unsigned long right);
CORVO_API tstring operator+(tstring const& left, long long right);
CORVO_API tstring operator+(tstring const& left, unsigned long long right);
CORVO_API tstring operator+(tstring const& left, float right);
CORVO_API tstring operator+(tstring const& left, double right);
CORVO_API tstring operator+(tstring const& left, void const* right);
CORVO_API tstring operator+(tstring const& left, GUID const& right);

CORVO_API tstring operator+(char left, tstring const& right);
CORVO_API tstring operator+(unsigned char left, tstring const& right);
CORVO_API tstring operator+(wchar_t left, tstring const& right);
CORVO_API tstring operator+(std::string const& left, tstring const& right);
CORVO_API tstring operator+(std::wstring const& left, tstring const& right);
CORVO_API tstring operator+(char const* left, tstring const& right);
CORVO_API tstring operator+(wchar_t const* left, tstring const& right);
CORVO_API tstring operator+(unsigned char* left, tstring const& right);
CORVO_API tstring operator+(int left, tstring const& right);
CORVO_API tstring operator+(unsigned int left, tstring const& right);
CORVO_API tstring operator+(long left, tstring const& right);
CORVO_API tstring operator+(unsigned long left, tstring const& right);
CORVO_API tstring operator+(long long left, tstring const& right);
CORVO_API tstring operator+(unsigned long long left, tstring const& right);
CORVO_API tstring operator+(float left, tstring const& right);
CORVO_API tstring operator+(double left, tstring const& right);
CORVO_API tstring operator+(void const* left, tstring const& right);
CORVO_API tstring operator+(GUID const& left, tstring const& right);

// std::string's own operators match a temporary as well as ours do.
inline tstring operator+(tstring const& left, std::string&& right) {
  return left + static_cast<std::string const&>(right);
}
inline tstring operator+(std::string&& left, tstring const& right) {
  return static_cast<std::string const&>(left) + right;
}

// The text, not the pointer's digits, where only the non-const overloads above would match.
inline tstring operator+(tstring const& left, unsigned char const* right) {
  return tstring(left) += right;
}
inline tstring operator+(unsigned char const* left, tstring const& right) {
  return tstring(left) += right;
}

// By bytes, as Compare orders them: up to the first NUL.
CORVO_API bool operator<(tstring const& left, tstring const& right);
CORVO_API bool operator>(char const* left, tstring const& right);

// The other mixtures, in which std::string's operators match as well as these two.
inline bool operator>(tstring const& left, tstring const& right) {
  return right < left;
}
inline bool operator>(tstring const& left, char const* right) {
  return left.Compare(right) > 0;
}
inline bool operator<(tstring const& left, char const* right) {
  return left.Compare(right) < 0;
}
inline bool operator<(char const* left, tstring const& right) {
  return right.Compare(left) > 0;
}
inline bool operator>(tstring const& left, std::string const& right) {
  return left.Compare(right.c_str()) > 0;
}
inline bool operator>(std::string const& left, tstring const& right) {
  return right.Compare(left.c_str()) < 0;
}
inline bool operator<(tstring const& left, std::string const& right) {
  return left.Compare(right.c_str()) < 0;
}
inline bool operator<(std::string const& left, tstring const& right) {
  return right.Compare(left.c_str()) > 0;
}

// std::string's own would follow a null pointer, which compares here as Compare says: it equals
// only an empty string. Templates, so that a tstring isn't taken as its own char const*.
template <class Char>
using EnableIfNarrow = std::enable_if_t<std::is_same_v<Char const, char const>, bool>;

template <class Char>
EnableIfNarrow<Char> operator==(tstring const& left, Char* right) {
  return right == nullptr ? left.Compare(right) == 0 : left.compare(right) == 0;
}
template <class Char>
EnableIfNarrow<Char> operator==(Char* left, tstring const& right) {
  return right == left;
}
template <class Char>
EnableIfNarrow<Char> operator!=(tstring const& left, Char* right) {
  return !(left == right);
}
template <class Char>
EnableIfNarrow<Char> operator!=(Char* left, tstring const& right) {
  return !(right == left);
}
template <class Char>
EnableIfNarrow<Char> operator<=(tstring const& left, Char* right) {
  return left.Compare(right) <= 0;
}
template <class Char>
EnableIfNarrow<Char> operator<=(Char* left, tstring const& right) {
  return right.Compare(left) >= 0;
}
template <class Char>
EnableIfNarrow<Char> operator>=(tstring const& left, Char* right) {
  return left.Compare(right) >= 0;
}
template <class Char>
EnableIfNarrow<Char> operator>=(Char* left, tstring const& right) {
  return right.Compare(left) <= 0;
}

// The lower-case hex digit for 0 to 15.
CORVO_API char NumToHex(unsigned char n);

// The value of a hex digit in either case; 0 for any other character.
CORVO_API unsigned char HexToNum(char digit);

#undef TSTRING_PRINTF

#endif
