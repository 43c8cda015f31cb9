// Reading: the cache, the end of the file, and lines. Writing text, which lines come from.

#include <random>

#include "FileHandlerTest.h"

using namespace corvo_test;

namespace {

bool IsEnd(char ch) {
  return ch == '\r' || ch == '\n';
}

// The documented line reader, one character at a time.
struct Model {
  std::string bytes;
  std::size_t at = 0;
  bool end = false;

  std::string ReadLine(DWORD length) {
    std::string line;
    bool ended = false;
    while (line.size() < length - 1 && !ended && !end) {
      if ((end = at == bytes.size())) break;
      const char ch = bytes[at++];
      const bool afterEnd = !line.empty() && IsEnd(line.back());
      if (afterEnd && (!IsEnd(ch) || ch == line.back())) {
        ended = true;
        --at;
      } else {
        line += ch;
        ended = afterEnd;
      }
    }
    if (line.empty()) return line;
    if (ended && line.size() > 1 && IsEnd(line[line.size() - 2])) line.pop_back();
    if (ended) line.back() = '\n';
    end = false;
    return line;
  }
};

}  // namespace

TEST_F(FileHandlerTest, LinesComeAsCharacterByCharacter) {
  std::minstd_rand random(20261116);
  const auto below = [&](unsigned limit) { return static_cast<unsigned>(random() % limit); };
  for (int round = 0; round < 300; ++round) {
    SCOPED_TRACE(round);
    const bool large = round % 100 == 99;  // line ends around the cache's end
    std::string bytes(large ? 16300 + below(200) : below(40), 'a');
    const unsigned ends = large ? 4000 : 2 + below(6);
    for (char& ch : bytes) ch = below(ends) == 0 ? "\r\n"[below(2)] : 'a';
    std::vector<char> buffer(large ? 20000 : 2 + below(12));
    const DWORD length = static_cast<DWORD>(buffer.size());
    On(kRead).most = round % 3 == 0 ? 1 + static_cast<ssize_t>(below(5)) : -1;
    On(kAllocateCache).failures = round % 5 == 0 ? 1 : 0;

    TFileHandler lines;
    Model model{Make("lines", bytes)};
    ASSERT_TRUE(lines.Open(model.bytes.c_str(), OFM_READ, NLM_TEXT, false, false));
    model.bytes = bytes;
    while (!lines.EndOfFile()) {
      DWORD got = 99;
      ASSERT_TRUE(lines.Read(buffer.data(), length, &got));
      ASSERT_EQ(model.ReadLine(length), std::string(buffer.data(), got));
      ASSERT_EQ('\0', buffer[got]);
      ASSERT_EQ(model.end, lines.EndOfFile());
      ASSERT_EQ(model.at, lines.GetFilePosition());
    }
  }
}

TEST_F(FileHandlerTest, CacheSavesCallsAndKnowsTheEnd) {
  std::string bytes(52868, 'x');
  bytes[16383] = 'y';
  const struct {
    DWORD length, got;
    int calls;  // of `read` so far
    DWORD position;
    bool end;
  } rows[] = {
      {0, 0, 0, 0, false},
      {10, 10, 1, 10, false},           // fills the cache
      {16373, 16373, 1, 16383, false},  // from the cache
      {16384, 16384, 2, 32767, false},  // one cached, the others by a refill
      {1, 1, 2, 32768, false},
      {20000, 20000, 3, 52768, false},  // past the cache
      {20000, 100, 4, 52868, false},    // to the end, but not beyond
      {20000, 0, 5, 52868, true},
      {1, 0, 6, 52868, true},
  };
  ASSERT_TRUE(file.Open(Make("a", bytes).c_str(), OFM_READ, NLM_BINARY, false, false));
  std::vector<char> buffer(20000, 'x');
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.length << " up to " << row.position);
    DWORD got = 99;
    EXPECT_TRUE(file.Read(buffer.data(), row.length, &got));
    EXPECT_EQ(row.got, got);
    EXPECT_EQ(row.calls, On(kRead).calls);
    EXPECT_EQ(row.position, file.GetFilePosition());
    EXPECT_EQ(row.end, file.EndOfFile());
    EXPECT_EQ(row.position == 32767 ? 'y' : 'x', buffer[0]);
  }
}

TEST_F(FileHandlerTest, LoopsOverWhatCannotBeReadEnd) {
  char buffer[8];
  for (const NewLine_Mode mode : {NLM_BINARY, NLM_TEXT}) {
    for (const int withoutCache : {0, 1}) {
      On(kAllocateCache).failures = withoutCache;
      TFileHandler directory;
      ASSERT_TRUE(directory.Open(ScratchDirectory().c_str(), OFM_READ, mode, false, false));
      DWORD got = 99;
      EXPECT_FALSE(directory.Read(buffer, sizeof buffer, &got));
      EXPECT_EQ(0u, got);
      EXPECT_TRUE(directory.EndOfFile());
    }
  }
}

TEST_F(FileHandlerTest, TextIsWrittenWithItsLineEndsMadeTwoBytes) {
  const struct {
    const char *text, *bytes;
    bool result;
  } rows[] = {{"x\ny", "x\r\ny", true},
              {"\nx\n\n", "\r\nx\r\n\r\n", true},
              {"a\rb", "a\rb", true},
              {"", "", false}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    ASSERT_TRUE(file.Open(ScratchPath("a").c_str(), OFM_WRITE, NLM_TEXT, true, false));
    EXPECT_EQ(row.result, file.Write(row.text, 99));
    EXPECT_EQ(row.bytes, ReadFile(ScratchPath("a")));
  }
}
