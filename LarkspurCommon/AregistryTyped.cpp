// Typed settings: each read when asked for, with its default and limits from the table, and the
// rules that bind several of them.

#include <algorithm>
#include <cstdlib>

#include "LarkspurCommon/Aregistry.h"
#include "LarkspurCommon/AregistryInternal.h"
#include "LarkspurCommon/AregistrySettings.h"
#include "LarkspurCommon/debug.h"

using settings::Row;
using settings::Setting;

namespace {

constexpr DWORD kMillisecondsPerSecond = 1000;
constexpr DWORD kShortestMessage = 700;   // ms, in Mirador mode and for names and greetings
constexpr DWORD kEmbeddedMessage = 3000;  // ms, in embedded-mailbox mode
constexpr DWORD kEmbeddedName = 500;      // ms
constexpr DWORD kEmbeddedSilenceLimit = 10000;
constexpr DWORD kRoomBeyondMinimum = 2;  // seconds between shortest and longest message
constexpr unsigned kNumberText = 260;

static_assert(settings::DefaultOf(Row("CfgMaxTime")) == DefaultCfgMaxTime);
static_assert(settings::DefaultOf(Row("MaxRecordTime")) == DefaultMaxRecordTime);
static_assert(settings::DefaultOf(Row("MinimumMessageLength")) == DefaultMinMessageLen);
static_assert(settings::DefaultOf(Row("QBXMinimumMessageLength")) == DefaultQBXMinMessageLen);
static_assert(settings::DefaultOf(Row("VBScriptTimeout")) == DefaultVBScriptTimeout);
static_assert(settings::DefaultOf(Row("MinimumPasswordLength")) == DefaultMinimumPasswordLength);
static_assert(settings::DefaultOf(Row("QBXMinimumPasswordLength")) ==
              DefaultQBXMinimumPasswordLength);
static_assert(settings::DefaultOf(Row("OutcallingRetries")) == DefaultOutcallingRetries);
static_assert(settings::DefaultOf(Row("OutcallDefaultRetryTime")) ==
              DefaultOutcallDefaultRetryTime);
static_assert(settings::DefaultOf(Row("FromPeakTimeHour")) == DefaultFromPeakTimeHour);
static_assert(settings::DefaultOf(Row("FromPeakTimeMinute")) == DefaultFromPeakTimeMinute);
static_assert(settings::DefaultOf(Row("ToPeakTimeHour")) == DefaultToPeakTimeHour);
static_assert(settings::DefaultOf(Row("ToPeakTimeMinute")) == DefaultToPeakTimeMinute);
static_assert(settings::DefaultOf(Row("FromPrimeTimeHour")) == DefaultFromPrimeTimeHour);
static_assert(settings::DefaultOf(Row("FromPrimeTimeMinute")) == DefaultFromPrimeTimeMinute);
static_assert(settings::DefaultOf(Row("ToPrimeTimeHour")) == DefaultToPrimeTimeHour);
static_assert(settings::DefaultOf(Row("ToPrimeTimeMinute")) == DefaultToPrimeTimeMinute);
static_assert(settings::DefaultOf(Row("IPTOSValue")) == IPTOS_DEFAULT_VALUE);

// What a stored value gives.
template <class Number>
Number WithinLimits(const Setting& setting, Number value) {
  const long long wide = value;
  if (wide >= setting.low && wide <= setting.high) return value;
  switch (setting.beyond) {
    case settings::Beyond::Nearest:
      return static_cast<Number>(std::clamp(wide, setting.low, setting.high));
    case settings::Beyond::Default:
      return static_cast<Number>(settings::DefaultOf(setting));
    case settings::Beyond::Itself:
      break;
  }
  return value;
}

DWORD Cut(unsigned long long value) {
  return static_cast<DWORD>(std::min<unsigned long long>(value, 0xFFFFFFFF));
}

// A class of messages: the bit that stands for the setting 1, and the one for any other value.
struct SortOrder {
  const Setting& setting;
  HalcyonDatabase::VMSortOrder one;
  HalcyonDatabase::VMSortOrder other;
};

constexpr SortOrder kSortOrders[] = {
    {Row("NewMessageSortOrder"), HalcyonDatabase::NewMessageSortOrder1,
     HalcyonDatabase::NewMessageSortOrder0},
    {Row("UnopenedMessageSortOrder"), HalcyonDatabase::UnopenedMessageSortOrder1,
     HalcyonDatabase::UnopenedMessageSortOrder0},
    {Row("OldMessageSortOrder"), HalcyonDatabase::OldMessageSortOrder1,
     HalcyonDatabase::OldMessageSortOrder0},
    {Row("SavedMessageSortOrder"), HalcyonDatabase::SavedMessageSortOrder1,
     HalcyonDatabase::SavedMessageSortOrder0},
    {Row("NewCallRecordingSortOrder"), HalcyonDatabase::NewCallRecordingSortOrder1,
     HalcyonDatabase::NewCallRecordingSortOrder0},
    {Row("OldCallRecordingSortOrder"), HalcyonDatabase::OldCallRecordingSortOrder1,
     HalcyonDatabase::OldCallRecordingSortOrder0},
};

}  // namespace

// Reading by row ---------------------------------------------------------------------------------

DWORD VMRegistry::ReadUnsigned(const Setting& setting) const {
  unsigned long value = static_cast<unsigned long>(settings::DefaultOf(setting));
  GetRegistryEntry(setting.name, value);
  return WithinLimits(setting, static_cast<DWORD>(value));
}

int VMRegistry::ReadInteger(const Setting& setting) const {
  int value = static_cast<int>(settings::DefaultOf(setting));
  GetRegistryEntry(setting.name, value);
  return WithinLimits(setting, value);
}

tstring VMRegistry::ReadText(int key, const char* name, const char* byDefault) const {
  tstring value(byDefault);
  GetRegistryEntry(key, name, value);
  return value;
}

tstring VMRegistry::ReadText(const Setting& setting) const {
  return ReadText(m_mainKey, setting.name, setting.written != nullptr ? setting.written : "");
}

// As much of a text as its readers have room for.
AnsiString VMRegistry::ReadNumberText(const char* name) const {
  char text[kNumberText] = "";
  GetRegistryEntry(name, text, sizeof text);
  return AnsiString(text);
}

// Lengths and times ------------------------------------------------------------------------------

DWORD VMRegistry::GetMinimumMessageLength() const {
  if (m_evmlData.EVMMode()) return kEmbeddedMessage;
  const unsigned long long longest =
      1ULL * ReadUnsigned(Row("CfgMaxTime")) * kMillisecondsPerSecond;
  const bool mirador = GetMiradorModeSetting();
  const DWORD shortest = mirador ? kShortestMessage : 0;
  const DWORD length =
      ReadUnsigned(mirador ? Row("MinimumMessageLength") : Row("QBXMinimumMessageLength"));
  return std::max(shortest, Cut(std::min<unsigned long long>(length, longest)));
}

DWORD VMRegistry::GetMinimumRecordedNameLength() const {
  return m_evmlData.EVMMode() ? kEmbeddedName : ReadUnsigned(Row("MinimumRecordedNameLength"));
}

DWORD VMRegistry::GetMinimumRecordedGreetingLength() const {
  if (m_evmlData.EVMMode()) return kEmbeddedMessage;
  const unsigned long long longest =
      1ULL * ReadUnsigned(Row("CfgMaxTime")) * kMillisecondsPerSecond;
  const DWORD length = ReadUnsigned(Row("MinimumRecordedGreetingLength"));
  return std::max(kShortestMessage, Cut(std::min<unsigned long long>(length, longest)));
}

DWORD VMRegistry::GetCfgMaxTime() const {
  if (m_evmlData.EVMMode()) return static_cast<DWORD>(m_evmlData.MaximimRecordingTime());
  const DWORD longest = ReadUnsigned(Row("CfgMaxTime"));
  return std::max(longest, GetMinimumMessageLength() / kMillisecondsPerSecond + kRoomBeyondMinimum);
}

DWORD VMRegistry::GetMaxRecordTime() const {
  constexpr const Setting& kMaxRecordTime = Row("MaxRecordTime");
  const DWORD seconds = m_evmlData.EVMMode() ? static_cast<DWORD>(m_evmlData.MaximimRecordingTime())
                                             : ReadUnsigned(kMaxRecordTime);
  const unsigned long long longest = WithinLimits(kMaxRecordTime, seconds);
  const unsigned long long shortest =
      GetMinimumMessageLength() + 1ULL * kRoomBeyondMinimum * kMillisecondsPerSecond;
  return Cut(std::max(shortest, longest * kMillisecondsPerSecond));
}

int VMRegistry::GetMaxAgeTime(char c) const {
  constexpr const Setting& kMaxAgeTime = Row("MaxAgeTime");
  tstring name(kMaxAgeTime.name);
  if (c != '\0') name += c;
  unsigned long value = static_cast<unsigned long>(settings::DefaultOf(kMaxAgeTime));
  GetRegistryEntry(name, value);
  return static_cast<int>(static_cast<DWORD>(value));
}

int VMRegistry::GetNormalisation() const {
  constexpr const Setting& kNormalisation = Row("SignalNormalisation");
  const tstring text = ReadText(kNormalisation);
  if (text.empty()) return 0;
  return static_cast<int>(WithinLimits(kNormalisation, std::strtol(text, nullptr, 0)));
}

DWORD VMRegistry::GetLoopedOutboundTimeout() const {
  return ReadUnsigned(Row("LoopedOutboundTimeout"));
}

DWORD VMRegistry::GetSilenceLimit() const {
  return m_evmlData.EVMMode() ? kEmbeddedSilenceLimit : ReadUnsigned(Row("SilenceLimit"));
}

DWORD VMRegistry::GetMinimumPasswordLength() const {
  if (m_evmlData.EVMMode()) return static_cast<DWORD>(m_evmlData.MinimumPINLength());
  return ReadUnsigned(GetMiradorModeSetting() ? Row("MinimumPasswordLength")
                                              : Row("QBXMinimumPasswordLength"));
}

DWORD VMRegistry::GetMaximumCallLength() const {
  return ReadUnsigned(Row("MaximumCallLength"));
}

DWORD VMRegistry::GetMinimumIdleTime() const {
  return ReadUnsigned(Row("MinimumIdleTime"));
}

DWORD VMRegistry::GetOutcallRingTime() const {
  return ReadUnsigned(Row("ConfRingTime"));
}

DWORD VMRegistry::GetSeqTimeout() const {
  return ReadUnsigned(Row("SeqTimeout"));
}

DWORD VMRegistry::SecondsBetweenEvents() const {
  return ReadUnsigned(Row("SecondsBetweenEvents"));
}

// The first read puts the setting in the place of an older one.
DWORD VMRegistry::MinutesBetweenSync() const {
  constexpr const Setting& kBetweenSync = Row("TimeBetweenSync");
  constexpr char kOlder[] = "MinutesBetweenSync";
  tstring minutes(kBetweenSync.written);
  if (!GetRegistryEntry(kBetweenSync.name, minutes)) {
    const StoreSlot::Pointer store = m_settings.Get();
    if (store && store->DeleteKey(kOlder)) Notify(kSettingDeleted, kOlder, nullptr);
  }
  if (minutes.empty()) minutes = kBetweenSync.written;
  return static_cast<DWORD>(static_cast<unsigned long>(minutes));
}

int VMRegistry::GetIPTOSValue() const {
  return ReadInteger(Row("IPTOSValue"));
}

// Sort orders ------------------------------------------------------------------------------------

HalcyonDatabase::VMSortOrder VMRegistry::GetMessageSortOrder() const {
  unsigned bits = 0;
  for (const SortOrder& order : kSortOrders) {
    long value = static_cast<long>(settings::DefaultOf(order.setting));
    GetRegistryEntry(order.setting.name, value);
    bits |= value == 1 ? order.one : order.other;
  }
  return static_cast<HalcyonDatabase::VMSortOrder>(bits);
}

void VMRegistry::SetMessageSortOrder(HalcyonDatabase::VMSortOrder order) const {
  for (const SortOrder& row : kSortOrders) {
    SetRegistryEntry(row.setting.name, (order & row.one) != 0 ? 1 : 0);
  }
}

// Switches and modes -----------------------------------------------------------------------------

bool VMRegistry::GetMiradorModeSetting() const {
  return !m_evmlData.EVMMode() && ReadSwitch("MiradorMode", DefaultMiradorMode);
}

bool VMRegistry::GetLoadMailboxDataInBG() const {
  return ReadSwitch("LoadMailboxDataInBackground", true);
}

bool VMRegistry::UseMutexForSyncObjects() const {
  return false;
}

bool VMRegistry::LoadSMTPServerSupport() const {
  bool enabled = true;
  if (!GetRegistryEntry(Row("SMTPServerEnabled").name, enabled)) LoadSMTPServerSupport(true);
  return enabled;
}

void VMRegistry::LoadSMTPServerSupport(bool enabled) const {
  SetRegistryEntry(Row("SMTPServerEnabled").name, enabled);
}

void VMRegistry::SendVMViaSMTP(bool enabled) const {
  SetRegistryEntry(Row("SendVoicemailViaSMTP").name, enabled);
}

void VMRegistry::SetEmailDefProfile(const char* profile) {
  const tstring name(profile != nullptr ? profile : "");
  SetField(&VMRegistry::MapiUserLogin, name);
  SetField(&VMRegistry::EMailProfile, name);
  SetRegistryEntry(Row("EMailProfile").name, name.c_str());
  SetRegistryEntry(Row("MapiUserLogin").name, "");
  if (name.empty()) SendVMViaSMTP(true);
}

bool VMRegistry::DownloadAttachmentForITZ() const {
  return ReadText(Row("DownloadAttachmentForITZ")).CompareNoCase("yes") == 0;
}

int VMRegistry::GetPrimaryReinstatementMode() const {
  return ReadInteger(Row("PrimaryReinstatementMode"));
}

void VMRegistry::SetPrimaryReinstatementMode(int mode) {
  SetRegistryEntry(Row("PrimaryReinstatementMode").name, mode);
}

int VMRegistry::GetPrimaryReinstatementTimeOut() const {
  return ReadInteger(Row("PrimaryReinstatementTimeOut"));
}

void VMRegistry::SetPrimaryReinstatementTimeOut(int timeOut) {
  SetRegistryEntry(Row("PrimaryReinstatementTimeOut").name, timeOut);
}

// Texts ------------------------------------------------------------------------------------------

AnsiString VMRegistry::SystemFaxNumber() const {
  return ReadNumberText(Row("SystemFaxNumber").name).Trim();
}

AnsiString VMRegistry::PrefixNumber() const {
  return SystemFaxNumber();
}

AnsiString VMRegistry::UsePrefixNumber() const {
  return ReadNumberText(Row("UsePrefixNumber").name);
}

tstring VMRegistry::SMTPUserName() const {
  return ReadText(m_vpimKey, Row("username").name, "");
}

tstring VMRegistry::SMTPPassword() const {
  return ReadText(m_vpimKey, Row("password").name, "");
}

tstring VMRegistry::SMTPMailDrop() const {
  return ReadText(m_vpimKey, Row("maildrop").name, Row("maildrop").written);
}

tstring VMRegistry::SMTPSender() const {
  return ReadText(m_vpimKey, Row("sender").name, Field(&VMRegistry::EMailMailbox));
}

tstring VMRegistry::GetOrbisWSLogToFile() const {
  return ReadText(Row("OrbisWSLogToFile"));
}

tstring VMRegistry::SipServerName() const {
  return ReadText(Row("SipServerName"));
}

tstring VMRegistry::SipServerDisplayName() const {
  return ReadText(Row("SipServerDisplayName"));
}

tstring VMRegistry::SipServerHost() const {
  return ReadText(Row("SipServerHost"));
}

tstring VMRegistry::SipSupportDLLName() const {
  return ReadText(Row("SipSupportDLLName"));
}
