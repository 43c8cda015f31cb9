// Any lines as SMTP mappings: those that are accepted, how they are stored, and how they come back.

#include <algorithm>
#include <vector>

#include "IniModel.h"
#include "LarkspurCommon/Aregistry.h"
#include "Target.h"
#include "support/Scratch.h"

namespace {

using Strings = std::vector<std::string>;
constexpr std::size_t kFields = 6;

// Six fields; the last one has what is left.
Strings Split(const std::string& text) {
  Strings fields(1);
  for (const char ch : text) {
    if (ch == ',' && fields.size() < kFields) {
      fields.emplace_back();
    } else {
      fields.back() += ch;
    }
  }
  fields.resize(kFields);
  return fields;
}

std::string Join(const Strings& fields) {
  std::string joined = fields[0];
  for (std::size_t i = 1; i < fields.size(); ++i) joined += "," + fields[i];
  return joined;
}

// The second field last, and no commas behind the last that isn't empty. Empty: not accepted.
std::string Stored(const std::string& text) {
  Strings fields = Split(Trimmed(text));
  for (std::string& field : fields) field = Trimmed(field);
  if (fields[0].empty()) return {};
  fields.push_back(fields[1]);
  fields.erase(fields.begin() + 1);
  while (fields.back().empty()) fields.pop_back();
  return Join(fields);
}

std::string Line(const std::string& name, const std::string& stored) {
  const Strings s = Split(stored);
  return name + "=" + Join({s[0], s[5], s[1], s[2], s[3], s[4]});
}

Strings SplitLines(const std::string& text) {
  Strings lines(1);
  for (const char ch : text) {
    if (ch == '\n' || ch == '\0') {
      lines.emplace_back();
    } else {
      lines.back() += ch;
    }
  }
  return lines;
}

IniEntries Accepted(const Strings& lines) {
  IniEntries entries;
  for (const std::string& line : lines) {
    const std::size_t equals = line.find('=');
    if (equals == std::string::npos) continue;
    const std::string name = Trimmed(line.substr(0, equals));
    const std::string stored = Stored(line.substr(equals + 1));
    if (!name.empty() && !stored.empty()) entries[Upper(name)] = stored;
  }
  return entries;
}

// More of them don't come back as they were given.
bool HasSixFields(const std::string& line) {
  return std::count(line.begin(), line.end(), ',') < static_cast<int>(kFields);
}

void CompareEach(const VMRegistry& registry, const IniEntries& entries) {
  std::vector<tstring> lines;
  registry.ReadAllSMTPMappings(lines);
  Require(lines.size() == entries.size(), "how many mappings there are");
  auto line = lines.begin();
  for (const auto& [name, stored] : entries) {
    Require(*line++ == Line(name, stored), "a mapping's line");
    tstring value;
    Require(registry.GetSMTPMapping(name.c_str(), value) && value == stored, "a stored mapping");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const VMRegistry& registry = *VMRegistry::global();
  static const std::string path = corvo_test::ScratchPath("bin/Accounts/SMTPMAPPINGS.INI");
  const Strings given = SplitLines(Input(data, size).Rest());
  const IniEntries entries = Accepted(given);

  std::vector<tstring> lines(given.begin(), given.end());
  registry.WriteAllSMTPMappings(lines);
  CompareEach(registry, entries);
  Require(corvo_test::ReadFile(path) == IniFile(entries), "the mappings' file");

  registry.ReadAllSMTPMappings(lines);
  if (!std::all_of(given.begin(), given.end(), HasSixFields)) return 0;
  registry.WriteAllSMTPMappings(lines);
  std::vector<tstring> again;
  registry.ReadAllSMTPMappings(again);
  Require(again == lines, "lines that were read can be written");
  return 0;
}
