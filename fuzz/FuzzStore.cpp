// Any bytes as a settings file: what a store takes from it, against the definition of a line; and
// what the store writes, another one reads.

#include <sys/stat.h>

#include <list>
#include <map>

#include "LarkspurCommon/CorvoIniData.h"
#include "Target.h"
#include "TextLines.h"
#include "support/Scratch.h"

namespace {

using Entries = std::map<std::string, std::string>;

constexpr std::size_t kLongestPiece = 1023;
constexpr char kTrimmed[] = " \t\r\n\v\f";

std::string Upper(std::string text) {
  for (char& ch : text) {
    if (ch >= 'a' && ch <= 'z') ch = static_cast<char>(ch - 'a' + 'A');
  }
  return text;
}

// A line ends, for the store, at its first NUL.
void TakeEntry(const std::string& whole, Entries& entries) {
  const std::string line = whole.substr(0, whole.find('\0'));
  const std::size_t equals = line.find('=');
  if (equals == std::string::npos) return;
  const std::size_t begin = line.find_first_not_of(' ', equals + 1);
  if (begin == std::string::npos) return;
  const std::string value = line.substr(begin);
  const std::size_t last = value.find_last_not_of(kTrimmed);
  entries[Upper(line.substr(0, equals))] =
      last == std::string::npos ? std::string() : value.substr(0, last + 1);
}

Entries Model(const std::string& bytes) {
  Entries entries;
  std::size_t at = 0;
  for (std::string line = TakeLine(bytes, at, kLongestPiece); !line.empty();
       line = TakeLine(bytes, at, kLongestPiece)) {
    TakeEntry(line, entries);
  }
  return entries;
}

Entries Held(CorvoIniData& store) {
  std::list<tstring> keys;
  std::list<tstring> values;
  store.GetKeysAndValues(keys, values);
  Entries entries;
  for (const tstring& key : keys) {
    entries[key] = values.front();
    values.pop_front();
  }
  return entries;
}

bool Fits(const Entries& entries) {
  for (const auto& [key, value] : entries) {
    if (key.size() + value.size() + 2 > kLongestPiece) return false;
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string path = corvo_test::ScratchPath("fuzzed.ini");
  const std::string bytes = Input(data, size).RestWithRun();
  corvo_test::WriteFile(path, bytes);
  Entries model = Model(bytes);
  CorvoIniData store(path.c_str());
  Require(Held(store) == model, "the entries of the lines");
  if (!Fits(model)) return 0;

  store.Set("Added", "value");
  model["ADDED"] = "value";
  if (!model.empty()) {
    const std::string first = model.begin()->first;
    Require(store.DeleteKey(first.c_str()), "a key that is there is deleted");
    model.erase(first);
  }
  Require(Held(store) == model, "the entries after a change");
  CorvoIniData reader(path.c_str());
  Require(Held(reader) == Model(corvo_test::ReadFile(path)), "the entries of the file");
  Require(Held(reader) == model, "what was written is read");
  return 0;
}
