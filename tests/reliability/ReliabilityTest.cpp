#include "ReliabilityTest.h"

#include <list>

#include "LarkspurCommon/CorvoIniData.h"

namespace corvo_test {

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
