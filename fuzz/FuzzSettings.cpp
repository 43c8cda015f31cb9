// Any bytes as a settings file, and any changes to it, against a model of the store.

#include <list>

#include "IniModel.h"
#include "LarkspurCommon/CorvoIniData.h"
#include "Target.h"
#include "support/Scratch.h"

using namespace corvo_test;

namespace {

const std::string& Path() {
  static const std::string path = ScratchPath("store.ini");
  return path;
}

// What is in the file, when the model's bytes are written there.
class Model {
 public:
  explicit Model(const std::string& bytes) : m_file(bytes) { Reload(); }

  void Reload() {
    bool repeated = false;
    entries = LoadIni(m_file, repeated);
    if (repeated) Save();
  }
  void Save() { m_file = IniFile(entries); }
  void Delete() {
    entries.clear();
    m_file.clear();
  }
  const std::string& File() const { return m_file; }

  IniEntries entries;

 private:
  std::string m_file;
};

void Compare(CorvoIniData& store, const Model& model) {
  std::list<tstring> keys;
  std::list<tstring> values;
  store.GetKeysAndValues(keys, values);
  IniEntries found;
  auto value = values.begin();
  for (const tstring& key : keys) found[key] = *value++;
  Require(found == model.entries && keys.size() == found.size(), "the entries");
  Require(ReadFile(Path()) == model.File(), "the file");
}

void Change(CorvoIniData& store, Model& model, unsigned kind, const std::string& key,
            const std::string& value) {
  bool found = false;
  switch (kind) {
    case 0:
    case 1:
      store.Set(key.c_str(), value.c_str());
      model.entries[Upper(key)] = value;
      return model.Save();
    case 2:
      Require(store.DeleteKey(key.c_str()) == (model.entries.erase(Upper(key)) != 0), "a removal");
      return model.Save();
    case 3:
      Require(store.GetData(key.c_str(), found) == model.entries[Upper(key)], "a value");
      if (!found) model.entries.erase(Upper(key));
      return;
    case 4:
      store.Reload();
      return model.Reload();
    default:
      store.Delete();
      Require(!Exists(Path()), "the deleted file is gone");
      return model.Delete();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  const unsigned changes = input.Byte() % 8;
  Input changing(data + (size - size / 2), size / 2);  // the file's second half serves twice
  const std::string bytes = input.Rest();
  WriteFile(Path(), bytes);
  Model model(bytes);
  CorvoIniData store(Path().c_str());
  Compare(store, model);
  for (unsigned i = 0; i < changes; ++i) {
    const unsigned kind = changing.Byte() % 6;
    const std::string key = changing.Text();
    Change(store, model, kind, key, changing.Text());
    Compare(store, model);
  }
  CorvoIniData again(Path().c_str());
  model.Reload();
  Compare(again, model);
  return 0;
}
