// Searching, justifying and inserting.

#include <gtest/gtest.h>

#include "LarkspurCommon/tstring.h"

namespace {

constexpr unsigned int kAll = 0xFFFFFFFF;

TEST(TstringSearch, PartsAndClasses) {
  const tstring s("abcbcd"), mixed("12aF\xE9");
  EXPECT_EQ(s.ReverseFind("bc") + s.ReverseFind("x") + tstring().ReverseFind(""), 3 - 1 - 1);
  EXPECT_EQ(s.SpanIncluding("ba") + "," + s.SpanExcluding("dc"), "ab,ab");
  EXPECT_EQ(s.CopyToSubString("bc", false) + "," + s.CopyFromSubString("bc", false), "a,bcbcd");
  EXPECT_EQ(s.CopyToSubString("bc", true) + "," + s.CopyFromSubString("bc", true), "abc,bcd");
  EXPECT_EQ(s.CopyFromSubString("a", true) + s.CopyFromSubString("", false), s);
  EXPECT_EQ(s.LengthToSubString("x", false) + s.LengthFromSubString("x", false), 0);
  EXPECT_TRUE(mixed.IsCharType(std::ctype_base::alpha, 2, 2) && mixed.Left(4).isxdigit());
  EXPECT_TRUE(mixed.IsCharType(std::ctype_base::digit, 5, kAll) && mixed.Left(2).isdigit());
  EXPECT_FALSE(mixed.IsCharType(std::ctype_base::digit, 6, 0) || mixed.isASCII());
  EXPECT_FALSE(mixed.IsCharType(std::ctype_base::xdigit, 3, kAll) || mixed.Left(3).isdigit());
  EXPECT_TRUE(tstring("\x7F").isASCII() && !tstring().isASCII());
  EXPECT_FALSE(tstring().isdigit() || tstring("02").isbdigit());
}

TEST(TstringChange, JustificationAndInsertion) {
  EXPECT_EQ(tstring("*ab**").RightJustify(4, '*'), "**ab");
  EXPECT_EQ(tstring("abcd*").RightJustify(3, '*'), "bcd");
  EXPECT_EQ(tstring("*ab*").Center(5, '*'), "*ab**");
  EXPECT_EQ(tstring("**abcde*").Center(3, '*'), "bcd");
  EXPECT_EQ(tstring("abcd").Center(3, '*'), "abc");
  tstring s("abc");
  EXPECT_EQ(s.Insert(1, s.c_str() + 1), 5u);
  EXPECT_EQ(s.Insert(0, '<'), 6u);
  EXPECT_EQ(s.Insert(kAll, '>') + s.Insert(kAll, "-"), 7u + 8u);
  EXPECT_EQ(s.MakeReverse(), "->cbcba<");
}

}  // namespace
