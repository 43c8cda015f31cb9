// Runs commands as a user does.

#include "tools/ShellTest.h"

#include <stdio.h>
#include <stdlib.h>
#include <sys/wait.h>

namespace corvo_test {
namespace {

// Programs of the other target may need an emulator.
constexpr char kPrograms[] =
    "SAMPLES='" CORVO_SAMPLES "' EMULATOR='" CORVO_EMULATOR "' CORVO=\"$EMULATOR " CORVO_COMMAND
    "\"\n"
    "corvo() { $EMULATOR '" CORVO_COMMAND "' \"$@\"; }\n";

}  // namespace

ShellTest::ShellTest()
    : m_directory(ScratchPath(testing::UnitTest::GetInstance()->current_test_info()->name())) {
  MakeDirectory(m_directory);
}

Ran ShellTest::Run(const std::string& command) const {
  const std::string line = "cd '" + m_directory + "' && STATE='" + m_directory +
                           ".state' && export XDG_STATE_HOME=\"$STATE\" && exec 2>&1\n" +
                           kPrograms + m_before + command;
  Ran ran{-1, {}};
  FILE* const pipe = ::popen(line.c_str(), "r");
  if (pipe == nullptr) return ran;
  for (int c = ::fgetc(pipe); c != EOF; c = ::fgetc(pipe)) ran.output += static_cast<char>(c);
  const int status = ::pclose(pipe);
  if (WIFEXITED(status)) ran.exitCode = WEXITSTATUS(status);
  return ran;
}

json ShellTest::Json(const std::string& command) const {
  const std::string output = Output(command);
  return json::parse(output.substr(0, output.find("\n{")));
}

bool ShellTest::Has(const std::string& program) const {
  return Run("command -v " + program).exitCode == 0;
}

void ShellTest::Write(const std::string& name, const std::string& bytes) const {
  const std::string path = Path(name);
  MakeDirectory(path.substr(0, path.rfind('/')));
  WriteFile(path, bytes);
}

void ShellTest::Walk(const std::vector<Step>& steps) const {
  for (const Step& step : steps) {
    SCOPED_TRACE(step.command);
    const Ran ran = Run(step.command);
    EXPECT_EQ(ran.exitCode, step.exitCode);
    EXPECT_EQ(ran.output, step.output);
  }
}

void ShellTest::Try(const std::vector<Step>& steps) const {
  for (const Step& step : steps) {
    SCOPED_TRACE(step.command);
    const Ran ran = Run(step.command);
    EXPECT_EQ(ran.exitCode, step.exitCode);
    EXPECT_THAT(ran.output, HasSubstr(step.output));
  }
}

std::string ShellTest::MakeSealed() const {
  Run("head -c 40 $SAMPLES/now-recording.g726 >s.g726 &&"
      " corvo record s.wav s.g726 --codec g726 --start 7 && corvo seal s.wav");
  std::string sealed = Read("s.wav");
  Run("rm s.wav s.g726");
  EXPECT_EQ(sealed.size(), 3210u);
  return sealed;
}

void ShellTest::MakeArchive() const {
  const std::string sealed = MakeSealed();
  Write("in/a.wav", sealed);
  Write("in/b.wav", With(sealed, 3200, "\1\2"));
  Write("in/c.wav", With(sealed, 298, "\2"));
  Write("in/d.wav", "Dear Sir,");
}

}  // namespace corvo_test
