#ifndef LARKSPURCOMMON_AREGISTRY_H
#define LARKSPURCOMMON_AREGISTRY_H

#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "LarkspurCommon/AnsiString.h"
#include "LarkspurCommon/AregistryConstants.h"
#include "LarkspurCommon/CorvoIniData.h"
#include "LarkspurCommon/MailboxRecords.h"
#include "LarkspurCommon/tstring.h"
#include "platform/Export.h"
#include "platform/HostServices.h"
#include "platform/InterfaceCheck.h"
#include "platform/Win32Types.h"

namespace settings {
struct Setting;
struct Window;
}  // namespace settings

// The configuration of the server process, kept in the shape of a registry: entries with names in
// any letter case, under numbered keys. Key 1 (the main key) and key 3 (VPIM) share one file, key 2
// holds the user variables; any other number reads nothing and writes nothing.
//
// A read whose default isn't empty writes that default where the entry is missing, and says false.
// A write that changes nothing but letter case is left out.
//
// Every operation may come from any thread; a read followed by a write is two steps, between which
// another thread may act. The public fields are plain: Init writes them, and whoever reads them
// while ReInitRegistry runs must know what he does. Nothing is thrown by reads and writes.
class CORVO_API VMRegistry {
 public:
  // The one of the process, made and initialised by the first call, which other threads wait for;
  // a call from inside Init gets the object under construction. Lives until the process ends.
  static VMRegistry* global();
  static VMRegistry* m_global;

  VMRegistry();  // no entries before Init
  ~VMRegistry();
  VMRegistry(const VMRegistry&) = delete;
  VMRegistry& operator=(const VMRegistry&) = delete;

  // Opens the stores, reads the start-up settings, settles and makes the directories.
  void Init();
  void ReInitRegistry();  // Init again, and the host's containers after it

  tstring DBDirectory() const;
  tstring LoggingDirectory() const;
  tstring TempDirectory() const;
  const char* RegistryBaseDir() const { return m_mainRoot; }
  bool LogFileErrorsToFile() const;

  // Entries -------------------------------------------------------------------------------------

  // Each gives whether the entry was found; the variable holds the default and keeps it otherwise.
  // An empty value counts as found; as a number it is not. `buffer` has room for `size` bytes.
  bool GetRegistryEntry(int key, const char* name, char* buffer, unsigned size) const;
  bool GetRegistryEntry(int key, const char* name, tstring& value) const;
  bool GetRegistryEntry(int key, const char* name, long& value) const;
  bool GetRegistryEntry(int key, const char* name, int& value) const;
  bool GetRegistryEntry(int key, const char* name, unsigned long& value) const;  // 32 bits
  // "Y", "N" or a number. A missing entry is written as "N", whatever the variable holds.
  bool GetRegistryEntry(int key, const char* name, bool& value) const;
  bool GetRegistryEntry(const char* name, char* buffer, unsigned size) const;
  bool GetRegistryEntry(const char* name, tstring& value) const;
  bool GetRegistryEntry(const char* name, long& value) const;
  bool GetRegistryEntry(const char* name, int& value) const;
  bool GetRegistryEntry(const char* name, unsigned long& value) const;
  bool GetRegistryEntry(const char* name, bool& value) const;

  // False: the key number selects no store.
  bool SetRegistryEntry(int key, const char* name, const char* value) const;
  bool SetRegistryEntry(int key, const char* name, int value) const;
  bool SetRegistryEntry(int key, const char* name, unsigned long value) const;
  bool SetRegistryEntry(int key, const char* name, bool value) const;
  bool SetRegistryEntry(const char* name, const char* value) const;
  bool SetRegistryEntry(const char* name, int value) const;
  bool SetRegistryEntry(const char* name, unsigned long value) const;
  bool SetRegistryEntry(const char* name, bool value) const;

  bool GetUserRegistryEntry(bool& value, const char* name) const;  // false when not found
  bool DeleteUserRegistryEntry(const char* name, bool notify) const;
  void GetAllUserRegistryEntries(std::list<tstring>& names) const;  // upper case, sorted

  // Directories ---------------------------------------------------------------------------------

  // Cuts `suffix` off where the text ends with it, in any letter case and with either separator.
  void ChopOff(tstring& text, const char* suffix) const;

  // Makes a missing directory. One that exists with another spelling is stored under `settingName`
  // (unless null) as it is spelled on disk.
  void ValidateDirectory(const char* directory, const char* settingName) const;

  void ReadSOGMode();

  // Typed settings ------------------------------------------------------------------------------
  // Read when called. docs/settings.md lists each with its default and limits.

  DWORD GetMinimumMessageLength() const;           // ms
  DWORD GetMinimumRecordedNameLength() const;      // ms
  DWORD GetMinimumRecordedGreetingLength() const;  // ms
  DWORD GetCfgMaxTime() const;                     // seconds
  DWORD GetMaxRecordTime() const;                  // ms
  int GetMaxAgeTime(char c) const;                 // -1 when not set; a `c` of 0 means no suffix
  int GetNormalisation() const;                    // 0 to 100
  DWORD GetLoopedOutboundTimeout() const;
  DWORD GetSilenceLimit() const;
  DWORD GetMinimumPasswordLength() const;
  DWORD GetMaximumCallLength() const;  // ms
  DWORD GetMinimumIdleTime() const;    // ms
  DWORD GetOutcallRingTime() const;    // ms
  DWORD GetSeqTimeout() const;
  DWORD SecondsBetweenEvents() const;
  DWORD MinutesBetweenSync() const;
  int GetIPTOSValue() const;

  // Each keeps its part of critical + 10 <= level and level + 30 <= OK, and stores what it
  // corrects.
  DWORD GetSnmpAlarmCritical() const;
  DWORD GetSnmpAlarmLevel() const;
  DWORD GetSnmpAlarmOk() const;
  void SetSnmpAlarmCritical(unsigned long value) const;
  void SetSnmpAlarmLevel(unsigned long value) const;
  void SetSnmpAlarmOk(unsigned long value) const;

  void GetMiradorPeaktimeSetting(Hour_Minute& from, Hour_Minute& to) const;
  void GetMiradorPrimetimeSetting(Hour_Minute& from, Hour_Minute& to) const;
  // False, and nothing is stored, unless both are times of day.
  bool SetMiradorPeaktimeSetting(Hour_Minute from, Hour_Minute to) const;
  bool SetMiradorPrimetimeSetting(Hour_Minute from, Hour_Minute to) const;

  int GetOutcallingRetries() const;
  bool SetOutcallingRetries(int retries) const;            // 0 to 10
  int GetOutcallRetryTime(int index) const;                // ms
  bool SetOutcallRetryTime(int index, int minutes) const;  // index 0 to 10, 1 to 60 minutes
  int GetOutcallingDefaultRetryTime() const;               // minutes
  int GetMaxOutcallAllowed(unsigned ports) const;          // -1: no limit

  HalcyonDatabase::VMSortOrder GetMessageSortOrder() const;
  void SetMessageSortOrder(HalcyonDatabase::VMSortOrder order) const;

  bool GetLoadMailboxDataInBG() const;
  bool UseMutexForSyncObjects() const;  // false
  bool LoadSMTPServerSupport() const;
  void LoadSMTPServerSupport(bool enabled) const;
  void SendVMViaSMTP(bool enabled) const;
  void SetEmailDefProfile(const char* profile);  // null or empty: mail goes by SMTP
  bool DownloadAttachmentForITZ() const;
  bool GetMiradorModeSetting() const;
  int GetPrimaryReinstatementMode() const;
  void SetPrimaryReinstatementMode(int mode);
  int GetPrimaryReinstatementTimeOut() const;
  void SetPrimaryReinstatementTimeOut(int timeOut);

  AnsiString SystemFaxNumber() const;
  AnsiString PrefixNumber() const;  // the system fax number
  AnsiString UsePrefixNumber() const;
  tstring SMTPUserName() const;
  tstring SMTPPassword() const;
  tstring SMTPMailDrop() const;
  tstring SMTPSender() const;
  tstring GetOrbisWSLogToFile() const;
  tstring SipServerName() const;
  tstring SipServerDisplayName() const;
  tstring SipServerHost() const;
  tstring SipSupportDLLName() const;

  // The fax servers: product names, looked for in an address in any letter case, and mail domains.
  bool GetFaxServerDomainName(const char* address, tstring& domain) const;
  bool CheckIfFAXServerIsSupported(const char* address) const;
  unsigned GetAllFAXServersSupported(tstring* names, unsigned count) const;

  // Mailbox counts, with the unopened messages counted among the kind that UnopenedMapping names;
  // no pointer is null. A mailbox that doesn't exist has none.
  void QBXStatsFromMirador(unsigned short newCount, unsigned short unopened,
                           unsigned short oldCount, unsigned short savedCount,
                           unsigned short* outNew, unsigned short* outOld, unsigned short* outSaved,
                           bool networkOrder) const;
  void QBXStatsFromMirador(VMailBox* box, unsigned short* outNew, unsigned short* outOld,
                           unsigned short* outSaved, bool networkOrder) const;

  // Exchange between servers --------------------------------------------------------------------
  // Maps of upper-case names to values. Of the settings, those that describe the local machine
  // (IsItemToExclude) stay out unless all are asked for.

  void ExportSettings(std::map<tstring, tstring>& out, bool exportAll) const;
  void ExportUserVariables(std::map<tstring, tstring>& out) const;
  void ExportSMTPMappings(std::map<tstring, tstring>& out) const;
  void ImportSettings(std::map<tstring, tstring>& in, bool clearFirst, bool importAll) const;
  void ImportUserVariables(std::map<tstring, tstring>& in, bool clearFirst) const;
  void ImportSMTPMappings(std::map<tstring, tstring>& in, bool clearFirst) const;
  void DeleteSettings(std::map<tstring, tstring>& names) const;
  void DeleteUserVariables(std::map<tstring, tstring>& names) const;
  void DeleteSMTPMappings(std::map<tstring, tstring>& names) const;
  void ExportDataHelper(CorvoIniData* store, std::map<tstring, tstring>& out, unsigned long& clock,
                        bool all) const;

  // SMTP mappings: single ones as they are stored; all as lines "name=f1,f2,f3,f4,f5,f6", which are
  // stored with f2 last and without the commas of empty fields at the end.
  bool GetSMTPMapping(const char* name, tstring& value) const;
  bool SetSMTPMapping(const char* name, const char* value) const;  // true
  void ReadAllSMTPMappings(std::vector<tstring>& lines) const;
  void WriteAllSMTPMappings(std::vector<tstring>& lines) const;  // replaces the whole file

  // Fields --------------------------------------------------------------------------------------

  int m_mainKey = 0;  // 1, 2 and 3 once initialised
  int m_userVariablesKey = 0;
  int m_vpimKey = 0;
  int CorvoMAPIPort = 50792;
  bool m_notifySync = false;  // tell SyncMaster of each change; for the host to set
  bool SingleMailboxAccess = true;
  bool UseInbandDTMF = true;
  bool TraceRegistryData = false;
  char UnopenedMapping = 'O';
  DWORD m_sogMode = 0;
  DWORD VBScriptTimeout = DefaultVBScriptTimeout;  // ms
  DWORD ConferenceTimeout = 3000;                  // ms
  DWORD CorvoBasicModePbx = 0;
  tstring CorvoBasicModePbxRecord;
  tstring SOGMailServer;
  tstring CONFERENCEDir;
  tstring GreetingsDir;
  tstring AccountsDir;
  tstring ModuleRecordingsDir;
  tstring CustomWavsDir;
  tstring CustomNumPromptsDir;
  tstring Campaigns;
  tstring WAVSDir;
  tstring NameWavsDir;
  tstring IVRDir;
  tstring DBDir;
  tstring LoggingDir;
  tstring VRLDir;
  tstring IMAP4WorkingDir;
  tstring m_faxServersKey;
  tstring VoicemailPassword;
  tstring NewConfigFile;
  tstring EmailSubject;
  tstring EmailSubjectUnknownCaller;
  tstring EmailText;
  tstring EmailFrom;
  tstring EMailServer;
  tstring EMailMailbox;
  tstring EMailProfile;
  tstring MapiUserLogin;
  tstring MapiUserPassword;
  tstring WebMailWorkingDir;
  tstring TempFilesDir;
  const char* m_messagingProfiles = "Software\\Microsoft\\Windows Messaging Subsystem\\Profiles";
  const char* m_messagingProfilesNT =
      "Software\\Microsoft\\Windows NT\\CurrentVersion\\Windows Messaging Subsystem\\Profiles";
  const char* m_directoriesKey = "SOFTWARE\\Tolva\\Halcyon\\Directories";
  const char* m_mainRoot = "SOFTWARE\\Tolva\\Halcyon";
  const char* m_vpimRoot = "SOFTWARE\\TOLVA\\Larkspur\\VPIM";
  const char* m_userVariablesRoot = "SOFTWARE\\Tolva\\Halcyon\\UserVariables";
  tstring BackupDir;
  tstring m_effectiveDomain;
  tstring m_domain;
  tstring m_host;
  tstring m_hostIPAddress;
  bool m_hostIPAddressFound = false;
  tstring EVMLGreetingsDir;
  tstring EVMLAccountsDir;
  tstring EVMLNameWavsDir;
  tstring CorvoMAPIServer;
  EVMLData m_evmlData;

 private:
  // A store that may be replaced while another thread is inside one of its operations.
  class StoreSlot {
   public:
    using Pointer = std::shared_ptr<CorvoIniData>;
    Pointer Get() const { return std::atomic_load(&m_store); }
    // Opens the file, or reads it again where it is open: two stores of one file would overwrite
    // each other's changes. One thread at a time.
    void Open(const tstring& path);
    void Close() { std::atomic_store(&m_store, Pointer()); }

   private:
    Pointer m_store;
    tstring m_path;
  };

  StoreSlot m_settings;
  StoreSlot m_userVariables;
  StoreSlot m_faxServers;
  StoreSlot m_smtpMappings;

  StoreSlot::Pointer Store(int key) const;
  bool Write(int key, const char* name, const char* value) const;
  void Notify(int type, const char* name, const char* value) const;

  static std::recursive_mutex& StartMutex();  // held by starts; one may lead back to global()
  static VMRegistry* StartGlobal();
  bool m_starting = false;
  bool m_started = false;
  mutable std::mutex m_fieldsMutex;  // for the library's own reads of texts that Init may write
  tstring Field(tstring VMRegistry::*field) const;
  template <class Value>
  void SetField(Value VMRegistry::*field, const Value& value);

  void Settle(const tstring& base);
  void SetConstants();
  void OpenStores();
  void ReadStartUpSettings(const tstring& base);
  void ReadStartUpSetting(const char* name, bool VMRegistry::*field, DWORD byDefault,
                          const tstring& base);
  void ReadStartUpSetting(const char* name, int VMRegistry::*field, DWORD byDefault,
                          const tstring& base);
  void ReadStartUpSetting(const char* name, DWORD VMRegistry::*field, DWORD byDefault,
                          const tstring& base);
  void ReadStartUpSetting(const char* name, tstring VMRegistry::*field, DWORD byDefault,
                          const tstring& base);
  bool ReadSwitch(const char* name, bool byDefault) const;
  void SettleDirectories(const tstring& base);
  tstring SettledDirectory(const char* name, const tstring& byDefault,
                           const tstring& derived) const;
  void ReadConferenceTimeout();
  void ReadUnopenedMapping();
  void ReadHostAddress();
  void ReadVPIMAddressing();
  void CopyLogo() const;

  DWORD ReadUnsigned(const settings::Setting& setting) const;
  int ReadInteger(const settings::Setting& setting) const;
  tstring ReadText(const settings::Setting& setting) const;
  tstring ReadText(int key, const char* name, const char* byDefault) const;
  AnsiString ReadNumberText(const char* name) const;
  Hour_Minute ReadTime(const settings::Setting& hour, const settings::Setting& minute) const;
  bool WriteWindow(const settings::Window& window, const Hour_Minute& from,
                   const Hour_Minute& to) const;
  unsigned long ReadThreshold(const settings::Setting& setting) const;
  unsigned long Raise(const settings::Setting& setting, unsigned long value, unsigned long least,
                      const char* limit) const;
  bool CanSetThreshold(const settings::Setting& setting) const;

  void Export(const StoreSlot& slot, std::map<tstring, tstring>& out, bool all) const;
  void Import(const StoreSlot& slot, std::map<tstring, tstring>& in, bool clearFirst,
              bool all) const;

  template <class Number>
  bool ReadNumber(int key, const char* name, Number& value) const;
};
CORVO_SIZE(1284, 1744, VMRegistry);

// Names of entries, in any letter case: directories; what belongs to one machine; either of the
// two; what is kept under the VPIM key.
CORVO_API bool IsDirectorySetting(const char* name);
CORVO_API bool IsNonSynchItem(const char* name);
CORVO_API bool IsItemToExclude(const char* name);
CORVO_API bool IsVPIMData(const char* name);

// Steps of the exchange. A null store: nothing. `clock` is an os_clock() value for giving up the
// processor now and then; with `all` false, entries that IsItemToExclude names stay as they are.
CORVO_API void DeleteAllValuesHelper(CorvoIniData* store, unsigned long& clock, bool all);
CORVO_API void ImportDataHelper(CorvoIniData* store, std::map<tstring, tstring>& in,
                                unsigned long& clock, bool all);

#endif
