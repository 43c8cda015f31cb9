// Construction, assignment, appending and concatenation of tstring, for every type.

#include <climits>

#include "LarkspurCommon/TstringTest.h"

namespace {

using corvo_test::TraceLog;

const GUID kGuid{0x01234567, 0x89ab, 0xcdef, {1, 0x23, 0x45, 0x67, 0x89, 0xab, 0xcd, 0xef}};
const char kGuidText[] = "{01234567-89ab-cdef-0123-456789abcdef}";

template <class Value>
void ExpectJoins(Value value, std::string const& text) {
  const tstring s("ab");
  EXPECT_EQ(tstring(value), text);
  EXPECT_EQ(s + value, "ab" + text);
  EXPECT_EQ(value + s, text + "ab");
  EXPECT_EQ(value + tstring("ab") + value, text + "ab" + text);
  tstring appended("ab");
  EXPECT_EQ(appended += value, "ab" + text);
}

template <class Value>
void ExpectText(Value value, std::string const& text) {
  ExpectJoins(value, text);
  tstring assigned("ab");
  EXPECT_EQ(assigned = value, text);
}

TEST(Tstring, NumbersBecomeText) {
  ExpectText(INT_MIN, "-2147483648");
  ExpectText(UINT_MAX, "4294967295");
  ExpectText(-2147483647L, "-2147483647");
  ExpectText(static_cast<unsigned long>(0x1FFFFFFFFULL), "4294967295");
  ExpectText(LLONG_MIN, "-9223372036854775808");
  ExpectText(ULLONG_MAX, "18446744073709551615");
  ExpectText(0.1f, "0.10000000149011611938");
  ExpectText(1.5, "1.5");
  ExpectText(-1.7976931348623157e308, "-1.7976931348623157081e+308");
  ExpectText(reinterpret_cast<void const*>(0x1234), "0x1234");
  ExpectText(static_cast<void const*>(nullptr), "(nil)");
  EXPECT_EQ(tstring(LONG_MIN), std::to_string(LONG_MIN));  // 20 characters on LP64
}

TEST(Tstring, CharactersStringsAndGuidsBecomeText) {
  unsigned char bytes[] = "xyz";
  ExpectJoins('x', "x");
  ExpectJoins(static_cast<unsigned char>('x'), "x");
  ExpectJoins(L'x', "x");
  ExpectJoins(std::string("xyz"), "xyz");
  ExpectJoins(std::wstring(L"xyz"), "xyz");
  ExpectText(static_cast<char const*>("xyz"), "xyz");
  ExpectText(L"xyz", "xyz");
  ExpectText(bytes, "xyz");
  ExpectText(kGuid, kGuidText);
  ExpectText(GUID{}, "{00000000-0000-0000-0000-000000000000}");
  EXPECT_EQ(tstring("ab") + "xyz" + 'c' + tstring("d") + std::string("e"), "abxyzcde");
  EXPECT_EQ(std::string("e") + tstring("d") + 1, "ed1");
}

TEST(Tstring, CountsAndPositions) {
  const tstring s("abcdef");
  tstring t("ab");
  EXPECT_EQ(tstring('x', 3), "xxx");
  EXPECT_EQ(tstring(static_cast<unsigned char>('x'), 2), "xx");
  EXPECT_EQ(tstring(L'x', 2), "xx");
  EXPECT_EQ(tstring(s, 2, 3), "cde");
  EXPECT_EQ(tstring("abc", 2), "ab");
  EXPECT_EQ(t.Append('c'), 3u);
  EXPECT_EQ(t.Append(L'd'), 4u);
  EXPECT_EQ(t.Append("efgh", 1), 5u);
  EXPECT_EQ(t.Append("fg", -1), 7u);
  EXPECT_EQ(t.Append(L"hij", 2), 9u);
  EXPECT_EQ(t.Append(L"j", -1), 10u);
  EXPECT_EQ(t.Append(tstring("k")), 11u);
  EXPECT_EQ(t, "abcdefghijk");
  EXPECT_EQ(t.Delete(1, 2), 9u);
  EXPECT_EQ(t.Delete(10, 1), 9u);
  EXPECT_EQ(t.Delete(2, 0xFFFFFFFF), 2u);
  EXPECT_EQ(t, "ad");
  t[1] = 'x';  // an int index
  EXPECT_EQ(t[std::size_t{1}], 'x');
}

TEST(Tstring, WhatNulsCut) {
  const std::string bytes("a\0b", 3);
  EXPECT_EQ(tstring(bytes), "a");
  EXPECT_EQ(tstring(bytes.c_str(), 3), bytes);
  EXPECT_EQ(tstring("x") += bytes, "x" + bytes);
  const tstring counted(bytes.c_str(), 3);
  EXPECT_EQ(tstring(counted), bytes);
  EXPECT_EQ(tstring(counted) += L"", "a");  // converting wide text ends the string at its first NUL
  EXPECT_EQ(tstring(counted) += L'\xD800', bytes);  // not convertible: nothing is done
}

TEST(Tstring, ArgumentsMayPointIntoTheString) {
  const std::string start = "0123456789abcde";  // fills the small buffer: growing reallocates
  struct {
    const char* name;
    void (*change)(tstring& s);
    std::string expected;
  } const rows[] = {
      {"assign tail", [](tstring& s) { s = s.c_str() + 1; }, "123456789abcde"},
      {"assign itself", [](tstring& s) { s = *&s; }, start},
      {"append itself", [](tstring& s) { s += s; }, start + start},
      {"append tail", [](tstring& s) { s += s.c_str() + 10; }, start + "abcde"},
      {"Append part", [](tstring& s) { s.Append(s.c_str() + 1, 3); }, start + "123"},
      {"Format", [](tstring& s) { s.Format("<%s>", s.c_str()); }, "<" + start + ">"},
      {"Format long", [](tstring& s) { s.Format("%600s", s.c_str()); },
       std::string(585, ' ') + start},
      {"AppendFormat", [](tstring& s) { s.AppendFormat("%s%s", s.c_str(), s.c_str() + 10); },
       start + start + "abcde"},
      {"Replace", [](tstring& s) { s.Replace(s.c_str() + 13, s.c_str()); },
       "0123456789abc" + start},
      {"TrimLeft", [](tstring& s) { s.TrimLeft(s.c_str() + 1); }, start},
      {"ConvertToWideChar", [](tstring& s) { s.ConvertToWideChar(s.c_str() + 10, 0, true); },
       "abcde"},
      {"FromUTF8", [](tstring& s) { s.FromUTF8(s.c_str() + 10); }, "abcde"},
  };
  for (auto const& row : rows) {
    tstring s(start);
    row.change(s);
    EXPECT_EQ(s, row.expected) << row.name;
  }
}

TEST(Tstring, NullPointersAreReportedAndEmpty) {
  constexpr char const* kNull = nullptr;
  constexpr unsigned char const* kNullBytes = nullptr;
  constexpr wchar_t const* kNullWide = nullptr;
  const std::string invalid = "Assertion failed: Invalid string passed to tstring::";
  const auto wide = [](std::string const& function) -> std::vector<std::string> {
    const std::string message = "Invalid wide string passed to tstring::" + function;
    return {"Assertion failed: " + message, message + " (0x(nil): 0x00, 0x00, 0x00, 0x00)"};
  };
  struct {
    tstring (*make)();
    const char* expected;
    std::vector<std::string> reports;
  } const rows[] = {
      {[] { return tstring(kNull); }, "", {invalid + "tstring"}},
      {[] { return tstring(kNullBytes); }, "", {invalid + "tstring"}},
      {[] { return tstring(kNull, 5); }, "", {invalid + "tstring"}},
      {[] { return tstring(kNullWide); }, "", {}},
      {[] { return tstring("ab") = kNull; }, "", {invalid + "operator="}},
      {[] { return tstring("ab") = kNullBytes; }, "", {invalid + "operator="}},
      {[] { return tstring("ab") = kNullWide; }, "", wide("operator=")},
      {[] { return tstring("ab") += kNull; }, "ab", {invalid + "operator+="}},
      {[] { return tstring("ab") += kNullBytes; }, "ab", {invalid + "operator+"}},
      {[] { return tstring("ab") += kNullWide; }, "ab", wide("operator+=")},
      {[] { return 1 + tstring(tstring("ab").Append(kNull, 3)); }, "12", {invalid + "Append"}},
      {[] { return tstring("ab").FromUTF8(kNull); }, "", {invalid + "FromUTF8"}},
      {[] { return tstring(tstring("ab").Find(kNull)); }, "-1", {invalid + "Find"}},
      {[] { return tstring(tstring("ab").Compare(kNull)); },
       "-1",
       {"tstring::Compare: Invalid string parameter"}},
      {[] { return tstring(tstring().CompareNoCase(kNull)); },
       "0",
       {"tstring::CompareNoCase: Invalid string parameter"}},
      {[] { return tstring("ab").Format(kNull).AppendFormat(kNull); }, "ab", {}},
      {[] { return tstring("ab").TrimLeft(kNull).TrimRight(kNull); }, "ab", {}},
      {[] { return tstring(tstring("ab").Replace(kNull, "x")); }, "0", {}},
  };
  TraceLog log;
  for (auto const& row : rows) {
    EXPECT_EQ(row.make(), row.expected) << "row " << &row - rows;
    EXPECT_EQ(TakeReports(log), row.reports) << "row " << &row - rows;
  }
}

// Each must compile without ambiguity on both targets, and order bytes as unsigned up to a NUL.
TEST(Tstring, Comparisons) {
  const tstring a("a"), b("b"), high("\xE9"), nul("a\0z", 3);
  EXPECT_TRUE(a < b && b > a && a < "b" && b > "a" && "a" < b && "b" > a);
  const std::string plain("b");
  EXPECT_TRUE(a < plain && plain > a && high > plain && plain < high);
  unsigned char const* const bytes = reinterpret_cast<unsigned char const*>("xy");
  EXPECT_EQ(a + bytes + (bytes + a), "axyxya");
  EXPECT_FALSE(b < a || a > b || b < "a" || a > "b" || "b" < a || "a" > b);
  EXPECT_TRUE(b < high && a == "a" && "a" == a && a != b && a == std::string("a"));
  EXPECT_FALSE(a < nul || nul < a || "a" > nul);
  EXPECT_TRUE("a" == a && "a" <= a && a <= "b" && b >= "a" && "b" >= b && "a" != b && b != "a");
}

TEST(Tstring, NullComparesAsEmpty) {
  char const* const null = nullptr;
  const tstring empty, a("a");
  TraceLog log;
  EXPECT_TRUE(empty == null && null == empty && empty <= null && null >= empty);
  EXPECT_TRUE(a != null && null != a && a < null && null > a && a <= null && null >= a);
  EXPECT_FALSE(empty != null || a >= null || null <= a);
  const std::vector<std::string> reports(13, "tstring::Compare: Invalid string parameter");
  EXPECT_EQ(TakeReports(log), reports);
}

}  // namespace
