// Making and joining tstrings of every type, conversions, and the text operations.

#include "LarkspurCommon/tstring.h"

#include <gtest/gtest.h>
#include <locale.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "support/TraceLog.h"

namespace {

// The sums with temporaries are those that std::string's own operators match too.
template <class Value>
void ExpectJoins(Value value, std::string const& text) {
  EXPECT_EQ(tstring(value), text);
  EXPECT_EQ(value + tstring("ab") + value, text + "ab" + text);
  EXPECT_EQ(tstring("ab") += value, "ab" + text);
}

template <class Value>
void ExpectText(Value value, std::string const& text) {
  ExpectJoins(value, text);
  EXPECT_EQ(tstring("ab") = value, text);
}

TEST(Tstring, EveryTypeBecomesText) {
  unsigned char bytes[] = "xyz";
  const GUID guid{0x01234567, 0x89ab, 0xcdef, {1, 0x23, 0x45, 0x67, 0x89, 0xab, 0xcd, 0xef}};
  ExpectText(INT_MIN, "-2147483648");
  ExpectText(UINT_MAX, "4294967295");
  ExpectText(LONG_MIN, sizeof(long) == 4 ? "-2147483648" : "-9223372036854775808");
  ExpectText(static_cast<unsigned long>(0x1FFFFFFFFULL), "4294967295");
  ExpectText(LLONG_MIN, "-9223372036854775808");
  ExpectText(ULLONG_MAX, "18446744073709551615");
  ExpectText(0.1f, "0.10000000149011611938");
  ExpectText(-1.7976931348623157e308, "-1.7976931348623157081e+308");
  ExpectText(reinterpret_cast<void const*>(0x1234), "0x1234");
  ExpectJoins(NumToHex(9), "9");
  ExpectJoins(NumToHex(10), "a");
  ExpectJoins(static_cast<unsigned char>('x'), "x");
  ExpectJoins(L'x', "x");
  ExpectJoins(std::string("xyz"), "xyz");
  ExpectJoins(std::wstring(L"xyz"), "xyz");
  ExpectText("xyz", "xyz");
  ExpectText(L"xyz", "xyz");
  ExpectText(bytes, "xyz");
  ExpectJoins(static_cast<unsigned char const*>(bytes), "xyz");
  ExpectText(guid, "{01234567-89ab-cdef-0123-456789abcdef}");
  EXPECT_EQ(std::string("e") + tstring("d") + std::string("c"), "edc");
}

TEST(Tstring, CountsPositionsAndNuls) {
  const std::string bytes("a\0b", 3);
  EXPECT_EQ(tstring(bytes) + tstring('x', 2), "axx");
  EXPECT_EQ(tstring("x") += tstring(bytes.c_str(), 3), "x" + bytes);
  EXPECT_EQ(tstring(bytes.c_str(), 3) += L"", "a");  // converting wide text cuts at the first NUL
  EXPECT_EQ(tstring(tstring("abcdef"), 2, 3), "cde");
  EXPECT_EQ(tstring("\xFF\xFFgh").Hash(), 0x1F0918u);
  tstring t("ab");
  EXPECT_EQ(t.Append('c'), 3u);
  EXPECT_EQ(t.Append(L'd'), 4u);
  EXPECT_EQ(t.Append("efgh", 1), 5u);
  EXPECT_EQ(t.Append("fg", -1), 7u);
  EXPECT_EQ(t.Append(L"hij", 2), 9u);
  EXPECT_EQ(t.Append(L"j", -1), 10u);
  EXPECT_EQ(t.Delete(1, 2), 8u);
  EXPECT_EQ(t.Delete(9, 1), 8u);
  EXPECT_EQ(t, "adefghij");
  EXPECT_EQ(t[1], 'd');
}

TEST(Tstring, ArgumentsMayPointIntoTheString) {
  tstring s("abc");
  EXPECT_EQ(s.Replace(s.c_str() + 2, s.c_str()), 1);
  EXPECT_EQ(s.Format("<%s>", s.c_str()), "<ababc>");
  EXPECT_EQ(s.Format("%0600d%s", 0, s.c_str()), std::string(600, '0') + "<ababc>");
  EXPECT_EQ(s.FromUTF8(s.c_str() + 600), "<ababc>");
}

// "string Find tstringText" for "Assertion failed: Invalid string passed to tstring::Find, file
// tstringText.cpp, line 60"; other lines as they are.
std::string Brief(std::string line) {
  if (line.rfind("Assertion failed: ", 0) != 0) return line;
  const std::pair<const char*, const char*> parts[] = {
      {"Assertion failed: Invalid ", ""}, {" passed to tstring::", " "}, {", file ", " "}};
  for (const auto& [part, shown] : parts) line.replace(line.find(part), std::strlen(part), shown);
  const std::size_t place = line.find(".cpp, line ");
  EXPECT_GT(std::atoi(line.c_str() + place + std::strlen(".cpp, line ")), 0);
  return line.substr(0, place);
}

TEST(Tstring, NullPointersAreReportedAndEmpty) {
  constexpr char const* kNull = nullptr;
  constexpr unsigned char const* kNullBytes = nullptr;
  constexpr wchar_t const* kNullWide = nullptr;
  const corvo_test::TraceLog log;
  EXPECT_EQ(tstring(kNull) + tstring(kNull, 5) + tstring(kNullWide), "");
  EXPECT_EQ((tstring("a") = kNull) + (tstring("a") = kNullBytes), "");
  EXPECT_EQ(tstring("a") = kNullWide, "");
  EXPECT_EQ(tstring("a") += kNull, "a");
  EXPECT_EQ(tstring("a") += kNullBytes, "a");
  EXPECT_EQ(tstring("a") += kNullWide, "a");
  EXPECT_EQ(tstring(kNullBytes).Append(kNull, 3), 0u);
  EXPECT_EQ(tstring("a").FromUTF8(kNull), "");
  EXPECT_EQ(tstring("a").Find(kNull), -1);
  EXPECT_EQ(tstring("a").Compare(kNull) + tstring("").CompareNoCase(kNull), -1);
  EXPECT_EQ(tstring("a").Format(kNull).TrimLeft(kNull).TrimRight(kNull).Replace(kNull, ""), 0);
  const std::vector<std::string> lines = log.Texts(0x0F, '8');
  EXPECT_NE(lines.at(0), lines.at(1));  // alike but for the line
  std::string reports;
  for (auto const& line : lines) reports += Brief(line) + "; ";
  EXPECT_EQ(reports,
            "string tstring tstring; string tstring tstring; "
            "string operator= tstring; string operator= tstring; wide string operator= tstring; "
            "Invalid wide string passed to tstring::operator= (0x(nil): 0x00, 0x00, 0x00, 0x00); "
            "string operator+= tstring; string operator+ tstring; wide string operator+= tstring; "
            "Invalid wide string passed to tstring::operator+= (0x(nil): 0x00, 0x00, 0x00, 0x00); "
            "string tstring tstring; string Append tstring; string FromUTF8 tstringConvert; "
            "string Find tstringText; tstring::Compare: Invalid string parameter; "
            "tstring::CompareNoCase: Invalid string parameter; ");
}

TEST(TstringConvert, WideTextThereAndBack) {
  ASSERT_NE(setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
  EXPECT_EQ(tstring(L"a\u00e9\U0001F600"), "a\xC3\xA9\xF0\x9F\x98\x80");
  EXPECT_EQ(tstring(L'\u20ac', 2) + L'\u00e9', "\xE2\x82\xAC\xE2\x82\xAC\xC3\xA9");
  EXPECT_EQ(tstring("a\0b", 3) += L"ab\xD800", std::string("a\0b", 3));  // nothing is done
  tstring s("-");
  s.ConvertToMultiByte(L"ab\xD800", 2, false);
  s.ConvertToMultiByte(L"c", 9, false);
  s.ConvertToMultiByte(nullptr, 1, false);
  EXPECT_EQ(s, "-abc");

  std::wstring wide = L"kept";
  tstring::Convert("", wide);
  tstring::Convert("a\xC3", wide);
  EXPECT_EQ(wide, L"kept");
  tstring::Convert(tstring("a\xC3\xA9\0z", 5), wide);
  EXPECT_EQ(wide, L"a\u00e9");
  wchar_t* copy = nullptr;
  EXPECT_EQ(tstring::Convert("\xC3\xA9", &copy), std::wstring(L"\u00e9"));
  std::free(copy);
  EXPECT_EQ(tstring().ConvertToWideChar('a'), L'a');
  EXPECT_EQ(tstring().ConvertToWideChar('\xC3'), L'\0');
}

TEST(TstringConvert, Utf8IsDecodedUpToTheFirstFault) {
  ASSERT_NE(setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
  const std::pair<const char*, const char*> rows[] = {
      {"\xEF\xBB\xBF\x41\xEF\xBB\xBF\x42", "AB"},
      {"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"},
      {"\xC1\x81\xE0\x81\x82\xF0\x80\x81\x83\xF8\x80\x80\x81\x84\xFC\x80\x80\x80\x81\x85", "ABCDE"},
      {"A\xC0\x80Z", "A"},
      {"A\x80Z", "A"},
      {"A\xE2\x82", "A"},
      {"A\xFEZ", "A"},
      {"\xFD\xBF\xBF\xBF\xBF\xBF", "\xFD\xBF\xBF\xBF\xBF\xBF"},
      {"A\xED\x9F\xBF\xED\xA0\x80Z", "A\xED\x9F\xBF"},
      {"\xEE\x80\x80\xED\xBF\xBFZ", "\xEE\x80\x80"},
  };
  for (auto const& [utf8, text] : rows) EXPECT_EQ(tstring::ConvertFromUTF8(utf8), text);
}

TEST(TstringConvert, NumbersAreRead) {
  const auto expect = [](tstring const& s, int asInt, unsigned asUnsigned, long long asLongLong,
                         unsigned long long asUnsignedLongLong) {
    EXPECT_EQ(static_cast<int>(s), asInt) << s;
    EXPECT_EQ(static_cast<unsigned>(s), asUnsigned) << s;
    EXPECT_EQ(static_cast<unsigned long>(s), asUnsigned) << s;
    EXPECT_EQ(static_cast<long long>(s), asLongLong) << s;
    EXPECT_EQ(static_cast<unsigned long long>(s), asUnsignedLongLong) << s;
  };
  expect("0x10", 0, 0, 0, 0);
  expect(" 12ab", 12, 12, 12, 12);
  expect("-5", -5, 0xFFFFFFFB, -5, ULLONG_MAX - 4);
  expect("4294967296", INT_MAX, UINT_MAX, 4294967296, 4294967296);
  expect("-99999999999999999999", INT_MIN, UINT_MAX, LLONG_MIN, ULLONG_MAX);
}

TEST(TstringConvert, GuidsAreRead) {
  const corvo_test::TraceLog log;
  for (const char* text :
       {"{01234567-89ab-cdef-0123-456789abcdef}", "01234567-89AB-CDEF-0123-456789ABCDEF",
        "1234567-89ab-cdef-0123-456789abcdef}zz", "{01234567-89ab-cdef-0123-456789abcdef z",
        " 0x1234567-+89ab-0Xcdef-0123-456789abcdef", "-fedcba99-89ab-cdef-0123-456789abcdef"}) {
    EXPECT_EQ(tstring::FromGuid(tstring(text)), "{01234567-89ab-cdef-0123-456789abcdef}") << text;
  }
  std::vector<std::string> reports;
  for (const std::string text :
       {"", "{01234567-89ab-cdef-0123-456789abcde}", "{01234567-89ab-cdef-0123-456789abcdefa}",
        "{01234567-89ab-cdef-0123-456789abcdeg}", "{01234567-10000-cdef-0123-456789abcdef}",
        "{01234567-89ab-cdef-0123+456789abcdef}", "{01234567 -89ab-cdef-0123-456789abcdef}",
        "{01234567-89ab-cdef-01"}) {
    EXPECT_EQ(tstring::FromGuid(tstring(text)), "{00000000-0000-0000-0000-000000000000}") << text;
    reports.push_back("tstring::operator GUID(): Failed to convert " + text + " to a GUID");
  }
  EXPECT_EQ(log.Texts(0x0F, '8'), reports);
}

// Each mixture must compile without ambiguity on both targets.
TEST(TstringText, ComparisonAndSearch) {
  const tstring a("a"), b("b"), nul("a\0z", 3);
  const std::string plain("b");
  EXPECT_TRUE(a < b && a < "b" && "a" < b && a < plain && b > a && b > "a" && "b" > a && plain > a);
  EXPECT_FALSE(b < a || b < "b" || "b" < a || b < plain || a > b || a > "a" || "a" > nul);
  EXPECT_TRUE(a <= "a" && "a" <= b && b >= "a" && "b" >= b && tstring("\xE9") > "z");
  EXPECT_TRUE(a == "a" && "a" == a && b == plain && a != b && a != "b" && "b" != a && nul != "a");
  char const* const null = nullptr;
  EXPECT_TRUE(tstring() == null && null == tstring() && tstring() <= null && null >= tstring());
  EXPECT_TRUE(a != null && null != a && a < null && null > a && !(a >= null) && !(null <= a));
  EXPECT_EQ(tstring("abc").Compare("abx", 2), 0);
  EXPECT_EQ(tstring("abc").CompareNoCase("ABX", 2), 0);
  EXPECT_EQ(tstring("abcbc").Find("bc"), 1);
  EXPECT_EQ(tstring().Find(""), -1);
}

TEST(TstringText, PartsCaseAndJustification) {
  const tstring s("abc");
  EXPECT_EQ(s.Left(2) + s.Left(4), "ababc");
  EXPECT_EQ(s.Mid(1) + s.Mid(4), "bc");
  EXPECT_EQ(s.Right(2) + s.Right(4), "bcabc");
  EXPECT_EQ(tstring("zZ1\xE9").MakeUpper() + tstring("zZ1\xC9").MakeLower(), "ZZ1\xE9zz1\xC9");
  EXPECT_EQ(tstring("**ab*").LeftJustify(4, '*'), "ab**");
  EXPECT_EQ(tstring("*abcd").LeftJustify(3, '*'), "abc");
}

TEST(TstringText, Trims) {
  const tstring s(" xax \0x", 7);  // a trim first cuts at the NUL
  EXPECT_EQ(tstring(s).TrimLeft(), "xax ");
  EXPECT_EQ(tstring(s).TrimRight(), " xax");
  EXPECT_EQ(tstring(s).TrimLeft("x "), "ax ");
  EXPECT_EQ(tstring(s).TrimRight("x "), " xa");
  EXPECT_EQ(tstring("xxaxx").TrimLeft('x').TrimRight('x'), "a");
  EXPECT_EQ(tstring(" \t\r\n\v\fa b \n").Trim(), "a b");
  EXPECT_EQ(tstring(" ").TrimRight() + tstring("xy").TrimRight("yx"), "");
}

// Changes a copy of `text` and gives the count and the changed text.
template <class... Arguments>
tstring Replaced(const char* text, Arguments... arguments) {
  tstring s(text);
  const int count = s.Replace(arguments...);
  return count + (":" + s);
}

TEST(TstringText, Replacement) {
  EXPECT_EQ(Replaced("abab", 'a', 'x'), "2:xbxb");
  EXPECT_EQ(Replaced("abab", 'a', 'a'), "0:abab");
  EXPECT_EQ(Replaced("aXbX", "X", "long"), "2:alongblong");
  EXPECT_EQ(Replaced("aaaaa", "aa", "aab"), "2:aabaaba");  // no overlap, no rescan
  EXPECT_EQ(Replaced("abab", "b", nullptr), "2:aa");
  EXPECT_EQ(Replaced("abab", "ab", "ab"), "0:abab");
  EXPECT_EQ(Replaced("ab", "", "x"), "0:ab");
  EXPECT_EQ(Replaced("ab", "x", "y"), "0:ab");
  EXPECT_EQ(tstring("xaxbx").Remove('x'), 3);
}

}  // namespace
