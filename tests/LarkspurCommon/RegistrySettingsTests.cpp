// The typed settings: default, limits, and what a bad value gives and leaves in the file.

#include <arpa/inet.h>

#include <functional>
#include <sstream>

#include "RegistryTest.h"

using namespace corvo_test;

using testing::ElementsAre;

using RegistrySettingsTest = StartedRegistryTest;

// What a missing entry gives and is written as, and for stored values what each is read as: itself
// where nothing else is told.
TEST_F(RegistrySettingsTest, NumbersWithTheirLimits) {
  const struct {
    const char* name;
    std::function<long long(const VMRegistry&)> read;
    long long missing;
    const char *written, *stored;
  } rows[] = {
      {"MinimumRecordedNameLength", &VMRegistry::GetMinimumRecordedNameLength, 1000, "1000",
       "699=700 700 14000 14001=14000 -1=14000"},
      {"MinimumRecordedGreetingLength", &VMRegistry::GetMinimumRecordedGreetingLength, 3000, "3000",
       "0=700 120000 120001=120000"},
      {"LoopedOutboundTimeout", &VMRegistry::GetLoopedOutboundTimeout, 30, "30",
       "0=30 1 rubbish=30"},
      {"SilenceLimit", &VMRegistry::GetSilenceLimit, 10000, "10000", "0=10000"},
      {"MaxRecordTime", &VMRegistry::GetMaxRecordTime, 3600000, "3600",
       "0=2000 100000=100000000 200000=172800000 4294967295=172800000"},
      {"MaximumCallLength", &VMRegistry::GetMaximumCallLength, 3600000, "3600000",
       "299999=300000 4294967295"},
      {"MinimumIdleTime", &VMRegistry::GetMinimumIdleTime, 2400000, "2400000",
       "79999=80000 4800001=4800000"},
      {"QBXMinimumPasswordLength", &VMRegistry::GetMinimumPasswordLength, 0, "0", "15 16=15"},
      {"OutcallingRetries", &VMRegistry::GetOutcallingRetries, 5, "5", "0 10 11=5 -1=5"},
      {"OutcallDefaultRetryTime", &VMRegistry::GetOutcallingDefaultRetryTime, 30, "30",
       "0=30 1 60 61=30"},
      {"OutcallRetry3", [](auto& r) { return r.GetOutcallRetryTime(3); }, 900000, "15",
       "-1=-60000 2147483647"},
      {"MaxAgeTimeA", [](auto& r) { return r.GetMaxAgeTime('A'); }, -1, "4294967295", "9"},
      {"SignalNormalisation", &VMRegistry::GetNormalisation, 0, "-", "0x20=32 010=8 250=100 -3=0"},
      {"ConfRingTime", &VMRegistry::GetOutcallRingTime, 30000, "30000", ""},
      {"SeqTimeout", &VMRegistry::GetSeqTimeout, 3500, "3500", ""},
      {"SecondsBetweenEvents", &VMRegistry::SecondsBetweenEvents, 30, "30", ""},
      {"IPTOSValue", &VMRegistry::GetIPTOSValue, 184, "184", "-1"},
      {"PrimaryReinstatementMode", &VMRegistry::GetPrimaryReinstatementMode, 0, "0", "2"},
      {"PrimaryReinstatementTimeOut", &VMRegistry::GetPrimaryReinstatementTimeOut, 5, "5", ""},
      {"NoOfOutCallingPorts", [](auto& r) { return r.GetMaxOutcallAllowed(20); }, 0, "-",
       "N=-1 30=18 18 4 -4=0 x=0"},
      {"LoadMailboxDataInBackground", &VMRegistry::GetLoadMailboxDataInBG, true, "N", "N=0 2=1"},
      {"SMTPServerEnabled", [](auto& r) { return r.LoadSMTPServerSupport(); }, true, "Y", "n=0"},
      {"DownloadAttachmentForITZ", &VMRegistry::DownloadAttachmentForITZ, true, "yes", "Y=0 YES=1"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(row.read(m_registry), row.missing);
    EXPECT_EQ(Stored(tstring(row.name).MakeUpper()), row.written);
    std::istringstream all(row.stored);
    for (std::string pair; all >> pair;) {
      const std::string stored = pair.substr(0, pair.find('='));
      Set(row.name, stored);
      EXPECT_EQ(row.read(m_registry), std::stoll(pair.substr(pair.find('=') + 1))) << pair;
      EXPECT_EQ(Stored(tstring(row.name).MakeUpper()), stored) << "reading corrected it";
    }
  }
}

TEST_F(RegistrySettingsTest, MessageLengthsBindEachOther) {
  EXPECT_EQ(m_registry.GetMinimumMessageLength(), 0u);
  EXPECT_EQ(Stored("CFGMAXTIME"), "120");
  EXPECT_EQ(Stored("MIRADORMODE"), "N");
  EXPECT_EQ(Stored("QBXMINIMUMMESSAGELENGTH"), "0");
  EXPECT_EQ(Stored("MINIMUMMESSAGELENGTH"), "-");
  const struct {
    const char *mirador, *cfgMaxTime, *length;
    DWORD minimum, longest, recording;
  } rows[] = {{"N", "120", "0", 0, 120, 3600000},
              {"Y", "120", "500", 700, 120, 3600000},
              {"Y", "120", "200000", 120000, 122, 3600000},
              {"Y", "5000", "4000000", 4000000, 5000, 4002000},
              {"N", "4294967295", "4294967295", 4294967295, 4294967295, 4294967295},
              {"N", "0", "3000", 0, 2, 3600000},
              {"Y", "0", "3000", 700, 2, 3600000}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.length);
    Set("MiradorMode", row.mirador);
    Set("CfgMaxTime", row.cfgMaxTime);
    Set("MinimumMessageLength", row.length);
    Set("QBXMinimumMessageLength", row.length);
    EXPECT_EQ(m_registry.GetMinimumMessageLength(), row.minimum);
    EXPECT_EQ(m_registry.GetCfgMaxTime(), row.longest);
    EXPECT_EQ(m_registry.GetMaxRecordTime(), row.recording);
  }
}

TEST_F(RegistrySettingsTest, EmbeddedModeAnswersFromTheRecord) {
  const unsigned char record[] = {1, '0', '0', '1', 0, 0, 6, 0, 0, 0x0E, 0x10};
  m_registry.m_evmlData.PopulateFromRecord(1, record, sizeof record);
  const std::string settings = Settings();
  EXPECT_EQ(m_registry.GetMinimumMessageLength(), 3000u);
  EXPECT_EQ(m_registry.GetMinimumRecordedNameLength(), 500u);
  EXPECT_EQ(m_registry.GetMinimumRecordedGreetingLength(), 3000u);
  EXPECT_EQ(m_registry.GetCfgMaxTime(), 3600u);
  EXPECT_EQ(m_registry.GetMaxRecordTime(), 3600000u);
  EXPECT_EQ(m_registry.GetSilenceLimit(), 10000u);
  EXPECT_EQ(m_registry.GetMinimumPasswordLength(), 6u);
  EXPECT_FALSE(m_registry.GetMiradorModeSetting());
  EXPECT_EQ(Settings(), settings) << "nothing was read";
}

// The getters for every ordering of the three, then the setters.
TEST_F(RegistrySettingsTest, SnmpThresholdsKeepTheirOrder) {
  const auto set = [&](unsigned critical, unsigned level, unsigned ok) {
    Set("SnmpAlarmCritical", std::to_string(critical));
    Set("SnmpAlarmLevel", std::to_string(level));
    Set("SnmpAlarmOk", std::to_string(ok));
  };
  const auto stored = [] {
    return Stored("SNMPALARMCRITICAL") + " " + Stored("SNMPALARMLEVEL") + " " +
           Stored("SNMPALARMOK");
  };
  constexpr long long kMost = 4294967295;
  for (const unsigned critical : {0u, 1u, 30u, 55u, 4294967295u}) {
    for (const unsigned level : {0u, 11u, 60u, 100u, 4294967295u}) {
      for (const unsigned ok : {0u, 41u, 90u, 200u}) {
        set(critical, level, ok);
        const long long c = std::max(critical, 1u);
        const long long l = std::max<long long>({level, 11, std::min(c + 10, kMost)});
        const long long o = std::max<long long>({ok, 41, std::min(l + 30, kMost)});
        EXPECT_EQ(m_registry.GetSnmpAlarmOk(), o);
        EXPECT_EQ(m_registry.GetSnmpAlarmLevel(), l);
        EXPECT_EQ(m_registry.GetSnmpAlarmCritical(), c);
        EXPECT_EQ(stored(), tstring::FromFormat("%lld %lld %lld", c, l, o));
      }
    }
  }
  const struct {
    void (VMRegistry::*setter)(unsigned long) const;
    unsigned long value;
    const char* stored;  // from 45, 60, 90
  } rows[] = {
      {&VMRegistry::SetSnmpAlarmLevel, 50, "40 50 80"},
      {&VMRegistry::SetSnmpAlarmLevel, 3, "1 11 41"},
      {&VMRegistry::SetSnmpAlarmLevel, 80, "45 80 110"},
      {&VMRegistry::SetSnmpAlarmOk, 90, "45 60 90"},
      {&VMRegistry::SetSnmpAlarmOk, 89, "45 60 119"},
      {&VMRegistry::SetSnmpAlarmOk, 1, "45 60 71"},
      {&VMRegistry::SetSnmpAlarmCritical, 50, "50 60 90"},
      {&VMRegistry::SetSnmpAlarmCritical, 51, "61 60 90"},
      {&VMRegistry::SetSnmpAlarmCritical, 0, "1 60 90"},
  };
  for (const auto& row : rows) {
    set(45, 60, 90);
    (m_registry.*row.setter)(row.value);
    EXPECT_EQ(stored(), row.stored);
  }
}

TEST_F(RegistrySettingsTest, CorrectionsOfThresholdsAreTraced) {
  Set("SnmpAlarmCritical", "55");
  Set("SnmpAlarmLevel", "5");
  TraceLog trace;
  EXPECT_EQ(m_registry.GetSnmpAlarmLevel(), 65u);
  m_registry.SetSnmpAlarmOk(40);
  EXPECT_THAT(trace.Texts(0x0B, '2'),
              ElementsAre("VMRegistry - SnmpAlarmLevel value can not be less than 11",
                          "VMRegistry - Hence, setting the SnmpAlarmLevel value to be 11",
                          "VMRegistry - SnmpAlarmLevel value can not be less than "
                          "SnmpAlarmCritical+THRESHOLD_CRITICAL_MIN_DIFF i.e., 65",
                          "VMRegistry - Hence, setting the SnmpAlarmLevel value to be 65",
                          "VMRegistry - SnmpAlarmOk value should be more than 41",
                          "VMRegistry - Setting SnmpAlarmOk value to be 41"));
}

TEST_F(RegistrySettingsTest, WindowsOfTheDay) {
  Hour_Minute from, to;
  const auto shown = [&] {
    return tstring::FromFormat("%d:%d-%d:%d", from.m_hour, from.m_minute, to.m_hour, to.m_minute);
  };
  m_registry.GetMiradorPeaktimeSetting(from, to);
  EXPECT_EQ(shown(), "9:0-17:30");
  m_registry.GetMiradorPrimetimeSetting(from, to);
  EXPECT_EQ(shown(), "7:30-19:30");
  from.Set(0, 0);
  to.Set(23, 59);
  EXPECT_TRUE(m_registry.SetMiradorPrimetimeSetting(from, to));
  EXPECT_EQ(Stored("TOPRIMETIMEHOUR") + Stored("FROMPRIMETIMEMINUTE"), "230");
  TraceLog trace;
  for (const auto& [hour, minute] : {std::pair(24, 0), {0, 60}, {-1, 0}, {0, -1}}) {
    to.Set(hour, minute);
    EXPECT_FALSE(m_registry.SetMiradorPeaktimeSetting(from, to));
  }
  EXPECT_EQ(Stored("FROMPEAKTIMEHOUR"), "9");
  EXPECT_EQ(trace.Texts(0x0B, '2').front(), "VMRegistry - Attempted to set invalid peak time");
}

TEST_F(RegistrySettingsTest, OutcallRetries) {
  EXPECT_EQ(m_registry.GetOutcallRetryTime(-1), 1800000);
  EXPECT_EQ(m_registry.GetOutcallRetryTime(0), 60000);
  EXPECT_EQ(m_registry.GetOutcallRetryTime(5), 1800000);
  const struct {
    int index, minutes;
    bool accepted;
    const char* stored;
  } rows[] = {{11, 5, false, "-"}, {-1, 5, false, "-"}, {2, 61, false, "-"}, {2, 0, false, "-"},
              {2, 60, true, "60"}, {7, 5, true, "30"},  {10, 1, true, "30"}};
  for (const auto& row : rows) {
    EXPECT_EQ(m_registry.SetOutcallRetryTime(row.index, row.minutes), row.accepted);
    EXPECT_EQ(Stored("OUTCALLRETRY" + std::to_string(row.index)), row.stored);
  }
  EXPECT_FALSE(m_registry.SetOutcallingRetries(11));
  EXPECT_TRUE(m_registry.SetOutcallingRetries(10));
  EXPECT_EQ(m_registry.GetMaxOutcallAllowed(9), 0);
}

TEST_F(RegistrySettingsTest, SortOrdersAreBits) {
  EXPECT_EQ(m_registry.GetMessageSortOrder(), 0x9489u);
  m_registry.SetMessageSortOrder(static_cast<HalcyonDatabase::VMSortOrder>(0x6252));
  EXPECT_EQ(m_registry.GetMessageSortOrder(), 0x6252u);
  EXPECT_EQ(Stored("SAVEDMESSAGESORTORDER") + Stored("NEWMESSAGESORTORDER"), "10");
  Set("NewMessageSortOrder", "7");
  EXPECT_EQ(m_registry.GetMessageSortOrder() & 3u, 2u);
}

TEST_F(RegistrySettingsTest, MailTextsAndProfiles) {
  EXPECT_EQ(m_registry.SMTPMailDrop(), " ");
  m_registry.EMailMailbox = "box@example.org";
  EXPECT_EQ(m_registry.SMTPSender(), "box@example.org");
  Set("SystemFaxNumber", " \t+44 20 ");
  EXPECT_EQ(m_registry.SystemFaxNumber(), "+44 20");
  EXPECT_EQ(m_registry.PrefixNumber(), "+44 20");
  m_registry.SetEmailDefProfile("Desk");
  EXPECT_EQ(Stored("EMAILPROFILE") + "," + Stored("MAPIUSERLOGIN"), "Desk,");
  EXPECT_EQ(m_registry.MapiUserLogin, "Desk");
  EXPECT_EQ(Stored("SENDVOICEMAILVIASMTP"), "-");
  m_registry.SetEmailDefProfile(nullptr);
  EXPECT_EQ(Stored("EMAILPROFILE") + "," + m_registry.EMailProfile, ",");
  EXPECT_EQ(Stored("SENDVOICEMAILVIASMTP"), "Y");
}

TEST_F(RegistrySettingsTest, FaxServersAreFoundInsideAddresses) {
  WriteFile(ScratchPath("etc/corvo_fax_servers.ini"), "BetaFax=\r\nZedFax=zed.example\r\n");
  VMRegistry registry;
  registry.Init();
  tstring domain("kept");
  EXPECT_TRUE(registry.GetFaxServerDomainName("[ZEDFAX:123]", domain));
  EXPECT_EQ(domain, "zed.example");
  EXPECT_FALSE(registry.GetFaxServerDomainName("betafax and zedfax", domain))
      << "the first decides";
  EXPECT_TRUE(registry.CheckIfFAXServerIsSupported("a betafax"));
  for (const char* address : {static_cast<const char*>(nullptr), "", "letter"}) {
    EXPECT_FALSE(registry.GetFaxServerDomainName(address, domain));
    EXPECT_FALSE(registry.CheckIfFAXServerIsSupported(address));
  }
  tstring names[] = {"old", "old"};
  EXPECT_EQ(registry.GetAllFAXServersSupported(names, 1), 1u);
  EXPECT_EQ(names[0] + "," + names[1], "BETAFAX,old");
}

TEST_F(RegistrySettingsTest, UnopenedMessagesCountWhereTheyAreMapped) {
  const struct {
    char mapping;
    int newCount, oldCount, savedCount;
  } rows[] = {{'O', 1, 65535, 3}, {'S', 1, 65000, 1003}, {'N', 1001, 65000, 3}, {'x', 1, 65000, 3}};
  for (const auto& row : rows) {
    m_registry.UnopenedMapping = row.mapping;
    for (const bool network : {false, true}) {
      unsigned short out[3];
      m_registry.QBXStatsFromMirador(1, 1000, 65000, 3, &out[0], &out[1], &out[2], network);
      if (network)
        for (unsigned short& count : out) count = ntohs(count);
      EXPECT_THAT(out, ElementsAre(row.newCount, row.oldCount, row.savedCount)) << row.mapping;
    }
  }
  unsigned short gone[3] = {9, 9, 9};
  m_registry.QBXStatsFromMirador(nullptr, &gone[0], &gone[1], &gone[2], false);
  EXPECT_THAT(gone, ElementsAre(0, 0, 0));
}
