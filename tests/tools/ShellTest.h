#ifndef TESTS_TOOLS_SHELLTEST_H
#define TESTS_TOOLS_SHELLTEST_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "support/Bytes.h"
#include "support/Scratch.h"

namespace corvo_test {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr bool kEmulated = sizeof CORVO_EMULATOR > 1;

struct Ran {
  int exitCode;        // -1 when it did not end by itself
  std::string output;  // of both streams, in order
};

// A test with a working directory of its own and a shell in it with the function `corvo`, which
// runs the built command. The command keeps its state below $STATE; the shipped samples are in
// $SAMPLES; other programs that were built are run as `$EMULATOR program`, and the command, where
// no function will do, as `$CORVO`.
class ShellTest : public testing::Test {
 protected:
  ShellTest();

  Ran Run(const std::string& command) const;
  std::string Output(const std::string& command) const { return Run(command).output; }
  json Json(const std::string& command) const;  // the first line of what it prints
  bool Has(const std::string& program) const;

  std::string Path(const std::string& name) const { return m_directory + "/" + name; }
  std::string Read(const std::string& name) const { return ReadFile(Path(name)); }
  void Write(const std::string& name, const std::string& bytes) const;  // and its directory
  std::vector<std::string> List(const std::string& name) const { return ListDirectory(Path(name)); }

  // What a command does.
  struct Step {
    std::string command;
    int exitCode;
    std::string output;
  };
  void Walk(const std::vector<Step>& steps) const;  // one after the other, each with this output
  void Try(const std::vector<Step>& steps) const;   // with this as a part of their output

  // A sealed recording with 40 bytes of audio.
  std::string MakeSealed() const;

  // The archive `in`: a.wav is sealed, b.wav broken, c.wav unsealed, d.wav no recording.
  void MakeArchive() const;

  std::string m_before;  // each command

 private:
  const std::string m_directory;
};

}  // namespace corvo_test

#endif
