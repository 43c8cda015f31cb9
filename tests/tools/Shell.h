#ifndef TESTS_TOOLS_SHELL_H
#define TESTS_TOOLS_SHELL_H

#include <initializer_list>
#include <string>

namespace corvo_test {

struct Ran {
  int exitCode;        // -1 when it did not end by itself
  std::string output;  // of both streams, in order
};

// A working directory of its own and a shell in it with the function `corvo`, which runs the built
// command. The command keeps its state below $STATE; the shipped samples are in $SAMPLES; other
// programs that were built are run as `$EMULATOR program`.
class Shell {
 public:
  explicit Shell(const std::string& name);

  Ran Run(const std::string& command) const;
  std::string Path(const std::string& name) const { return m_directory + "/" + name; }

  // Runs one after the other, and expects of each what the row tells.
  struct Step {
    const char* command;
    int exitCode;
    const char* output;
  };
  void Walk(std::initializer_list<Step> steps) const;

  // A sealed recording with 40 bytes of audio.
  std::string MakeSealed() const;

 private:
  std::string m_directory;
};

}  // namespace corvo_test

#endif
