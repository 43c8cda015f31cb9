// Runs commands as a user does.

#include "tools/Shell.h"

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

}  // namespace corvo_test
