// From the names that a user types to the paths that the library is given. What stands under a path
// isn't asked of the standard library: on i386 it takes what was touched after 2038 for unknown.

#include "tools/corvo/Paths.h"

#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <optional>
#include <system_error>

#include "platform/Win32Types.h"
#include "tools/corvo/InputError.h"
#include "tools/corvo/archive/ReadOnly.h"

namespace corvo {
namespace {

namespace fs = std::filesystem;

std::string Usable(const std::string& name, const fs::path& path) {
  const std::string& text = path.native();
  if (text.size() >= MAX_PATH)
    throw InputError(name, "the full path is longer than 259 characters");
  if (text.find('\\') != std::string::npos) throw InputError(name, "the full path holds a \"\\\"");
  return text;
}

fs::path Resolved(const std::string& name, const fs::path& path) {
  std::error_code error;
  fs::path resolved = fs::canonical(path, error);
  if (error) throw InputError(name, error.message());
  return resolved;
}

bool IsDirectory(const fs::path& path) {
  const std::optional<FileState> state = StateOf(path.native());
  return state && S_ISDIR(state->mode);
}

// With its parents. What can't be made shows in the last one.
bool MakeDirectory(const fs::path& path) {
  fs::path made;
  for (const fs::path& part : path) {
    made /= part;
    ::mkdir(made.c_str(), 0777);
  }
  const int reason = errno;
  if (IsDirectory(path)) return true;
  errno = reason == EEXIST ? ENOTDIR : reason;
  return false;
}

}  // namespace

std::string ExistingFile(const std::string& name) {
  const fs::path path = Resolved(name, name);
  const std::optional<FileState> state = StateOf(path.native());
  if (!state || !S_ISREG(state->mode)) throw InputError(name, "is not a regular file");
  return Usable(name, path);
}

std::string NewFile(const std::string& name, bool force) {
  const fs::path typed(name);
  if (!typed.has_filename() || IsDirectory(typed)) throw InputError(name, "names no file");
  const fs::path directory = typed.has_parent_path() ? typed.parent_path() : ".";
  if (!force && StateOf(name)) throw InputError(name, "exists already; --force replaces it");
  return Usable(name, Resolved(name, directory) / typed.filename());
}

std::string Directory(const std::string& name) {
  if (!MakeDirectory(name)) throw InputError(name, ErrorText(errno));
  return Usable(name, Resolved(name, name));
}

std::string ExistingDirectory(const std::string& name) {
  const fs::path path = Resolved(name, name);
  if (!IsDirectory(path)) throw InputError(name, "is not a directory");
  return Usable(name, path);
}

}  // namespace corvo
