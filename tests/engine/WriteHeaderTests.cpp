// The layouts that sealing doesn't write, byte by byte.

#include <gtest/gtest.h>

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
};

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

}  // namespace
}  // namespace corvo_test
