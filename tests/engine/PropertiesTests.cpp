// The property text, item by item.

#include <cerrno>
#include <cstring>

#include "EngineTest.h"
#include "support/FileCalls.h"

namespace corvo_test {
namespace {

class PropertiesTest : public EngineTest {
 protected:
  PropertiesTest() {
    std::memset(m_buffer, 'q', sizeof m_buffer);
    std::strcpy(m_record.szMaker, "Tolva");
    m_record.dwSigned = 1;
  }

  // The buffer's text, after a check that nothing behind it was touched.
  std::string Properties(const std::string& recording) {
    Record(recording);
    m_result = GetRecordingProperty(m_path.c_str(), m_buffer);
    EXPECT_EQ(std::string(m_buffer + 2048, 16), std::string(16, 'q'));
    return {m_buffer, strnlen(m_buffer, 2048)};
  }
  std::string Properties() { return Properties(G726Recording("abc", m_record)); }

  NA_INFO m_record{};
  char m_buffer[2048 + 16];
  bool m_result = false;
};

TEST_F(PropertiesTest, EveryItemInItsPlaceAndFilledToItsWidth) {
  std::string expected;
  const auto text = [&expected](auto& field, char letter) {
    std::memset(field, letter, sizeof field);
    expected += std::string(sizeof field, letter) + ";";
  };
  const auto number = [&expected](DWORD value) {
    expected += std::to_string(value) + ";";
    return value;
  };
  NA_INFO& r = m_record;
  text(r.szMaker, 'a'), text(r.szItem02, 'b'), text(r.szItem03, 'c'), text(r.szItem04, 'd');
  text(r.szDuration, 'e'), text(r.szItem06, 'f'), text(r.szItem07, 'g'), text(r.szItem08, 'h');
  r.dwIPAddress = 0xFF000102;
  expected += "255.0.1.2;";
  text(r.szItem10, 'j'), text(r.szItem11, 'k'), text(r.szItem12, 'l'), text(r.szItem13, 'm');
  r.dwItem14 = number(4294967295);
  r.dwItem15 = number(15);
  text(r.szItem16, 'p'), text(r.szItem17, 'q'), text(r.szItem18, 'r'), text(r.szItem19, 's');
  text(r.szItem20, 't'), text(r.szItem21, 'u'), text(r.szItem22, 'v'), text(r.szItem23, 'w');
  text(r.szItem24, 'x');
  r.dwItem25 = number(25);
  r.dwItem26 = number(26);
  std::strcpy(r.szItem28, "a;b \n");
  EXPECT_EQ(Properties(), expected + "Yes;a;b \n");
}

TEST_F(PropertiesTest, LongTextIsCutBeforeTheTerminator) {
  std::memset(m_record.szItem28, '!', sizeof m_record.szItem28);
  const std::string text = Properties();
  EXPECT_EQ(text.size(), 2047u);
  EXPECT_EQ(text.substr(0, 45), "Tolva;;;;;;;;0.0.0.0;;;;;0;0;;;;;;;;;;0;0;Yes");
  EXPECT_EQ(text.back(), '!');
}

TEST_F(PropertiesTest, NothingToGiveClearsTheWholeBuffer) {
  m_record.dwSigned = 2;
  const struct {
    const char* name;
    std::string bytes;
  } rows[] = {{"Unsealed", G726Recording("abc", m_record)}, {"NoRecording", "short"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(Properties(row.bytes), "");
    EXPECT_TRUE(m_result);
    EXPECT_EQ(std::string(m_buffer, 2048), std::string(2048, '\0'));
  }
  EXPECT_TRUE(GetRecordingProperty(ScratchPath("missing.wav").c_str(), m_buffer));
  EXPECT_TRUE(GetRecordingProperty(nullptr, nullptr));
}

TEST_F(PropertiesTest, SealedRecordThatCannotBeReadGivesAnEmptyOne) {
  Properties();
  const Fault fault("read", 2, [] { return Fate{EIO}; });  // the first was the presence check's
  EXPECT_FALSE(GetRecordingProperty(m_path.c_str(), m_buffer));
  EXPECT_STREQ(m_buffer, ";;;;;;;;0.0.0.0;;;;;0;0;;;;;;;;;;0;0;Yes;");
}

}  // namespace
}  // namespace corvo_test
