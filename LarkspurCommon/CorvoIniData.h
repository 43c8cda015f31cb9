#ifndef LARKSPURCOMMON_CORVOINIDATA_H
#define LARKSPURCOMMON_CORVOINIDATA_H

#include <list>
#include <map>

#include "LarkspurCommon/CritSect.h"
#include "LarkspurCommon/tstring.h"
#include "platform/Export.h"
#include "platform/InterfaceCheck.h"
#include "platform/Win32Types.h"

// A store of keys and values in a flat text file of "KEY=value" lines, ended by CR LF, in byte
// order of the keys. Keys are upper case; callers may use any. A value is kept as it is given, but
// what comes back from the file has no blanks in front and no white space behind, and no more than
// a line of 1023 bytes.
//
// Every operation first reads the file again when its modification time (whole seconds) is another
// than the one last seen, and every change rewrites the whole file. A missing file is an empty
// store; one that exists but can't be read keeps the store as it is, and isn't written until it has
// been read: what little may be in memory must not replace it. Changes made meanwhile stay in
// memory and end when the file is read, which each change and, every three seconds, each read
// tries.
//
// Any thread, but for the three operations named below. Nothing is thrown: what goes wrong is
// traced, by this class or the file layer. Nothing holds out other processes, or another store of
// the same file.
class CORVO_API CorvoIniData {
 public:
  // Finds the file as it is spelled on disk, in any letter case, and reads it.
  explicit CorvoIniData(const char* fileName);
  ~CorvoIniData();
  CorvoIniData(const CorvoIniData&) = delete;
  CorvoIniData& operator=(const CorvoIniData&) = delete;

  tstring GetData(const char* key, bool& found);  // empty when not found
  tstring Get(const char* key);
  void SetData(const char* key, const char* value);
  void Set(const char* key, const char* value);
  bool DeleteKey(const char* key);  // whether there was one; rewrites the file either way
  void Delete();                    // all entries, and the file
  void Reload();                    // reads the file, changed or not

  // Appended, in byte order of the keys.
  void GetKeys(std::list<tstring>& keys);
  void GetKeysAndValues(std::list<tstring>& keys, std::list<tstring>& values);

  // The steps of the operations above, for a caller that holds m_cs.
  bool HasFileChanged();  // since it was last asked
  void LoadIniData();
  void SaveIniData();

 private:
  using Entries = std::map<tstring, tstring>;

  void Refresh(DWORD retryAfter);
  bool ReadEntries(Entries& entries, bool& repeated);
  void SaveChange();

  bool m_fileExists = false;
  long m_lastWriteTime = -1;  // TFileHandler's mark
  Entries m_data;
  char m_fileName[MAX_PATH];
  CriticalSection m_cs;

  bool m_unread = false;    // m_data isn't what the file holds
  DWORD m_lastAttempt = 0;  // os_clock() then
  bool m_busy = false;      // with the file: what reports its failures may ask this store
};

CORVO_SIZE(12, 24, std::list<tstring>);
CORVO_SIZE(24, 48, std::map<tstring, tstring>);
CORVO_SIZE(376, 456, CorvoIniData);

#endif
