// Time windows of the day, and how often and when outcalls are tried again.

#include <algorithm>
#include <climits>
#include <iterator>

#include "LarkspurCommon/Aregistry.h"
#include "LarkspurCommon/AregistryInternal.h"
#include "LarkspurCommon/AregistrySettings.h"
#include "LarkspurCommon/debug.h"

using settings::Row;
using settings::Setting;

// The settings of a time window of the day.
struct settings::Window {
  const Setting& fromHour;
  const Setting& fromMinute;
  const Setting& toHour;
  const Setting& toMinute;
  const char* refusal;
};

namespace {

using settings::Window;

constexpr int kMillisecondsPerMinute = 60000;
constexpr int kRetryBeforeTheFirst = 30;  // minutes
constexpr int kLastRetry = 10;            // the index of the last retry that can be set
constexpr unsigned kPortsKeptFree = 2;
constexpr unsigned kMostPortsWithoutOutcalls = 9;

constexpr Window kPeakTime{Row("FromPeakTimeHour"), Row("FromPeakTimeMinute"),
                           Row("ToPeakTimeHour"), Row("ToPeakTimeMinute"),
                           "VMRegistry - Attempted to set invalid peak time"};
constexpr Window kPrimeTime{Row("FromPrimeTimeHour"), Row("FromPrimeTimeMinute"),
                            Row("ToPrimeTimeHour"), Row("ToPrimeTimeMinute"),
                            "VMRegistry - Attempted to set invalid prime time"};

constexpr const Setting* kRetries[] = {&Row("OutcallRetry0"), &Row("OutcallRetry1"),
                                       &Row("OutcallRetry2"), &Row("OutcallRetry3"),
                                       &Row("OutcallRetry4")};
constexpr int kRetryCount = static_cast<int>(std::size(kRetries));

bool Allows(const Setting& setting, int value) {
  return value >= setting.low && value <= setting.high;
}

bool Refuse(const char* text) {
  DebugA(kTraceError, "%s", text);
  return false;
}

// A number of minutes from a file may be anything.
int Milliseconds(int minutes) {
  const long long wide = 1LL * minutes * kMillisecondsPerMinute;
  return static_cast<int>(std::clamp<long long>(wide, INT_MIN, INT_MAX));
}

}  // namespace

// Time windows -----------------------------------------------------------------------------------

Hour_Minute VMRegistry::ReadTime(const Setting& hour, const Setting& minute) const {
  Hour_Minute time;
  time.m_hour = ReadInteger(hour);
  time.m_minute = ReadInteger(minute);
  return time;
}

bool VMRegistry::WriteWindow(const settings::Window& window, const Hour_Minute& from,
                             const Hour_Minute& to) const {
  const struct {
    const Setting& setting;
    int value;
  } entries[] = {{window.fromHour, from.m_hour},
                 {window.fromMinute, from.m_minute},
                 {window.toHour, to.m_hour},
                 {window.toMinute, to.m_minute}};
  for (const auto& entry : entries) {
    if (!Allows(entry.setting, entry.value)) return Refuse(window.refusal);
  }
  for (const auto& entry : entries) SetRegistryEntry(entry.setting.name, entry.value);
  return true;
}

void VMRegistry::GetMiradorPeaktimeSetting(Hour_Minute& from, Hour_Minute& to) const {
  from = ReadTime(kPeakTime.fromHour, kPeakTime.fromMinute);
  to = ReadTime(kPeakTime.toHour, kPeakTime.toMinute);
}

void VMRegistry::GetMiradorPrimetimeSetting(Hour_Minute& from, Hour_Minute& to) const {
  from = ReadTime(kPrimeTime.fromHour, kPrimeTime.fromMinute);
  to = ReadTime(kPrimeTime.toHour, kPrimeTime.toMinute);
}

bool VMRegistry::SetMiradorPeaktimeSetting(Hour_Minute from, Hour_Minute to) const {
  return WriteWindow(kPeakTime, from, to);
}

bool VMRegistry::SetMiradorPrimetimeSetting(Hour_Minute from, Hour_Minute to) const {
  return WriteWindow(kPrimeTime, from, to);
}

// Outcalls ---------------------------------------------------------------------------------------

int VMRegistry::GetOutcallingRetries() const {
  return ReadInteger(Row("OutcallingRetries"));
}

bool VMRegistry::SetOutcallingRetries(int retries) const {
  constexpr const Setting& kOutcallingRetries = Row("OutcallingRetries");
  if (!Allows(kOutcallingRetries, retries)) {
    return Refuse("VMRegistry - Number of outcalling retries should be between 0-10");
  }
  return SetRegistryEntry(kOutcallingRetries.name, retries);
}

int VMRegistry::GetOutcallRetryTime(int index) const {
  if (index < 0) return Milliseconds(kRetryBeforeTheFirst);
  return Milliseconds(index < kRetryCount ? ReadInteger(*kRetries[index])
                                          : GetOutcallingDefaultRetryTime());
}

bool VMRegistry::SetOutcallRetryTime(int index, int minutes) const {
  constexpr const Setting& kDefaultTime = Row("OutcallDefaultRetryTime");
  if (index < 0 || index > kLastRetry || !Allows(kDefaultTime, minutes)) {
    return Refuse("VMRegistry - Outcalling retry should be between 0-10 and duration between 1-60");
  }
  const int stored = index < kRetryCount ? minutes : DefaultOutcallDefaultRetryTime;
  SetRegistryEntry(tstring::FromFormat("OutcallRetry%d", index), stored);
  return true;
}

int VMRegistry::GetOutcallingDefaultRetryTime() const {
  return ReadInteger(Row("OutcallDefaultRetryTime"));
}

int VMRegistry::GetMaxOutcallAllowed(unsigned ports) const {
  if (ports <= kMostPortsWithoutOutcalls) return 0;
  const AnsiString text = ReadNumberText(Row("NoOfOutCallingPorts").name);
  if (text.IsEmpty()) return 0;
  const int wanted = *text.c_str() == 'N' ? -1 : std::max(0, text.ToInt());
  return wanted == 0 ? 0 : std::min(wanted, static_cast<int>(ports - kPortsKeptFree));
}
