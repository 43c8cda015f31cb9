// AnsiString's positions, wide buffer and operators, and the functions that go with it.

#include "LarkspurCommon/AnsiString.h"

#include <gtest/gtest.h>

#include <climits>

#include "support/TraceLog.h"

namespace {

// Each expression must compile without ambiguity on both targets.
template <class... Others>
void ExpectJoins(std::string const& text, Others&&... others) {
  const auto joins = [&text](auto&& other) {
    AnsiString changing("ab"), assigned("x");
    const AnsiString constant("ab");
    const AnsiString joined = constant + std::forward<decltype(other)>(other) + changing +
                              (std::forward<decltype(other)>(other) + constant);
    EXPECT_EQ(joined, "ab" + text + "ab" + text + "ab");
    EXPECT_EQ(changing += other, "ab" + text);
    EXPECT_EQ(AnsiString(other), text);
    EXPECT_EQ(assigned = other, text);
  };
  (joins(std::forward<Others>(others)), ...);
}

TEST(AnsiString, JoinsWithWhateverBecomesText) {
  char buffer[] = "xyz";
  unsigned char bytes[] = "xyz";
  std::string plain("xyz");
  tstring text("xyz");
  AnsiString ansi("xyz");
  ExpectJoins("xyz", "xyz", buffer, bytes, L"xyz", plain, std::string(plain), text, tstring(text),
              ansi, AnsiString(ansi), std::wstring(L"xyz"));
  ExpectJoins("x", 'x', static_cast<unsigned char>('x'), L'x');
  ExpectJoins("5", short{5}, 5, 5u, 5L, 5UL, 5LL, 5ULL, 5.0f, 5.0);
  ExpectJoins("0", 0, 0UL);
  EXPECT_EQ(text + plain + 1 + 'c' + "d", "xyzxyz1cd");  // a tstring's own operators still apply
}

template <class... Others>
void ExpectOrdered(Others&&... others) {
  AnsiString a("a"), same("b\0z", 3);
  const AnsiString high("\xE9");
  const auto ordered = [&](auto& b) {
    EXPECT_TRUE(a < b && b > a && b < high && high > b && a != b && b != a);
    EXPECT_TRUE(b == same && same == b && !(b != same) && !(same != b));
    EXPECT_FALSE(b < a || a > b || a == b || b == a || b < same || same < b);
  };
  (ordered(others), ...);
}

TEST(AnsiString, ComparesWithOtherStringsUpToANul) {
  char buffer[] = "b";
  ExpectOrdered("b", buffer, AnsiString("b"), tstring("b"), std::string("b"));
  EXPECT_TRUE(AnsiString("a").AnsiCompareIC("Ax", 1) == 0 && AnsiString("a").AnsiCompare("A") > 0);
}

TEST(AnsiString, PartsAtAnyPosition) {
  struct {
    int start, count;
    const char *part, *rest;
  } const rows[] = {
      {1, 3, "abc", "def"},       {6, 1, "f", "abcde"},       {3, 99, "cdef", "ab"},
      {1, INT_MAX, "abcdef", ""}, {6, INT_MAX, "f", "abcde"}, {7, 1, "", "abcdef"},
      {0, 3, "", "abcdef"},       {INT_MIN, 3, "", "abcdef"}, {INT_MAX, INT_MAX, "", "abcdef"},
      {2, 0, "", "abcdef"},       {2, INT_MIN, "", "abcdef"}};
  for (auto const& row : rows) {
    AnsiString s("abcdef");
    EXPECT_EQ(s.SubString(row.start, row.count), row.part) << row.start << ", " << row.count;
    EXPECT_EQ(s.Delete(row.start, row.count), row.rest) << row.start << ", " << row.count;
  }
}

TEST(AnsiString, IndicesOfAnyTypeStayInside) {
  AnsiString s("abc");
  const AnsiString& constant = s;
  s[3u] = 'z';
  EXPECT_TRUE(s[std::size_t{1}] == 'a' && constant[2L] == 'b' && constant[short{3}] == 'z');
  for (const long long outside : {0LL, 4LL, -1LL, LLONG_MIN, LLONG_MAX, 1LL << 32 | 1}) {
    s[outside] = '!';
    EXPECT_TRUE(s[outside] == '\0' && constant[outside] == '\0') << outside;
  }
  EXPECT_STREQ(s.c_str(), "abz");
  EXPECT_TRUE(s.IsDelimiter("xb", 2) && !s.IsDelimiter("b", 1));
  EXPECT_FALSE(s.IsDelimiter(tstring("\0a", 2), 0) || s.IsDelimiter(tstring("\0a", 2), 4));
}

TEST(AnsiString, LengthsAndSearches) {
  constexpr char const* kNull = nullptr;
  AnsiString s("a/b/c");
  EXPECT_TRUE(s.LastDelimiter("b/") == 4 && !s.LastDelimiter("x") && !s.LastDelimiter(kNull));
  EXPECT_TRUE(s.Pos("b/") == 3 && s.AnsiPos("a") == 1 && !s.Pos("x") && !s.Pos(kNull));
  s.SetLength(-1);
  EXPECT_TRUE(s.Length() == 5 && AnsiString().Pos("") == 0);
  s.SetLength(7);
  EXPECT_EQ(std::string(s), std::string("a/b/c\0\0", 7));
  EXPECT_TRUE(s.sprintf("%d%s", 4, "2") == "42" && s.ToInt() == 42);
  EXPECT_TRUE(AnsiString("abc", 2) == "ab" && AnsiString("abc", -1).IsEmpty());
}

TEST(AnsiString, WideBuffersBelongToOneObject) {
  AnsiString s("abc");
  wchar_t const* const first = static_cast<AnsiString const&>(s);
  AnsiString copy(s), assigned("x");
  wchar_t* const second = s;
  EXPECT_NE(first, second);
  assigned = s;
  assigned = *&assigned;
  AnsiString moved(std::move(copy));
  moved = std::move(assigned);
  moved = static_cast<wchar_t const*>(moved);
  EXPECT_STREQ(static_cast<wchar_t*>(moved), L"abc");
  s = "changed";
  EXPECT_STREQ(second, L"abc");
}

TEST(AnsiString, Helpers) {
  struct {
    const char *path, *included, *excluded;
  } const rows[] = {
      {"dir", "dir\\", "dir"}, {"dir\\", "dir\\", "dir"}, {"dir//", "dir//", "dir/"}, {"", "", ""}};
  for (auto const& row : rows) {
    EXPECT_EQ(IncludeTrailingBackslash(row.path), row.included);
    EXPECT_EQ(ExcludeTrailingBackslash(row.path), row.excluded);
  }
  EXPECT_EQ(AnsiString(" \n\r\t\va b\f\t\r\n ").Trim().UpperCase(), "\vA B\f");
  EXPECT_EQ(AnsiString(" \t").Trim(), "");
  EXPECT_EQ(StringReplace("a.b.c", ".", "::"), "a::b::c");
  EXPECT_TRUE(StrToIntDef("42", 7) == 42 && StrToIntDef("99999999999", 7) == INT_MAX);
  for (const char* s : {"", "-1", "4x", static_cast<const char*>(nullptr)})
    EXPECT_EQ(StrToIntDef(s, 7), 7);
}

TEST(Strlcpy, CopiesWhatFits) {
  struct {
    long long size;
    const char* expected;
  } const rows[] = {{-1, "######"}, {0, "######"},       {1, ""}, {4, "hel"}, {5, "hell"},
                    {6, "hello"},   {1LL << 32, "hello"}};
  for (auto const& row : rows) {
    char text[] = "######";
    EXPECT_EQ(strlcpy(text, "hello", row.size), 5u) << row.size;
    EXPECT_STREQ(text, row.expected) << row.size;
    EXPECT_EQ(text[5], row.size < 6 ? '#' : '\0') << row.size;
  }
}

}  // namespace
