// How a sealed copy takes the recording's place: what part of it may fail, and what it is refused
// for. tests/reliability looks at what is flushed when.

#include <gmock/gmock.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <thread>

#include "EngineTest.h"
#include "support/FileCalls.h"

namespace corvo_test {
namespace {

namespace fs = std::filesystem;

class ReplacementTest : public EngineTest {
 protected:
  ReplacementTest() { Record(G726Recording("audio")); }

  // So that a change at once is later, however slowly the file system's clock ticks.
  void SetOldTime() const {
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
    const char* call;  // that fails; the copy makes its file by mkostemp
    int nth;           // 0: none
    bool isKept;       // in the temporary directory
    std::vector<std::string> failures;
  } rows[] = {
      {"", 0, false, {failed(rename, "")}},
      {"mkostemp", 1, true, {failed(rename, ""), failed(copy, "")}},
      {"unlink", 1, false, {failed(unlink, busy(m_quoted)), failed(rename, busy(m_quoted))}},
      {"unlink", 2, true, {failed(rename, ""), failed(clear, busy("\"TEMPORARY\""))}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.failures.back());
    const bool copyFails = std::string(row.call) == "mkostemp";
    EmptyTemporaryDirectory();
    Record(G726Recording("audio"));
    TraceLog trace;
    {
      const Fault fault(
          row.call, row.nth, [] { return Fate{EBUSY}; }, Replacement::kCopy);
      EXPECT_EQ(Seal(), !copyFails);
    }
    EXPECT_EQ(Masked(Failures(trace)), row.failures);
    ASSERT_EQ(TemporaryFiles().size(), row.isKept ? 1u : 0u);
    EXPECT_TRUE(copyFails ? VerifySignature(TemporaryFile().c_str()) : Verify());
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
      {"is replaced", [&] { fs::rename(other, m_path); }, original},
      {"is renamed and back",
       [&] {
         fs::rename(m_path, other);
         fs::rename(other, m_path);
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
      const Fault fault("fsync", 3, [&] { return row.change(), Fate{}; });
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
