// Conversions from text to wide characters, UTF-8, numbers and GUIDs, and back.

#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <limits>

#include "LarkspurCommon/tstring.h"

namespace {

constexpr char kSource[] = "tstringConvert.cpp";
constexpr unsigned int kAll = 0xFFFFFFFF;
constexpr std::size_t kNotConvertible = static_cast<std::size_t>(-1);

// False, and an untouched `out`, when the text isn't valid in the process's encoding.
bool ToWide(char const* s, std::wstring& out) {
  std::mbstate_t state{};
  char const* from = s;
  const std::size_t length = std::mbsrtowcs(nullptr, &from, 0, &state);
  if (length == kNotConvertible) return false;
  std::wstring wide(length, L'\0');
  state = {};
  from = s;
  std::mbsrtowcs(wide.data(), &from, length, &state);
  wide.resize(std::wcslen(wide.c_str()));
  out.swap(wide);
  return true;
}

// Reads one UTF-8 sequence, moving `text` past it; six bytes and overlong forms are let pass.
// False when there is none, or it is half of a surrogate pair.
bool DecodeCharacter(unsigned char const*& text, unsigned int& value) {
  struct Lead {
    unsigned char mask, bits;
    int following;
  };
  static constexpr Lead kLeads[] = {{0x80, 0x00, 0}, {0xE0, 0xC0, 1}, {0xF0, 0xE0, 2},
                                    {0xF8, 0xF0, 3}, {0xFC, 0xF8, 4}, {0xFE, 0xFC, 5}};
  const unsigned int first = *text++;
  for (const Lead& lead : kLeads) {
    if ((first & lead.mask) != lead.bits) continue;
    value = first & ~static_cast<unsigned int>(lead.mask);
    for (int i = 0; i < lead.following; ++i, ++text) {
      if ((*text & 0xC0) != 0x80) return false;
      value = (value << 6) | (*text & 0x3Fu);
    }
    return value < 0xD800 || value > 0xDFFF;
  }
  return false;
}

std::wstring DecodeUTF8(char const* utf8) {
  constexpr unsigned int kByteOrderMark = 0xFEFF;
  std::wstring wide;
  auto text = reinterpret_cast<unsigned char const*>(utf8);
  unsigned int value = 0;
  while (*text != 0 && DecodeCharacter(text, value)) {
    if (value != kByteOrderMark) wide.push_back(static_cast<wchar_t>(value));
  }
  return wide;
}

// What strtoul makes of the text where `unsigned long` has 32 bits, on every target.
unsigned int ReadUnsigned32(char const* text, char** end, int base) {
  constexpr long long kLargest = std::numeric_limits<unsigned int>::max();
  const long long value = std::strtoll(text, end, base);
  return static_cast<unsigned int>(value < -kLargest || value > kLargest ? kLargest : value);
}

// Reads a hex number of at most `limit` and the hyphen behind it, moving `text` past them.
template <class Field>
bool ReadGuidField(char const*& text, unsigned int limit, Field& field) {
  char* end = nullptr;
  const unsigned int value = ReadUnsigned32(text, &end, 16);
  if (end == text || *end != '-' || value > limit) return false;
  field = static_cast<Field>(value);
  text = end + 1;
  return true;
}

// Reads `count` bytes of two hex digits each, moving `text` past them.
bool ReadGuidBytes(char const*& text, unsigned char* bytes, int count) {
  std::ctype<char> const& facet = tstring::Facet();
  for (int i = 0; i < count; ++i, text += 2) {
    if (!facet.is(std::ctype_base::xdigit, text[0])) return false;
    if (!facet.is(std::ctype_base::xdigit, text[1])) return false;
    bytes[i] = static_cast<unsigned char>(HexToNum(text[0]) << 4 | HexToNum(text[1]));
  }
  return true;
}

bool ReadGuid(char const* text, GUID& guid) {
  if (*text == '{') ++text;
  if (!ReadGuidField(text, 0xFFFFFFFF, guid.Data1)) return false;
  if (!ReadGuidField(text, 0xFFFF, guid.Data2)) return false;
  if (!ReadGuidField(text, 0xFFFF, guid.Data3)) return false;
  if (!ReadGuidBytes(text, guid.Data4, 2) || *text++ != '-') return false;
  if (!ReadGuidBytes(text, guid.Data4 + 2, 6)) return false;
  return *text == '}' || *text == '\0' || tstring::Facet().is(std::ctype_base::space, *text);
}

}  // namespace

tstring::operator int() const {
  using Limits = std::numeric_limits<int>;
  const long long value = std::strtoll(c_str(), nullptr, 10);
  if (value < Limits::min()) return Limits::min();
  return value > Limits::max() ? Limits::max() : static_cast<int>(value);
}

tstring::operator unsigned int() const {
  return ReadUnsigned32(c_str(), nullptr, 10);
}

tstring::operator long() const {
  return std::strtol(c_str(), nullptr, 10);
}

tstring::operator unsigned long() const {
  return ReadUnsigned32(c_str(), nullptr, 10);
}

tstring::operator long long() const {
  return std::strtoll(c_str(), nullptr, 10);
}

tstring::operator unsigned long long() const {
  return std::strtoull(c_str(), nullptr, 10);
}

tstring::operator GUID() const {
  GUID guid{};
  if (ReadGuid(c_str(), guid)) return guid;
  Trace("tstring::operator GUID(): Failed to convert %s to a GUID\n", c_str());
  return GUID{};
}

void tstring::Convert(tstring const& s, std::string& out) {
  out = s;
}

void tstring::Convert(tstring const& s, std::wstring& out) {
  if (!s.empty()) ToWide(s.c_str(), out);
}

char* tstring::Convert(tstring const& s, char** out) {
  char* const copy = ::strdup(s.c_str());
  if (out != nullptr) *out = copy;
  return copy;
}

wchar_t* tstring::Convert(tstring const& s, wchar_t** out) {
  wchar_t* const copy = s.AllocString();
  if (out != nullptr) *out = copy;
  return copy;
}

wchar_t* tstring::AllocString() const {
  std::wstring wide;
  Convert(*this, wide);
  return ::wcsdup(wide.c_str());
}

void tstring::ConvertToMultiByte(wchar_t const* s, unsigned int n, bool clear) {
  if (clear) this->clear();
  if (s == nullptr) return;
  const std::size_t count = n == kAll ? std::wcslen(s) : ::wcsnlen(s, n);
  std::mbstate_t state{};
  wchar_t const* from = s;
  const std::size_t added = ::wcsnrtombs(nullptr, &from, count, 0, &state);
  if (added == kNotConvertible) return;
  const std::size_t tail = size();
  resize(tail + added + 1);
  state = {};
  from = s;
  ::wcsnrtombs(data() + tail, &from, count, added, &state);
  resize(std::strlen(c_str()));
}

void tstring::ConvertToWideChar(char const* s, unsigned int, bool clear) {
  if (s == nullptr) s = "";
  if (clear) {
    assign(s);
  } else {
    append(s);
  }
}

wchar_t tstring::ConvertToWideChar(char ch) const {
  std::mbstate_t state{};
  wchar_t wide = 0;
  return std::mbrtowc(&wide, &ch, 1, &state) <= 1 ? wide : L'\0';
}

tstring& tstring::FromUTF8(char const* utf8) {
  if (!IsValidString(utf8, kAll)) {
    Assert(kSource, __LINE__, "Invalid string passed to tstring::FromUTF8");
    utf8 = "";
  }
  ConvertToMultiByte(DecodeUTF8(utf8).c_str(), kAll, true);
  return *this;
}

tstring tstring::ConvertFromUTF8(char const* utf8) {
  tstring result;
  result.FromUTF8(utf8);
  return result;
}

tstring tstring::FromGuid(GUID const& guid) {
  tstring result;
  FromGuid2(guid, result);
  return result;
}

tstring& tstring::FromGuid2(GUID const& guid, tstring& out) {
  const unsigned char* d = guid.Data4;
  return out.Format("{%08lx-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x}",
                    static_cast<unsigned long>(guid.Data1), guid.Data2, guid.Data3, d[0], d[1],
                    d[2], d[3], d[4], d[5], d[6], d[7]);
}

char NumToHex(unsigned char n) {
  return static_cast<char>(n <= 9 ? '0' + n : 'a' + (n - 10));
}

unsigned char HexToNum(char digit) {
  if (digit >= '0' && digit <= '9') return static_cast<unsigned char>(digit - '0');
  if (digit >= 'a' && digit <= 'f') return static_cast<unsigned char>(digit - 'a' + 10);
  if (digit >= 'A' && digit <= 'F') return static_cast<unsigned char>(digit - 'A' + 10);
  return 0;
}
