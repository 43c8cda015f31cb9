// What start-up does: built-in values, the stores, the settings that become fields, and the
// directories. The order of the steps, and of the reads in each, is part of the behaviour: a read
// writes its default where the entry is missing.

#include <variant>

#include "LarkspurCommon/Aregistry.h"
#include "LarkspurCommon/AregistryInternal.h"
#include "LarkspurCommon/AregistrySettings.h"
#include "LarkspurCommon/FileHandler.h"
#include "LarkspurCommon/FileHandlerPaths.h"
#include "LarkspurCommon/FlagScope.h"
#include "LarkspurCommon/debug.h"
#include "platform/Win32Compat.h"

namespace {

constexpr DWORD kTraceCopy = 0x00060009;

constexpr char kLoopbackName[] = "localhost";

constexpr DWORD kDefaultMAPIPort = 50792;
constexpr DWORD kDefaultConferenceTimeout = 3000;  // ms
constexpr char kInit[] = "void VMRegistry::Init()";

using TextField = tstring VMRegistry::*;

// A directory field and what it is made of: the base directory or another field, and a name.
struct BuiltInDirectory {
  TextField field;
  TextField parent;  // null: the base directory
  const char* name;
};

constexpr BuiltInDirectory kBuiltInDirectories[] = {
    {&VMRegistry::WAVSDir, nullptr, "Wavs"},
    {&VMRegistry::AccountsDir, nullptr, "Accounts"},
    {&VMRegistry::NameWavsDir, nullptr, "Names"},
    {&VMRegistry::GreetingsDir, nullptr, "Greetings"},
    {&VMRegistry::LoggingDir, nullptr, "logs"},
    {&VMRegistry::VRLDir, nullptr, "VRL"},
    {&VMRegistry::IMAP4WorkingDir, nullptr, "IMAP4"},
    {&VMRegistry::WebMailWorkingDir, nullptr, "WebMail"},
    {&VMRegistry::TempFilesDir, nullptr, "tempfiles"},
    {&VMRegistry::ModuleRecordingsDir, &VMRegistry::WAVSDir, "\\Modules"},
    {&VMRegistry::CustomWavsDir, &VMRegistry::WAVSDir, "\\Custom"},
    {&VMRegistry::CustomNumPromptsDir, &VMRegistry::CustomWavsDir, "\\NumericPrompts"},
    {&VMRegistry::BackupDir, nullptr, "Back Up"},
    {&VMRegistry::EVMLAccountsDir, nullptr, "EVMLAccounts"},
    {&VMRegistry::EVMLNameWavsDir, nullptr, "EVMLNames"},
    {&VMRegistry::EVMLGreetingsDir, nullptr, "EVMLGreetings"},
};

// Built-in fax products and their mail domains.
struct FaxProduct {
  const char* name;
  const char* domain;
};

constexpr FaxProduct kFaxProducts[] = {
    {"FaxBridge", "faxbridge.example"},
    {"FaxCourier", "faxcourier.example"},
    {"LarkFax", "larkfax.example"},
    {"NetFax Gateway", "netfax.example"},
    {"OfficeFax Server", "officefax.example"},
    {"TolvaFax", "tolvafax.example"},
};

struct StartUpSetting {
  const char* name;
  std::variant<bool VMRegistry::*, int VMRegistry::*, DWORD VMRegistry::*, TextField> field;
  DWORD byDefault;  // of a field that isn't a text
};

const StartUpSetting kStartUpSettings[] = {
    {"TraceRegistryData", &VMRegistry::TraceRegistryData, false},
    {"EMailMailbox", &VMRegistry::EMailMailbox, 0},
    {"EMailServer", &VMRegistry::EMailServer, 0},
    {"EMailProfile", &VMRegistry::EMailProfile, 0},
    {"VoicemailPassword", &VMRegistry::VoicemailPassword, 0},
    {"NewConfigFile", &VMRegistry::NewConfigFile, 0},
    {"EmailSubject", &VMRegistry::EmailSubject, 0},
    {"EmailSubjectUnknownCaller", &VMRegistry::EmailSubjectUnknownCaller, 0},
    {"EmailText", &VMRegistry::EmailText, 0},
    {"EmailFrom", &VMRegistry::EmailFrom, 0},
    {"MapiUserLogin", &VMRegistry::MapiUserLogin, 0},
    {"MapiUserPassword", &VMRegistry::MapiUserPassword, 0},
    {"WAVSDir", &VMRegistry::WAVSDir, 0},
    {"AccountsDir", &VMRegistry::AccountsDir, 0},
    {"NameWavsDir", &VMRegistry::NameWavsDir, 0},
    {"GreetingsDir", &VMRegistry::GreetingsDir, 0},
    {"UseInbandDTMF", &VMRegistry::UseInbandDTMF, true},
    {"CorvoBasicModePbx", &VMRegistry::CorvoBasicModePbx, 0},
    {"CorvoBasicModePbxRecord", &VMRegistry::CorvoBasicModePbxRecord, 0},
    {"VBScriptTimeout", &VMRegistry::VBScriptTimeout, DefaultVBScriptTimeout},
    {"SingleMailboxAccess", &VMRegistry::SingleMailboxAccess, true},
    {"EVMLAccountsDir", &VMRegistry::EVMLAccountsDir, 0},
    {"EVMLNameWavsDir", &VMRegistry::EVMLNameWavsDir, 0},
    {"EVMLGreetingsDir", &VMRegistry::EVMLGreetingsDir, 0},
    {"CorvoMAPIServer", &VMRegistry::CorvoMAPIServer, 0},
    {"CorvoMAPIPort", &VMRegistry::CorvoMAPIPort, kDefaultMAPIPort},
};

// What a directory becomes when its read finds nothing.
struct DerivedDirectory {
  const char* name;
  TextField field;
  TextField parent;
  const char* suffix;  // appended to the parent's path
};

constexpr DerivedDirectory kDerivedDirectories[] = {
    {"Campaigns", &VMRegistry::Campaigns, &VMRegistry::IVRDir, "\\Campaigns"},
    {"LoggingDir", &VMRegistry::LoggingDir, &VMRegistry::IVRDir, "\\logs"},
    {"IMAP4WorkingDir", &VMRegistry::IMAP4WorkingDir, &VMRegistry::IVRDir, "\\IMAP4"},
    {"CONFERENCEDir", &VMRegistry::CONFERENCEDir, &VMRegistry::IVRDir, "\\ConferenceData"},
    {"WebMailWorkingDir", &VMRegistry::WebMailWorkingDir, &VMRegistry::IVRDir, "\\WebMail"},
    {"TempFilesDir", &VMRegistry::TempFilesDir, &VMRegistry::IVRDir, "\\tempfiles"},
    {"ModuleRecordingsDir", &VMRegistry::ModuleRecordingsDir, &VMRegistry::WAVSDir, "\\Modules"},
    {"CustomWavsDir", &VMRegistry::CustomWavsDir, &VMRegistry::WAVSDir, "\\Custom"},
    {"CustomNumPromptsDir", &VMRegistry::CustomNumPromptsDir, &VMRegistry::CustomWavsDir,
     "\\NumericPrompts"},
    {"VRLDir", &VMRegistry::VRLDir, &VMRegistry::IVRDir, "\\VRL"},
    {"BackupDir", &VMRegistry::BackupDir, &VMRegistry::IVRDir, "/Back Up"},
};

struct CheckedDirectory {
  const char* name;
  TextField field;
};

constexpr CheckedDirectory kCheckedDirectories[] = {
    {"GreetingsDir", &VMRegistry::GreetingsDir},
    {"AccountsDir", &VMRegistry::AccountsDir},
    {"ModuleRecordingsDir", &VMRegistry::ModuleRecordingsDir},
    {"CustomWavsDir", &VMRegistry::CustomWavsDir},
    {"CustomNumPromptsDir", &VMRegistry::CustomNumPromptsDir},
    {"Campaigns", &VMRegistry::Campaigns},
    {"WAVSDir", &VMRegistry::WAVSDir},
    {"NameWavsDir", &VMRegistry::NameWavsDir},
    {"IVRDir", &VMRegistry::IVRDir},
    {"DBDir", &VMRegistry::DBDir},
    {"LoggingDir", &VMRegistry::LoggingDir},
    {"VRLDir", &VMRegistry::VRLDir},
    {"IMAP4WorkingDir", &VMRegistry::IMAP4WorkingDir},
    {"WebMailWorkingDir", &VMRegistry::WebMailWorkingDir},
    {"TempFilesDir", &VMRegistry::TempFilesDir},
    {"CONFERENCEDir", &VMRegistry::CONFERENCEDir},
    {"BackupDir", &VMRegistry::BackupDir},
    {"EVMLGreetingsDir", &VMRegistry::EVMLGreetingsDir},
    {"EVMLAccountsDir", &VMRegistry::EVMLAccountsDir},
    {"EVMLNameWavsDir", &VMRegistry::EVMLNameWavsDir},
};

// The program's directory. What keeps a host from telling it this time breaks the start off: else
// every directory's default would be written without it.
tstring BaseDirectory() {
  const tstring base = GetFullPathRelativeToCorvoPath(nullptr, nullptr);
  return file_layer::IsNowhere(base.c_str()) ? file_layer::ProgramDirectory() : base;
}

// A file beside the machine's other settings.
tstring SettingsFile(const char* name) {
  return tstring::FromFormat("%s/%s", CorvoSettingsDirectory(), name);
}

void FillFaxServers(CorvoIniData& store) {
  std::list<tstring> names;
  store.GetKeys(names);
  if (!names.empty()) return;
  for (const FaxProduct& product : kFaxProducts) store.SetData(product.name, product.domain);
}

// The row of a field that has a built-in default, or null.
const BuiltInDirectory* FindBuiltIn(TextField field) {
  for (const BuiltInDirectory& directory : kBuiltInDirectories) {
    if (directory.field == field) return &directory;
  }
  return nullptr;
}

tstring BuiltInPath(const BuiltInDirectory& directory, const tstring& base) {
  const BuiltInDirectory* const parent =
      directory.parent != nullptr ? FindBuiltIn(directory.parent) : nullptr;
  return (parent != nullptr ? BuiltInPath(*parent, base) : base) + directory.name;
}

tstring WithoutFinalSeparator(const tstring& path) {
  const bool ends = !path.empty() && (path.back() == '\\' || path.back() == '/');
  return ends ? path.Left(static_cast<unsigned>(path.size() - 1)) : path;
}

}  // namespace

// Fields are assigned when they change, and once, so that the threads of a running server don't see
// a re-initialisation go by way of the built-in values. A step that a host's service breaks off is
// reported, and the others go on. A call from inside changes nothing.
void VMRegistry::Init() {
  const std::lock_guard<std::recursive_mutex> lock(StartMutex());
  if (m_starting) return;
  const FlagScope starting(m_starting);
  const bool settled = AtBoundary({kSource, kInit, __LINE__}, false, [&] {
    Settle(BaseDirectory());
    return true;
  });
  for (const CheckedDirectory& directory : kCheckedDirectories) {
    AtBoundary({kSource, kInit, __LINE__},
               [&] { ValidateDirectory(Field(directory.field).c_str(), directory.name); });
  }
  AtBoundary({kSource, kInit, __LINE__}, [&] { CopyLogo(); });
  m_started = m_started || settled;
}

// All but the directories themselves.
void VMRegistry::Settle(const tstring& base) {
  SetConstants();
  OpenStores();
  ReadStartUpSettings(base);
  SettleDirectories(base);
  SetField(&VMRegistry::SingleMailboxAccess,
           ReadSwitch("SingleMailboxAccess", SingleMailboxAccess));
  ReadConferenceTimeout();
  ReadUnopenedMapping();
  ReadHostAddress();
  ReadVPIMAddressing();
  m_smtpMappings.Open(tstring::FromFormat("%s\\SMTPMAPPINGS.INI", AccountsDir.c_str()));
}

void VMRegistry::SetConstants() {
  SetField(&VMRegistry::m_mainKey, kMainKey);
  SetField(&VMRegistry::m_userVariablesKey, kUserVariablesKey);
  SetField(&VMRegistry::m_vpimKey, kVPIMKey);
  SetField(&VMRegistry::m_notifySync, false);
  SetField(&VMRegistry::m_faxServersKey, tstring(m_mainRoot) + "\\FAXServers");
}

void VMRegistry::StoreSlot::Open(const tstring& path) {
  const Pointer store = Get();
  if (store && m_path == path) {
    store->Reload();
    return;
  }
  std::atomic_store(&m_store, std::make_shared<CorvoIniData>(path.c_str()));
  m_path = path;
}

void VMRegistry::OpenStores() {
  m_settings.Open(SettingsFile("corvo_settings.ini"));
  m_userVariables.Open(SettingsFile("corvo_user_variables.ini"));
  m_faxServers.Open(SettingsFile("corvo_fax_servers.ini"));
  FillFaxServers(*m_faxServers.Get());
}

void VMRegistry::ReadStartUpSettings(const tstring& base) {
  for (const StartUpSetting& setting : kStartUpSettings) {
    std::visit(
        [&](auto field) { ReadStartUpSetting(setting.name, field, setting.byDefault, base); },
        setting.field);
  }
}

void VMRegistry::ReadStartUpSetting(const char* name, bool VMRegistry::*field, DWORD byDefault,
                                    const tstring&) {
  SetField(field, ReadSwitch(name, byDefault != 0));
}

void VMRegistry::ReadStartUpSetting(const char* name, int VMRegistry::*field, DWORD byDefault,
                                    const tstring&) {
  int value = static_cast<int>(byDefault);
  GetRegistryEntry(name, value);
  SetField(field, value);
}

void VMRegistry::ReadStartUpSetting(const char* name, DWORD VMRegistry::*field, DWORD byDefault,
                                    const tstring&) {
  unsigned long value = byDefault;
  GetRegistryEntry(name, value);
  SetField(field, static_cast<DWORD>(value));
}

void VMRegistry::ReadStartUpSetting(const char* name, TextField field, DWORD, const tstring& base) {
  const BuiltInDirectory* const directory = FindBuiltIn(field);
  tstring value = directory != nullptr ? BuiltInPath(*directory, base) : this->*field;
  GetRegistryEntry(name, value);
  SetField(field, value);
}

bool VMRegistry::ReadSwitch(const char* name, bool byDefault) const {
  bool value = byDefault;
  GetRegistryEntry(name, value);
  return value;
}

// A directory whose built-in default is `byDefault`; where its read finds nothing, what is derived
// is stored instead.
tstring VMRegistry::SettledDirectory(const char* name, const tstring& byDefault,
                                     const tstring& derived) const {
  tstring directory = byDefault;
  if (GetRegistryEntry(name, directory)) return directory;
  SetRegistryEntry(name, derived.c_str());
  return derived;
}

void VMRegistry::SettleDirectories(const tstring& base) {
  tstring derived = WAVSDir;
  ChopOff(derived, "Wavs");
  SetField(&VMRegistry::IVRDir, SettledDirectory("IVRDir", "", derived));

  derived = IVRDir;
  ChopOff(derived, "\\VM");
  SetField(&VMRegistry::DBDir, WithoutFinalSeparator(SettledDirectory("DBDir", "", derived)));

  for (const DerivedDirectory& directory : kDerivedDirectories) {
    const BuiltInDirectory* const builtIn = FindBuiltIn(directory.field);
    const tstring byDefault = builtIn != nullptr ? BuiltInPath(*builtIn, base) : tstring();
    SetField(directory.field, SettledDirectory(directory.name, byDefault,
                                               this->*directory.parent + directory.suffix));
  }
}

void VMRegistry::ReadConferenceTimeout() {
  long value = 0;
  GetRegistryEntry("ConferenceTimeout", value);
  constexpr const settings::Setting& kRow = settings::Row("ConferenceTimeout");
  const bool valid = value >= kRow.low && value <= kRow.high;
  SetField(&VMRegistry::ConferenceTimeout,
           valid ? static_cast<DWORD>(value) : kDefaultConferenceTimeout);
}

void VMRegistry::ReadUnopenedMapping() {
  char mapping[10] = "";
  GetRegistryEntry("UnopenedMapping", mapping, sizeof mapping);
  SetField(&VMRegistry::UnopenedMapping, *mapping != '\0' ? *mapping : 'O');
}

// The address that the machine is known by, unless it was changed by hand.
void VMRegistry::ReadHostAddress() {
  tstring changed("NO");
  GetRegistryEntry("DEFAULTHOSTVALCHANGED", changed);
  tstring address;
  const bool found =
      changed.CompareNoCase("yes") != 0 && GetRegistryEntry("HOSTIPADDRESS", address);
  SetField(&VMRegistry::m_hostIPAddress, address);
  SetField(&VMRegistry::m_hostIPAddressFound, found);
}

void VMRegistry::ReadVPIMAddressing() {
  tstring host(kLoopbackName);
  GetRegistryEntry(m_vpimKey, "host", host);
  SetField(&VMRegistry::m_host, host);
  tstring domain = m_hostIPAddressFound ? m_hostIPAddress : host;
  if (m_hostIPAddressFound) {
    SetRegistryEntry(m_vpimKey, "domain", domain.c_str());
  } else {
    GetRegistryEntry(m_vpimKey, "domain", domain);
  }
  SetField(&VMRegistry::m_domain, domain);
  SetField(&VMRegistry::m_effectiveDomain, domain);
  ReadSOGMode();
}

void VMRegistry::ReadSOGMode() {
  tstring text;
  const bool found = GetRegistryEntry(m_vpimKey, "SOG", text);
  const DWORD mode = found ? static_cast<DWORD>(static_cast<unsigned long>(text)) : 0;
  SetField(&VMRegistry::m_sogMode, mode);
  if (mode == 0) return;
  tstring server = Field(&VMRegistry::SOGMailServer);
  GetRegistryEntry(m_vpimKey, "SOGMailServer", server);
  SetField(&VMRegistry::SOGMailServer, server);
}

void VMRegistry::CopyLogo() const {
  const tstring source = WAVSDir + "/CommonWavs/Tolva_Logo.wav";
  const tstring destination = GreetingsDir + "/Tolva_Logo.wav";
  CopyFile(source.c_str(), destination.c_str(), 0);
  DebugA(kTraceCopy, "Copying %s to %s", source.c_str(), destination.c_str());
}
