// When there are no properties. fuzz/FuzzProperties.cpp has a model of the text.

#include <cerrno>
#include <cstring>

#include "EngineTest.h"
#include "support/FileCalls.h"

namespace corvo_test {
namespace {

using PropertiesTest = SealedTest;

TEST_F(PropertiesTest, NothingToGiveClearsTheWholeBuffer) {
  char buffer[2048];
  for (const std::string& bytes : {m_original, std::string("short")}) {
    Record(bytes);
    std::memset(buffer, 'q', sizeof buffer);
    EXPECT_TRUE(GetRecordingProperty(m_path.c_str(), buffer));
    EXPECT_EQ(std::string(buffer, 2048), std::string(2048, '\0'));
  }
  EXPECT_TRUE(GetRecordingProperty(ScratchPath("missing.wav").c_str(), buffer));
  EXPECT_TRUE(GetRecordingProperty(nullptr, nullptr));
}

TEST_F(PropertiesTest, SealedRecordThatCannotBeReadGivesAnEmptyOne) {
  char buffer[2048];
  const Fault fault("read", 2, [] { return Fate{EIO}; });  // the first was the presence check's
  EXPECT_FALSE(GetRecordingProperty(m_path.c_str(), buffer));
  EXPECT_STREQ(buffer, ";;;;;;;;0.0.0.0;;;;;0;0;;;;;;;;;;0;0;Yes;");
}

}  // namespace
}  // namespace corvo_test
