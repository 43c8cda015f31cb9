// From the names that a user types to the paths that the library is given.

#include "tools/corvo/Paths.h"

#include <filesystem>
#include <system_error>

#include "platform/Win32Types.h"
#include "tools/corvo/InputError.h"

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

}  // namespace

std::string ExistingFile(const std::string& name) {
  const fs::path path = Resolved(name, name);
  if (!fs::is_regular_file(path)) throw InputError(name, "is not a regular file");
  return Usable(name, path);
}

std::string NewFile(const std::string& name, bool force) {
  const fs::path typed(name);
  if (!typed.has_filename() || fs::is_directory(typed)) throw InputError(name, "names no file");
  const fs::path directory = typed.has_parent_path() ? typed.parent_path() : ".";
  if (!force && fs::exists(typed)) throw InputError(name, "exists already; --force replaces it");
  return Usable(name, Resolved(name, directory) / typed.filename());
}

std::string Directory(const std::string& name) {
  std::error_code error;
  fs::create_directories(name, error);
  if (error) throw InputError(name, error.message());
  return Usable(name, Resolved(name, name));
}

std::string ExistingDirectory(const std::string& name) {
  const fs::path path = Resolved(name, name);
  if (!fs::is_directory(path)) throw InputError(name, "is not a directory");
  return Usable(name, path);
}

}  // namespace corvo
