// The first start and the second one.

#include "LarkspurCommon/AnsiString.h"
#include "RegistryTest.h"
#include "platform/HostServices.h"

namespace {

std::vector<std::string> g_started;  // what the host's objects were given

}  // namespace

void TBackupConfigContainer::ReInit(const AnsiString& keyPath) {
  g_started.push_back(keyPath.c_str());
}

void TClassOfServiceContainer::ReInit(const AnsiString& keyPath) {
  g_started.push_back(keyPath.c_str());
}

using namespace corvo_test;

using testing::ElementsAre;
using testing::HasSubstr;

class RegistryStartTest : public RegistryTest {};

TEST_F(RegistryStartTest, FirstStartWritesDefaultsAndMakesDirectories) {
  VMRegistry registry;
  registry.Init();

  const std::string bin = ScratchPath("bin/");
  tstring expected =
      "ACCOUNTSDIR={}Accounts\nBACKUPDIR={}/Back Up\nCAMPAIGNS={}\\Campaigns\n"
      "CONFERENCEDIR={}\\ConferenceData\nCONFERENCETIMEOUT=0\nCORVOBASICMODEPBX=0\n"
      "CORVOMAPIPORT=50792\nCUSTOMNUMPROMPTSDIR={}Wavs\\Custom\\NumericPrompts\n"
      "CUSTOMWAVSDIR={}Wavs\\Custom\nDBDIR={}\nDEFAULTHOSTVALCHANGED=NO\nDOMAIN=localhost\n"
      "EVMLACCOUNTSDIR={}EVMLAccounts\nEVMLGREETINGSDIR={}EVMLGreetings\n"
      "EVMLNAMEWAVSDIR={}EVMLNames\nGREETINGSDIR={}Greetings\nHOST=localhost\n"
      "IMAP4WORKINGDIR={}\\IMAP4\nIVRDIR={}\nLOGGINGDIR={}\\logs\n"
      "MODULERECORDINGSDIR={}Wavs\\Modules\nNAMEWAVSDIR={}Names\nSINGLEMAILBOXACCESS=N\n"
      "TEMPFILESDIR={}\\tempfiles\nTRACEREGISTRYDATA=N\nUSEINBANDDTMF=N\nVBSCRIPTTIMEOUT=90000\n"
      "VRLDIR={}\\VRL\nWAVSDIR={}Wavs\nWEBMAILWORKINGDIR={}\\WebMail\n";
  expected.Replace("{}", bin.c_str());
  expected.Replace("\n", "\r\n");
  EXPECT_EQ(Settings(), expected);
  EXPECT_THAT(ListDirectory(ScratchPath("bin")),
              ElementsAre("Accounts", "Back Up", "Campaigns", "ConferenceData", "EVMLAccounts",
                          "EVMLGreetings", "EVMLNames", "Greetings", "IMAP4", "Names", "VRL",
                          "Wavs", "WebMail", "logs", "tempfiles"));
  EXPECT_THAT(ListDirectory(ScratchPath("bin/Wavs")), ElementsAre("Custom", "Modules"));
  EXPECT_TRUE(Exists(ScratchPath("bin/Wavs/Custom/NumericPrompts")));

  EXPECT_EQ(registry.DBDirectory(), ScratchPath("bin"));
  EXPECT_EQ(registry.TempDirectory(), bin + "\\tempfiles");
  EXPECT_EQ(registry.BackupDir, bin + "/Back Up");
  EXPECT_EQ(registry.ConferenceTimeout, 3000u);
  EXPECT_FALSE(registry.SingleMailboxAccess) << "read again after N was written";
  EXPECT_TRUE(registry.UseInbandDTMF);
  EXPECT_EQ(registry.UnopenedMapping, 'O');
  EXPECT_EQ(registry.m_effectiveDomain, "localhost");
  tstring fax[10];
  EXPECT_EQ(registry.GetAllFAXServersSupported(fax, 10), 6u);
}

TEST_F(RegistryStartTest, SecondStartDerivesNothing) {
  VMRegistry().Init();
  const std::string bin = ScratchPath("bin/");
  VMRegistry second;
  second.Init();
  // Directories that exist are stored as they are spelled on disk.
  EXPECT_EQ(Stored("LOGGINGDIR"), bin + "/logs");
  EXPECT_EQ(Stored("CUSTOMNUMPROMPTSDIR"), bin + "Wavs/Custom/NumericPrompts");
  EXPECT_EQ(second.LoggingDirectory(), bin + "\\logs") << "the field keeps its spelling";
  EXPECT_FALSE(second.UseInbandDTMF) << "now the N that the first start wrote";

  const std::string settings = Settings();
  VMRegistry third;
  third.Init();
  EXPECT_EQ(Settings(), settings);
  EXPECT_EQ(third.LoggingDirectory(), bin + "/logs");
}

TEST_F(RegistryStartTest, StoredValuesDecide) {
  MakeDirectory(ScratchPath("bin/SRV/vm"));
  Store("WAVSDir=" + ScratchPath("bin/srv/VM/wavs") +
        "\nUseInbandDTMF=y\nConferenceTimeout=1200000\nUnopenedMapping=Saved\nVBScriptTimeout=7\n"
        "HOSTIPADDRESS=192.0.2.7\nSOG=3\nSOGMailServer=mail.example\nCorvoMAPIPort=-5\n");
  VMRegistry registry;
  TraceLog trace;
  registry.Init();
  EXPECT_EQ(registry.IVRDir, ScratchPath("bin/srv/VM/"));
  EXPECT_EQ(registry.DBDirectory(), ScratchPath("bin/srv/VM"));
  EXPECT_EQ(registry.VRLDir, ScratchPath("bin/srv/VM/\\VRL"));
  EXPECT_TRUE(registry.UseInbandDTMF);
  EXPECT_EQ(registry.ConferenceTimeout, 1200000u);
  EXPECT_EQ(registry.UnopenedMapping, 'S');
  EXPECT_EQ(registry.VBScriptTimeout, 7u);
  EXPECT_EQ(registry.CorvoMAPIPort, -5);
  EXPECT_EQ(registry.m_effectiveDomain, "192.0.2.7");
  EXPECT_EQ(Stored("DOMAIN"), "192.0.2.7");
  EXPECT_EQ(registry.m_sogMode, 3u);
  EXPECT_EQ(registry.SOGMailServer, "mail.example");
  EXPECT_EQ(Stored("IVRDIR"), ScratchPath("bin/SRV/vm/")) << "as it is spelled on disk";
  EXPECT_THAT(trace.Texts(0x0B, '5'),
              testing::Contains("VMRegistry - setting the key \"IVRDir\" as \"" +
                                ScratchPath("bin/SRV/vm/") + "\" "));
  EXPECT_THAT(trace.Texts(0x06, '9'), testing::Contains(HasSubstr("Copying ")));
}

TEST_F(RegistryStartTest, DirectoryThatCannotBeMadeIsTraced) {
  WriteFile(ScratchPath("bin/file"), "");
  Store("AccountsDir=" + ScratchPath("bin/file/x") + "\n");
  TraceLog trace;
  VMRegistry registry;
  registry.Init();
  EXPECT_THAT(trace.Texts(0x0B, '2'), ElementsAre("VMRegistry - error 20 creating directory \"" +
                                                  ScratchPath("bin/file/x") + "\""));
}

// The host's own objects learn of a new start, and where their settings are.
TEST_F(RegistryStartTest, HostsContainersStartAgainToo) {
  VMRegistry registry;
  registry.Init();
  const std::string root = registry.RegistryBaseDir();
  g_started.clear();
  registry.ReInitRegistry();
  EXPECT_THAT(g_started, ElementsAre());
  TBackupConfigContainer backup;
  TClassOfServiceContainer classes;
  TBackupConfigContainer::global = &backup;
  TClassOfServiceContainer::global = &classes;
  registry.ReInitRegistry();
  TBackupConfigContainer::global = nullptr;
  TClassOfServiceContainer::global = nullptr;
  EXPECT_THAT(g_started, ElementsAre(root + "\\BackupConfig", root + "\\ClassOfService"));
}
