// Sealing under failing calls, exceptions and sudden death: no recording is ever lost.

#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

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
  static void* SealUntilCancelled(void* test) {
    const Fault fault(Call::Sleep, 1, []() -> int { ::pthread_exit(nullptr); });
    static_cast<SealFaultsTest*>(test)->Seal();
    return test;
  }

  const std::string m_original;
  std::string m_sealed;
};

// What may go wrong before the recording is touched: the call fails, says why, and leaves nothing.
TEST_F(SealFaultsTest, EveryFailureBeforeTheReplacementLeavesTheRecording) {
  const struct {
    const char* name;
    Call call;
    std::function<int()> strike;
    const char* reason;
  } rows[] = {
      {"ReadError", Call::Read, [] { return EIO; }, "Error 5 (Input/output error)"},
      {"FullDisk", Call::Write, [] { return ENOSPC; }, "Error 28 (No space left on device)"},
      {"ShortWrite", Call::Write, [] { return g_writesAreShort = true, 0; }, "writing data"},
      {"FailedFlush", Call::Fsync, [] { return EIO; }, "flush"},
  };
  for (const auto& row : rows) {
    bool struck = true;
    int survived = 0;
    for (int nth = 1; struck; ++nth) {
      SCOPED_TRACE(row.name + std::to_string(nth));
      Record(m_original);
      const std::size_t descriptors = ListDirectory("/proc/self/fd").size();
      TraceLog trace;
      bool result;
      {
        const Fault fault(row.call, nth, row.strike);
        result = Seal();
        struck = fault.HasStruck();
        g_writesAreShort = false;
      }
      EXPECT_EQ(ListDirectory("/proc/self/fd").size(), descriptors);
      EXPECT_THAT(TemporaryFiles(), ElementsAre());
      EXPECT_EQ(Recorded(), result ? m_sealed : m_original);
      EXPECT_EQ(Failures(trace).size(), result ? 0u : 1u);
      if (!result && (row.call != Call::Read || nth > 2)) {  // before that: no record
        EXPECT_THAT(Failures(trace), ElementsAre(HasSubstr(row.reason)));
      }
      survived += result && struck;
    }
    // Only the flush that follows the replacement may fail unharmed.
    EXPECT_EQ(survived, row.call == Call::Fsync ? 1 : 0) << row.name;
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
  Record(m_original);
  pthread_t thread;
  ASSERT_EQ(::pthread_create(&thread, nullptr, SealUntilCancelled, this), 0);
  void* returned = this;
  ASSERT_EQ(::pthread_join(thread, &returned), 0);
  EXPECT_EQ(returned, nullptr) << "the thread went on";
  EXPECT_EQ(Recorded(), m_original);
  EXPECT_THAT(TemporaryFiles(), ElementsAre());
}

// At every instant the recording is there: untouched or sealed under its own name, or sealed under
// its temporary one.
TEST_F(SealFaultsTest, KilledAtAnyCallTheRecordingSurvives) {
  for (const bool moveFails : {false, true}) {
    int status = 99;
    for (int nth = 1; status == 99; ++nth) {
      Record(m_original);
      EmptyTemporaryDirectory();
      const pid_t child = ::fork();
      ASSERT_NE(child, -1);
      if (child == 0) {
        g_movesFail = moveFails;
        const Fault fault(std::nullopt, nth, []() -> int { ::_exit(99); });
        ::_exit(Seal() ? 0 : 1);
      }
      ASSERT_EQ(::waitpid(child, &status, 0), child);
      ASSERT_TRUE(WIFEXITED(status));
      status = WEXITSTATUS(status);

      bool whole = Recorded() == m_original || Verify();
      for (const std::string& name : TemporaryFiles()) {
        whole = whole || VerifySignature((TemporaryDirectory() + "/" + name).c_str());
      }
      EXPECT_TRUE(whole) << "killed at call " << nth;
    }
    EXPECT_EQ(status, 0);
  }
}

}  // namespace
}  // namespace corvo_test
