// Any bytes as a settings file: what is loaded behaves as a map does while it is changed, and the
// file gives the same entries to whoever loads it next.

#include <list>
#include <map>

#include "LarkspurCommon/CorvoIniData.h"
#include "Target.h"
#include "support/Scratch.h"

using namespace corvo_test;

namespace {

using Entries = std::map<std::string, std::string>;

std::string Path() {
  return ScratchPath("store.ini");
}

Entries EntriesOf(CorvoIniData& store) {
  std::list<tstring> keys;
  std::list<tstring> values;
  store.GetKeysAndValues(keys, values);
  Entries entries;
  auto value = values.begin();
  for (const tstring& key : keys) entries[key] = *value++;
  Require(entries.size() == keys.size(), "each key once");
  return entries;
}

// Letters, which any line can hold, and an upper-case key can be made of.
std::string Word(Input& input) {
  std::string word = input.Text();
  for (char& ch : word) ch = static_cast<char>('A' + static_cast<unsigned char>(ch) % 26);
  return word;
}

void Change(CorvoIniData& store, Entries& entries, Input& input) {
  const unsigned kind = input.Byte() % 6;
  const std::string key = Word(input);
  const std::string value = Word(input);
  const auto entry = entries.find(key);
  bool found = false;
  switch (kind) {
    case 0:
    case 1:
      store.Set(tstring(key).MakeLower().c_str(), value.c_str());
      entries[key] = value;
      return;
    case 2:
      Require(store.DeleteKey(key.c_str()) == (entries.erase(key) != 0), "a removal");
      return;
    case 3:
      Require(store.GetData(key.c_str(), found) == (entry == entries.end() ? "" : entry->second),
              "a value");
      Require(found == (entry != entries.end()), "whether there is one");
      return;
    case 4:
      return store.Reload();
    default:
      store.Delete();
      Require(!Exists(Path()), "the deleted file is gone");
      return entries.clear();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  const unsigned changes = input.Byte() % 8;
  Input changing(data + (size - size / 2), size / 2);  // the file's second half serves twice
  WriteFile(Path(), input.Rest());
  CorvoIniData store(Path().c_str());
  Entries entries = EntriesOf(store);
  for (unsigned i = 0; i <= changes; ++i) {
    if (i > 0) Change(store, entries, changing);
    Require(EntriesOf(store) == entries, "the entries");
    CorvoIniData again(Path().c_str());
    Require(EntriesOf(again) == entries, "the same for the next to load them");
  }
  return 0;
}
