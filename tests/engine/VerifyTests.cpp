// What verification accepts, refuses and says, and what the presence check looks at.

#include <gmock/gmock.h>

#include <cerrno>
#include <stdexcept>

#include "EngineTest.h"
#include "Faults.h"

namespace corvo_test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class VerifyTest : public EngineTest {
 protected:
  std::string Sealed(std::size_t audioBytes = 40) {
    Record(G726Recording(Audio(audioBytes)));
    EXPECT_TRUE(Seal());
    return Recorded();
  }
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
  const std::string sealed = Sealed();
  for (std::size_t offset = 0; offset < sealed.size(); ++offset) {
    std::string changed = sealed;
    changed[offset] = static_cast<char>(changed[offset] ^ 1 << offset % 8);
    Record(changed);
    ASSERT_EQ(Verify(), !IsCovered(offset)) << "byte " << offset;
    ASSERT_EQ(Recorded(), changed);
  }
  EXPECT_THAT(TemporaryFiles(), ElementsAre());
  Record(sealed + "behind the audio");
  EXPECT_TRUE(Verify());
}

TEST_F(VerifyTest, RefusalsSayWhyInTheirOrder) {
  const std::string sealed = Sealed();
  std::string unsealed = sealed;
  unsealed[298] = 0;
  std::string tampered = sealed;
  tampered[3180] ^= 4;
  std::string withoutEyre = sealed;
  withoutEyre.replace(12, 4, "ayre");
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
      {"Unsealed", unsealed, {NoSignature()}, false},
      {"Tampered", tampered, {Failed()}, true},
      {"Shortened", sealed.substr(0, sealed.size() - 1), {Failed()}, true},
      {"WalkRefused", withoutEyre, {Failed()}, true},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    std::remove(m_path.c_str());
    if (!row.bytes.empty()) Record(row.bytes);
    TraceLog trace;
    EXPECT_FALSE(Verify());
    EXPECT_EQ(Failures(trace), row.failures);
    EXPECT_THAT(TemporaryFiles(), ElementsAre());
    EXPECT_EQ(IsSignaturePresent(m_path.c_str()), row.present);
  }
}

TEST_F(VerifyTest, PresenceCheckIsTracedInsideTheVerification) {
  Sealed();
  TraceLog trace;
  EXPECT_TRUE(Verify());
  EXPECT_THAT(
      trace.Texts(),
      ElementsAre("> VerifySignature(" + m_quoted + ")", "> IsSignaturePresent(" + m_quoted + ")",
                  StartsWith("< IsSignaturePresent(" + m_quoted + ") - returning true and took "),
                  StartsWith("< VerifySignature(" + m_quoted + ") - returning true and took ")));
}

TEST_F(VerifyTest, FailingDiskIsNotCalledAForgery) {
  Sealed();
  for (const Call call : {Call::Read, Call::Write}) {
    bool verified = false;
    for (int nth = 1; !verified; ++nth) {
      TraceLog trace;
      const Fault fault(call, nth, [] { return EIO; });
      verified = Verify();
      EXPECT_EQ(verified, !fault.HasStruck());
      EXPECT_THAT(Failures(trace), Each(Not(HasSubstr("Legal")))) << "at call " << nth;
      EXPECT_THAT(TemporaryFiles(), ElementsAre());
    }
  }
}

TEST_F(VerifyTest, ExceptionLeavesTheTemporaryFileForTheInquiry) {
  Sealed();
  TraceLog trace;
  {
    const While running(g_clockStep, 10);
    const Fault fault(Call::Sleep, 1, []() -> int { throw std::runtime_error("from the host"); });
    EXPECT_FALSE(Verify());
  }
  EXPECT_THAT(trace.Texts(0x25, '2'),
              ElementsAre("Exception has occurred in bool VerifyRecording::VerifySignature(const "
                          "TCHAR*) (CorvoVerifiedRecording[297])"));
  EXPECT_EQ(TemporaryFiles().size(), 1u);
}

TEST_F(VerifyTest, ExceptionOfTheClockStaysInside) {
  Sealed();
  int calls = 0;
  for (bool struck = true; struck; ++calls) {
    TraceLog trace;
    const Fault fault(Call::Clock, calls + 1,
                      []() -> int { throw std::runtime_error("from the host"); });
    ASSERT_NO_THROW(Verify()) << "at call " << calls + 1;
    struck = fault.HasStruck();
    EXPECT_EQ(trace.Texts(0x25, '2').size(), struck ? 1u : 0u);
    EXPECT_THAT(trace.Texts(0x27, '8').back(), HasSubstr("returning "));
  }
  EXPECT_GT(calls, 2);
}

}  // namespace
}  // namespace corvo_test
