// Many threads trace while the settings are started, edited, changed and stopped. Run under the
// thread sanitizer.

#define _TIME_BITS 64  // the exported clock below is then the one that the library calls

#include <gmock/gmock.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "LarkspurCommon/debug.h"
#include "LarkspurCommon/tstring.h"
#include "platform/HostServices.h"
#include "support/Scratch.h"

namespace {

using corvo_test::ReadFile;

constexpr DWORD kId = 0x00270002;
constexpr int kThreads = 8;
constexpr int kRounds = 200;

std::atomic<long long> g_milliseconds{1'700'000'000'000};
std::mutex g_mutex;
std::vector<std::string> g_lines;

std::string Path() {
  return CorvoSettingsDirectory() + std::string("/corvo_debug_settings.ini");
}

void Edit(const std::string& text) {
  corvo_test::EditFile(Path(), text);
}

// Level 8 and the n-th note: 300 times the same letter.
std::string Settings(int n) {
  return "Filter Level=8\nNote=" + std::string(300, static_cast<char>('a' + n % 26)) + "\n";
}

// Never half a text, or one that another thread has freed.
bool NoteIsWhole() {
  bool found;
  const std::string note = GetData("Note", found);
  return std::all_of(note.begin(), note.end(), [&](char letter) { return letter == note[0]; });
}

// Runs `each` on eight threads that begin together, and `meanwhile` on this one.
void Together(
    const std::function<void()>& each, const std::function<void()>& meanwhile = [] {}) {
  std::atomic<int> waiting{kThreads + 1};
  const auto meet = [&] {
    --waiting;
    while (waiting != 0) std::this_thread::yield();
  };
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      meet();
      each();
    });
  }
  meet();
  meanwhile();
  for (std::thread& thread : threads) thread.join();
}

void TraceAndLook() {
  for (int round = 0; round < kRounds; ++round) {
    const CDebugTraceFn scope(kId, "Round", "%d", round);
    EXPECT_TRUE(NoteIsWhole());
  }
}

[[noreturn]] void EndProcess() {
  std::exit(testing::Test::HasFailure());
}

void StartByTracing() {
  alarm(120);
  SetDebugHooks(nullptr, [](char const* line, unsigned length) {
    const std::lock_guard<std::mutex> lock(g_mutex);
    g_lines.emplace_back(line, length);
  });
  Together([] { DebugA(kId, "first"); });
  EXPECT_THAT(g_lines, testing::SizeIs(kThreads));
  EXPECT_THAT(g_lines, testing::Each(testing::HasSubstr(" testhost (27,2) ")));
  EXPECT_EQ(ReadFile(Path()),
            "Filter Level=5\nID Bitmap=" + std::string(32, 'f') + "\nModule Name=testhost\n");
  EndProcess();
}

void StopWhileTracing() {
  alarm(120);
  SetDebugHooks(nullptr, [](char const*, unsigned) {});
  Edit(Settings(0));
  InitDebug(nullptr, nullptr, nullptr);
  Together(TraceAndLook, [] {
    Edit(Settings(1));
    DeInitDebug();
  });
  Edit("Filter Level=1\n");
  EXPECT_TRUE(IsDebugEnabled(0x00270008)) << "nothing is read any more";
  EXPECT_EQ(ReadFile(Path()), "Filter Level=1\n") << "or written";
  EndProcess();
}

}  // namespace

// Each look at the clock is later than the settings may be old.
extern "C" int clock_gettime(clockid_t, timespec* now) noexcept {
  const long long milliseconds = g_milliseconds += 3001;
  *now = {static_cast<time_t>(milliseconds / 1000),
          static_cast<long>(milliseconds % 1000) * 1'000'000};
  return 0;
}

// A process starts and stops the module only once.
TEST(TraceThreadsDeathTest, EightFirstCallsStartTheModuleOnce) {
  EXPECT_EXIT(StartByTracing(), testing::ExitedWithCode(0), "");
}

TEST(TraceThreadsDeathTest, TheModuleIsStoppedWhileTheyTrace) {
  EXPECT_EXIT(StopWhileTracing(), testing::ExitedWithCode(0), "");
}

TEST(TraceThreads, SettingsAreEditedAndChangedWhileTheyTrace) {
  SetDebugHooks(nullptr, [](char const*, unsigned) {});
  const char* names[] = {"Engine"};
  Together(TraceAndLook, [&] {
    for (int round = 0; round < kRounds; ++round) {
      Edit(Settings(round));
      if (round % 3 == 0) SetDebugFilterLevel(DFL_NOTICES);
      if (round % 5 == 0) SetDebugIdNames(7, 1, names);
    }
  });
  Edit(Settings(0));
  EXPECT_TRUE(IsDebugEnabled(0x00270008)) << "the last edit counts";
}
