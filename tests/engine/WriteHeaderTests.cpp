// The layouts that sealing doesn't write, byte by byte.

#include "EngineTest.h"

namespace corvo_test {
namespace {

class WriteHeaderTest : public EngineTest {
 protected:
  template <class... Format>
  std::string Written(unsigned long audioBytes, const Format&... format) {
    TFileHandler file;
    Record("");
    EXPECT_TRUE(file.Open(m_path.c_str(), OFM_READWRITE, NLM_BINARY, false, false));
    VerifyRecording().WriteWAVHeader(file, audioBytes, &m_record, format...);
    file.Close();
    return Recorded();
  }
  // As written: with the maker's name.
  std::string RecordBytes() const { return {reinterpret_cast<const char*>(&m_record), 3098}; }

  NA_INFO m_record = SampleRecord();
};

TEST_F(WriteHeaderTest, Pcm) {
  const std::string written = Written(16000);
  EXPECT_EQ(written, "RIFF" + Le32(19146) + "WAVE" + "fmt " + Le32(16) + Le16(1) + Le16(1) +
                         Le32(8000) + Le32(16000) + Le16(2) + Le16(16) + RecordBytes() + "fact" +
                         Le32(4) + Le32(16000) + "data" + Le32(16000));
}

TEST_F(WriteHeaderTest, GsmTakesTheCallersFormatBlockAsItIs) {
  const _gsm_wavehdrz format{49, 1, 8000, 1625, 65, 0, 2, 320};
  const std::string written = Written(650, format);
  EXPECT_EQ(written, "RIFF" + Le32(3800) + "WAVE" + "fmt " + Le32(20) + Le16(49) + Le16(1) +
                         Le32(8000) + Le32(1625) + Le16(65) + Le16(0) + Le16(2) + Le16(320) +
                         RecordBytes() + "fact" + Le32(4) + Le32(650) + "data" + Le32(650));
}

}  // namespace
}  // namespace corvo_test
