// The test program as a host that exports its own versions of what the library calls.

#include "support/FileCalls.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <type_traits>
#include <utility>

#include "LarkspurCommon/XTTime.h"
#include "platform/Win32Compat.h"

namespace corvo_test {

thread_local Hook t_onSleep, t_onMoveFile, t_onClock;
std::atomic<int> g_sleeps{0};
int g_clockStep = -1;

namespace {

thread_local FileCallObserver* t_observer = nullptr;

// While it lives, the observer may make calls of its own.
class Unobserved {
 public:
  ~Unobserved() {
    t_observer = m_observer;
    errno = m_error;
  }

 private:
  const int m_error = errno;
  FileCallObserver* const m_observer = std::exchange(t_observer, nullptr);
};

Fate AskBefore(const FileCall& call) {
  FileCallObserver* const observer = t_observer;
  const Unobserved scope;
  Fate fate = observer->Before(call);
  const bool crosses = observer->replacement == Replacement::kCopy && call.name == "renameat2";
  if (crosses && fate.error == 0) fate.error = EXDEV;
  return fate;
}

void TellAfter(const FileCall& call, bool succeeded) {
  FileCallObserver* const observer = t_observer;
  const Unobserved scope;
  observer->After(call, succeeded);
}

template <class Result>
Result Failure() {
  if constexpr (std::is_pointer_v<Result>) {
    return nullptr;
  } else {
    return -1;
  }
}

// The C library's own version. On i386 the names of what deals with positions end in 64.
template <class Result, class... Args>
Result Next(const char* name, Args... args) {
  return reinterpret_cast<Result (*)(Args...)>(::dlsym(RTLD_NEXT, name))(args...);
}

// The descriptor that room was taken for last, and up to where.
thread_local int t_reservedFor = -1;
thread_local off_t t_reserved = 0;

// How much of what is written at `start` finds room on a full disk: what lies within the file, or
// within what was reserved.
size_t Room(int descriptor, off_t start, size_t size) {
  off_t end = Next<off_t>("lseek64", descriptor, off_t{0}, SEEK_END);
  Next<off_t>("lseek64", descriptor, start, SEEK_SET);
  if (descriptor == t_reservedFor) end = std::max(end, t_reserved);
  return end <= start ? 0 : std::min(size, static_cast<size_t>(end - start));
}

bool NeedsRoom(const FileCall& call) {
  return call.name == "fallocate" || call.name == "create" || call.name == "mkostemp" ||
         call.name == "mkdir";
}

// `real` gets the number of bytes to move; `start` is where they are written, -1 at the position.
template <class Real>
auto Moving(const FileCall& call, size_t size, Real real, off_t start = -1)
    -> decltype(real(size)) {
  if (t_observer == nullptr) return real(size);
  Fate fate = AskBefore(call);
  if (fate.isFull && NeedsRoom(call)) fate.error = ENOSPC;
  if (fate.isFull && call.name == "write") {
    if (start == -1) start = Next<off_t>("lseek64", call.descriptor, off_t{0}, SEEK_CUR);
    size = Room(call.descriptor, start, size);
    if (size == 0) fate.error = ENOSPC;
  }
  if (fate.error != 0) {
    errno = fate.error;
    return Failure<decltype(real(size))>();
  }
  const auto result = real(fate.isShort ? size / 2 : size);
  TellAfter(call, result != Failure<decltype(real(size))>());
  return result;
}

template <class Real>
auto Passing(const FileCall& call, Real real) {
  return Moving(call, 0, [&](size_t) { return real(); });
}

}  // namespace

std::string FileCall::Path() const {
  if (path != nullptr) return path;
  return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor)).string();
}

FileCallObserver::FileCallObserver(Replacement replacement_) : replacement(replacement_) {
  t_observer = this;
}

FileCallObserver::~FileCallObserver() {
  t_observer = nullptr;
}

Fate Fault::Before(const FileCall& call) {
  if (m_isFull) return {0, false, true};
  if (HasStruck() || (!m_name.empty() && call.name != m_name) || --m_left != 0) return {};
  m_struck = call.name;
  const Fate fate = m_strike();
  m_isFull = fate.isFull;
  return fate;
}

}  // namespace corvo_test

using namespace corvo_test;

extern "C" {

int open(const char* path, int flags, ...) {
  va_list args;
  va_start(args, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(args, mode_t) : 0;
  va_end(args);
  const bool creates =
      (flags & O_CREAT) != 0 && ::syscall(SYS_faccessat, AT_FDCWD, path, F_OK) != 0;
  return Passing({creates ? "create" : "open", -1, path},
                 [&] { return ::openat(AT_FDCWD, path, flags, mode); });
}

ssize_t read(int fd, void* buffer, size_t size) {
  return Moving({"read", fd}, size,
                [&](size_t count) -> ssize_t { return ::syscall(SYS_read, fd, buffer, count); });
}

ssize_t write(int fd, const void* buffer, size_t size) {
  return Moving({"write", fd}, size,
                [&](size_t count) -> ssize_t { return ::syscall(SYS_write, fd, buffer, count); });
}

ssize_t pwrite(int fd, const void* buffer, size_t size, off_t at) {
  const auto real = [&](size_t count) {
    return Next<ssize_t, int, const void*, size_t, off_t>("pwrite64", fd, buffer, count, at);
  };
  return Moving({"write", fd}, size, real, at);
}

ssize_t pread(int fd, void* buffer, size_t size, off_t at) {
  return Moving({"read", fd}, size, [&](size_t count) {
    return Next<ssize_t, int, void*, size_t, off_t>("pread64", fd, buffer, count, at);
  });
}

int close(int fd) {
  if (fd == t_reservedFor) t_reservedFor = -1;
  if (t_observer == nullptr) return Next<int>("close", fd);
  const FileCall call{"close", fd};
  const Fate fate = AskBefore(call);
  const int result = Next<int>("close", fd);
  TellAfter(call, true);
  if (fate.error == 0) return result;
  errno = fate.error;
  return -1;
}

int fsync(int fd) {
  return Passing({"fsync", fd}, [] { return 0; });
}

void sync() noexcept {
}

off_t lseek(int fd, off_t distance, int whence) noexcept {
  return Passing({"lseek", fd}, [&] { return Next<off_t>("lseek64", fd, distance, whence); });
}

int ftruncate(int fd, off_t size) noexcept {
  return Passing({"ftruncate", fd}, [&] { return Next<int>("ftruncate64", fd, size); });
}

int fallocate(int fd, int mode, off_t offset, off_t size) {
  return Passing({"fallocate", fd}, [&] {
    t_reservedFor = fd;
    t_reserved = offset + size;
    return Next<int>("fallocate64", fd, mode, offset, size);
  });
}

int fchmod(int fd, mode_t mode) noexcept {
  return Passing({"fchmod", fd}, [&] { return Next<int>("fchmod", fd, mode); });
}

int fchown(int fd, uid_t owner, gid_t group) noexcept {
  return Passing({"fchown", fd}, [&] { return Next<int>("fchown", fd, owner, group); });
}

int statx(int directory, const char* path, int flags, unsigned mask,
          struct statx* status) noexcept {
  const bool named = *path != '\0';
  return Passing({"statx", named ? -1 : directory, named ? path : nullptr}, [&] {
    return static_cast<int>(::syscall(SYS_statx, directory, path, flags, mask, status));
  });
}

int faccessat(int directory, const char* path, int mode, int flags) noexcept {
  return Passing({"faccessat", -1, path},
                 [&] { return Next<int>("faccessat", directory, path, mode, flags); });
}

DIR* opendir(const char* path) {
  return Passing({"opendir", -1, path}, [&] { return Next<DIR*>("opendir", path); });
}

char* realpath(const char* path, char* out) noexcept {
  return Passing({"realpath", -1, path}, [&] { return Next<char*>("realpath", path, out); });
}

int mkdir(const char* path, mode_t mode) noexcept {
  return Passing({"mkdir", -1, path}, [&] { return Next<int>("mkdir", path, mode); });
}

int unlink(const char* path) noexcept {
  return Passing({"unlink", -1, path}, [&] { return Next<int>("unlink", path); });
}

int link(const char* from, const char* to) noexcept {
  return Passing({"link", -1, from, to}, [&] { return Next<int>("link", from, to); });
}

int rename(const char* from, const char* to) noexcept {
  return Passing({"rename", -1, from, to}, [&] { return Next<int>("rename", from, to); });
}

int renameat2(int from, const char* name, int to, const char* newName, unsigned flags) noexcept {
  return Passing({"renameat2", -1, name, newName},
                 [&] { return Next<int>("renameat2", from, name, to, newName, flags); });
}

int mkostemp(char* name, int flags) {
  return Passing({"mkostemp", -1, name}, [&] { return Next<int>("mkostemp64", name, flags); });
}

int MoveFile(const char* from, const char* to) {
  if (t_onMoveFile) t_onMoveFile();
  return Next<int>("MoveFile", from, to);
}

void Sleep(DWORD milliseconds) {
  if (milliseconds == 50) ++g_sleeps;
  if (t_onSleep) t_onSleep();
}

unsigned long os_clock() {
  static unsigned long own = 1'000'000;
  if (t_onClock) t_onClock();
  return g_clockStep < 0 ? Next<unsigned long>("os_clock")
                         : own += static_cast<unsigned>(g_clockStep);
}

}  // extern "C"
