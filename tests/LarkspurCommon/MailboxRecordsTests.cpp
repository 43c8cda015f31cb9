// Time profiles, and embedded-mailbox records that end anywhere.

#include <gtest/gtest.h>

#include <clocale>
#include <cstring>
#include <memory>
#include <string>

#include "LarkspurCommon/MailboxRecords.h"

namespace {

// A record as one text: mode, code, extra bytes, extra values, PIN, time, number and the texts.
std::string Shown(const EVMLData& e) {
  return tstring::FromFormat("%d %s %u,%u %u,%u,%u p%u t%u #%u ", e.EVMMode(), e.m_code.c_str(),
                             e.m_extraByte1, e.m_extraByte2, e.m_extraValue1, e.m_extraValue2,
                             e.m_extraValue3, e.MinimumPINLength(), e.MaximimRecordingTime(),
                             e.m_recordNumber) +
         e.m_text1 + '|' + e.m_text2 + '|' + e.m_text3;
}

TEST(EmbeddedMailbox, ARecordSetsWhatItReaches) {
  ASSERT_NE(std::setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
  constexpr char kRecord[] = "\1abc\2\3\4\0\0\x0E\x10\xFF\0\0\1\0\1\0\2\5x\xC3\xA9\0\0C\0D";
  const std::pair<unsigned short, const char*> kRows[] = {
      // from this length on
      {0, "0 old 0,0 0,0,0 p0 t0 #7 old|old|old"},
      {11, "1 abc 2,0 3,0,0 p4 t3600 #7 old|old|old"},
      {21, "1 abc 2,5 3,4278190081,65538 p4 t3600 #7 x|old|old"},  // also half of the next letter
      {23, "1 abc 2,5 3,4278190081,65538 p4 t3600 #7 x\xC3\xA9|old|old"},
      {25, "1 abc 2,5 3,4278190081,65538 p4 t3600 #7 x\xC3\xA9||old"},
      {26, "1 abc 2,5 3,4278190081,65538 p4 t3600 #7 x\xC3\xA9||C"},
      {29, ""}};
  EVMLData data;
  data.m_code = data.m_text1 = data.m_text2 = data.m_text3 = "old";
  unsigned short length = 0;
  for (const auto* row = kRows; length < 29; ++length) {
    if (length == row[1].first) ++row;
    // A block of the record's own size, so that a sanitizer sees a read past its end.
    const std::unique_ptr<unsigned char[]> block(new unsigned char[length]);
    std::memcpy(block.get(), kRecord, length);
    data.PopulateFromRecord(7, block.get(), length);
    EXPECT_EQ(Shown(data), row->second) << length;
  }
  EVMLData copy;
  copy.Copy(data);
  EXPECT_EQ(Shown(copy), Shown(data));
  const unsigned char zeros[11] = {};
  data.PopulateFromRecord(8, zeros, 11);
  EXPECT_TRUE(data.EVMMode());  // a record only turns it on
  EXPECT_EQ(data.m_code.size(), 3u);
  data.PopulateFromRecord(9, nullptr, 65535);
  EXPECT_EQ(data.m_recordNumber, 9u);
}

std::string Shown(const Time_Profile& profile) {
  tstring text(profile.m_type);
  for (int i = 0; i < profile.GetTimePeriodsCount(); ++i) {
    const Hour_Minute& start = profile.GetTimePeriod(i)->m_start;
    text.AppendFormat(" %02d%02d", start.m_hour, start.m_minute);
  }
  return text;
}

TEST(TimeProfile, OwnsItsPeriods) {
  Time_Profile profile;
  EXPECT_EQ(profile.GetTimePeriod(0), nullptr);
  profile.SetDefaultOwnTimes();
  profile.SetTimePeriod(Time_Period(), 7);
  profile.SetTimePeriod(*profile.GetTimePeriod(2), 1);
  profile.SetTimePeriod(*profile.GetTimePeriod(0), -1);  // its own, while the list grows
  EXPECT_EQ(profile.GetTimePeriod(-1), nullptr);
  EXPECT_EQ(profile.GetTimePeriod(5), nullptr);
  Time_Profile copy(profile);
  copy.SetProfile(copy);
  profile.SetDefaultOwnTimes();
  EXPECT_EQ(Shown(profile), "4 0900 1730 1930");
  EXPECT_EQ(Shown(copy), "4 0900 1930 1930 0000 0900");
  copy.ResetTimePeriods();
  EXPECT_EQ(Shown(copy), "0");
}

}  // namespace
