// The SNMP alarm thresholds: critical + 10 <= level and level + 30 <= OK.

#include <algorithm>

#include "LarkspurCommon/Aregistry.h"
#include "LarkspurCommon/AregistryInternal.h"
#include "LarkspurCommon/AregistrySettings.h"
#include "LarkspurCommon/debug.h"

using settings::Row;
using settings::Setting;

namespace {

constexpr const Setting& kCritical = Row("SnmpAlarmCritical");
constexpr const Setting& kLevel = Row("SnmpAlarmLevel");
constexpr const Setting& kOk = Row("SnmpAlarmOk");

// `value` + `difference`, which a stored value may bring beyond 32 bits.
unsigned long Above(DWORD value, DWORD difference) {
  return static_cast<unsigned long>(std::min(1ULL * value + difference, 0xFFFFFFFFULL));
}

}  // namespace

// Raises a value that is below `least`, and stores it so. `limit` says in the trace what it may not
// be less than.
unsigned long VMRegistry::Raise(const Setting& setting, unsigned long value, unsigned long least,
                                const char* limit) const {
  if (value >= least) return value;
  DebugA(kTraceError, "VMRegistry - %s value can not be less than %s%lu", setting.name, limit,
         least);
  DebugA(kTraceError, "VMRegistry - Hence, setting the %s value to be %lu", setting.name, least);
  SetRegistryEntry(setting.name, least);
  return least;
}

// A stored threshold, not below its own least value.
unsigned long VMRegistry::ReadThreshold(const Setting& setting) const {
  unsigned long value = static_cast<unsigned long>(settings::DefaultOf(setting));
  GetRegistryEntry(setting.name, value);
  return Raise(setting, value, static_cast<unsigned long>(setting.low), "");
}

DWORD VMRegistry::GetSnmpAlarmCritical() const {
  return static_cast<DWORD>(ReadThreshold(kCritical));
}

DWORD VMRegistry::GetSnmpAlarmLevel() const {
  const DWORD critical = GetSnmpAlarmCritical();
  const unsigned long level = ReadThreshold(kLevel);
  return static_cast<DWORD>(Raise(kLevel, level, Above(critical, THRESHOLD_CRITICAL_MIN_DIFF),
                                  "SnmpAlarmCritical+THRESHOLD_CRITICAL_MIN_DIFF i.e., "));
}

DWORD VMRegistry::GetSnmpAlarmOk() const {
  const DWORD level = GetSnmpAlarmLevel();
  const unsigned long ok = ReadThreshold(kOk);
  return static_cast<DWORD>(Raise(kOk, ok, Above(level, THRESHOLD_OK_MIN_DIFF),
                                  "SnmpAlarmLevel + THRESHOLD_OK_MIN_DIFF i.e., "));
}

// Whether there is a store to set a threshold in.
bool VMRegistry::CanSetThreshold(const Setting& setting) const {
  if (m_mainKey != 0) return true;
  DebugA(kTraceError, "VMRegistry - Could not set the %s value, as KEY %x is not valid",
         setting.name, static_cast<unsigned>(m_mainKey));
  return false;
}

void VMRegistry::SetSnmpAlarmLevel(unsigned long value) const {
  value = static_cast<DWORD>(value);
  const auto least = static_cast<unsigned long>(kLevel.low);
  if (value <= least) {
    value = least;
    DebugA(kTraceError, "VMRegistry - SnmpAlarmLevel value should not be less than %lu", value);
    DebugA(kTraceError, "VMRegistry - Setting SnmpAlarmLevel value to be %lu", value);
  }
  if (!CanSetThreshold(kLevel)) return;
  if (Above(GetSnmpAlarmCritical(), THRESHOLD_CRITICAL_MIN_DIFF) > value) {
    SetRegistryEntry(kCritical.name, value - THRESHOLD_CRITICAL_MIN_DIFF);
  }
  SetRegistryEntry(kLevel.name, value);
  SetRegistryEntry(kOk.name, Above(static_cast<DWORD>(value), THRESHOLD_OK_MIN_DIFF));
}

void VMRegistry::SetSnmpAlarmOk(unsigned long value) const {
  value = static_cast<DWORD>(value);
  const DWORD level = GetSnmpAlarmLevel();
  if (value < static_cast<unsigned long>(kOk.low)) {
    value = static_cast<unsigned long>(kOk.low);
    DebugA(kTraceError, "VMRegistry - SnmpAlarmOk value should be more than %lu", value);
    DebugA(kTraceError, "VMRegistry - Setting SnmpAlarmOk value to be %lu", value);
  }
  if (!CanSetThreshold(kOk)) return;
  const bool fits = Above(level, THRESHOLD_OK_MIN_DIFF) <= value;
  SetRegistryEntry(kOk.name,
                   fits ? value : Above(static_cast<DWORD>(value), THRESHOLD_OK_MIN_DIFF));
}

// A value too close to the level is stored higher: the level's next reader raises that to match.
void VMRegistry::SetSnmpAlarmCritical(unsigned long value) const {
  value = static_cast<DWORD>(value);
  const DWORD level = GetSnmpAlarmLevel();
  if (value == 0) {
    value = static_cast<unsigned long>(kCritical.low);
    DebugA(kTraceError, "VMRegistry - SnmpAlarmCritical value should be more than %lu", value);
    DebugA(kTraceError, "VMRegistry - Setting SnmpAlarmCritical value to be %lu", value);
  }
  if (!CanSetThreshold(kCritical)) return;
  const bool fits = level - THRESHOLD_CRITICAL_MIN_DIFF >= value;
  SetRegistryEntry(kCritical.name,
                   fits ? value : Above(static_cast<DWORD>(value), THRESHOLD_CRITICAL_MIN_DIFF));
}
