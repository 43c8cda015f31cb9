#include "ReliabilityTest.h"

#include <chrono>
#include <filesystem>
#include <list>

#include "LarkspurCommon/CorvoIniData.h"

namespace corvo_test {

void ReplaceByOlder(const std::string& path, const std::string& bytes) {
  namespace fs = std::filesystem;
  RemoveTree(path);
  if (bytes.empty()) return;
  WriteFile(path, bytes);
  fs::last_write_time(path, fs::last_write_time(path) - std::chrono::hours(1));
}

std::string Entries(const std::string& path) {
  CorvoIniData store(path.c_str());
  std::list<tstring> keys;
  std::list<tstring> values;
  store.GetKeysAndValues(keys, values);
  std::string entries;
  for (const tstring& key : keys) {
    entries += key + "=" + values.front() + "\r\n";
    values.pop_front();
  }
  return entries;
}

}  // namespace corvo_test
