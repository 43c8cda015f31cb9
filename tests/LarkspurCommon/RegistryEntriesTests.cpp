// Single entries: what reads find, write and leave alone, and what the host is told.

#include "RegistryTest.h"

static std::vector<std::string> g_notices;  // "TYPE NAME VALUE" each

void SyncMaster::ConfigurationItemChanged(int type, const char* name, const char* value) {
  g_notices.push_back(std::to_string(type) + " " + (name != nullptr ? name : "null") + " " +
                      (value != nullptr ? value : "null"));
}

// Whom the file layer asks: files that aren't there would have the process's own configuration
// start among the tested ones.
VMRegistry* VMRegistry::global() {
  static VMRegistry* const idle = new VMRegistry;
  return idle;
}

using namespace corvo_test;

using testing::ElementsAre;

using RegistryEntriesTest = StartedRegistryTest;

TEST_F(RegistryEntriesTest, ReadsWriteTheirDefaultOnce) {
  const auto expectWritten = [&](auto value, const char* stored) {
    EXPECT_FALSE(m_registry.GetRegistryEntry(stored, value));
    EXPECT_EQ(Stored(tstring(stored).MakeUpper()), stored);
    return value;
  };
  EXPECT_EQ(expectWritten(tstring("some"), "some"), "some");
  EXPECT_TRUE(expectWritten(true, "N"));
  EXPECT_EQ(expectWritten(-7L, "-7"), -7);
  EXPECT_EQ(expectWritten(4294967295UL, "4294967295"), 4294967295);
  tstring text("other"), none;
  EXPECT_TRUE(m_registry.GetRegistryEntry("SOME", text));
  EXPECT_EQ(text, "some");
  EXPECT_FALSE(m_registry.GetRegistryEntry("none", none));
  EXPECT_EQ(Stored("NONE"), "-");
}

TEST_F(RegistryEntriesTest, StoredTextsAreReadAsNumbersAndSwitches) {
  const struct {
    const char* stored;
    bool foundAsNumber;
    int number;
    bool flag;
  } rows[] = {{"12", true, 12, true}, {"0", true, 0, false},  {"-1", true, -1, true},
              {"y", true, 0, true},   {"n", true, 0, false},  {"yes", true, 0, false},
              {"", false, 99, false}, {"7 up", true, 7, true}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.stored);
    Set("x", "?");
    Set("x", row.stored);
    int number = 99;
    EXPECT_EQ(m_registry.GetRegistryEntry("x", number), row.foundAsNumber);
    EXPECT_EQ(number, row.number);
    bool flag = !row.flag;
    EXPECT_TRUE(m_registry.GetRegistryEntry("x", flag));
    EXPECT_EQ(flag, row.flag);
  }
}

TEST_F(RegistryEntriesTest, BufferTakesWhatItHasRoomFor) {
  Set("x", "abcdef");
  char buffer[6] = "old";
  EXPECT_TRUE(m_registry.GetRegistryEntry("x", buffer, 4));
  EXPECT_STREQ(buffer, "abc");
  EXPECT_FALSE(m_registry.GetRegistryEntry("new", buffer, 3)) << "an unterminated default";
  EXPECT_EQ(Stored("NEW"), "abc");
}

TEST_F(RegistryEntriesTest, KeysSelectTheirStores) {
  EXPECT_TRUE(m_registry.SetRegistryEntry(2, "user", true));
  EXPECT_TRUE(m_registry.SetRegistryEntry(3, "vpim", 5));
  EXPECT_EQ(Stored("VPIM"), "5");
  EXPECT_EQ(ReadFile(ScratchPath("etc/corvo_user_variables.ini")), "USER=Y\r\n");
  const std::string settings = Settings();
  for (const int key : {0, 4, -1}) {
    tstring text("default");
    EXPECT_FALSE(m_registry.GetRegistryEntry(key, "vpim", text));
    EXPECT_FALSE(m_registry.SetRegistryEntry(key, "vpim", "6"));
  }
  EXPECT_EQ(Settings(), settings);

  bool flag = false;
  EXPECT_TRUE(m_registry.GetUserRegistryEntry(flag, "USER"));
  EXPECT_TRUE(flag);
  EXPECT_FALSE(m_registry.GetUserRegistryEntry(flag, "none"));
  EXPECT_FALSE(flag);
  std::list<tstring> names{"old"};
  m_registry.GetAllUserRegistryEntries(names);
  EXPECT_THAT(names, ElementsAre("USER"));
}

TEST_F(RegistryEntriesTest, HostIsToldOfChangesOnlyWhenItAsks) {
  g_notices.clear();
  Set("a", "silent");
  m_registry.m_notifySync = true;
  Set("a", "Loud");
  Set("a", "LOUD");  // differs in case alone: nothing is written
  tstring text("default");
  m_registry.GetRegistryEntry(2, "b", text);
  EXPECT_TRUE(m_registry.DeleteUserRegistryEntry("b", true));
  EXPECT_FALSE(m_registry.DeleteUserRegistryEntry("b", true));
  m_registry.SetSMTPMapping("m", "x");
  m_registry.SetSMTPMapping("m", "X");
  Set("MinutesBetweenSync", "60");
  EXPECT_EQ(m_registry.MinutesBetweenSync(), 1440u);
  std::vector<tstring> lines{"n=1,2"};
  m_registry.WriteAllSMTPMappings(lines);
  EXPECT_THAT(g_notices, ElementsAre("1 a Loud", "2 b default", "5 b null", "3 m x",
                                     "1 MinutesBetweenSync 60", "1 TimeBetweenSync 1440",
                                     "4 MinutesBetweenSync null", "9 null null", "3 n 1,,,,,2"));
  EXPECT_EQ(Stored("A"), "Loud");
  EXPECT_EQ(Stored("MINUTESBETWEENSYNC"), "-");

  m_registry.TraceRegistryData = true;
  TraceLog trace;
  m_registry.GetRegistryEntry("a", text);
  EXPECT_THAT(trace.Texts(0x0B, '9'),
              ElementsAre("VMRegistry - GetRegistryEntry(1, \"a\") returning \"Loud\""));
}

TEST_F(RegistryEntriesTest, SuffixesAreCutInAnyCaseAndWithEitherSeparator) {
  const struct {
    const char *text, *suffix, *cut;
  } rows[] = {{"/srv/app/Wavs", "wavs", "/srv/app/"},
              {"C:\\a\\VM", "/vm", "C:\\a"},
              {"M", "VM", "M"},
              {"VMx", "VM", "VMx"},
              {"VM", "VM", ""}};
  for (const auto& row : rows) {
    tstring text(row.text);
    m_registry.ChopOff(text, row.suffix);
    EXPECT_EQ(text, row.cut);
  }
}
