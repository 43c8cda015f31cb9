#ifndef TESTS_SUPPORT_SYSTEMCALLS_H
#define TESTS_SUPPORT_SYSTEMCALLS_H

#include <sys/types.h>

namespace corvo_test {

// The system calls that a test program linked with corvo_test_system_calls has its own versions of;
// kAllocate is `new (std::nothrow) char[n]`. Each does what it should unless told otherwise, except
// that fsync and sync never wait for the disk.
// clang-format off
enum SystemCall {
  kOpen, kRead, kWrite, kClose, kFsync, kSync, kLseek, kFtruncate, kFchown, kFchmod, kRename,
  kRenameat2, kMkostemp, kAllocate, kSystemCalls
};
// clang-format on

// How a call behaves in this process.
struct Behaviour {
  int failures = 0;   // the next so many calls fail ...
  int error = 0;      // ... with this ...
  int after = 0;      // ... once so many have gone well
  ssize_t most = -1;  // the bytes that one call moves at most; -1: all
  int calls = 0;      // so far
};
Behaviour& On(SystemCall call);
void BehaveAgain();  // every call

}  // namespace corvo_test

#endif
