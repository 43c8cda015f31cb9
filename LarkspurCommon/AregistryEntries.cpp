// Single entries: which store a key means, reads that write their default, and writes.

#include <algorithm>
#include <cstring>

#include "LarkspurCommon/Aregistry.h"
#include "LarkspurCommon/AregistryInternal.h"
#include "LarkspurCommon/debug.h"

namespace {

constexpr char kNotify[] = "void VMRegistry::Notify(int, const TCHAR*, const TCHAR*) const";

// "Y", "N" or a number.
bool IsYes(const tstring& text) {
  if (text.CompareNoCase("Y") == 0) return true;
  if (text.CompareNoCase("N") == 0) return false;
  return static_cast<int>(text) != 0;
}

}  // namespace

VMRegistry::StoreSlot::Pointer VMRegistry::Store(int key) const {
  if (key == kMainKey || key == kVPIMKey) return m_settings.Get();
  if (key == kUserVariablesKey) return m_userVariables.Get();
  return nullptr;
}

// The host's version may throw; the change it would have heard of stands.
void VMRegistry::Notify(int type, const char* name, const char* value) const {
  if (!m_notifySync) return;
  AtBoundary({kSource, kNotify, __LINE__},
             [&] { SyncMaster::ConfigurationItemChanged(type, name, value); });
}

// Text -------------------------------------------------------------------------------------------

bool VMRegistry::GetRegistryEntry(int key, const char* name, tstring& value) const {
  const StoreSlot::Pointer store = Store(key);
  if (!store || name == nullptr) return false;
  bool found;
  const tstring stored = store->GetData(name, found);
  if (found) {
    value = stored;
    if (TraceRegistryData) {
      DebugA(kTraceData, "VMRegistry - GetRegistryEntry(%x, \"%s\") returning \"%s\"",
             static_cast<unsigned>(key), name, value.c_str());
    }
    return true;
  }
  if (!value.empty()) Write(key, name, value.c_str());
  return false;
}

bool VMRegistry::GetRegistryEntry(int key, const char* name, char* buffer, unsigned size) const {
  if (buffer == nullptr || size == 0) return false;
  tstring value(buffer, static_cast<unsigned>(strnlen(buffer, size)));
  if (!GetRegistryEntry(key, name, value)) return false;
  const std::size_t length = std::min<std::size_t>(value.size(), size - 1);
  std::memcpy(buffer, value.data(), length);
  buffer[length] = '\0';
  return true;
}

bool VMRegistry::SetRegistryEntry(int key, const char* name, const char* value) const {
  tstring current;
  if (GetRegistryEntry(key, name, current) && current.CompareNoCase(value) == 0) return true;
  return Write(key, name, value);
}

// Whether there is such a store.
bool VMRegistry::Write(int key, const char* name, const char* value) const {
  const StoreSlot::Pointer store = Store(key);
  if (!store || name == nullptr) return false;
  store->SetData(name, value);
  Notify(key == kUserVariablesKey ? kUserVariableChanged : kSettingChanged, name, value);
  return true;
}

// Numbers and switches ---------------------------------------------------------------------------

template <class Number>
bool VMRegistry::ReadNumber(int key, const char* name, Number& value) const {
  if (key == 0) return false;
  tstring text = tstring(value);
  if (!GetRegistryEntry(key, name, text) || text.empty()) return false;
  value = static_cast<Number>(text);
  return true;
}

bool VMRegistry::GetRegistryEntry(int key, const char* name, long& value) const {
  return ReadNumber(key, name, value);
}

bool VMRegistry::GetRegistryEntry(int key, const char* name, int& value) const {
  return ReadNumber(key, name, value);
}

bool VMRegistry::GetRegistryEntry(int key, const char* name, unsigned long& value) const {
  return ReadNumber(key, name, value);
}

bool VMRegistry::GetRegistryEntry(int key, const char* name, bool& value) const {
  if (m_mainKey == 0) return false;
  tstring text("N");
  if (!GetRegistryEntry(key, name, text)) return false;
  value = IsYes(text);
  return true;
}

bool VMRegistry::SetRegistryEntry(int key, const char* name, int value) const {
  return SetRegistryEntry(key, name, tstring(value).c_str());
}

bool VMRegistry::SetRegistryEntry(int key, const char* name, unsigned long value) const {
  return SetRegistryEntry(key, name, tstring(value).c_str());
}

bool VMRegistry::SetRegistryEntry(int key, const char* name, bool value) const {
  return SetRegistryEntry(key, name, value ? "Y" : "N");
}

// Under the main key -----------------------------------------------------------------------------

bool VMRegistry::GetRegistryEntry(const char* name, char* buffer, unsigned size) const {
  return GetRegistryEntry(m_mainKey, name, buffer, size);
}

bool VMRegistry::GetRegistryEntry(const char* name, tstring& value) const {
  return GetRegistryEntry(m_mainKey, name, value);
}

bool VMRegistry::GetRegistryEntry(const char* name, long& value) const {
  return GetRegistryEntry(m_mainKey, name, value);
}

bool VMRegistry::GetRegistryEntry(const char* name, int& value) const {
  return GetRegistryEntry(m_mainKey, name, value);
}

bool VMRegistry::GetRegistryEntry(const char* name, unsigned long& value) const {
  return GetRegistryEntry(m_mainKey, name, value);
}

bool VMRegistry::GetRegistryEntry(const char* name, bool& value) const {
  return GetRegistryEntry(m_mainKey, name, value);
}

bool VMRegistry::SetRegistryEntry(const char* name, const char* value) const {
  return SetRegistryEntry(m_mainKey, name, value);
}

bool VMRegistry::SetRegistryEntry(const char* name, int value) const {
  return SetRegistryEntry(m_mainKey, name, value);
}

bool VMRegistry::SetRegistryEntry(const char* name, unsigned long value) const {
  return SetRegistryEntry(m_mainKey, name, value);
}

bool VMRegistry::SetRegistryEntry(const char* name, bool value) const {
  return SetRegistryEntry(m_mainKey, name, value);
}

// User variables ---------------------------------------------------------------------------------

bool VMRegistry::GetUserRegistryEntry(bool& value, const char* name) const {
  tstring text;
  const bool found = GetRegistryEntry(m_userVariablesKey, name, text);
  value = found && IsYes(text);
  return found;
}

bool VMRegistry::DeleteUserRegistryEntry(const char* name, bool notify) const {
  const StoreSlot::Pointer store = m_userVariables.Get();
  if (!store || !store->DeleteKey(name)) return false;
  if (notify) Notify(kUserVariableDeleted, name, nullptr);
  return true;
}

void VMRegistry::GetAllUserRegistryEntries(std::list<tstring>& names) const {
  names.clear();
  const StoreSlot::Pointer store = m_userVariables.Get();
  if (store) store->GetKeys(names);
}
