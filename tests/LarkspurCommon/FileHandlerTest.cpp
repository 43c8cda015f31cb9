// The file handler's test program as a host that exports its own system calls.

#include "FileHandlerTest.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <new>

namespace corvo_test {

std::string g_removedTree;

Behaviour& On(Call call) {
  static Behaviour behaviours[kCalls];
  return behaviours[call];
}

FileHandlerTest::~FileHandlerTest() {
  for (int call = 0; call < kCalls; ++call) On(static_cast<Call>(call)) = {};
}

std::string FileHandlerTest::Make(const std::string& name, const std::string& bytes) {
  WriteFile(ScratchPath(name), bytes);
  return ScratchPath(name);
}

}  // namespace corvo_test

using namespace corvo_test;

namespace {

bool Fails(Call call) {
  Behaviour& behaviour = On(call);
  ++behaviour.calls;
  if (behaviour.failures == 0) return false;
  --behaviour.failures;
  errno = behaviour.error;
  return true;
}

size_t Cut(Call call, size_t size) {
  const ssize_t most = On(call).most;
  return most < 0 ? size : std::min(size, static_cast<size_t>(most));
}

template <class Function>
Function* Next(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
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

int fsync(int) {
  return Fails(kFsync) ? -1 : 0;
}

void sync() noexcept {
  Fails(kSync);
}

off_t lseek(int fd, off_t distance, int whence) noexcept {
  return Fails(kLseek) ? -1 : Next<off_t(int, off_t, int)>("lseek64")(fd, distance, whence);
}

int ftruncate(int fd, off_t size) noexcept {
  return Fails(kFtruncate) ? -1 : Next<int(int, off_t)>("ftruncate64")(fd, size);
}

}  // extern "C"

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return Fails(kAllocateCache) ? nullptr : ::operator new[](size);
}

bool RemoveDirectoryTree(unsigned long&, const char* directory) {
  g_removedTree = directory;
  return true;
}
