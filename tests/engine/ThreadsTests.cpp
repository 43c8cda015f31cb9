// Many host threads at once, each with recordings of its own. Run under the thread sanitizer.

#include <atomic>
#include <thread>

#include "EngineTest.h"
#include "LarkspurCommon/debug.h"

namespace corvo_test {
namespace {

using ThreadsTest = EngineTest;

TEST_F(ThreadsTest, EightThreadsSealAndVerifyWhileTracing) {
  constexpr int kThreads = 8;
  constexpr int kRounds = 10;
  std::atomic<int> waiting{kThreads};
  std::atomic<int> verified{0};
  std::atomic<int> traced{0};
  static std::atomic<int>* counter = &traced;
  SetDebugHooks(nullptr, [](const char*, unsigned int) { ++*counter; });

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
  SetDebugHooks(nullptr, nullptr);
  EXPECT_EQ(verified, kThreads * kRounds);
  // Per round: entering, leaving, and at least the two failure lines of the missing recording.
  EXPECT_GE(traced, kThreads * kRounds * 4);
  EXPECT_TRUE(TemporaryFiles().empty());
}

}  // namespace
}  // namespace corvo_test
