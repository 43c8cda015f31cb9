#ifndef LARKSPURCOMMON_AREGISTRYSETTINGS_H
#define LARKSPURCOMMON_AREGISTRYSETTINGS_H

#include <string_view>

// Every setting the library itself reads, and what it alone writes: its name, its form, what a
// missing entry is written as, and the limits of a value. The readers use these rows, and so can
// whoever lists or edits settings. docs/settings.md tells what each one does.
namespace settings {

enum class Form {
  Text,
  Number,    // unsigned, decimal
  Integer,   // signed, decimal
  YesNo,     // "Y" or "N", in any case; a number counts as yes when it isn't 0
  Directory  // written with what the start-up derives
};

// What a stored value beyond the limits gives its reader.
enum class Beyond { Nearest, Default, Itself };

struct Setting {
  const char* name;
  Form form;
  const char* written;  // null: a missing entry stays missing
  long long low = 0;
  long long high = 0xFFFFFFFF;
  Beyond beyond = Beyond::Itself;
};

inline constexpr Setting kSettings[] = {
    // Start-up
    {"TraceRegistryData", Form::YesNo, "N"},
    {"EMailMailbox", Form::Text, nullptr},
    {"EMailServer", Form::Text, nullptr},
    {"EMailProfile", Form::Text, nullptr},
    {"VoicemailPassword", Form::Text, nullptr},
    {"NewConfigFile", Form::Text, nullptr},
    {"EmailSubject", Form::Text, nullptr},
    {"EmailSubjectUnknownCaller", Form::Text, nullptr},
    {"EmailText", Form::Text, nullptr},
    {"EmailFrom", Form::Text, nullptr},
    {"MapiUserLogin", Form::Text, nullptr},
    {"MapiUserPassword", Form::Text, nullptr},
    {"UseInbandDTMF", Form::YesNo, "N"},
    {"CorvoBasicModePbx", Form::Number, "0"},
    {"CorvoBasicModePbxRecord", Form::Text, nullptr},
    {"VBScriptTimeout", Form::Number, "90000"},
    {"SingleMailboxAccess", Form::YesNo, "N"},
    {"CorvoMAPIServer", Form::Text, nullptr},
    {"CorvoMAPIPort", Form::Integer, "50792"},
    {"ConferenceTimeout", Form::Integer, "0", 1000, 1200000, Beyond::Default},
    {"UnopenedMapping", Form::Text, nullptr},
    {"DEFAULTHOSTVALCHANGED", Form::Text, "NO"},
    {"HOSTIPADDRESS", Form::Text, nullptr},
    {"LogFileErrorsToFile", Form::YesNo, "N"},

    // Directories
    {"WAVSDir", Form::Directory, nullptr},
    {"AccountsDir", Form::Directory, nullptr},
    {"NameWavsDir", Form::Directory, nullptr},
    {"GreetingsDir", Form::Directory, nullptr},
    {"EVMLAccountsDir", Form::Directory, nullptr},
    {"EVMLNameWavsDir", Form::Directory, nullptr},
    {"EVMLGreetingsDir", Form::Directory, nullptr},
    {"IVRDir", Form::Directory, nullptr},
    {"DBDir", Form::Directory, nullptr},
    {"Campaigns", Form::Directory, nullptr},
    {"LoggingDir", Form::Directory, nullptr},
    {"IMAP4WorkingDir", Form::Directory, nullptr},
    {"CONFERENCEDir", Form::Directory, nullptr},
    {"WebMailWorkingDir", Form::Directory, nullptr},
    {"TempFilesDir", Form::Directory, nullptr},
    {"ModuleRecordingsDir", Form::Directory, nullptr},
    {"CustomWavsDir", Form::Directory, nullptr},
    {"CustomNumPromptsDir", Form::Directory, nullptr},
    {"VRLDir", Form::Directory, nullptr},
    {"BackupDir", Form::Directory, nullptr},

    // Voice mail by e-mail (the VPIM key)
    {"host", Form::Text, "localhost"},
    {"domain", Form::Text, nullptr},
    {"SOG", Form::Number, nullptr},
    {"SOGMailServer", Form::Text, nullptr},
    {"username", Form::Text, nullptr},
    {"password", Form::Text, nullptr},
    {"maildrop", Form::Text, " "},
    {"sender", Form::Text, nullptr},

    // Lengths and times
    {"CfgMaxTime", Form::Number, "120"},
    {"MinimumMessageLength", Form::Number, "3000"},
    {"QBXMinimumMessageLength", Form::Number, "0"},
    {"MinimumRecordedNameLength", Form::Number, "1000", 700, 14000, Beyond::Nearest},
    {"MinimumRecordedGreetingLength", Form::Number, "3000"},
    {"MaxRecordTime", Form::Number, "3600", 0, 172800, Beyond::Nearest},
    {"MaxAgeTime", Form::Number, "4294967295"},
    {"LoopedOutboundTimeout", Form::Number, "30", 1, 0xFFFFFFFF, Beyond::Default},
    {"SilenceLimit", Form::Number, "10000", 1, 0xFFFFFFFF, Beyond::Default},
    {"MaximumCallLength", Form::Number, "3600000", 300000, 0xFFFFFFFF, Beyond::Nearest},
    {"MinimumIdleTime", Form::Number, "2400000", 80000, 4800000, Beyond::Nearest},
    {"ConfRingTime", Form::Number, "30000"},
    {"SeqTimeout", Form::Number, "3500"},
    {"SecondsBetweenEvents", Form::Number, "30"},
    {"TimeBetweenSync", Form::Number, "1440"},
    {"MinimumPasswordLength", Form::Number, "2", 0, 15, Beyond::Nearest},
    {"QBXMinimumPasswordLength", Form::Number, "0", 0, 15, Beyond::Nearest},

    // Day windows: the limits hold where they are set, not where they are read
    {"FromPeakTimeHour", Form::Integer, "9", 0, 23},
    {"FromPeakTimeMinute", Form::Integer, "0", 0, 59},
    {"ToPeakTimeHour", Form::Integer, "17", 0, 23},
    {"ToPeakTimeMinute", Form::Integer, "30", 0, 59},
    {"FromPrimeTimeHour", Form::Integer, "7", 0, 23},
    {"FromPrimeTimeMinute", Form::Integer, "30", 0, 59},
    {"ToPrimeTimeHour", Form::Integer, "19", 0, 23},
    {"ToPrimeTimeMinute", Form::Integer, "30", 0, 59},

    // Outcalls
    {"OutcallingRetries", Form::Integer, "5", 0, 10, Beyond::Default},
    {"OutcallDefaultRetryTime", Form::Integer, "30", 1, 60, Beyond::Default},
    {"OutcallRetry0", Form::Integer, "1", 1, 60},
    {"OutcallRetry1", Form::Integer, "5", 1, 60},
    {"OutcallRetry2", Form::Integer, "10", 1, 60},
    {"OutcallRetry3", Form::Integer, "15", 1, 60},
    {"OutcallRetry4", Form::Integer, "30", 1, 60},
    {"NoOfOutCallingPorts", Form::Text, nullptr},

    // SNMP alarm thresholds: readers also write back what they correct
    {"SnmpAlarmCritical", Form::Number, "30", 1, 0xFFFFFFFF, Beyond::Nearest},
    {"SnmpAlarmLevel", Form::Number, "60", 11, 0xFFFFFFFF, Beyond::Nearest},
    {"SnmpAlarmOk", Form::Number, "90", 41, 0xFFFFFFFF, Beyond::Nearest},

    // Message sort orders: 1 and any other value
    {"NewMessageSortOrder", Form::Integer, "1", 0, 1},
    {"UnopenedMessageSortOrder", Form::Integer, "1", 0, 1},
    {"OldMessageSortOrder", Form::Integer, "0", 0, 1},
    {"SavedMessageSortOrder", Form::Integer, "0", 0, 1},
    {"NewCallRecordingSortOrder", Form::Integer, "1", 0, 1},
    {"OldCallRecordingSortOrder", Form::Integer, "0", 0, 1},

    // Mail, SIP, fax and switches
    {"MiradorMode", Form::YesNo, "N"},
    {"LoadMailboxDataInBackground", Form::YesNo, "N"},
    {"SMTPServerEnabled", Form::YesNo, "Y"},
    {"SendVoicemailViaSMTP", Form::YesNo, nullptr},
    {"SignalNormalisation", Form::Text, nullptr, 0, 100, Beyond::Nearest},
    {"IPTOSValue", Form::Integer, "184", 0, 255},
    {"SystemFaxNumber", Form::Text, nullptr},
    {"UsePrefixNumber", Form::Text, nullptr},
    {"OrbisWSLogToFile", Form::Text, nullptr},
    {"SipServerName", Form::Text, "Halcyon"},
    {"SipServerDisplayName", Form::Text, "Halcyon Voicemail"},
    {"SipServerHost", Form::Text, "192.168.42.1"},
    {"SipSupportDLLName", Form::Text, "libCorvoSip.so"},
    {"PrimaryReinstatementMode", Form::Integer, "0"},
    {"PrimaryReinstatementTimeOut", Form::Integer, "5"},
    {"DownloadAttachmentForITZ", Form::Text, "yes"},
};

// The row of a setting. Used in constant expressions, where a name that has none doesn't compile.
constexpr const Setting& Row(std::string_view name) {
  const Setting* row = kSettings;
  while (name != row->name) ++row;
  return *row;
}

// The default of a number, which is what is written; 0 where nothing is.
constexpr long long DefaultOf(const Setting& setting) {
  long long value = 0;
  if (setting.written == nullptr) return value;
  for (const char* digit = setting.written; *digit != '\0'; ++digit) {
    value = 10 * value + (*digit - '0');
  }
  return value;
}

}  // namespace settings

#endif
