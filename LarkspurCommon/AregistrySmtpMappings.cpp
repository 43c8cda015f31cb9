// The SMTP mappings, one by one and as lines. A line has its fields in order; a stored value has
// the second field last.

#include <array>

#include "LarkspurCommon/Aregistry.h"
#include "LarkspurCommon/AregistryInternal.h"
#include "LarkspurCommon/debug.h"

namespace {

constexpr char kGetMapping[] = "bool VMRegistry::GetSMTPMapping(const TCHAR*, tstring&) const";
constexpr char kWriteMappings[] =
    "void VMRegistry::WriteAllSMTPMappings(std::vector<tstring>&) const";
constexpr std::size_t kFields = 6;

using Fields = std::array<tstring, kFields>;

// The places of a line's fields in the stored value, and of a stored value's in the line.
constexpr std::array<std::size_t, kFields> kStoredOrder{0, 2, 3, 4, 5, 1};
constexpr std::array<std::size_t, kFields> kLineOrder{0, 5, 1, 2, 3, 4};

Fields InOrder(const Fields& fields, const std::array<std::size_t, kFields>& order) {
  Fields ordered;
  for (std::size_t i = 0; i < kFields; ++i) ordered[i] = fields[order[i]];
  return ordered;
}

// The last field takes what is left, commas and all.
Fields SplitFields(const tstring& text) {
  Fields fields;
  std::size_t begin = 0;
  for (std::size_t i = 0; i < kFields; ++i) {
    const std::size_t comma = i + 1 < kFields ? text.find(',', begin) : tstring::npos;
    fields[i] = text.substr(begin, comma - begin);
    if (comma == tstring::npos) break;
    begin = comma + 1;
  }
  return fields;
}

// Empty fields keep their places, except after the last that isn't.
tstring JoinStored(const Fields& fields) {
  tstring joined = fields[0];
  std::size_t commas = 0;
  for (std::size_t i = 1; i < kFields; ++i) {
    ++commas;
    if (fields[i].empty()) continue;
    joined.append(commas, ',').append(fields[i]);
    commas = 0;
  }
  return joined;
}

// The host's printer may throw: the lines that follow still count.
template <class... Args>
void Tell(const char* format, Args... args) {
  AtBoundary({kSource, kWriteMappings, __LINE__}, [&] { ConsolePrint(0, format, args...); });
}

struct Mapping {
  tstring name;
  Fields fields;  // in the order of the line
};

Mapping ParseLine(const tstring& line) {
  Mapping mapping;
  const std::size_t equals = line.find('=');
  if (equals == tstring::npos) return mapping;
  mapping.name = tstring(line.substr(0, equals)).Trim();
  mapping.fields = SplitFields(tstring(line.substr(equals + 1)).Trim());
  for (tstring& field : mapping.fields) field.Trim();
  return mapping;
}

}  // namespace

bool VMRegistry::GetSMTPMapping(const char* name, tstring& value) const {
  return AtBoundary({kSource, kGetMapping, __LINE__}, false, [&] {
    const StoreSlot::Pointer store = m_smtpMappings.Get();
    if (!store) return false;
    bool found;
    const tstring stored = store->GetData(name, found);
    if (!found) return false;
    value = stored;
    if (TraceRegistryData) {
      DebugA(kTraceData, "VMRegistry - GetSMTPMapping(%s) returning \"%s\"", name, value.c_str());
    }
    return true;
  });
}

bool VMRegistry::SetSMTPMapping(const char* name, const char* value) const {
  tstring current;
  if (GetSMTPMapping(name, current) && current.CompareNoCase(value) == 0) return true;
  const StoreSlot::Pointer store = m_smtpMappings.Get();
  if (!store) return true;
  store->SetData(name, value);
  Notify(kSMTPMappingChanged, name, value);
  return true;
}

void VMRegistry::ReadAllSMTPMappings(std::vector<tstring>& lines) const {
  lines.clear();
  const StoreSlot::Pointer store = m_smtpMappings.Get();
  if (!store) return;
  std::list<tstring> names;
  std::list<tstring> values;
  store->GetKeysAndValues(names, values);
  auto value = values.begin();
  for (const tstring& name : names) {
    const Fields fields = InOrder(SplitFields(*value++), kLineOrder);
    tstring line = name + "=" + fields[0];
    for (std::size_t i = 1; i < kFields; ++i) line.append(",").append(fields[i]);
    lines.push_back(line);
  }
}

void VMRegistry::WriteAllSMTPMappings(std::vector<tstring>& lines) const {
  const StoreSlot::Pointer store = m_smtpMappings.Get();
  if (!store) return;
  store->Delete();
  Notify(kSMTPMappingsDeleted, nullptr, nullptr);
  for (const tstring& line : lines) {
    const Mapping mapping = ParseLine(line);
    if (mapping.name.empty() || mapping.fields[0].empty()) {
      Tell("MAIL Settings: Ignoring <%s> so not adding to SMTPMAPPINGS.INI", line.c_str());
      continue;
    }
    const tstring stored = JoinStored(InOrder(mapping.fields, kStoredOrder));
    Tell("MAIL Settings: Adding <%s=%s> to SMTPMAPPINGS.INI", mapping.name.c_str(), stored.c_str());
    store->SetData(mapping.name, stored);
    Notify(kSMTPMappingChanged, mapping.name, stored);
  }
}
