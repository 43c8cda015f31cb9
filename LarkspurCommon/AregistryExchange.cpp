// Whole groups of entries, exported to maps, imported from them and deleted by them, so that one
// server can take over another's configuration.

#include <strings.h>

#include <algorithm>
#include <cstring>
#include <iterator>

#include "LarkspurCommon/Aregistry.h"
#include "LarkspurCommon/AregistryInternal.h"
#include "LarkspurCommon/Pacing.h"
#include "LarkspurCommon/debug.h"

namespace {

constexpr DWORD kPauseAfterRead = 2;    // ms; exports, and clearing a store
constexpr DWORD kPauseAfterWrite = 50;  // ms; imports and deletions

constexpr const char* kNonSynchItems[] = {
    "LastFormPosition", "Service SID",       "SipEnabled",     "SipServerDisplayName",
    "SipServerHost",    "SipServerName",     "SipServerPort",  "SipTracing",
    "TimeOutVMClient",  "VMClient_IP",       "VMClient_Mode",  "domain",
    "maildrop",         "Receiver SID",      "CAMPAIGNS",      "CorvoIISPort",
    "LOGCALLINFOFILE",  "SMTPServerEnabled", "SMTPSERVERPORT", "DEFAULTHOSTVALCHANGED",
    "HOSTIPADDRESS"};

constexpr const char* kVPIMItems[] = {"SOG",      "SOGMailServer", "port",     "authenticate",
                                      "host",     "domain",        "username", "password",
                                      "maildrop", "sender"};

bool SameName(const char* left, const char* right) {
  return left != nullptr && ::strcasecmp(left, right) == 0;
}

template <std::size_t count>
bool Names(const char* const (&items)[count], const char* name) {
  return std::any_of(std::begin(items), std::end(items),
                     [&](const char* item) { return SameName(name, item); });
}

const char* ClearsFirst(bool clearFirst) {
  return clearFirst ? ", will clear old data first" : "";
}

// Deletes what the map names, pausing now and then.
template <class Delete>
void DeleteNamed(const std::map<tstring, tstring>& names, Delete remove) {
  unsigned long clock = os_clock();
  for (const auto& entry : names) {
    remove(entry.first);
    PauseWhenDue(clock, kWorkBeforePause, kPauseAfterWrite);
  }
}

}  // namespace

bool IsDirectorySetting(const char* name) {
  constexpr char kSuffix[] = "DIR";
  constexpr std::size_t kSuffixLength = sizeof kSuffix - 1;
  if (SameName(name, "Campaigns")) return true;
  if (name == nullptr || SameName(name, "VRLCSDESTDIR")) return false;
  const std::size_t length = std::strlen(name);
  return length > kSuffixLength && SameName(name + length - kSuffixLength, kSuffix);
}

bool IsNonSynchItem(const char* name) {
  return Names(kNonSynchItems, name);
}

bool IsItemToExclude(const char* name) {
  return IsDirectorySetting(name) || IsNonSynchItem(name);
}

bool IsVPIMData(const char* name) {
  return Names(kVPIMItems, name);
}

// Steps ------------------------------------------------------------------------------------------

void DeleteAllValuesHelper(CorvoIniData* store, unsigned long& clock, bool all) {
  if (store == nullptr) return;
  if (all) {
    store->Delete();
    return;
  }
  std::list<tstring> keys;
  store->GetKeys(keys);
  for (const tstring& key : keys) {
    if (!IsItemToExclude(key)) store->DeleteKey(key);
    PauseWhenDue(clock, kWorkBeforePause, kPauseAfterRead);
  }
}

void ImportDataHelper(CorvoIniData* store, std::map<tstring, tstring>& in, unsigned long& clock,
                      bool all) {
  if (store == nullptr) return;
  for (const auto& [name, value] : in) {
    if (!all && IsItemToExclude(name)) continue;
    store->SetData(name, value);
    PauseWhenDue(clock, kWorkBeforePause, kPauseAfterWrite);
  }
}

void VMRegistry::ExportDataHelper(CorvoIniData* store, std::map<tstring, tstring>& out,
                                  unsigned long& clock, bool all) const {
  if (store == nullptr) return;
  std::list<tstring> keys;
  std::list<tstring> values;
  store->GetKeysAndValues(keys, values);
  auto value = values.begin();
  for (const tstring& key : keys) {
    const tstring& exported = *value++;
    if (!all && IsItemToExclude(key)) continue;
    out.emplace(key, exported);
    PauseWhenDue(clock, kWorkBeforePause, kPauseAfterRead);
  }
}

// Exports ----------------------------------------------------------------------------------------

void VMRegistry::ExportSettings(std::map<tstring, tstring>& out, bool exportAll) const {
  DebugA(kTraceNotice, "VMRegistry - Exporting Settings%s",
         exportAll ? ", will export all items" : "");
  Export(m_settings, out, exportAll);
}

void VMRegistry::ExportUserVariables(std::map<tstring, tstring>& out) const {
  DebugA(kTraceNotice, "VMRegistry - Exporting User Variables");
  Export(m_userVariables, out, true);
}

void VMRegistry::ExportSMTPMappings(std::map<tstring, tstring>& out) const {
  DebugA(kTraceNotice, "VMRegistry - Exporting SMTP mappings");
  Export(m_smtpMappings, out, true);
}

void VMRegistry::Export(const StoreSlot& slot, std::map<tstring, tstring>& out, bool all) const {
  unsigned long clock = os_clock();
  out.clear();
  ExportDataHelper(slot.Get().get(), out, clock, all);
}

// Imports ----------------------------------------------------------------------------------------

void VMRegistry::ImportSettings(std::map<tstring, tstring>& in, bool clearFirst,
                                bool importAll) const {
  DebugA(kTraceNotice, "VMRegistry - Importing settings%s%s",
         importAll ? ", will import all items" : "", ClearsFirst(clearFirst));
  Import(m_settings, in, clearFirst, importAll);
}

void VMRegistry::ImportUserVariables(std::map<tstring, tstring>& in, bool clearFirst) const {
  DebugA(kTraceNotice, "VMRegistry - Importing user variables%s", ClearsFirst(clearFirst));
  Import(m_userVariables, in, clearFirst, true);
}

void VMRegistry::ImportSMTPMappings(std::map<tstring, tstring>& in, bool clearFirst) const {
  DebugA(kTraceNotice, "VMRegistry - Importing SMTP mappings%s", ClearsFirst(clearFirst));
  Import(m_smtpMappings, in, clearFirst, true);
}

void VMRegistry::Import(const StoreSlot& slot, std::map<tstring, tstring>& in, bool clearFirst,
                        bool all) const {
  const StoreSlot::Pointer store = slot.Get();
  unsigned long clock = os_clock();
  if (clearFirst) DeleteAllValuesHelper(store.get(), clock, all);
  ImportDataHelper(store.get(), in, clock, all);
}

// Deletions --------------------------------------------------------------------------------------

void VMRegistry::DeleteSettings(std::map<tstring, tstring>& names) const {
  const StoreSlot::Pointer store = m_settings.Get();
  if (!store) return;
  DeleteNamed(names, [&](const tstring& name) {
    if (!IsItemToExclude(name)) store->DeleteKey(name);
  });
}

void VMRegistry::DeleteUserVariables(std::map<tstring, tstring>& names) const {
  DeleteNamed(names, [&](const tstring& name) { DeleteUserRegistryEntry(name, false); });
}

void VMRegistry::DeleteSMTPMappings(std::map<tstring, tstring>& names) const {
  const StoreSlot::Pointer store = m_smtpMappings.Get();
  if (!store) return;
  DeleteNamed(names, [&](const tstring& name) { store->DeleteKey(name); });
}
