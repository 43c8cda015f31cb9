// The test program as a host that exports its own system calls.

#include "support/SystemCalls.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <new>

namespace corvo_test {

Behaviour& On(SystemCall call) {
  static Behaviour behaviours[kSystemCalls];
  return behaviours[call];
}

void BehaveAgain() {
  for (int call = 0; call < kSystemCalls; ++call) On(static_cast<SystemCall>(call)) = {};
}

}  // namespace corvo_test

using namespace corvo_test;

namespace {

bool Fails(SystemCall call) {
  Behaviour& behaviour = On(call);
  ++behaviour.calls;
  if (behaviour.failures == 0 || behaviour.after-- > 0) return false;
  behaviour.after = 0;
  --behaviour.failures;
  errno = behaviour.error;
  return true;
}

size_t Cut(SystemCall call, size_t size) {
  const ssize_t most = On(call).most;
  return most < 0 ? size : std::min(size, static_cast<size_t>(most));
}

template <class Result, class... Args>
Result Next(const char* name, Args... args) {
  return reinterpret_cast<Result (*)(Args...)>(::dlsym(RTLD_NEXT, name))(args...);
}

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
  va_list args;
  va_start(args, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(args, mode_t) : 0;
  va_end(args);
  return Fails(kOpen) ? -1 : ::openat(AT_FDCWD, path, flags, mode);
}

ssize_t read(int fd, void* buffer, size_t size) {
  return Fails(kRead) ? -1 : ::syscall(SYS_read, fd, buffer, Cut(kRead, size));
}

ssize_t write(int fd, const void* buffer, size_t size) {
  return Fails(kWrite) ? -1 : ::syscall(SYS_write, fd, buffer, Cut(kWrite, size));
}

int close(int fd) {
  ::syscall(SYS_close, fd);
  return Fails(kClose) ? -1 : 0;
}

int fsync(int) {
  return Fails(kFsync) ? -1 : 0;
}

void sync() noexcept {
  Fails(kSync);
}

off_t lseek(int fd, off_t distance, int whence) noexcept {
  return Fails(kLseek) ? -1 : Next<off_t>("lseek64", fd, distance, whence);
}

int ftruncate(int fd, off_t size) noexcept {
  return Fails(kFtruncate) ? -1 : Next<int>("ftruncate64", fd, size);
}

int fchown(int fd, uid_t owner, gid_t group) noexcept {
  return Fails(kFchown) ? -1 : Next<int>("fchown", fd, owner, group);
}

int fchmod(int fd, mode_t mode) noexcept {
  return Fails(kFchmod) ? -1 : Next<int>("fchmod", fd, mode);
}

int rename(const char* from, const char* to) noexcept {
  return Fails(kRename) ? -1 : Next<int>("rename", from, to);
}

int renameat2(int from, const char* name, int to, const char* newName, unsigned flags) noexcept {
  return Fails(kRenameat2) ? -1 : Next<int>("renameat2", from, name, to, newName, flags);
}

int mkostemp(char* name, int flags) {
  return Fails(kMkostemp) ? -1 : Next<int>("mkostemp64", name, flags);
}

}  // extern "C"

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return Fails(kAllocate) ? nullptr : ::operator new[](size);
}
