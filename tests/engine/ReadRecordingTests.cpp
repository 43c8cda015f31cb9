// The chunk search, the walkers and the record: what they refuse and say. fuzz/FuzzWalk.cpp has a
// model of what they find.

#include <cstring>

#include "EngineTest.h"

namespace corvo_test {
namespace {

class ReadRecordingTest : public EngineTest {
 protected:
  void Open(const std::string& bytes) {
    Record(bytes);
    ASSERT_TRUE(m_file.Open(m_path.c_str(), OFM_READ, NLM_BINARY, false, false));
  }

  TFileHandler m_file;
  VerifyRecording m_engine;
  unsigned long m_number = 1;
  int m_bits = 2;
  long long m_eyre = 3;
};

const std::string kEyre = Le32(1) + Le32(2);

TEST_F(ReadRecordingTest, LongEyreAndFactAreReadOnAsChunks) {
  Open(Wave()
           .Chunk("eyre", kEyre + "fmt " + Le32(16) + Format(100, 1, 2))
           .Chunk("fact", Le32(9) + "data" + Le32(77))
           .Bytes());
  EXPECT_EQ(m_engine.WalkToG726WAVData(m_file, m_number, m_eyre), 77u);
  EXPECT_EQ(m_number, 9u);
}

TEST_F(ReadRecordingTest, RefusalsSayWhy) {
  const std::string mono = Format(1, 1, 16);
  const std::string in = " in WAVE file " + m_quoted;
  const std::string noData = "Failed to locate CHUNK \"data\"" + in;
  const auto eyre = [] { return Wave().Chunk("eyre", kEyre); };
  const struct {
    const char* name;
    bool g726;  // or linear PCM
    Wave wave;
    std::string error;
  } rows[] = {
      {"NoRiff", false, Wave().Riff("RIFX"), "Invalid WAVE file (no RIFF found)" + in},
      {"NoWave", true, Wave().FormType("AVI "), "Invalid WAVE file (no WAVE chunk found)" + in},
      {"NoFormat", false, Wave().Chunk("data", "x"), "Failed to locate CHUNK \"fmt \"" + in},
      {"ShortFormat", false, Wave().Chunk("fmt ", std::string(15, 'f')),
       "Invalid WAVE file (fmt chunk is too small (15 < 16))" + in},
      {"EmptyFormat", false, Wave().Chunk("fmt ", ""), ""},
      {"ShortEyre", true, Wave().Chunk("eyre", "12345"),
       "Invalid WAVE file (fmt chunk is too small (5 < 16))" + in},
      {"StereoBeforeTag", true, eyre().Chunk("fmt ", Format(1, 2, 16)).Chunk("data", "x"),
       "WAVE file " + m_quoted + " is stereo which is not supported"},
      {"PcmTag", true, eyre().Chunk("fmt ", mono).Chunk("data", "x"),
       "WAVE file " + m_quoted + " has format 1 which is not supported"},
      {"NoFactNamesData", true, eyre().Chunk("fmt ", Format(100, 1, 2)).Chunk("data", "x"), noData},
      {"NoPadAfterOddSize", false,
       Wave().Chunk("fmt ", mono).Chunk("odd ", "123456789").Raw({'\0'}).Chunk("data", "x"),
       noData},
      {"HeaderCutShort", false, Wave().Chunk("fmt ", mono).Raw("data" + Le16(5)), noData},
      {"EmptyData", false, Wave().Chunk("fmt ", mono).Chunk("data", ""), ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    Open(row.wave.Bytes());
    VerifyRecording engine;
    EXPECT_EQ(row.g726 ? engine.WalkToG726WAVData(m_file, m_number, m_eyre)
                       : engine.WalkToWAVData(m_file, m_number, m_bits),
              0u);
    EXPECT_EQ(engine.m_lastError, row.error);
  }
}

TEST_F(ReadRecordingTest, RecordIsFilledFromWhatTheChunkHolds) {
  const std::string payload = Audio(3090);
  const struct {
    const char* name;
    std::string chunk;  // as in the file
    unsigned claimed;
    std::size_t taken;
  } rows[] = {
      {"Short", payload.substr(0, 400), 400, 400},
      {"Long", payload + std::string(1910, 'z'), 5000, 3090},
      {"CutByTheEnd", payload.substr(0, 1000), 3090, 1000},
      {"HugeClaim", payload, 0xFFFFFFFF, 3090},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    Open(Wave().Chunk("eyre", kEyre).ChunkClaiming("ALCH", row.claimed, row.chunk).Bytes());
    NA_INFO records[2];
    std::memset(records, 0x55, sizeof records);
    ASSERT_TRUE(m_engine.GetNAInfo(&records[0], m_file, nullptr));
    EXPECT_EQ(std::string(records[0].ckID, 4), "ALCH");
    EXPECT_EQ(DWORD{records[0].ckSize}, 3090u);
    EXPECT_EQ(Payload(records[0]),
              payload.substr(0, row.taken) + std::string(3090 - row.taken, '\0'));
    EXPECT_EQ(Payload(records[1]), std::string(3090, 0x55)) << "written behind the record";
  }
}

TEST_F(ReadRecordingTest, SealedMeansFlagOneInARecordThatHoldsTheSealBlock) {
  const struct {
    DWORD size, flag;
    bool sealed;
  } rows[] = {{3090, 1, true}, {322, 1, true}, {321, 1, false}, {3090, 0, false}, {3090, 2, false}};
  for (const auto& row : rows) {
    NA_INFO record{};
    record.ckSize = row.size;
    record.dwSigned = row.flag;
    EXPECT_EQ(m_engine.IsSignaturePresent(record), row.sealed) << row.size << " " << row.flag;
  }
}

}  // namespace
}  // namespace corvo_test
