// The configuration of the process, first asked for by many threads at once. Run under the thread
// sanitizer.

#include <atomic>
#include <thread>

#include "RegistryTest.h"

using namespace corvo_test;

using RegistryGlobalTest = RegistryTest;

TEST_F(RegistryGlobalTest, ThreadsGetOneObjectWhileItsSettingsAreReadAgain) {
  constexpr int kThreads = 8;
  std::atomic<int> waiting{kThreads + 1};
  std::atomic<bool> done{false};
  std::vector<std::thread> threads;
  for (int number = 0; number < kThreads; ++number) {
    threads.emplace_back([&, number] {
      --waiting;
      while (waiting != 0) std::this_thread::yield();
      VMRegistry& registry = *VMRegistry::global();
      EXPECT_EQ(&registry, VMRegistry::m_global);
      EXPECT_EQ(registry.DBDirectory(), ScratchPath("bin")) << "whole when it is handed out";
      const tstring name = tstring::FromFormat("Thread%d", number);
      for (int round = 0; !done; ++round) {
        registry.SetRegistryEntry(name, round);
        int stored = -1;
        registry.GetRegistryEntry(name, stored);
        EXPECT_EQ(stored, round);
        EXPECT_NE(registry.TempDirectory(), "");
      }
    });
  }
  --waiting;
  for (int round = 0; round < 5; ++round) VMRegistry::global()->ReInitRegistry();
  done = true;
  for (std::thread& thread : threads) thread.join();
}
