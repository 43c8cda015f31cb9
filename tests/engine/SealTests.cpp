// What sealing makes of a recording, and what it refuses. fuzz/FuzzSeal.cpp has a model of it.

#include <sys/stat.h>

#include <gmock/gmock.h>

#include <cstring>

#include "EngineTest.h"
#include "LarkspurCommon/XTTime.h"
#include "support/FileCalls.h"

namespace corvo_test {
namespace {

using testing::ElementsAre;
using testing::MatchesRegex;

using SealTest = EngineTest;

TEST_F(SealTest, G726RecordingBecomesTheSealedLayout) {
  const std::string audio = Audio(2500);
  Record(G726Recording(audio));
  m_start = 0x0102030405060708;
  m_end = m_start + 659'000'000;
  ASSERT_TRUE(CreateSignature(m_path.c_str(), kG726, &m_start, &m_end));
  EXPECT_EQ(m_end, kOldEyre) << "the end time gives back the eyre value from before";

  NA_INFO record = SampleRecord();
  std::memcpy(record.szMaker, "Tolva", 6);
  std::memcpy(record.szDuration, "1min:5sec", 10);
  record.dwSigned = 1;
  std::memset(record.bySignature, 0, sizeof record.bySignature);
  const std::string sealed = Recorded();
  std::memcpy(record.bySignature, sealed.data() + 302, 20);
  EXPECT_EQ(sealed, "RIFF" + Le32(2500 + 3162) + "WAVE" + "eyre" + Le32(8) +
                        "\x8\x7\x6\x5\x4\x3\x2\x1" + "fmt " + Le32(16) + Le16(100) + Le16(1) +
                        Le32(8000) + Le32(2000) + Le16(1) + Le16(2) + "ALCH" + Le32(3090) +
                        Payload(record) + "fact" + Le32(4) + Le32(4711) + "data" + Le32(2500) +
                        audio);
  EXPECT_EQ(sealed.substr(302, 20),
            "\x66\x46\xbf\xe4\x5f\xdc\x22\x87\x84\x33\xd3\xf1\xce\xb1\x03\xed\xb1\x4a\xd2\x3f");
  EXPECT_THAT(TemporaryFiles(), ElementsAre());
}

TEST_F(SealTest, DurationIsTheUnsignedDifference) {
  const struct {
    long long start, end;
    const char* text;
  } rows[] = {
      {0, 659'000'000, "1min:5sec"},
      {5'000'000, 4'999'999, "679802384min:10sec"},
      {-10'000'000, 590'000'000, "1min:0sec"},
      {0, 9'999'999, "0min:0sec"},
      {0, 2147483648LL * 60 * 10'000'000, "-2147483648min:0sec"},
  };
  for (const auto& row : rows) {
    Record(G726Recording("audio"));
    m_start = row.start;
    m_end = row.end;
    ASSERT_TRUE(CreateSignature(m_path.c_str(), kG726, &m_start, &m_end));
    EXPECT_STREQ(RecordOf(Recorded()).szDuration, row.text);
  }
}

TEST_F(SealTest, SealedRecordingIsLeftAlone) {
  Record(G726Recording(Audio(100)));
  ASSERT_TRUE(Seal());
  const std::string sealed = Recorded();
  TraceLog trace;
  EXPECT_TRUE(Seal());
  EXPECT_EQ(Recorded(), sealed);
  EXPECT_THAT(trace.Texts(), ElementsAre("> CreateSignature(" + m_quoted + ")",
                                         MatchesRegex("< CreateSignature\\(" + m_quoted +
                                                      "\\) - returning true and took [0-9]+ms")));
}

TEST_F(SealTest, RefusalsLeaveTheRecordingAndSayWhy) {
  const std::string eyre = Le32(1) + Le32(2);
  const std::string record = Payload(SampleRecord());
  const auto g726 = [&] { return Wave().Chunk("eyre", eyre).Chunk("fmt ", Format(100, 1, 2)); };
  const auto because = [&](const std::string& text) {
    return kSealing + "error \"" + text + "\" has occurred.";
  };
  const struct {
    const char* name;
    std::string bytes;
    unsigned short codec;
    std::string failure;
  } rows[] = {
      {"NoRecord", g726().Chunk("fact", Le32(1)).Chunk("data", "abc").Bytes(), kG726,
       kSealing + "no NA_INFO is found within the file " + m_quoted + "."},
      {"NoAudio", g726().Chunk("ALCH", record).Chunk("fact", Le32(1)).Chunk("data", "").Bytes(),
       kG726, because("No audio in WAVE file " + m_quoted)},
      {"LacksTooMuch",
       Wave().Chunk("ALCH", record).ChunkClaiming("data", 16 * 1024 * 1024 + 4, "abc").Bytes(),
       kGsm,
       because("WAVE file " + m_quoted +
               " lacks 16777217 of the 16777220 bytes of audio it declares")},
      {"BeyondTwoGiB",
       Wave().Chunk("ALCH", record).ChunkClaiming("data", 0x7FFFFFFF - 3169, "abc").Bytes(), kGsm,
       because("WAVE file " + m_quoted +
               " declares 2147480478 bytes of audio, more than can be sealed")},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    Record(row.bytes);
    TraceLog trace;
    EXPECT_FALSE(Seal(row.codec));
    EXPECT_THAT(Failures(trace), ElementsAre(row.failure));
    EXPECT_EQ(Recorded(), row.bytes);
    EXPECT_THAT(TemporaryFiles(), ElementsAre());
  }
}

TEST_F(SealTest, PermissionBitsAreKeptByTheMoveAndByTheCopy) {
  for (const Replacement replacement : kReplacements) {
    const FileCallObserver observer(replacement);
    RemoveTree(m_path);
    Record(G726Recording("audio"));
    ASSERT_EQ(::chmod(m_path.c_str(), 0464), 0);
    ASSERT_TRUE(Seal());
    struct stat status {};
    ASSERT_EQ(::stat(m_path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777u, 0464u);
  }
}

TEST_F(SealTest, CopyWorksTenMillisecondsAndSleepsFifty) {
  const While standing(g_clockStep, 0);
  for (const unsigned long age : {9ul, 10ul}) {
    const int before = g_sleeps;
    unsigned long timer = os_clock() - age;
    VerifyRecording().GiveUpTimeSlice(timer);
    EXPECT_EQ(g_sleeps - before, age == 10 ? 1 : 0);
    EXPECT_EQ(os_clock() - timer, age == 10 ? 0u : 9u) << "a pause starts the timer anew";
  }
}

}  // namespace
}  // namespace corvo_test
