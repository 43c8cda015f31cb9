// Sealing under failing calls, exceptions and cancellation. tests/reliability fails every call in
// turn.

#include <pthread.h>

#include <gmock/gmock.h>

#include <cerrno>
#include <stdexcept>

#include "EngineTest.h"
#include "support/FileCalls.h"

namespace corvo_test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class SealFaultsTest : public SealedTest {
 protected:
  // For a thread of its own, which its first pause ends.
  static void* CancelledMeanwhile(void* test) {
    const While<Hook> sleeping(t_onSleep, [] { ::pthread_exit(nullptr); });
    auto* const self = static_cast<SealFaultsTest*>(test);
    self->m_verifies ? self->Verify() : self->Seal();
    return test;
  }

  bool m_verifies = false;
  const While<int> m_running{g_clockStep, 10};
};

// What the failure line says of a call that fails before the recording is touched.
TEST_F(SealFaultsTest, FailureLineTellsWhatFailed) {
  const struct {
    const char* call;
    Fate fate;
    const char* reason;
  } rows[] = {
      {"read", {EIO}, "Error 5 (Input/output error)"},
      {"write", {ENOSPC}, "Error 28 (No space left on device)"},
      {"write", {0, true}, "writing data"},
      {"fsync", {EIO}, "flush"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.reason);
    Record(m_original);
    const TraceLog trace;
    const Fault fault(row.call, 3, [&] { return row.fate; });
    EXPECT_FALSE(Seal());
    EXPECT_THAT(Failures(trace), ElementsAre(HasSubstr(row.reason)));
    EXPECT_EQ(Recorded(), m_original);
  }
}

TEST_F(SealFaultsTest, ExceptionIsReportedOnceAndLosesNothing) {
  for (Hook* const hook : {&t_onSleep, &t_onMoveFile}) {
    Record(m_original);
    const TraceLog trace;
    {
      const While<Hook> throwing(*hook, [] { throw std::runtime_error("from the host"); });
      EXPECT_FALSE(Seal());
    }
    EXPECT_THAT(trace.Texts(0x25, '2'),
                ElementsAre("Exception has occurred in bool VerifyRecording::CreateSignature(const "
                            "TCHAR*, UWORD, LONGLONG*, LONGLONG*) (CorvoVerifiedRecording[187])"));
    EXPECT_THAT(trace.Texts(0x27, '8').back(), HasSubstr("returning false and took "));
    if (hook == &t_onMoveFile) {  // by now the temporary file is the only copy
      EXPECT_THAT(Failures(trace), ElementsAre(HasSubstr(TemporaryFile())));
      EXPECT_TRUE(VerifySignature(TemporaryFile().c_str()));
    } else {
      EXPECT_EQ(Recorded(), m_original);
      EXPECT_THAT(TemporaryFiles(), ElementsAre());
    }
  }
}

TEST_F(SealFaultsTest, CancelledThreadLeavesTheRecordingAndTheHost) {
  for (const bool verifies : {false, true}) {
    m_verifies = verifies;
    const std::string before = verifies ? m_sealed : m_original;
    Record(before);
    pthread_t thread;
    ASSERT_EQ(::pthread_create(&thread, nullptr, CancelledMeanwhile, this), 0);
    void* returned = this;
    ASSERT_EQ(::pthread_join(thread, &returned), 0);
    EXPECT_EQ(returned, nullptr) << "the thread went on";
    EXPECT_EQ(Recorded(), before);
    EXPECT_THAT(TemporaryFiles(), ElementsAre());
  }
}

}  // namespace
}  // namespace corvo_test
