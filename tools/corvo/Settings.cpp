// The settings commands, over the library's own store and table of settings.

#include "tools/corvo/Settings.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <limits>
#include <map>
#include <memory>
#include <optional>

#include "LarkspurCommon/Aregistry.h"
#include "LarkspurCommon/AregistrySettings.h"
#include "LarkspurCommon/CorvoIniData.h"
#include "LarkspurCommon/XTTime.h"
#include "tools/corvo/HostServices.h"
#include "tools/corvo/InputError.h"
#include "tools/corvo/Paths.h"
#include "tools/corvo/archive/ReadOnly.h"

namespace corvo {
namespace {

using settings::Form;
using settings::Setting;

constexpr char kSettingsFile[] = "corvo_settings.ini";
constexpr char kVariablesFile[] = "corvo_user_variables.ini";
constexpr char kMappingsFile[] = "SMTPMAPPINGS.INI";

std::string DirectoryOf(const SettingsPlan& plan) {
  return plan.directory.empty() ? HomeDirectory() : ExistingDirectory(plan.directory);
}

// Fails where the store would keep quiet and serve from memory.
std::unique_ptr<CorvoIniData> Open(const std::string& path) {
  const std::optional<FileState> state = StateOf(path);
  if (state && !S_ISREG(state->mode)) throw InputError(path, "is not a regular file");
  if (state && ::access(path.c_str(), R_OK) != 0) throw InputError(path, std::strerror(errno));
  return std::make_unique<CorvoIniData>(path.c_str());
}

std::unique_ptr<CorvoIniData> OpenSettings(const SettingsPlan& plan) {
  return Open(DirectoryOf(plan) + "/" + kSettingsFile);
}

const Setting* Known(const std::string& name) {
  for (const Setting& setting : settings::kSettings) {
    if (tstring(name).CompareNoCase(setting.name) == 0) return &setting;
  }
  return nullptr;
}

struct Value {
  std::string text;
  const char* origin;  // null: there is none
};

Value ValueOf(CorvoIniData& store, const std::string& name) {
  bool found;
  const tstring stored = store.GetData(name.c_str(), found);
  if (found) return {stored, "file"};
  const Setting* const known = Known(name);
  if (known != nullptr && known->written != nullptr) return {known->written, "default"};
  return {"", nullptr};
}

void Print(const std::string& name, const Value& value) {
  if (value.origin == nullptr) {
    std::cout << name << "  (not set)\n";
  } else {
    std::cout << name << '=' << value.text << "  (" << value.origin << ")\n";
  }
}

// In the table's order, then what else the file holds.
std::vector<std::string> AllNames(CorvoIniData& store) {
  std::vector<std::string> names;
  for (const Setting& setting : settings::kSettings) names.emplace_back(setting.name);
  std::list<tstring> keys;
  store.GetKeys(keys);
  for (const tstring& key : keys) {
    if (Known(key) == nullptr) names.push_back(key);
  }
  return names;
}

struct Range {
  long long low;
  long long high;
};

// Without limits of its own a setting has those of its form.
Range RangeOf(const Setting& setting) {
  constexpr Setting kUnlimited{};
  const bool limited = setting.low != kUnlimited.low || setting.high != kUnlimited.high;
  if (setting.form != Form::Integer || limited) return {setting.low, setting.high};
  return {std::numeric_limits<int>::min(), std::numeric_limits<int>::max()};
}

bool IsYesOrNo(const std::string& value) {
  return tstring(value).CompareNoCase("Y") == 0 || tstring(value).CompareNoCase("N") == 0;
}

// Whether the readers take the value as it is.
bool Suits(const Setting& setting, const std::string& value) {
  if (setting.written != nullptr && value == setting.written) return true;
  if (setting.form == Form::Text || setting.form == Form::Directory) return true;
  if (setting.form == Form::YesNo) return IsYesOrNo(value);
  const Range range = RangeOf(setting);
  long long number;
  const char* const end = value.data() + value.size();
  const auto [stop, error] = std::from_chars(value.data(), end, number);
  return error == std::errc() && stop == end && number >= range.low && number <= range.high;
}

std::string Expected(const Setting& setting) {
  if (setting.form == Form::YesNo) return "must be Y or N";
  const Range range = RangeOf(setting);
  return "must be a number from " + std::to_string(range.low) + " to " + std::to_string(range.high);
}

struct Assignment {
  std::string name;
  std::string value;
};

// The store takes any text; what its file or its readers would make another of is refused.
Assignment ParseAssignment(const std::string& text, bool force) {
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos || equals == 0) throw InputError(text + ": is not NAME=VALUE");
  Assignment assignment{text.substr(0, equals), text.substr(equals + 1)};
  if (text.find_first_of("\r\n") != std::string::npos) {
    throw InputError(assignment.name, "must not hold a line end");
  }
  const Setting* const known = Known(assignment.name);
  if (known == nullptr && !force) {
    throw InputError(assignment.name, "is no known setting; --force sets it all the same");
  }
  if (known != nullptr && !Suits(*known, assignment.value)) {
    throw InputError(assignment.name, Expected(*known));
  }
  return assignment;
}

std::string GroupFile(const SettingsPlan& plan) {
  if (plan.group == "settings") return DirectoryOf(plan) + "/" + kSettingsFile;
  if (plan.group == "variables") return DirectoryOf(plan) + "/" + kVariablesFile;
  const Value accounts = ValueOf(*OpenSettings(plan), "AccountsDir");
  if (accounts.origin == nullptr) throw InputError("AccountsDir is not set: no SMTP mappings");
  tstring path(accounts.text + "/" + kMappingsFile);
  path.Replace('\\', '/');
  return path;
}

bool TakesAll(const SettingsPlan& plan) {
  return plan.all || plan.group != "settings";
}

std::map<tstring, tstring> Entries(CorvoIniData& store) {
  std::list<tstring> names;
  std::list<tstring> values;
  store.GetKeysAndValues(names, values);
  std::map<tstring, tstring> entries;
  auto value = values.begin();
  for (const tstring& name : names) entries.emplace(name, *value++);
  return entries;
}

// A store says by the trace alone that its file can't be written.
template <class Body>
void Writing(Body body) {
  TakeReason();
  body();
  const std::string reason = TakeReason();
  if (!reason.empty()) throw InputError(reason);
}

}  // namespace

Outcome ListSettings(const SettingsPlan& plan) {
  const auto store = OpenSettings(plan);
  Outcome outcome = Outcome::kFine;
  for (const std::string& name : plan.names.empty() ? AllNames(*store) : plan.names) {
    const Setting* const known = Known(name);
    const Value value = ValueOf(*store, name);
    Print(known != nullptr ? known->name : name, value);
    if (!plan.names.empty() && value.origin == nullptr) outcome = Outcome::kRefused;
  }
  return outcome;
}

Outcome GetSettings(const SettingsPlan& plan) {
  const auto store = OpenSettings(plan);
  Outcome outcome = Outcome::kFine;
  for (const std::string& name : plan.names) {
    const Value value = ValueOf(*store, name);
    if (value.origin == nullptr) {
      std::cerr << "corvo: " << name << ": is not set\n";
      outcome = Outcome::kRefused;
    } else {
      std::cout << value.text << '\n';
    }
  }
  return outcome;
}

// All or none of the values.
Outcome SetSettings(const SettingsPlan& plan) {
  std::vector<Assignment> assignments;
  for (const std::string& text : plan.names) {
    assignments.push_back(ParseAssignment(text, plan.force));
  }
  const auto store = OpenSettings(plan);
  Writing([&] {
    for (const Assignment& assignment : assignments) {
      store->SetData(assignment.name.c_str(), assignment.value.c_str());
    }
  });
  return Outcome::kFine;
}

Outcome ExportSettings(const SettingsPlan& plan) {
  const std::string source = GroupFile(plan);
  std::map<tstring, tstring> entries = Entries(*Open(source));
  const std::string file = NewFile(plan.file, plan.force);
  if (const std::optional<FileState> existing = StateOf(file)) {
    const std::optional<FileState> exportedFrom = StateOf(source);
    if (exportedFrom && existing->IsFile(*exportedFrom)) {
      throw InputError(plan.file, "is what would be exported");
    }
    std::filesystem::remove(file);
  }
  CorvoIniData exported(file.c_str());
  Writing([&] {
    unsigned long clock = os_clock();
    ImportDataHelper(&exported, entries, clock, TakesAll(plan));
    exported.SaveIniData();  // no entries make an empty file
  });
  return Outcome::kFine;
}

Outcome ImportSettings(const SettingsPlan& plan) {
  std::map<tstring, tstring> entries = Entries(*Open(ExistingFile(plan.file)));
  const auto store = Open(GroupFile(plan));
  Writing([&] {
    unsigned long clock = os_clock();
    if (plan.clear) DeleteAllValuesHelper(store.get(), clock, TakesAll(plan));
    ImportDataHelper(store.get(), entries, clock, TakesAll(plan));
  });
  return Outcome::kFine;
}

}  // namespace corvo
