// Groups of entries between servers, and the SMTP mappings.

#include "RegistryTest.h"

namespace corvo_test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Key;
using testing::Not;

using Entries = std::map<tstring, tstring>;

class RegistryExchangeTest : public RegistryTest {
 protected:
  RegistryExchangeTest() { m_registry.Init(); }

  VMRegistry m_registry;
};

TEST(RegistryNames, LocalSettingsAreTold) {
  const struct {
    const char* name;
    bool directory, nonSynch, vpim;
  } rows[] = {{"WAVSDir", true, false, false},       {"backupdir", true, false, false},
              {"VRLCSDestDir", false, false, false}, {"DIR", false, false, false},
              {"xdir", true, false, false},          {"campaigns", true, true, false},
              {"DirX", false, false, false},         {"sipENABLED", false, true, false},
              {"Service SID", false, true, false},   {"domain", false, true, true},
              {"HOST", false, false, true},          {"", false, false, false}};
  for (const auto& row : rows) {
    EXPECT_EQ(IsDirectorySetting(row.name), row.directory) << row.name;
    EXPECT_EQ(IsNonSynchItem(row.name), row.nonSynch) << row.name;
    EXPECT_EQ(IsItemToExclude(row.name), row.directory || row.nonSynch) << row.name;
    EXPECT_EQ(IsVPIMData(row.name), row.vpim) << row.name;
  }
}

TEST_F(RegistryExchangeTest, ExportGivesAnEmptyInstallationTheSameSettings) {
  m_registry.SetRegistryEntry("SipTracing", "1");
  m_registry.SetRegistryEntry("CfgMaxTime", "77");
  m_registry.SetRegistryEntry("EmailText", "kept = whole, really");
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
    const char *line, *stored, *readBack;  // null: ignored
  } rows[] = {
      {"Sales = 201, x, y", "SALES=201,y,,,,x", "SALES=201,x,y,,,"},
      {"n=a,,c", "N=a,c", "N=a,,c,,,"},
      {"n=a", "N=a", "N=a,,,,,"},
      {"n=a,b", "N=a,,,,,b", "N=a,b,,,,"},
      {"n=1,2,3,4,5,6,7,8", "N=1,3,4,5,6,7,8,2", "N=1,7,8,2,3,4,5,6"},
      {"n= 1 , 2 , 3 , 4 , 5 , 6 ", "N=1,3,4,5,6,2", "N=1,2,3,4,5,6"},
      {"n=a,,,d", "N=a,,d", "N=a,,,d,,"},
      {"n=a=b", "N=a=b", "N=a=b,,,,,"},
      {"=a,b", nullptr, nullptr},
      {"name=", nullptr, nullptr},
      {"name= , b", nullptr, nullptr},
      {"no equals", nullptr, nullptr},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.line);
    std::vector<tstring> lines{"old=1"};
    m_registry.WriteAllSMTPMappings(lines);
    lines = {row.line};
    m_registry.WriteAllSMTPMappings(lines);
    const std::string path = ScratchPath("bin/Accounts/SMTPMAPPINGS.INI");
    m_registry.ReadAllSMTPMappings(lines);
    if (row.stored == nullptr) {
      EXPECT_THAT(lines, ElementsAre());
    } else {
      EXPECT_EQ(ReadFile(path), std::string(row.stored) + "\r\n");
      EXPECT_THAT(lines, ElementsAre(row.readBack));
    }
  }
}

TEST_F(RegistryExchangeTest, SingleMappingIsRewrittenOnlyWhenItDiffers) {
  EXPECT_TRUE(m_registry.SetSMTPMapping("a", "Xy"));
  EXPECT_TRUE(m_registry.SetSMTPMapping("a", "xY"));
  tstring value;
  EXPECT_TRUE(m_registry.GetSMTPMapping("A", value));
  EXPECT_EQ(value, "Xy");
  EXPECT_FALSE(m_registry.GetSMTPMapping("b", value));
}

}  // namespace
}  // namespace corvo_test
