// Where the running program and its modules are: GetModuleFileName, which a host may replace.

#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <link.h>
#include <unistd.h>

#include <string_view>

#include "platform/Win32Compat.h"

namespace {

using PathBuffer = char[PATH_MAX];

// The kernel appends a mark when the program's file was replaced or removed while it runs; the
// program still belongs to the directory it was started in.
std::string_view WithoutDeletedMark(const char* path) {
  constexpr std::string_view kMark = " (deleted)";
  std::string_view text(path);
  if (text.size() <= kMark.size() || text.substr(text.size() - kMark.size()) != kMark) return text;
  const bool isItsName = ::faccessat(AT_FDCWD, path, F_OK, AT_EACCESS) == 0;
  if (isItsName) return text;
  text.remove_suffix(kMark.size());
  return text;
}

std::string_view ProgramPath(PathBuffer& buffer) {
  const ssize_t length = ::readlink("/proc/self/exe", buffer, sizeof buffer);
  if (length < 0 || static_cast<size_t>(length) == sizeof buffer) return {};
  buffer[length] = '\0';
  return WithoutDeletedMark(buffer);
}

// Empty, with errno set, when it isn't known.
std::string_view ModulePath(void* module, PathBuffer& buffer) {
  if (module == nullptr) return ProgramPath(buffer);
  link_map* map = nullptr;
  if (::dlinfo(module, RTLD_DI_LINKMAP, &map) != 0) {
    errno = EINVAL;
    return {};
  }
  const std::string_view path(map->l_name);
  return path.empty() ? ProgramPath(buffer) : path;  // the program's own entry has no name
}

}  // namespace

DWORD GetModuleFileName(void* module, char* buffer, DWORD size) {
  if (buffer == nullptr || size == 0) return 0;
  buffer[0] = '\0';
  PathBuffer program;
  const std::string_view path = ModulePath(module, program);
  if (path.size() >= size) errno = ERANGE;
  if (path.empty() || path.size() >= size) return 0;
  buffer[path.copy(buffer, path.size())] = '\0';
  return static_cast<DWORD>(path.size());
}
