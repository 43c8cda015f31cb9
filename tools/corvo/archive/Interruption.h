#ifndef TOOLS_CORVO_ARCHIVE_INTERRUPTION_H
#define TOOLS_CORVO_ARCHIVE_INTERRUPTION_H

#include <stdexcept>
#include <string>

namespace corvo {

// From here on SIGINT, SIGTERM and SIGHUP are noted instead of ending the process. A second one of
// the same kind ends it: of another it doesn't, since a session's end sends SIGTERM and SIGHUP.
// What is ignored already, as by nohup, stays ignored. Not undone.
void NoteInterruptions();

// The signal that was noted, or 0. Any thread.
int NotedSignal();

// A command ends because of a signal, in good order.
class Interrupted : public std::runtime_error {
 public:
  Interrupted(int signal, const std::string& note) : std::runtime_error(note), m_signal(signal) {}

  // As shells give it: 128 and the signal.
  int ExitCode() const { return 128 + m_signal; }

 private:
  int m_signal;
};

}  // namespace corvo

#endif
