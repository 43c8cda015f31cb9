// Signals that ask a long command to stop.

#include "tools/corvo/archive/Interruption.h"

#include <signal.h>

#include <atomic>

namespace corvo {
namespace {

std::atomic<int> s_noted{0};
static_assert(std::atomic<int>::is_always_lock_free);

void Note(int signal) {
  s_noted = signal;
}

}  // namespace

void NoteInterruptions() {
  struct sigaction note {};
  note.sa_handler = Note;
  note.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction now {};
    if (::sigaction(signal, nullptr, &now) == 0 && now.sa_handler == SIG_IGN) continue;
    ::sigaction(signal, &note, nullptr);
  }
}

int NotedSignal() {
  return s_noted;
}

}  // namespace corvo
