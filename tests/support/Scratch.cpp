// The test process's own directory and the few file operations that tests need.

#include "support/Scratch.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace corvo_test {
namespace {

namespace fs = std::filesystem;

struct Directory {
  Directory() {
    if (::mkdtemp(path.data()) == nullptr) throw std::runtime_error("mkdtemp failed for " + path);
  }
  ~Directory() {
    std::error_code ignored;
    fs::remove_all(path, ignored);
  }
  Directory(const Directory&) = delete;
  Directory& operator=(const Directory&) = delete;

  std::string path = (fs::temp_directory_path() / "corvo-test-XXXXXX").string();
};

}  // namespace

const std::string& ScratchDirectory() {
  static const Directory directory;
  return directory.path;
}

std::string ScratchPath(const std::string& name) {
  return ScratchDirectory() + "/" + name;
}

void MakeDirectory(const std::string& path) {
  fs::create_directories(path);
}

void RemoveTree(const std::string& path) {
  fs::remove_all(path);
}

void WriteFile(const std::string& path, const std::string& bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!file.flush()) throw std::runtime_error("can't write " + path);
}

void TouchFile(const std::string& path) {
  static time_t second = 1'000'000'000;
  const timespec times[] = {{++second, 0}, {second, 0}};
  if (::utimensat(AT_FDCWD, path.c_str(), times, 0) != 0) throw std::runtime_error("no " + path);
}

void EditFile(const std::string& path, const std::string& bytes) {
  WriteFile(path, bytes);
  TouchFile(path);
}

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

bool Exists(const std::string& path) {
  std::error_code ignored;
  return fs::symlink_status(path, ignored).type() != fs::file_type::not_found;
}

std::vector<std::string> ListDirectory(const std::string& path) {
  std::vector<std::string> names;
  for (const fs::directory_entry& entry : fs::directory_iterator(path)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace corvo_test
