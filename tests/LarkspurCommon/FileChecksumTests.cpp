// Checksums of whole files: what they cover, what they leave as it was, and their pauses.

#include <cerrno>
#include <stdexcept>

#include "FileHandlerTest.h"
#include "LarkspurCommon/XTTime.h"
#include "platform/Win32Compat.h"

using namespace corvo_test;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {
unsigned long g_now, g_tick;  // the host's clock, and how far each look at it moves it
DWORD g_slept;
bool g_sleepThrows;
}  // namespace

extern "C" unsigned long os_clock() {
  return g_now += g_tick;
}

extern "C" void Sleep(DWORD milliseconds) {
  g_slept += milliseconds;
  if (g_sleepThrows) throw std::runtime_error("host");
}

TEST_F(FileHandlerTest, ChecksumsCoverTheFileAndLeaveTheReader) {
  const struct {
    std::string bytes;
    const char *crc, *hash;
  } rows[] = {{"", "00000000", "d41d8cd98f00b204e9800998ecf8427e"},
              {"123456789", "cbf43926", "25f9e794323b453885f5181f1b624d0b"},
              {std::string(16384, 'x'), "7ade7891", "cc7fa4aff814016b4f2eff395e64ff7c"},
              {std::string(40000, 'x'), "73ca5d47", "33766cd480de06a6b2e053eb8f67583e"},
              {"a\r\nb\nc", "80409eaf", "1560896e820ec84caa27cc6813cf2bcf"}};
  unsigned long clock = 0;
  for (const auto& row : rows) {
    ASSERT_TRUE(file.Open(Make("a", row.bytes).c_str(), OFM_READ, NLM_TEXT, false, false));
    file.MoveToPosition(0, 1);
    file.GenerateCRC(clock);
    file.GenerateHash(clock);
    EXPECT_STREQ(row.crc, file.GetCRC(clock));
    EXPECT_STREQ(row.hash, file.GetHash(clock));
    EXPECT_EQ(1u, file.GetFilePosition());
  }
  char line[9];
  EXPECT_TRUE(file.Read(line, sizeof line, nullptr));
  EXPECT_STREQ("\n", line);
  ASSERT_TRUE(file.Open(Make("b", "").c_str(), OFM_READ, NLM_BINARY, false, false));
  EXPECT_STREQ("80409eaf", file.GetCRC(clock)) << "kept until generated anew";
  file.Close();
  file.GenerateCRC(clock);
  EXPECT_STREQ("00000000", file.GetCRC(clock));
  EXPECT_TRUE(file.GetIsOpen());
  EXPECT_STREQ("d41d8cd98f00b204e9800998ecf8427e", TFileHandler().GetHash(clock)) << "no file";
}

TEST_F(FileHandlerTest, ChecksumsPauseAndSurviveFailures) {
  const struct {
    unsigned long tick;
    bool sleepThrows;
    int failedBlocks, failedReads;
    DWORD slept;
    unsigned long clock;  // afterwards; 100 before
    const char* crc;
  } rows[] = {{0, false, 0, 0, 0, 100, "73ca5d47"},  {1, false, 0, 0, 10, 103, "73ca5d47"},
              {2, false, 0, 0, 30, 112, "73ca5d47"}, {2, true, 0, 0, 10, 100, "7ade7891"},
              {2, false, 1, 0, 0, 100, "00000000"},  {2, false, 0, 1, 0, 100, "00000000"}};
  const std::string path = Make("a", std::string(40000, 'x'));
  ASSERT_TRUE(file.Open(path.c_str(), OFM_READ, NLM_BINARY, false, false));
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    unsigned long clock = g_now = 100;
    g_tick = row.tick;
    g_sleepThrows = row.sleepThrows;
    g_slept = 0;
    On(kAllocate).failures = row.failedBlocks;
    On(kRead) = {row.failedReads, EIO};
    file.MoveToPosition(0, 5);
    file.GenerateCRC(clock);
    EXPECT_EQ(5u, file.GetFilePosition());
    EXPECT_EQ(row.slept, g_slept);
    EXPECT_EQ(row.clock, clock);
    EXPECT_STREQ(row.crc, file.GetCRC(clock));
  }
  EXPECT_THAT(trace.Texts(0x25, '2'),
              ElementsAre(HasSubstr("void TFileHandler::GenerateCRC(SQLUINTEGER&)")));
}
