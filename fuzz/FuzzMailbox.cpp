// Any bytes as embedded-mailbox records, one after the other into the same settings, against fields
// taken by their documented offsets; and the record built from the settings gives them again.

#include <memory>
#include <vector>

#include "LarkspurCommon/MailboxRecords.h"
#include "Target.h"

namespace {

constexpr std::size_t kFirstPart = 11;
constexpr std::size_t kTextsAt = 20;

DWORD BigEndian(const std::string& bytes, std::size_t at) {
  DWORD value = 0;
  for (std::size_t i = 0; i < 4; ++i)
    value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
  return value;
}

std::string BigEndian(DWORD value) {
  return {static_cast<char>(value >> 24), static_cast<char>(value >> 16 & 0xFF),
          static_cast<char>(value >> 8 & 0xFF), static_cast<char>(value & 0xFF)};
}

std::vector<std::string> Texts(const EVMLData& settings) {
  return {settings.m_code, settings.m_text1, settings.m_text2, settings.m_text3};
}

bool Same(const EVMLData& left, const EVMLData& right) {
  return left.EVMMode() == right.EVMMode() && left.m_extraByte1 == right.m_extraByte1 &&
         left.m_extraByte2 == right.m_extraByte2 &&
         left.MaximimRecordingTime() == right.MaximimRecordingTime() &&
         left.MinimumPINLength() == right.MinimumPINLength() &&
         left.m_recordNumber == right.m_recordNumber && left.m_extraValue1 == right.m_extraValue1 &&
         left.m_extraValue2 == right.m_extraValue2 && left.m_extraValue3 == right.m_extraValue3 &&
         Texts(left) == Texts(right);
}

void TakeTexts(EVMLData& settings, const std::string& texts) {
  std::size_t at = 0;
  for (tstring* field : {&settings.m_text1, &settings.m_text2, &settings.m_text3}) {
    if (at >= texts.size()) return;
    const std::string text = texts.substr(at, texts.find('\0', at) - at);
    *field = tstring::ConvertFromUTF8(text.c_str());
    at += text.size() + 1;
  }
}

void Take(EVMLData& settings, DWORD number, const std::string& record) {
  settings.m_recordNumber = number;
  if (record.size() < kFirstPart) return;
  settings.m_mode = settings.m_mode || record[0] != 0;
  settings.m_code.assign(record, 1, 3);
  settings.m_extraByte1 = static_cast<unsigned char>(record[4]);
  settings.m_extraValue1 = static_cast<unsigned char>(record[5]);
  settings.m_minimumPINLength = static_cast<unsigned char>(record[6]);
  settings.m_maximumRecordingTime = BigEndian(record, 7);
  if (record.size() <= kTextsAt) return;
  settings.m_extraValue2 = BigEndian(record, 11);
  settings.m_extraValue3 = BigEndian(record, 15);
  settings.m_extraByte2 = static_cast<unsigned char>(record[19]);
  TakeTexts(settings, record.substr(kTextsAt));
}

// In memory of exactly the record's size, so that a sanitizer sees what is read past it.
void Populate(EVMLData& settings, DWORD number, const std::string& record) {
  const auto exact = std::make_unique<unsigned char[]>(record.size());
  record.copy(reinterpret_cast<char*>(exact.get()), record.size());
  settings.PopulateFromRecord(number, exact.get(), static_cast<unsigned short>(record.size()));
}

std::string RecordOf(const EVMLData& settings) {
  const auto byte = [](DWORD value) { return std::string(1, static_cast<char>(value)); };
  const std::string& code = settings.m_code;  // added to a text as a tstring it would end at a NUL
  std::string record = byte(settings.EVMMode() ? 1 : 0) + code + byte(settings.m_extraByte1) +
                       byte(settings.m_extraValue1) + byte(settings.MinimumPINLength()) +
                       BigEndian(settings.MaximimRecordingTime()) +
                       BigEndian(settings.m_extraValue2) + BigEndian(settings.m_extraValue3) +
                       byte(settings.m_extraByte2);
  for (const tstring& text : {settings.m_text1, settings.m_text2, settings.m_text3}) {
    record.append(text).push_back('\0');
  }
  return record;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  UseUtf8();
  Input input(data, size);
  EVMLData settings;
  EVMLData expected;
  for (DWORD number = 1; !input.Empty(); ++number) {
    const std::string record = input.Bytes(input.Byte());
    Populate(settings, number, record);
    Take(expected, number, record);
    Require(Same(settings, expected), "the settings that the record gives");
  }
  if (settings.m_code.size() != 3) return 0;  // no record was long enough

  EVMLData again;
  Populate(again, settings.m_recordNumber, RecordOf(settings));
  Require(Same(again, settings), "a record of the settings gives the same settings");
  EVMLData copy;
  copy.Copy(settings);
  Require(Same(copy, settings), "a copy is the same");
  return 0;
}
