// Groups of entries between servers, and the SMTP mappings.

#include "RegistryTest.h"

using namespace corvo_test;

using testing::Contains;
using testing::ElementsAre;
using testing::Key;
using testing::Not;

using Entries = std::map<tstring, tstring>;

using RegistryExchangeTest = StartedRegistryTest;

TEST(RegistryNames, LocalSettingsAreTold) {
  const struct {
    const char* name;
    bool directory, nonSynch, vpim;
  } rows[] = {{"backupdir", true, false, false},  {"VRLCSDestDir", false, false, false},
              {"DIR", false, false, false},       {"xdir", true, false, false},
              {"campaigns", true, true, false},   {"DirX", false, false, false},
              {"sipENABLED", false, true, false}, {"domain", false, true, true},
              {"HOST", false, false, true},       {"", false, false, false}};
  for (const auto& row : rows) {
    EXPECT_EQ(IsDirectorySetting(row.name), row.directory) << row.name;
    EXPECT_EQ(IsNonSynchItem(row.name), row.nonSynch) << row.name;
    EXPECT_EQ(IsItemToExclude(row.name), row.directory || row.nonSynch) << row.name;
    EXPECT_EQ(IsVPIMData(row.name), row.vpim) << row.name;
  }
}

TEST_F(RegistryExchangeTest, ExportGivesAnEmptyInstallationTheSameSettings) {
  Set("SipTracing", "1");
  Set("CfgMaxTime", "77");
  Set("EmailText", "kept = whole, really");
  Entries exported{{"OLD", "x"}}, all;
  m_registry.ExportSettings(exported, false);
  m_registry.ExportSettings(all, true);
  EXPECT_THAT(exported, Not(Contains(Key("WAVSDIR"))));
  EXPECT_THAT(exported, Not(Contains(Key("SIPTRACING"))));
  EXPECT_THAT(exported, Contains(Key("TRACEREGISTRYDATA")));
  EXPECT_THAT(all, Contains(Key("WAVSDIR")));

  RemoveTree(ScratchPath("etc/corvo_settings.ini"));
  VMRegistry second;
  second.Init();
  second.SetRegistryEntry("SipTracing", "own");
  second.SetRegistryEntry("stale", "goes");
  second.ImportSettings(exported, true, false);
  Entries now;
  second.ExportSettings(now, false);
  EXPECT_EQ(now, exported);
  EXPECT_EQ(Stored("SIPTRACING"), "own");

  second.ImportSettings(all, true, true);
  second.ExportSettings(now, true);
  EXPECT_EQ(now, all);
  second.DeleteSettings(all);
  EXPECT_EQ(Stored("CFGMAXTIME"), "-");
  EXPECT_EQ(Stored("SIPTRACING"), "1");
}

TEST_F(RegistryExchangeTest, GroupsAreClearedOnDemand) {
  Entries empty, entries{{"A", "1"}, {"B", "2"}};
  m_registry.ImportUserVariables(entries, false);
  m_registry.ImportUserVariables(empty, false);
  Entries out;
  m_registry.ExportUserVariables(out);
  EXPECT_EQ(out, entries);
  Entries names{{"a", ""}};
  m_registry.DeleteUserVariables(names);
  EXPECT_EQ(ReadFile(ScratchPath("etc/corvo_user_variables.ini")), "B=2\r\n");
  m_registry.ImportUserVariables(empty, true);
  EXPECT_FALSE(Exists(ScratchPath("etc/corvo_user_variables.ini")));

  TraceLog trace;
  m_registry.ImportSMTPMappings(entries, true);
  m_registry.DeleteSMTPMappings(names);
  m_registry.ExportSMTPMappings(out);
  EXPECT_THAT(out, ElementsAre(std::pair<const tstring, tstring>("B", "2")));
  m_registry.ImportSettings(empty, true, true);
  EXPECT_THAT(trace.Texts(0x0B, '5'),
              ElementsAre("VMRegistry - Importing SMTP mappings, will clear old data first",
                          "VMRegistry - Exporting SMTP mappings",
                          "VMRegistry - Importing settings, will import all items, will clear old "
                          "data first"));
  unsigned long clock = 0;
  DeleteAllValuesHelper(nullptr, clock, true);
  ImportDataHelper(nullptr, entries, clock, true);
}

TEST_F(RegistryExchangeTest, MappingLinesAreStoredWithTheirSecondFieldLast) {
  const struct {
    const char* line;
    std::string stored, readBack;  // empty: ignored
  } rows[] = {
      {"Sales = 201, x, y", "SALES=201,y,,,,x", "SALES=201,x,y,,,"},
      {"n=a,,c", "N=a,c", "N=a,,c,,,"},
      {"n=a", "N=a", "N=a,,,,,"},
      {"n=1,2,3,4,5,6,7,8", "N=1,3,4,5,6,7,8,2", "N=1,7,8,2,3,4,5,6"},
      {"n= 1 ,\t2 , 3 , 4 , 5 , 6 ", "N=1,3,4,5,6,2", "N=1,2,3,4,5,6"},
      {"n=a=b", "N=a=b", "N=a=b,,,,,"},
      {"=a,b", "", ""},
      {"name=", "", ""},
      {"name= , b", "", ""},
      {"no equals", "", ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.line);
    std::vector<tstring> lines{"old=1"};
    m_registry.WriteAllSMTPMappings(lines);
    lines = {row.line};
    m_registry.WriteAllSMTPMappings(lines);
    m_registry.ReadAllSMTPMappings(lines);
    const bool kept = !row.stored.empty();
    EXPECT_EQ(ReadFile(ScratchPath("bin/Accounts/SMTPMAPPINGS.INI")),
              kept ? row.stored + "\r\n" : "");
    EXPECT_EQ(lines, std::vector<tstring>(kept ? 1 : 0, tstring(row.readBack)));
  }
  tstring value;
  EXPECT_FALSE(m_registry.GetSMTPMapping("b", value));
  EXPECT_TRUE(m_registry.SetSMTPMapping("a", "Xy") && m_registry.SetSMTPMapping("a", "xY"));
  EXPECT_TRUE(m_registry.GetSMTPMapping("A", value));
  EXPECT_EQ(value, "Xy");
}
