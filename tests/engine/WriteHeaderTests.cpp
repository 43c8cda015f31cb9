// The three header layouts, byte by byte.

#include <gtest/gtest.h>

#include <cstring>

#include "Recordings.h"
#include "engine/CorvoVerifiedRecording.h"
#include "support/Scratch.h"

namespace corvo_test {
namespace {

class WriteHeaderTest : public testing::Test {
 protected:
  void SetUp() override {
    WriteFile(m_path, "");
    ASSERT_TRUE(m_file.Open(m_path.c_str(), OFM_READWRITE, NLM_BINARY, false, false));
  }
  std::string Written() {
    m_file.Close();
    return ReadFile(m_path);
  }
  std::string RecordBytes() const { return {reinterpret_cast<const char*>(&m_record), 3098}; }

  const std::string m_path = ScratchPath("header.wav");
  TFileHandler m_file;
  VerifyRecording m_engine;
  NA_INFO m_record = SampleRecord();
  long long m_eyre = 0x0807060504030201;
};

TEST_F(WriteHeaderTest, G726) {
  m_engine.WriteG726WAVHeader(m_file, 0x10203, 0xA0B0C0D0, &m_eyre, &m_record);
  EXPECT_EQ(Written(), "RIFF" + Le32(0x10203 + 3162) + "WAVE" + "eyre" + Le32(8) +
                           "\1\2\3\4\5\6\7\10" + "fmt " + Le32(16) + Le16(100) + Le16(1) +
                           Le32(8000) + Le32(2000) + Le16(1) + Le16(2) + RecordBytes() + "fact" +
                           Le32(4) + Le32(0xA0B0C0D0) + "data" + Le32(0x10203));
}

TEST_F(WriteHeaderTest, Pcm) {
  m_engine.WriteWAVHeader(m_file, 16000, &m_record);
  EXPECT_EQ(Written(), "RIFF" + Le32(19146) + "WAVE" + "fmt " + Le32(16) + Le16(1) + Le16(1) +
                           Le32(8000) + Le32(16000) + Le16(2) + Le16(16) + RecordBytes() + "fact" +
                           Le32(4) + Le32(16000) + "data" + Le32(16000));
}

TEST_F(WriteHeaderTest, GsmTakesTheCallersFormatBlockAsItIs) {
  const _gsm_wavehdrz format{49, 1, 8000, 1625, 65, 0, 2, 320};
  m_engine.WriteWAVHeader(m_file, 650, &m_record, format);
  EXPECT_EQ(Written(), "RIFF" + Le32(3800) + "WAVE" + "fmt " + Le32(20) + Le16(49) + Le16(1) +
                           Le32(8000) + Le32(1625) + Le16(65) + Le16(0) + Le16(2) + Le16(320) +
                           RecordBytes() + "fact" + Le32(4) + Le32(650) + "data" + Le32(650));
}

TEST_F(WriteHeaderTest, OnlyTheStartOfTheRecordIsStamped) {
  std::memcpy(m_record.ckID, "none", 4);
  m_record.ckSize = 1;
  NA_INFO expected = m_record;
  std::memcpy(expected.ckID, "ALCH", 4);
  expected.ckSize = 3090;
  std::memcpy(expected.szMaker, "Tolva\0er Mark II", 16);
  m_engine.WriteG726WAVHeader(m_file, 0, 0, &m_eyre, &m_record);
  EXPECT_EQ(std::memcmp(&m_record, &expected, sizeof expected), 0);
}

TEST_F(WriteHeaderTest, WrittenOverAFileItKeepsLengthAndAudio) {
  const std::string before(4000, 'a');
  m_file.Write(before.data(), 4000);
  m_engine.WriteG726WAVHeader(m_file, 830, 1, &m_eyre, &m_record);
  const std::string after = Written();
  EXPECT_EQ(after.size(), 4000u);
  EXPECT_EQ(after.substr(3170), before.substr(3170));
}

}  // namespace
}  // namespace corvo_test
