// What verification accepts, refuses and says, and what the presence check looks at.

#include <gmock/gmock.h>

#include <cerrno>
#include <stdexcept>

#include "EngineTest.h"
#include "support/FileCalls.h"

namespace corvo_test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class VerifyTest : public SealedTest {
 protected:
  VerifyTest() : SealedTest(40) {}

  std::string Failed() const {
    return kVerifying + "Legal authentication failed for file - " + m_quoted + ".";
  }
  std::string NoSignature() const {
    return kVerifying + "no signature found within the file " + m_quoted + ".";
  }
};

// The bytes of a sealed file that the seal leaves open: they are rebuilt, or not looked at.
bool IsCovered(std::size_t offset) {
  static const struct {
    std::size_t begin, end;
    const char* what;
  } kOpen[] = {
      {4, 8, "RIFF size"},
      {20, 28, "eyre value"},
      {40, 52, "format block behind tag and channels"},
      {60, 66, "maker name"},
      {322, 382, "bySignature behind the digest"},
      {3154, 3158, "fact size"},
  };
  for (const auto& open : kOpen) {
    if (offset >= open.begin && offset < open.end) return false;
  }
  return true;
}

TEST_F(VerifyTest, EachByteBreaksTheSealExactlyWhereItIsCovered) {
  for (std::size_t offset = 0; offset < m_sealed.size(); ++offset) {
    for (const int flip : {1 << offset % 8, 0xFF}) {
      const std::string changed =
          With(m_sealed, offset, {static_cast<char>(m_sealed[offset] ^ flip)});
      Record(changed);
      ASSERT_EQ(Verify(), !IsCovered(offset)) << "byte " << offset;
      ASSERT_EQ(Examine().verdict == RecordingVerdict::kOk, !IsCovered(offset))
          << "byte " << offset;
      ASSERT_EQ(Recorded(), changed);
    }
  }
  EXPECT_THAT(TemporaryFiles(), ElementsAre());
  Record(m_sealed + "behind the audio");
  EXPECT_TRUE(Verify());
}

TEST_F(VerifyTest, RefusalsSayWhyInTheirOrder) {
  const std::string missing =
      "error \"Error 2 (No such file or directory) opening file " + m_quoted + "\" has occurred.";
  const struct {
    const char* name;
    std::string bytes;  // empty: no file
    std::vector<std::string> failures;
    bool present;
  } rows[] = {
      {"Missing", "", {kAsking + missing, NoSignature()}, false},
      {"NoRecord",
       "RIFF    WAVE",
       {kAsking + "no NA_INFO is found within the file " + m_quoted + ".", NoSignature()},
       false},
      {"Unsealed", With(m_sealed, 298, "\2"), {NoSignature()}, false},
      {"Tampered", With(m_sealed, 3180, "\1\2"), {Failed()}, true},
      {"Shortened", m_sealed.substr(0, m_sealed.size() - 1), {Failed()}, true},
      {"WalkRefused", With(m_sealed, 12, "ayre"), {Failed()}, true},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    std::remove(m_path.c_str());
    if (!row.bytes.empty()) Record(row.bytes);
    TraceLog trace;
    EXPECT_FALSE(Verify());
    EXPECT_EQ(Failures(trace), row.failures);
    EXPECT_THAT(TemporaryFiles(), ElementsAre());
    EXPECT_EQ(IsPresent(), row.present);
  }
}

TEST_F(VerifyTest, PresenceCheckIsTracedInsideTheVerification) {
  TraceLog trace;
  EXPECT_TRUE(Verify());
  EXPECT_THAT(
      trace.Texts(),
      ElementsAre("> VerifySignature(" + m_quoted + ")", "> IsSignaturePresent(" + m_quoted + ")",
                  StartsWith("< IsSignaturePresent(" + m_quoted + ") - returning true and took "),
                  StartsWith("< VerifySignature(" + m_quoted + ") - returning true and took ")));
}

TEST_F(VerifyTest, FailingDiskIsNotCalledAForgery) {
  for (const char* call : {"read", "write"}) {
    bool verified = false;
    for (int nth = 1; !verified; ++nth) {
      TraceLog trace;
      const Fault fault(call, nth, [] { return Fate{EIO}; });
      verified = Verify();
      EXPECT_EQ(verified, !fault.HasStruck());
      EXPECT_THAT(Failures(trace), Each(Not(HasSubstr("Legal")))) << "at call " << nth;
      EXPECT_THAT(TemporaryFiles(), ElementsAre());
    }
  }
}

TEST_F(VerifyTest, ExceptionLeavesTheTemporaryFileForTheInquiry) {
  TraceLog trace;
  {
    const While running(g_clockStep, 10);
    const While<Hook> throwing(t_onSleep, [] { throw std::runtime_error("from the host"); });
    EXPECT_FALSE(Verify());
  }
  EXPECT_THAT(trace.Texts(0x25, '2'),
              ElementsAre("Exception has occurred in bool VerifyRecording::VerifySignature(const "
                          "TCHAR*) (CorvoVerifiedRecording[297])"));
  EXPECT_EQ(TemporaryFiles().size(), 1u);
}

TEST_F(VerifyTest, ExceptionOfTheClockStaysInside) {
  int calls = 0;
  for (bool struck = true; struck; ++calls) {
    TraceLog trace;
    int left = calls;
    struck = false;
    const While<Hook> throwing(t_onClock, [&] {
      if (left-- != 0) return;
      struck = true;
      throw std::runtime_error("from the host");
    });
    ASSERT_NO_THROW(Verify()) << "at call " << calls + 1;
    EXPECT_EQ(trace.Texts(0x25, '2').size(), struck ? 1u : 0u);
    EXPECT_THAT(trace.Texts(0x27, '8').back(), HasSubstr("returning "));
  }
  EXPECT_GT(calls, 2);
}

}  // namespace
}  // namespace corvo_test
