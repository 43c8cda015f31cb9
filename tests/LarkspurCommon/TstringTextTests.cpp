// Searching, justifying, words, tokens, radix conversions and wildcards, where it can be against
// the standard library's readers and printers.

#include <gtest/gtest.h>

#include <bitset>
#include <climits>
#include <cstdio>
#include <sstream>
#include <vector>

#include "LarkspurCommon/tstring.h"
#include "support/TraceLog.h"

namespace {

constexpr unsigned int kAll = 0xFFFFFFFF;

// Every text of at most `longest` of these letters.
std::vector<std::string> TextsOf(std::string const& letters, std::size_t longest) {
  std::vector<std::string> texts{""};
  for (std::size_t i = 0; texts[i].size() < longest; ++i) {
    for (const char letter : letters) texts.push_back(texts[i] + letter);
  }
  return texts;
}

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

TEST(TstringWords, AreWhatStreamsRead) {
  for (std::string const& text : TextsOf("a \n", 6)) {
    std::istringstream stream(text);
    unsigned int count = 0;
    std::string spaced;
    for (std::string word; stream >> word;) {
      ASSERT_EQ(tstring(text).Words(++count, 1), word);
      spaced += (count == 1 && text[0] == 'a' ? "" : "--") + word;
    }
    ASSERT_EQ(tstring(text).NumWords(), count);
    ASSERT_EQ(tstring(text).Space(2, '-'), spaced + text.substr(text.rfind('a') + 1));
  }
  const tstring s(" a\tbc  d ");
  EXPECT_EQ(s.Words(1, 2) + "," + s.Words(2, 0) + "," + s.Words(2, 2), "a\tbc,bc,bc  d");
  EXPECT_EQ(s.Words(2, 3) + s.Words(3, kAll) + s.Words(0, kAll) + s.Words(kAll, kAll), "bc  d d ");
}

TEST(TstringWords, Tokens) {
  std::vector<tstring> tokens{"a,,b;", ",;"};
  tstring::Tokenize(tokens[0], tokens[1], tokens);
  EXPECT_EQ(tokens, (std::vector<tstring>{"", ",;", "a", "", "b", ""}));
  tstring text("c,d");
  tstring::Tokenize(text, text.c_str() + 1, tokens);
  EXPECT_EQ(tokens.back() + text, "");
}

TEST(TstringRadix, NumbersAsTheLibraryPrintsThem) {
  for (const unsigned long long value : {1ull, 0xA5ull, 0x100ull, 0x123456789ABCDEF0ull, ~0ull}) {
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", value);
    const tstring bits(std::bitset<64>(value).to_string()), hex(text);
    const std::string decimal = std::to_string(value);
    EXPECT_EQ(tstring::x2d("f" + hex) + tstring::b2d("1" + bits), decimal + decimal);
    EXPECT_EQ(tstring::c2d(tstring::d2c(decimal)), decimal);
    EXPECT_EQ(tstring::d2x(decimal), tstring(hex).TrimLeft('0'));
    EXPECT_EQ(tstring::d2b(decimal).RightJustify(64, '0'), tstring(bits).RightJustify(64, '0'));
    EXPECT_EQ(tstring::b2x(bits) + tstring::x2b(hex), hex + bits);
  }
}

TEST(TstringRadix, DigitsAndBytes) {
  EXPECT_EQ(tstring::d2x("255") + tstring::d2x("18446744073709551618") + tstring::d2b("0"), "ff2");
  EXPECT_EQ(tstring::b2x("101111") + tstring::b2c("101000010"), "2f\x01\x42");
  EXPECT_EQ(tstring::c2x("AB\xFF") + tstring::c2b("\x81"), "4142ff10000001");
  EXPECT_EQ(tstring("FF").x2d() + tstring("5A").x2b() + tstring("41424").x2c(),
            "25501011010\x04\x14\x24");
  for (const char* other : {"", "2g", "-1", " 1"}) {
    EXPECT_EQ(tstring::b2x(other) + tstring::b2c(other) + tstring::b2d(other), "") << other;
    EXPECT_EQ(tstring::x2b(other) + tstring::x2c(other) + tstring::x2d(other), "") << other;
    EXPECT_EQ(tstring::d2x(other) + tstring::d2b(other) + tstring::d2c(other), "") << other;
  }
}

// The definition itself: a star opens a level at each start in turn.
int Score(std::string const& subject, std::string const& pattern, bool afterStar) {
  int score = 0;
  std::size_t i = afterStar ? 1 : 0;
  for (; i < pattern.size() && pattern[i] != '*'; ++i) {
    if (i >= subject.size() || (pattern[i] != '?' && pattern[i] != subject[i])) return -1;
    score += pattern[i] == '?' ? 1 : static_cast<int>(subject.size());
  }
  if (i == pattern.size()) return i == subject.size() ? score : -1;
  for (std::size_t start = i; start < subject.size(); ++start) {
    const int rest = Score(subject.substr(start), pattern.substr(i), true);
    if (rest >= 0) return score + rest;
  }
  return -1;
}

TEST(TstringMatch, ScoresAsDefined) {
  const std::vector<std::string> patterns = TextsOf("ab?*", 5);
  for (std::string const& subject : TextsOf("ab", 6)) {
    for (std::string const& pattern : patterns) {
      const int score = Score(subject, pattern, false);
      ASSERT_EQ(tstring(subject).Matches(pattern.c_str()), score) << subject << " " << pattern;
    }
  }
  EXPECT_EQ(tstring("aBc").Matches("A*C"), 5);
  EXPECT_EQ(tstring("a\0b", 3).Matches("a?B"), 7);
}

TEST(TstringMatch, LongTextIsNoTrouble) {
  const tstring as('a', 100000);
  EXPECT_EQ(as.Matches("*a*a*a*a*a*a*a*a*b"), -1);
  EXPECT_EQ(as.Matches(tstring('*', 100000)), 0);
  EXPECT_EQ(as.Matches(as), INT_MAX);
  EXPECT_EQ(as.Matches(as.Left(30000) + "*" + as.Left(30000)), INT_MAX);
}

TEST(TstringText, NullPointersOfTheTextOperationsAreReported) {
  constexpr char const* kNull = nullptr;
  const corvo_test::TraceLog log;
  std::vector<tstring> tokens;
  tstring s("a");
  tstring::Tokenize(s, kNull, tokens);
  EXPECT_EQ(tokens, std::vector<tstring>{s});
  EXPECT_EQ(s.ReverseFind(kNull), -1);
  EXPECT_EQ(tstring().Matches(kNull), 0);
  EXPECT_EQ(s.SpanIncluding(kNull), "");
  EXPECT_EQ(s.SpanExcluding(kNull), "");
  EXPECT_EQ(s.Insert(0, kNull), 1u);
  std::string reports;
  for (auto const& line : log.Texts(0x0F, '8')) {
    const std::size_t name = line.find("tstring::") + 9;
    reports += line.substr(name, line.find_first_of(",:", name) + 1 - name);
  }
  EXPECT_EQ(reports, "Tokenize,Find,Matches,SpanIncluding:SpanExcluding:Insert,");
}

}  // namespace
