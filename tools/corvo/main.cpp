// The corvo command.

#include <fcntl.h>
#include <unistd.h>

#include <initializer_list>

#include "tools/corvo/CommandLine.h"

namespace {

// A closed standard stream's number would go to the next file that is opened: to a journal, which
// would then be read as a list or be written to as output. What takes its place can't be read or
// written either, so that a missing stream is still told where it is needed.
void ReserveStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(stream, F_GETFD) == -1) {
      ::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  ReserveStandardStreams();
  return corvo::RunCommandLine(argc, argv);
}
