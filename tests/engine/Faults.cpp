// This test program as a host that exports its own versions of what the library calls.

#include "Faults.h"

#include <dlfcn.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "LarkspurCommon/XTTime.h"
#include "platform/Win32Compat.h"

namespace corvo_test {

bool g_movesFail = false;
bool g_copiesFail = false;
bool g_writesAreShort = false;
int g_clockStep = -1;
std::vector<std::string>* g_calls = nullptr;
std::atomic<int> g_sleeps{0};

namespace {

struct Plan {
  std::optional<Call> call;
  int left = 0;  // calls until the strike; 0: none is planned, or it has been
  std::function<int()> strike;
};
thread_local Plan t_plan;

// False: the call goes on as it should.
bool Fails(Call call) {
  const bool meant = t_plan.call ? *t_plan.call == call : call < Call::Sleep;
  if (t_plan.left == 0 || !meant || --t_plan.left != 0) return false;
  errno = t_plan.strike();
  return errno != 0;
}

void Note(const std::string& call) {
  if (g_calls != nullptr) g_calls->push_back(call);
}

std::string PathOf(int fd) {
  return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(fd)).string();
}

template <class Function>
Function* Library(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

Fault::Fault(std::optional<Call> call, int nth, std::function<int()> strike) {
  t_plan = Plan{call, nth, std::move(strike)};
}

Fault::~Fault() {
  t_plan = Plan{};
}

bool Fault::HasStruck() const {
  return t_plan.left == 0;
}

}  // namespace corvo_test

using namespace corvo_test;

extern "C" {

ssize_t read(int fd, void* buffer, size_t size) {
  return Fails(Call::Read) ? -1 : ::syscall(SYS_read, fd, buffer, size);
}

ssize_t write(int fd, const void* buffer, size_t size) {
  return Fails(Call::Write) ? -1
                            : ::syscall(SYS_write, fd, buffer, g_writesAreShort ? size / 2 : size);
}

int fsync(int fd) {
  if (g_calls != nullptr) Note("fsync " + PathOf(fd));
  return Fails(Call::Fsync) ? -1 : 0;
}

int unlink(const char* path) noexcept(noexcept(::unlink(path))) {
  Note(std::string("unlink ") + path);
  return Fails(Call::Unlink) ? -1 : static_cast<int>(::syscall(SYS_unlink, path));
}

int MoveFile(const char* from, const char* to) {
  static auto* const move = Library<decltype(MoveFile)>("MoveFile");
  Note("MoveFile");
  return !Fails(Call::MoveFile) && !g_movesFail && move(from, to);
}

int CopyFile(const char* from, const char* to, int failIfExists) {
  static auto* const copy = Library<decltype(CopyFile)>("CopyFile");
  Note("CopyFile");
  return !Fails(Call::CopyFile) && !g_copiesFail && copy(from, to, failIfExists);
}

void Sleep(DWORD milliseconds) {
  if (milliseconds == 50) ++g_sleeps;
  Fails(Call::Sleep);
}

unsigned long os_clock() {
  static auto* const clock = Library<decltype(os_clock)>("os_clock");
  static unsigned long own = 1'000'000;
  Fails(Call::Clock);
  return g_clockStep < 0 ? clock() : own += static_cast<unsigned>(g_clockStep);
}

}  // extern "C"
