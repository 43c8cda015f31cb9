// How a sealed copy takes the recording's place: what is flushed when, and what part of it may
// fail.

#include <gmock/gmock.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <thread>

#include "EngineTest.h"
#include "Faults.h"

namespace corvo_test {
namespace {

class ReplacementTest : public EngineTest {
 protected:
  ReplacementTest() { Record(G726Recording("audio")); }

  // So that a change at once is later, however slowly the file system's clock ticks.
  void SetOldTime() const {
    namespace fs = std::filesystem;
    fs::last_write_time(m_path, fs::last_write_time(m_path) - std::chrono::hours(1));
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }

  // With the temporary file's path shown as TEMPORARY.
  static std::vector<std::string> Masked(std::vector<std::string> lines) {
    const std::string directory = TemporaryDirectory() + "/";
    const std::size_t nameLength = std::strlen("QRT0123456789abcdef0123456789abcdef.tmp");
    for (std::string& line : lines) {
      for (std::size_t at; (at = line.find(directory)) != std::string::npos;) {
        line.replace(at, directory.size() + nameLength, "TEMPORARY");
      }
    }
    return lines;
  }
};

// The move fails, as it does across file systems, and what else may fail with it.
TEST_F(ReplacementTest, FailingInPartIsTracedAndLosesNothing) {
  const auto failed = [&](const std::string& what, const std::string& error) {
    return kSealing + "failed to " + what + ", error \"" + error + "\" has occurred.";
  };
  const auto busy = [](const std::string& path) {
    return "Error 16 (Device or resource busy) deleting file " + path;
  };
  const std::string rename = "rename file \"TEMPORARY\" to " + m_quoted;
  const std::string copy = "copy file \"TEMPORARY\" to " + m_quoted;
  const std::string unlink = "delete file " + m_quoted;
  const std::string clear = "delete file \"TEMPORARY\"";
  const struct {
    int failingUnlink;  // 0: none
    bool copyFails;
    std::vector<std::string> failures;
  } rows[] = {
      {0, false, {failed(rename, "")}},
      {0, true, {failed(rename, ""), failed(copy, "")}},
      {1, false, {failed(unlink, busy(m_quoted)), failed(rename, busy(m_quoted))}},
      {2, false, {failed(rename, ""), failed(clear, busy("\"TEMPORARY\""))}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.failures.back());
    EmptyTemporaryDirectory();
    Record(G726Recording("audio"));
    TraceLog trace;
    {
      const While moving(g_movesFail, true);
      const While copying(g_copiesFail, row.copyFails);
      const Fault fault(Call::Unlink, row.failingUnlink, [] { return EBUSY; });
      EXPECT_EQ(Seal(), !row.copyFails);
    }
    EXPECT_EQ(Masked(Failures(trace)), row.failures);
    const bool kept = row.copyFails || row.failingUnlink == 2;
    ASSERT_EQ(TemporaryFiles().size(), kept ? 1u : 0u);
    EXPECT_TRUE(row.copyFails ? VerifySignature(TemporaryFile().c_str()) : Verify());
  }
}

TEST_F(ReplacementTest, DiskIsFlushedBeforeAndAfter) {
  const std::string directory = "fsync " + ScratchPath("rec");
  std::vector<std::string> moved = {"fsync TEMPORARY", "fsync " + TemporaryDirectory(),
                                    "unlink " + m_path, "MoveFile"};
  std::vector<std::string> copied = moved;
  moved.push_back(directory);
  copied.insert(copied.end(), {"CopyFile", "fsync " + m_path, directory, "unlink TEMPORARY"});
  for (const bool moveFails : {false, true}) {
    Record(G726Recording("audio"));
    std::vector<std::string> calls;
    {
      const While moving(g_movesFail, moveFails);
      const While noting(g_calls, &calls);
      ASSERT_TRUE(Seal());
    }
    const std::vector<std::string>& expected = moveFails ? copied : moved;
    ASSERT_GT(calls.size(), expected.size());
    calls.erase(calls.begin(), calls.end() - static_cast<std::ptrdiff_t>(expected.size()));
    EXPECT_EQ(Masked(calls), expected);
  }
}

// What came since the recording was opened isn't in the sealed copy: it must not be lost for it.
TEST_F(ReplacementTest, WhatChangesMeanwhileIsRefusedUntouched) {
  const std::string neighbour = ScratchPath("rec/A.WAV");
  const std::string other = ScratchPath("rec/other");
  const std::string original = Recorded();
  const struct {
    const char* name;
    std::function<void()> change;
    std::string after;
  } rows[] = {
      {"grows", [&] { Record(original + "more"); }, original + "more"},
      {"shrinks", [&] { Record("short"); }, "short"},
      {"changes", [&] { Record(With(original, 3000, "x")); }, With(original, 3000, "x")},
      {"is replaced", [&] { std::filesystem::rename(other, m_path); }, original},
      {"is renamed and back",
       [&] {
         std::filesystem::rename(m_path, other);
         std::filesystem::rename(other, m_path);
       },
       original},
      {"vanishes", [&] { RemoveTree(m_path); }, ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    Record(original);
    WriteFile(neighbour, original);  // it differs in case alone
    WriteFile(other, original);
    SetOldTime();
    TraceLog trace;
    {
      const Fault fault(Call::Fsync, 3, [&] { return row.change(), 0; });
      EXPECT_FALSE(Seal());
    }
    EXPECT_EQ(Failures(trace),
              std::vector<std::string>{kSealing + "error \"File " + m_quoted +
                                       " has changed while it was being sealed\" has occurred."});
    EXPECT_EQ(Recorded(), row.after);
    EXPECT_EQ(ReadFile(neighbour), original);
    EXPECT_TRUE(TemporaryFiles().empty());
  }
}

}  // namespace
}  // namespace corvo_test
