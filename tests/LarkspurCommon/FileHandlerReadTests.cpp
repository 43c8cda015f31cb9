// Reading: the cache, the end of the file, and lines. Writing text, which lines come from.

#include <algorithm>
#include <numeric>

#include "FileHandlerTest.h"

using namespace corvo_test;

TEST_F(FileHandlerTest, LinesEndInAnyWayThatTextsDo) {
  const std::string block(16383, 'a');                       // line ends around the cache's end
  std::vector<std::string> ladder{block.substr(60) + '\n'};  // around the sizes copied at once
  for (std::size_t length = 0; length < 34; ++length) {
    ladder.push_back(std::string(length, static_cast<char>('a' + length % 26)) + '\n');
  }
  const struct {
    std::string bytes;
    DWORD length;
    std::vector<std::string> lines;
  } rows[] = {
      {"a\nbc\rd\n\re\n", 99, {"a\n", "bc\n", "d\n", "e\n"}},
      {"a\nin the block of the line before\n", 99, {"a\n", "in the block of the line before\n"}},
      {"\n\n\r\r", 99, {"\n", "\n", "\r"}},  // the file cuts the last one
      {"ab\r\nc", 4, {"ab\r", "\n", "c"}},
      {block + "\r\nb", 20000, {block + "\n", "b"}},
      {std::accumulate(ladder.begin(), ladder.end(), std::string()), 20000, ladder},
      {"", 99, {}}};
  for (const auto& row : rows) {
    for (const ssize_t most : {1, 5, -1}) {
      SCOPED_TRACE(testing::Message() << &row - rows << " " << most);
      On(kAllocate).failures = most == 5 ? 1 : 0;  // there is no cache
      On(kRead).most = most;
      const std::string path = Make("lines", row.bytes);
      TFileHandler text;
      ASSERT_TRUE(text.Open(path.c_str(), OFM_READ, NLM_TEXT, false, false));
      std::vector<char> buffer(row.length);
      DWORD got = 99;
      for (const std::string& line : row.lines) {
        std::fill(buffer.begin(), buffer.end(), 'Z');
        ASSERT_TRUE(text.Read(buffer.data(), row.length, &got));
        ASSERT_EQ(line, std::string(buffer.data(), got));
        ASSERT_EQ(buffer[got], '\0');
        const std::string all(buffer.begin(), buffer.end());
        ASSERT_EQ(all.npos, all.find_first_not_of('Z', got + 1));
        ASSERT_FALSE(text.EndOfFile());
      }
      EXPECT_TRUE(text.Read(buffer.data(), row.length, &got) && got == 0 && text.EndOfFile());
    }
  }
}

TEST_F(FileHandlerTest, CacheSavesCallsAndKnowsTheEnd) {
  std::string bytes(52868, 'x'), read;
  bytes[16383] = 'y';
  ASSERT_TRUE(Open(Make("a", bytes), OFM_READ));
  char buffer[20000];
  DWORD got = 99;
  // Filling the cache, emptying it but for one, then with a refill, past the cache, to the end.
  for (const DWORD length : {10u, 16373u, 16384u, 20000u, 20000u}) {
    EXPECT_TRUE(file.Read(buffer, length, &got));
    read.append(buffer, got);
    EXPECT_EQ(read.size(), file.GetFilePosition());
    EXPECT_FALSE(file.EndOfFile());
  }
  EXPECT_EQ(bytes, read);
  EXPECT_EQ(4, On(kRead).calls);
  EXPECT_TRUE(file.Read(buffer, 1, &got) && got == 0 && file.EndOfFile());
}
