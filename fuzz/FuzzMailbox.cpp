// Any bytes as two embedded-mailbox records, one after the other, against the record's layout.

#include <algorithm>
#include <memory>

#include "LarkspurCommon/MailboxRecords.h"
#include "Target.h"

namespace {

constexpr std::size_t kFirstPart = 11;
constexpr std::size_t kNumbersEnd = 20;

unsigned BigEndian(const std::string& record, std::size_t at) {
  unsigned value = 0;
  for (std::size_t i = at; i < at + 4; ++i) {
    value = value << 8 | static_cast<unsigned char>(record[i]);
  }
  return value;
}

unsigned ByteAt(const std::string& record, std::size_t at) {
  return static_cast<unsigned char>(record[at]);
}

tstring Decoded(const std::string& bytes) {
  tstring text;
  text.FromUTF8(bytes.c_str());
  return text;
}

// What the fields must be once the record has been taken.
void TakeTexts(const std::string& record, EVMLData& model) {
  std::size_t at = kNumbersEnd;
  for (tstring* const field : {&model.m_text1, &model.m_text2, &model.m_text3}) {
    if (at >= record.size()) return;
    const std::size_t end = std::min(record.find('\0', at), record.size());
    *field = Decoded(record.substr(at, end - at));
    at = end + 1;
  }
}

void Take(const std::string& record, DWORD number, EVMLData& model) {
  model.m_recordNumber = number;
  if (record.size() < kFirstPart) return;
  model.m_mode = model.m_mode || record[0] != 0;
  static_cast<std::string&>(model.m_code) = record.substr(1, 3);
  model.m_extraByte1 = static_cast<unsigned char>(record[4]);
  model.m_extraValue1 = ByteAt(record, 5);
  model.m_minimumPINLength = ByteAt(record, 6);
  model.m_maximumRecordingTime = BigEndian(record, 7);
  if (record.size() <= kNumbersEnd) return;
  model.m_extraValue2 = BigEndian(record, 11);
  model.m_extraValue3 = BigEndian(record, 15);
  model.m_extraByte2 = static_cast<unsigned char>(record[19]);
  TakeTexts(record, model);
}

void Compare(const EVMLData& data, const EVMLData& model) {
  Require(data.EVMMode() == model.m_mode, "the mode");
  Require(std::string(data.m_code) == std::string(model.m_code), "the code");
  Require(data.m_extraByte1 == model.m_extraByte1, "the first extra byte");
  Require(data.m_extraByte2 == model.m_extraByte2, "the second extra byte");
  Require(data.MaximimRecordingTime() == model.m_maximumRecordingTime, "the recording time");
  Require(data.MinimumPINLength() == model.m_minimumPINLength, "the PIN length");
  Require(data.m_recordNumber == model.m_recordNumber, "the record number");
  Require(data.m_extraValue1 == model.m_extraValue1, "the first extra value");
  Require(data.m_extraValue2 == model.m_extraValue2, "the second extra value");
  Require(data.m_extraValue3 == model.m_extraValue3, "the third extra value");
  Require(data.m_text1 == model.m_text1, "the first text");
  Require(data.m_text2 == model.m_text2, "the second text");
  Require(data.m_text3 == model.m_text3, "the third text");
}

// From memory of exactly its size, which a sanitizer guards.
void Populate(EVMLData& data, const std::string& record, DWORD number) {
  const auto bytes = std::make_unique<unsigned char[]>(record.size());
  std::copy(record.begin(), record.end(), bytes.get());
  data.PopulateFromRecord(number, bytes.get(), static_cast<unsigned short>(record.size()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  UseUtf8();
  Input input(data, size);
  EVMLData taken;
  EVMLData model;
  const std::string first = input.Bytes(input.Byte());
  const std::string second = input.Rest();
  for (const std::string& record : {first, second}) {
    Populate(taken, record, 7);
    Take(record, 7, model);
    Compare(taken, model);
  }
  EVMLData copy;
  copy.Copy(taken);
  Compare(copy, model);
  return 0;
}
