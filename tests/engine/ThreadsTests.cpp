// Many host threads at once, with recordings of their own and with the same one. Run under the
// thread sanitizer.

#include <algorithm>
#include <atomic>
#include <thread>

#include "EngineTest.h"
#include "LarkspurCommon/debug.h"
#include "support/FileCalls.h"

namespace corvo_test {
namespace {

using ThreadsTest = EngineTest;

TEST_F(ThreadsTest, EightThreadsSealAndVerifyWhileTracing) {
  constexpr int kThreads = 8;
  constexpr int kRounds = 10;
  std::atomic<int> waiting{kThreads};
  std::atomic<int> verified{0};
  const TraceLog trace;
  std::vector<std::thread> threads;
  for (int number = 0; number < kThreads; ++number) {
    threads.emplace_back([&, number] {
      const std::string path = ScratchPath("rec/" + std::to_string(number) + ".wav");
      --waiting;
      while (waiting != 0) std::this_thread::yield();
      for (int round = 0; round < kRounds; ++round) {
        WriteFile(path, G726Recording(Audio(3000)));
        long long start = 0, end = 10'000'000;
        const bool sealed = CreateSignature(path.c_str(), kG726, &start, &end);
        CDebugTraceFn scope(0x00270002, "round", "%d", round);
        VerifySignature((path + ".missing").c_str());
        if (sealed && VerifySignature(path.c_str())) ++verified;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(verified, kThreads * kRounds);
  // Per round: entering, leaving, and at least the two failure lines of the missing recording.
  EXPECT_GE(trace.Lines().size(), kThreads * kRounds * 4u);
  EXPECT_TRUE(TemporaryFiles().empty());
}

// Whether a failure line tells where a file of the temporary directory is.
bool IsNamed(const std::string& name, const TraceLog& trace) {
  const std::vector<std::string> lines = Failures(trace);
  return std::any_of(lines.begin(), lines.end(),
                     [&](const std::string& line) { return line.find(name) != std::string::npos; });
}

// What holds however sealers of the same recording, none of which lost it, came together: whatever
// is left in the temporary directory is named, and sealed too.
void ExpectKept(const std::string& path, bool unchanged, const TraceLog& trace) {
  EXPECT_EQ(ListDirectory(ScratchPath("rec")), std::vector<std::string>{"a.wav"});
  EXPECT_TRUE(unchanged || VerifySignature(path.c_str()));
  for (const std::string& name : TemporaryFiles()) {
    EXPECT_TRUE(IsNamed(name, trace)) << name;
    EXPECT_TRUE(VerifySignature((TemporaryDirectory() + "/" + name).c_str()));
  }
  EmptyTemporaryDirectory();
}

// One round: two sealers and a verifier begin together. How many sealers said that it is sealed.
int SealTwice(const std::string& path, Replacement replacement) {
  std::atomic<int> waiting{3};
  std::atomic<int> sealed{0};
  const auto meet = [&] {
    --waiting;
    while (waiting != 0) std::this_thread::yield();
  };
  const auto seal = [&] {
    const FileCallObserver observer(replacement);
    long long start = 0, end = 10'000'000;
    meet();
    if (CreateSignature(path.c_str(), kG726, &start, &end)) ++sealed;
  };
  std::thread one(seal), other(seal);
  meet();
  VerifySignature(path.c_str());
  one.join();
  other.join();
  return sealed;
}

TEST_F(ThreadsTest, TwoSealersOfTheSameRecordingLoseNothing) {
  for (const Replacement replacement : kReplacements) {
    for (int round = 0; round < 150; ++round) {
      TraceLog trace;
      const std::string original = G726Recording(Audio(3000));
      Record(original);
      const int sealers = SealTwice(m_path, replacement);
      ExpectKept(m_path, sealers == 0 && Recorded() == original, trace);
    }
  }
}

// The other one seals between two of the file-system calls, each pair in turn.
TEST_F(ThreadsTest, ASealerComesBetweenAnyTwoCallsOfAnother) {
  for (const Replacement replacement : kReplacements) {
    for (int call = 1;; ++call) {
      SCOPED_TRACE(call);
      TraceLog trace;
      Record(G726Recording(Audio(3000)));
      bool other = false;
      const auto sealMeanwhile = [&] {
        const FileCallObserver observer(replacement);
        other = Seal();
        return Fate{};
      };
      const Fault fault("", call, sealMeanwhile, replacement);
      const bool sealed = Seal();
      if (!fault.HasStruck()) break;
      EXPECT_TRUE(sealed || other);
      ExpectKept(m_path, false, trace);
    }
  }
}

}  // namespace
}  // namespace corvo_test
