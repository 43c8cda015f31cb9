// tstring's text operations: comparing, searching, trimming and changing.

#include "LarkspurCommon/TstringTest.h"

namespace {

struct Row {
  const char* name;
  tstring result;
  std::string expected;
};

template <std::size_t kCount>
void ExpectAll(const Row (&rows)[kCount]) {
  for (const Row& row : rows) EXPECT_EQ(row.result, row.expected) << row.name;
}

// Changes a copy of `text` and gives the count and the changed text.
template <class... Arguments>
tstring Replaced(const char* text, Arguments... arguments) {
  tstring s(text);
  const int count = s.Replace(arguments...);
  return count + (":" + s);
}

TEST(TstringText, ComparisonAndSearch) {
  const tstring s("abcbc");
  EXPECT_EQ(s.Compare("abcbc"), 0);
  EXPECT_GT(s.Compare("ABCBC"), 0);
  EXPECT_GT(tstring("\xE9").Compare("z"), 0);
  EXPECT_EQ(s.Compare("abx", 2), 0);
  EXPECT_EQ(s.CompareNoCase("ABCBC"), 0);
  EXPECT_LT(s.CompareNoCase("ABD"), 0);
  EXPECT_EQ(s.CompareNoCase("ABX", 2), 0);
  EXPECT_EQ(s.Find("bc"), 1);
  EXPECT_EQ(s.Find(""), 0);
  EXPECT_EQ(s.Find("x"), -1);
  EXPECT_EQ(tstring().Find(""), -1);
}

TEST(TstringText, PartsCaseAndJustification) {
  const tstring s("abc");
  ExpectAll({{"Left", s.Left(2), "ab"},
             {"Left of more", s.Left(9), "abc"},
             {"Mid", s.Mid(1), "bc"},
             {"Mid past the end", s.Mid(4), ""},
             {"Right", s.Right(2), "bc"},
             {"Right of more", s.Right(4), "abc"},
             {"MakeUpper", tstring("aZ1\xE9").MakeUpper(), "AZ1\xE9"},
             {"MakeLower", tstring("aZ1\xC9").MakeLower(), "az1\xC9"},
             {"padded", tstring("**ab*").LeftJustify(4, '*'), "ab**"},
             {"cut", tstring("*abcd").LeftJustify(3, '*'), "abc"}});
}

TEST(TstringText, Trims) {
  const char white[] = " \t\r\n\v\fa b \n";
  const tstring nul("xaxx\0xx", 7);
  ExpectAll({{"left", tstring(white).TrimLeft(), "a b \n"},
             {"right", tstring(white).TrimRight(), " \t\r\n\v\fa b"},
             {"both", tstring(white).Trim(), "a b"},
             {"all white", tstring(" \n").TrimLeft() + tstring(" \n").TrimRight(), ""},
             {"left byte", tstring("xxaxx").TrimLeft('x'), "axx"},
             {"right byte", tstring("xxaxx").TrimRight('x'), "xxa"},
             {"left set", tstring("xyaxy").TrimLeft("yx"), "axy"},
             {"right set", tstring("xyaxy").TrimRight("yx"), "xya"},
             {"whole set", tstring("xy").TrimRight("yx"), ""},
             {"empty set", tstring("xy").TrimLeft("").TrimRight(""), "xy"},
             {"NUL, left", tstring(nul).TrimLeft(), "xaxx"},
             {"NUL, right", tstring(nul).TrimRight(), "xaxx"},
             {"NUL, left byte", tstring(nul).TrimLeft('x'), "axx"},
             {"NUL, right byte", tstring(nul).TrimRight('x'), "xa"},
             {"NUL, no set", tstring(nul).TrimLeft(static_cast<char const*>(nullptr)), "xaxx"}});
}

TEST(TstringText, Replacement) {
  ExpectAll({{"bytes", Replaced("abab", 'a', 'x'), "2:xbxb"},
             {"equal bytes", Replaced("abab", 'a', 'a'), "0:abab"},
             {"texts", Replaced("aXbX", "X", "long"), "2:alongblong"},
             {"no overlap", Replaced("aaaaa", "aa", "b"), "2:bba"},
             {"no rescan", Replaced("ab", "a", "aa"), "1:aab"},
             {"deleted", Replaced("abab", "b", nullptr), "2:aa"},
             {"equal texts", Replaced("abab", "ab", "ab"), "0:abab"},
             {"empty from", Replaced("ab", "", "x"), "0:ab"},
             {"none", Replaced("ab", "x", "y"), "0:ab"}});
  tstring s("xaxbx");
  EXPECT_EQ(s.Remove('x'), 3);
  EXPECT_EQ(s, "ab");
}

}  // namespace
