// Sealing under failing calls, exceptions and cancellation. tests/reliability fails every call in
// turn.

#include <pthread.h>

#include <gmock/gmock.h>

#include <cerrno>
#include <stdexcept>

#include "EngineTest.h"
#include "Faults.h"

namespace corvo_test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class SealFaultsTest : public EngineTest {
 protected:
  SealFaultsTest() : m_original(G726Recording(Audio(5000))) {
    Record(m_original);
    EXPECT_TRUE(Seal());
    m_sealed = Recorded();
  }

  // For a thread of its own, which a strike ends.
  static void* CancelledMeanwhile(void* test) {
    const Fault fault(Call::Sleep, 1, []() -> int { ::pthread_exit(nullptr); });
    auto* const self = static_cast<SealFaultsTest*>(test);
    self->m_verifies ? self->Verify() : self->Seal();
    return test;
  }

  bool m_verifies = false;

  const std::string m_original;
  std::string m_sealed;
};

// What the failure line says of a call that fails before the recording is touched.
TEST_F(SealFaultsTest, FailureLineTellsWhatFailed) {
  const struct {
    Call call;
    std::function<int()> strike;
    const char* reason;
  } rows[] = {
      {Call::Read, [] { return EIO; }, "Error 5 (Input/output error)"},
      {Call::Write, [] { return ENOSPC; }, "Error 28 (No space left on device)"},
      {Call::Write, [] { return g_writesAreShort = true, 0; }, "writing data"},
      {Call::Fsync, [] { return EIO; }, "flush"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.reason);
    Record(m_original);
    TraceLog trace;
    const Fault fault(row.call, 3, row.strike);
    EXPECT_FALSE(Seal());
    g_writesAreShort = false;
    EXPECT_THAT(Failures(trace), ElementsAre(HasSubstr(row.reason)));
    EXPECT_EQ(Recorded(), m_original);
  }
}

TEST_F(SealFaultsTest, ExceptionIsReportedOnceAndLosesNothing) {
  const While running(g_clockStep, 10);
  for (const Call call : {Call::Sleep, Call::MoveFile}) {
    Record(m_original);
    TraceLog trace;
    {
      const Fault fault(call, 1, []() -> int { throw std::runtime_error("from the host"); });
      EXPECT_FALSE(Seal());
    }
    EXPECT_THAT(trace.Texts(0x25, '2'),
                ElementsAre("Exception has occurred in bool VerifyRecording::CreateSignature(const "
                            "TCHAR*, UWORD, LONGLONG*, LONGLONG*) (CorvoVerifiedRecording[187])"));
    EXPECT_THAT(trace.Texts(0x27, '8').back(), HasSubstr("returning false and took "));
    if (call == Call::MoveFile) {  // by now the temporary file is the only copy
      EXPECT_THAT(Failures(trace), ElementsAre(HasSubstr(TemporaryFile())));
      EXPECT_TRUE(VerifySignature(TemporaryFile().c_str()));
    } else {
      EXPECT_EQ(Recorded(), m_original);
      EXPECT_THAT(TemporaryFiles(), ElementsAre());
    }
  }
}

TEST_F(SealFaultsTest, CancelledThreadLeavesTheRecordingAndTheHost) {
  const While running(g_clockStep, 10);
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
