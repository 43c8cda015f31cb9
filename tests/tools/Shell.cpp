// Runs commands as a user does.

#include "tools/Shell.h"

#include <gtest/gtest.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/wait.h>

#include "support/Scratch.h"

namespace corvo_test {
namespace {

// Programs of the other target may need an emulator.
constexpr char kPrograms[] = "SAMPLES='" CORVO_SAMPLES "' EMULATOR='" CORVO_EMULATOR
                             "'\n"
                             "corvo() { $EMULATOR '" CORVO_COMMAND "' \"$@\"; }\n";

}  // namespace

Shell::Shell(const std::string& name) : m_directory(ScratchPath(name)) {
  RemoveTree(m_directory);  // of another test with that name
  RemoveTree(m_directory + ".state");
  MakeDirectory(m_directory);
}

Ran Shell::Run(const std::string& command) const {
  const std::string line = "cd '" + m_directory + "' && STATE='" + m_directory +
                           ".state' && export XDG_STATE_HOME=\"$STATE\" && exec 2>&1\n" +
                           kPrograms + command;
  Ran ran{-1, {}};
  FILE* const pipe = ::popen(line.c_str(), "r");
  if (pipe == nullptr) return ran;
  for (int c = ::fgetc(pipe); c != EOF; c = ::fgetc(pipe)) ran.output += static_cast<char>(c);
  const int status = ::pclose(pipe);
  if (WIFEXITED(status)) ran.exitCode = WEXITSTATUS(status);
  return ran;
}

void Shell::Walk(std::initializer_list<Step> steps) const {
  for (const Step& step : steps) {
    SCOPED_TRACE(step.command);
    const Ran ran = Run(step.command);
    EXPECT_EQ(ran.exitCode, step.exitCode);
    EXPECT_EQ(ran.output, step.output);
  }
}

std::string Shell::MakeSealed() const {
  Run("head -c 40 $SAMPLES/now-recording.g726 >s.g726 &&"
      " corvo record s.wav s.g726 --codec g726 --start 7 && corvo seal s.wav");
  std::string sealed = ReadFile(Path("s.wav"));
  Run("rm s.wav s.g726");
  EXPECT_EQ(sealed.size(), 3210u);
  return sealed;
}

}  // namespace corvo_test
