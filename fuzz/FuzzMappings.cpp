// Any lines as the whole table of SMTP mappings: what the table then holds, against the lines'
// definition; and what is read from it, written again, is the same.

#include <array>
#include <map>
#include <vector>

#include "LarkspurCommon/Aregistry.h"
#include "Target.h"

namespace {

using Fields = std::array<std::string, 6>;

constexpr char kBlanks[] = " \t\r\n\v\f";

std::string Trimmed(const std::string& text) {
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string::npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
}

std::string Upper(std::string text) {
  for (char& ch : text) {
    if (ch >= 'a' && ch <= 'z') ch = static_cast<char>(ch - 'a' + 'A');
  }
  return text;
}

Fields Split(const std::string& text) {
  Fields fields;
  std::size_t field = 0;
  for (const char ch : text) {
    if (ch == ',' && field + 1 < fields.size()) {
      ++field;
    } else {
      fields[field] += ch;
    }
  }
  return fields;
}

// The stored value: the second field last, no commas behind the last that isn't empty.
std::string Stored(const Fields& fields) {
  std::string value = fields[0] + "," + fields[2] + "," + fields[3] + "," + fields[4] + "," +
                      fields[5] + "," + fields[1];
  if (fields[1].empty()) {
    // A comma may end the sixth field itself: only what joins empty fields goes.
    for (const std::size_t empty : {1u, 5u, 4u, 3u, 2u}) {
      if (!fields[empty].empty()) break;
      value.pop_back();
    }
  }
  return value;
}

// Lines of printable text: what a file of lines can't hold is another matter.
std::vector<tstring> Lines(Input input) {
  std::vector<tstring> lines;
  while (!input.Empty() && lines.size() < 8) {
    std::string line = input.Text();
    for (char& ch : line) {
      const auto byte = static_cast<unsigned char>(ch);
      if (byte < 0x20 || byte > 0x7E) ch = ' ';
    }
    lines.emplace_back(line);
  }
  return lines;
}

// `isPlain`: no sixth field has commas of its own, which can't be told from further fields later.
std::map<std::string, std::string> Model(const std::vector<tstring>& lines, bool& isPlain) {
  std::map<std::string, std::string> table;
  isPlain = true;
  for (const tstring& line : lines) {
    const std::size_t equals = line.find('=');
    if (equals == tstring::npos) continue;
    const std::string name = Trimmed(line.substr(0, equals));
    Fields fields = Split(Trimmed(line.substr(equals + 1)));
    for (std::string& field : fields) field = Trimmed(field);
    if (name.empty() || fields[0].empty()) continue;
    table[Upper(name)] = Stored(fields);
    isPlain = isPlain && fields[5].find(',') == std::string::npos;
  }
  return table;
}

std::map<std::string, std::string> Table() {
  std::map<tstring, tstring> exported;
  VMRegistry::global()->ExportSMTPMappings(exported);
  return {exported.begin(), exported.end()};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  VMRegistry& registry = *VMRegistry::global();
  std::vector<tstring> lines = Lines(Input(data, size));
  registry.WriteAllSMTPMappings(lines);
  bool isPlain = false;
  const auto model = Model(lines, isPlain);
  Require(Table() == model, "the table of the lines");

  std::vector<tstring> read;
  registry.ReadAllSMTPMappings(read);
  Require(read.size() == model.size(), "a line for each mapping");
  if (isPlain) {
    registry.WriteAllSMTPMappings(read);
    Require(Table() == model, "the same table from its own lines");
  }
  for (const auto& [name, value] : model) {
    tstring found;
    Require(registry.GetSMTPMapping(name.c_str(), found) && found == value, "a mapping by name");
  }
  return 0;
}
