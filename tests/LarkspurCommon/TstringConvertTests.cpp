// Conversions between tstring and wide text, UTF-8, numbers and GUIDs.

#include <climits>
#include <cstdlib>

#include "LarkspurCommon/TstringTest.h"

namespace {

TEST_F(TstringUtf8, WideTextBecomesMultibyte) {
  struct {
    const wchar_t* text;
    unsigned int n;
    const char* expected;
  } const rows[] = {
      {L"a\u00e9\u20ac\U0001F600", 0xFFFFFFFF, "-a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"},
      {L"a\u00e9\u20ac", 2, "-a\xC3\xA9"},
      {L"abc", 0, "-"},
      {L"abc", 9, "-abc"},
      {L"ab\xD800", 0xFFFFFFFF, "-"},
      {L"ab\xD800", 2, "-ab"},
  };
  for (auto const& row : rows) {
    tstring s("-");
    s.ConvertToMultiByte(row.text, row.n, false);
    EXPECT_EQ(s, row.expected);
  }
  EXPECT_EQ(tstring(L'\u20ac', 2) + L'\u00e9', "\xE2\x82\xAC\xE2\x82\xAC\xC3\xA9");
  tstring cleared("-");
  cleared.ConvertToMultiByte(nullptr, 1, true);
  EXPECT_EQ(cleared, "");
}

TEST_F(TstringUtf8, MultibyteTextBecomesWide) {
  std::wstring wide = L"kept";
  tstring::Convert("", wide);
  tstring::Convert("a\xC3", wide);
  EXPECT_EQ(wide, L"kept");
  tstring::Convert(tstring("a\xC3\xA9\0z", 5), wide);
  EXPECT_EQ(wide, L"a\u00e9");

  char* narrowCopy = nullptr;
  wchar_t* wideCopy = nullptr;
  EXPECT_STREQ(tstring::Convert("\xC3\xA9", &narrowCopy), "\xC3\xA9");
  EXPECT_EQ(tstring::Convert("\xC3\xA9", &wideCopy), std::wstring(L"\u00e9"));
  std::free(narrowCopy);
  std::free(wideCopy);
  EXPECT_EQ(tstring().ConvertToWideChar('a'), L'a');
  EXPECT_EQ(tstring().ConvertToWideChar('\xC3'), L'\0');
}

TEST_F(TstringUtf8, Utf8IsDecodedUpToTheFirstFault) {
  struct {
    const char* utf8;
    const char* expected;
  } const rows[] = {
      {"\xEF\xBB\xBF\x41", "A"},
      {"A\xEF\xBB\xBF\x42", "AB"},
      {"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"},
      {"\xC1\x81\xE0\x81\x82\xF0\x80\x81\x83\xF8\x80\x80\x81\x84\xFC\x80\x80\x80\x81\x85", "ABCDE"},
      {"A\x80Z", "A"},
      {"A\xFEZ", "A"},
      {"A\xE2\x82", "A"},
      {"A\xE2\x82Z", "A"},
      {"A\xED\x9F\xBF\xED\xA0\x80Z", "A\xED\x9F\xBF"},
      {"A\xED\xBF\xBFZ", "A"},
      {"\xEE\x80\x80", "\xEE\x80\x80"},
      {"", ""},
  };
  for (auto const& row : rows) EXPECT_EQ(tstring::ConvertFromUTF8(row.utf8), row.expected);
}

TEST(Tstring, WideTextOutsideTheEncodingAddsNothing) {
  EXPECT_EQ(tstring("a") += L"b\u20ac", "a");
  EXPECT_EQ(tstring("a").FromUTF8("b\xE2\x82\xAC"), "");
}

constexpr long Long(long long value) {
  return value > LONG_MAX ? LONG_MAX : static_cast<long>(value);
}

TEST(Tstring, NumbersAreRead) {
  struct {
    const char* text;
    int asInt;
    unsigned int asUnsigned;
    long asLong;
    long long asLongLong;
    unsigned long long asUnsignedLongLong;
  } const rows[] = {
      {"", 0, 0, 0, 0, 0},
      {"x1", 0, 0, 0, 0, 0},
      {" 12ab", 12, 12, 12, 12, 12},
      {"-5", -5, 0xFFFFFFFB, -5, -5, ULLONG_MAX - 4},
      {"0x10", 0, 0, 0, 0, 0},
      {"2147483648", INT_MAX, 0x80000000, Long(2147483648), 2147483648, 2147483648},
      {"-99999999999999999999", INT_MIN, UINT_MAX, LONG_MIN, LLONG_MIN, ULLONG_MAX},
      {"4294967296", INT_MAX, UINT_MAX, Long(4294967296), 4294967296, 4294967296},
  };
  for (auto const& row : rows) {
    const tstring s(row.text);
    EXPECT_EQ(static_cast<int>(s), row.asInt) << row.text;
    EXPECT_EQ(static_cast<unsigned int>(s), row.asUnsigned) << row.text;
    EXPECT_EQ(static_cast<unsigned long>(s), row.asUnsigned) << row.text;
    EXPECT_EQ(static_cast<long>(s), row.asLong) << row.text;
    EXPECT_EQ(static_cast<long long>(s), row.asLongLong) << row.text;
    EXPECT_EQ(static_cast<unsigned long long>(s), row.asUnsignedLongLong) << row.text;
  }
}

tstring Reread(const char* text) {
  return tstring::FromGuid(static_cast<GUID>(tstring(text)));
}

TEST(Tstring, GuidsAreRead) {
  corvo_test::TraceLog log;
  for (const char* text :
       {"{01234567-89ab-cdef-0123-456789abcdef}", "01234567-89AB-CDEF-0123-456789ABCDEF",
        "1234567-89ab-cdef-0123-456789abcdef}zz", "{01234567-89ab-cdef-0123-456789abcdef z",
        "{0x1234567-000089ab-cdef-0123-456789abcdef}"}) {
    EXPECT_EQ(Reread(text), "{01234567-89ab-cdef-0123-456789abcdef}") << text;
  }
  EXPECT_EQ(Reread("1ffffffff-0-0-0000-000000000000"), "{ffffffff-0000-0000-0000-000000000000}");
  EXPECT_TRUE(TakeReports(log).empty());
  for (const char* text :
       {"", "{", "{01234567-89ab-cdef-0123-456789abcde}", "{01234567-89ab-cdef-0123-456789abcdefa}",
        "{01234567-89ab-cdef-0123-456789abcdeg}", "{01234567-189ab-cdef-0123-456789abcdef}",
        "{01234567-89ab-1cdef-0123-456789abcdef}", "{01234567-89ab-cdef-0123456789abcdef}",
        "{01234567 -89ab-cdef-0123-456789abcdef}", "{01234567-89ab-cdef-01",
        "--0-0-0000-000000000000"}) {
    EXPECT_EQ(Reread(text), "{00000000-0000-0000-0000-000000000000}") << text;
    const std::string report = "tstring::operator GUID(): Failed to convert ";
    EXPECT_EQ(TakeReports(log), std::vector<std::string>{report + text + " to a GUID"});
  }
}

TEST(Tstring, HexDigitsAndHash) {
  const char digits[] = "0123456789abcdef";
  for (unsigned char n = 0; n < 16; ++n) {
    EXPECT_EQ(NumToHex(n), digits[n]);
    EXPECT_EQ(HexToNum(digits[n]), n);
  }
  EXPECT_EQ(HexToNum('F'), 15);
  EXPECT_EQ(tstring("").Hash(), 0u);
  EXPECT_EQ(tstring("a").Hash(), 0x71u);  // 1 rotated is 0x10, xor 0x61
  EXPECT_EQ(tstring("\xFF\xFF").Hash(), 0xB0Fu);
  EXPECT_EQ(tstring("abcdefghij").Hash(), 0x52307C8Eu);
  EXPECT_EQ(tstring('\0', 0x10000).Hash(), 0u);  // the square wraps
}

}  // namespace
