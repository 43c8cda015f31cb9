#ifndef PLATFORM_HOSTSERVICES_H
#define PLATFORM_HOSTSERVICES_H

/* Services of the host process. The library's own versions do nothing; a host process that exports
   its own (linked with -rdynamic) has them called instead, from any thread. They may throw. */

#include "platform/Export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Where the settings files live, without a final separator, and the file that marks an installed
   release. Asked whenever needed; the text must live until the process ends. Usable from C. */
CORVO_API const char* CorvoSettingsDirectory(void); /* default "/etc" */
CORVO_API const char* CorvoReleaseMarker(void);     /* default "/opt/Tolva/KMR_release" */

#ifdef __cplusplus
}  // extern "C"

class AnsiString;

// Prints a trace line on the host's console.
CORVO_API void ConsolePrint(unsigned long mask, const char* format, ...)
    __attribute__((format(printf, 2, 3)));

// Raises the host's alarm.
CORVO_API void SendTrap();

// Lives while a failure is written to the file-error log: made before the log's lock is taken, gone
// after that is released and a failed write has been traced.
class CORVO_API ReleaseGCSHelper {
 public:
  ReleaseGCSHelper(const char* file, int line, bool first, bool second);
  ~ReleaseGCSHelper();
  ReleaseGCSHelper(const ReleaseGCSHelper&) = delete;
  ReleaseGCSHelper& operator=(const ReleaseGCSHelper&) = delete;
};

class CORVO_API SyncMaster {
 public:
  // Told of each change. Types: 1 a setting, 2 a user variable, 3 an SMTP mapping; removed: 4 a
  // setting, 5 a user variable (no value), 9 all SMTP mappings (no name, no value). What isn't
  // given is null.
  static void ConfigurationItemChanged(int type, const char* name, const char* value);
};

class CORVO_API TBackupConfigContainer {
 public:
  static TBackupConfigContainer* global;  // null until the host sets it
  void ReInit(const AnsiString& keyPath);
};

class CORVO_API TClassOfServiceContainer {
 public:
  static TClassOfServiceContainer* global;  // null until the host sets it
  void ReInit(const AnsiString& keyPath);
};

class CORVO_API VMailBox {
 public:
  static bool DoesMailboxStillExist(VMailBox* box);  // default: false
  static void Statistics(VMailBox* box, unsigned short& newCount, unsigned short& unopened,
                         unsigned short& oldCount, unsigned short& savedCount);
};

class CORVO_API HalcyonDatabase {
 public:
  // Bits, two for each class of messages, of which exactly one is set: the first where the setting
  // of that name is 1, the second otherwise. Which order 1 selects is the host's business.
  enum VMSortOrder : unsigned {
    NewMessageSortOrder1 = 0x1,
    NewMessageSortOrder0 = 0x2,
    UnopenedMessageSortOrder1 = 0x8,
    UnopenedMessageSortOrder0 = 0x10,
    OldMessageSortOrder1 = 0x40,
    OldMessageSortOrder0 = 0x80,
    SavedMessageSortOrder1 = 0x200,
    SavedMessageSortOrder0 = 0x400,
    NewCallRecordingSortOrder1 = 0x1000,
    NewCallRecordingSortOrder0 = 0x2000,
    OldCallRecordingSortOrder1 = 0x4000,
    OldCallRecordingSortOrder0 = 0x8000
  };
};

#endif /* __cplusplus */

#endif
