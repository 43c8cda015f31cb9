// Time profiles and the embedded-mailbox record, whose bytes come from the network.

#include "LarkspurCommon/MailboxRecords.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace {

constexpr int kOwnTimes = 4;  // the profile type of the default periods

// Start times as hours * 100 + minutes.
constexpr std::uint16_t Default_Periods[] = {900, 1730, 1930};

// Offsets in the embedded-mailbox record.
constexpr std::size_t kModeAt = 0;
constexpr std::size_t kCodeAt = 1;
constexpr std::size_t kExtraByte1At = 4;
constexpr std::size_t kExtraValue1At = 5;
constexpr std::size_t kMinimumPINLengthAt = 6;
constexpr std::size_t kMaximumRecordingTimeAt = 7;
constexpr std::size_t kExtraValue2At = 11;
constexpr std::size_t kExtraValue3At = 15;
constexpr std::size_t kExtraByte2At = 19;
constexpr std::size_t kTextsAt = 20;

constexpr std::size_t kCodeSize = kExtraByte1At - kCodeAt;
constexpr std::size_t kFirstPartSize = kExtraValue2At;

DWORD LoadBe32(const unsigned char* bytes) {
  return DWORD{bytes[0]} << 24 | DWORD{bytes[1]} << 16 | DWORD{bytes[2]} << 8 | DWORD{bytes[3]};
}

// Takes the text at the front of `text` up to its NUL, if it has one, and moves past it.
std::string TakeText(const char*& text, std::size_t& left) {
  const std::size_t length = ::strnlen(text, left);
  const std::size_t used = length < left ? length + 1 : length;
  std::string taken(text, length);
  text += used;
  left -= used;
  return taken;
}

}  // namespace

Hour_Minute::Hour_Minute() = default;

void Hour_Minute::Reset() {
  *this = Hour_Minute();
}

void Hour_Minute::Set(const Hour_Minute& other) {
  *this = other;
}

void Hour_Minute::Set(int hour, int minute) {
  m_hour = hour;
  m_minute = minute;
}

Time_Period::Time_Period() = default;

void Time_Period::Reset() {
  *this = Time_Period();
}

void Time_Period::Set(const Time_Period& other) {
  *this = other;
}

Time_Profile::Time_Profile() = default;

Time_Profile::Time_Profile(const Time_Profile& other) {
  SetProfile(other);
}

Time_Profile& Time_Profile::operator=(const Time_Profile& other) {
  SetProfile(other);
  return *this;
}

Time_Profile::~Time_Profile() = default;

int Time_Profile::GetTimePeriodsCount() const {
  return m_periods == nullptr ? 0 : static_cast<int>(m_periods->size());
}

Time_Period* Time_Profile::GetTimePeriod(int index) const {
  if (index < 0 || index >= GetTimePeriodsCount()) return nullptr;
  return (*m_periods)[static_cast<std::size_t>(index)].get();
}

void Time_Profile::SetTimePeriod(const Time_Period& period, int index) {
  if (Time_Period* existing = GetTimePeriod(index)) {
    existing->Set(period);
  } else {
    OwnPeriods().push_back(std::make_unique<Time_Period>(period));
  }
}

// The copies are made first: the profile may be its own source.
void Time_Profile::SetProfile(const Time_Profile& other) {
  Periods copies;
  if (other.m_periods != nullptr) {
    for (const auto& period : *other.m_periods) {
      copies.push_back(std::make_unique<Time_Period>(*period));
    }
  }
  m_type = other.m_type;
  OwnPeriods().swap(copies);
}

void Time_Profile::SetDefaultOwnTimes() {
  m_type = kOwnTimes;
  ClearTimePeriods();
  for (const std::uint16_t start : Default_Periods) {
    Time_Period period;
    period.m_start.Set(start / 100, start % 100);
    SetTimePeriod(period, GetTimePeriodsCount());
  }
}

void Time_Profile::ClearTimePeriods() {
  if (m_periods != nullptr) m_periods->clear();
}

void Time_Profile::ResetTimePeriods() {
  m_periods.reset();
  m_type = 0;
}

Time_Profile::Periods& Time_Profile::OwnPeriods() {
  if (m_periods == nullptr) m_periods = std::make_unique<Periods>();
  return *m_periods;
}

EVMLData::EVMLData() = default;

void EVMLData::Clear() {
  *this = EVMLData();
}

void EVMLData::Copy(const EVMLData& other) {
  *this = other;
}

void EVMLData::PopulateFromRecord(unsigned long recordNumber, const unsigned char* data,
                                  unsigned short length) {
  m_recordNumber = static_cast<DWORD>(recordNumber);
  if (data == nullptr || length < kFirstPartSize) return;
  const auto* chars = reinterpret_cast<const char*>(data);
  if (data[kModeAt] != 0) m_mode = true;
  m_code.assign(chars + kCodeAt, kCodeSize);
  m_extraByte1 = data[kExtraByte1At];
  m_extraValue1 = data[kExtraValue1At];
  m_minimumPINLength = data[kMinimumPINLengthAt];
  m_maximumRecordingTime = LoadBe32(data + kMaximumRecordingTimeAt);

  if (length <= kTextsAt) return;
  m_extraValue2 = LoadBe32(data + kExtraValue2At);
  m_extraValue3 = LoadBe32(data + kExtraValue3At);
  m_extraByte2 = data[kExtraByte2At];

  const char* text = chars + kTextsAt;
  std::size_t left = length - kTextsAt;
  for (tstring* field : {&m_text1, &m_text2, &m_text3}) {
    if (left == 0) return;
    field->FromUTF8(TakeText(text, left).c_str());
  }
}

bool EVMLData::EVMMode() const {
  return m_mode;
}

DWORD EVMLData::MaximimRecordingTime() const {
  return m_maximumRecordingTime;
}

DWORD EVMLData::MinimumPINLength() const {
  return m_minimumPINLength;
}

int EVMLData::RecordLength() const {
  return static_cast<int>(kFirstPartSize);
}
