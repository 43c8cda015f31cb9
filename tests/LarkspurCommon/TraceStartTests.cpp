// The start of the module and its end, in a host that traces from inside the calls that the start
// needs. Every test runs in a child process, since a process starts the module only once.

#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "LarkspurCommon/debug.h"
#include "platform/HostServices.h"
#include "platform/Win32Compat.h"
#include "support/Scratch.h"

namespace {

constexpr int kThreads = 8;
constexpr int kCalls = 50;
constexpr DWORD kLine = 0x00270002;

std::atomic<int> g_lines;
std::atomic<int> g_named;  // of them, those that show the module's name
std::atomic<int> g_opened;

// Its failures become the test's.
template <class Body>
void InChildProcess(Body body) {
  const auto run = [body] {
    SetDebugHooks(nullptr, [](char const* line, unsigned) {
      ++g_lines;
      if (std::string(line).find(" testhost (27,2) ") != std::string::npos) ++g_named;
    });
    std::remove((CorvoSettingsDirectory() + std::string("/corvo_debug_settings.ini")).c_str());
    body(CorvoSettingsDirectory() + std::string("/corvo_debug_settings.ini"));
    std::exit(testing::Test::HasFailure() ? 1 : 0);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

std::string Entries(const std::string& name) {
  return "Filter Level=5\nID Bitmap=" + std::string(32, 'f') + "\nModule Name=" + name + "\n";
}

}  // namespace

extern "C" int fopen_s(FILE** file, const char* path, const char* mode) {
  ++g_opened;
  DebugA(kLine, "opening %s", path);
  InitDebug(nullptr, "nested", nullptr);
  *file = std::fopen(path, mode);
  return *file == nullptr ? EACCES : 0;
}

TEST(TraceStart, ThreadsMeetInTheFirstCall) {
  InChildProcess([](const std::string& path) {
    pthread_barrier_t barrier;
    pthread_barrier_init(&barrier, nullptr, kThreads);
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
      threads.emplace_back([&barrier] {
        pthread_barrier_wait(&barrier);
        for (int call = 0; call < kCalls; ++call) {
          const CDebugTraceFn trace(kLine, "Run");
          DebugA(kLine, "text");
        }
      });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(g_opened, 1) << "once, to write the file";
    EXPECT_EQ(g_lines, kThreads * kCalls * 3 + g_opened);
    EXPECT_EQ(g_named, g_lines);
    EXPECT_EQ(corvo_test::ReadFile(path), Entries("testhost"));
  });
}

TEST(TraceStart, ModuleNameIsEightCharacters) {
  InChildProcess([](const std::string& path) {
    corvo_test::WriteFile(path, "Module Name=Recorder\n");
    InitDebug(nullptr, " a name too long", nullptr);
    InitDebug(nullptr, "second", nullptr);
    EXPECT_EQ(corvo_test::ReadFile(path), Entries("a name t"));
  });
}

TEST(TraceStart, DeInitIsFinal) {
  InChildProcess([](const std::string& path) {
    corvo_test::WriteFile(path, "Filter Level=7\n");
    EXPECT_TRUE(IsDebugEnabled(0x00270007));
    IncreaseThreadIndentLevel();
    DeInitDebug();
    EXPECT_EQ(GetThreadIndentLevel(), 0U);
    corvo_test::WriteFile(path, "Filter Level=9\n");
    namespace fs = std::filesystem;
    fs::last_write_time(path, fs::file_time_type::clock::now() - std::chrono::hours(1));
    InitDebug(nullptr, nullptr, nullptr);
    for (int call = 0; call < 2; ++call) EXPECT_TRUE(IsDebugEnabled(0x00270007));
    EXPECT_FALSE(IsDebugEnabled(0x00270008));
    EXPECT_EQ(corvo_test::ReadFile(path), "Filter Level=9\n");
  });
}
