// The store of keys and values, its file, and what keeps the two the same.

#include "LarkspurCommon/CorvoIniData.h"

#include <cerrno>
#include <cstring>

#include "LarkspurCommon/Boundary.h"
#include "LarkspurCommon/FileHandler.h"
#include "LarkspurCommon/FileHandlerChange.h"
#include "LarkspurCommon/FileHandlerPaths.h"
#include "LarkspurCommon/FlagScope.h"
#include "LarkspurCommon/XTTime.h"
#include "platform/HoldCancellation.h"
#include "platform/Win32Compat.h"

using file_layer::FileChange;

namespace {

constexpr char kSource[] = "CorvoIniData";
constexpr char kGetData[] = "tstring CorvoIniData::GetData(const TCHAR*, bool&)";
constexpr char kSetData[] = "void CorvoIniData::SetData(const TCHAR*, const TCHAR*)";
constexpr char kDeleteKey[] = "bool CorvoIniData::DeleteKey(const TCHAR*)";
constexpr char kDelete[] = "void CorvoIniData::Delete()";
constexpr char kReload[] = "void CorvoIniData::Reload()";
constexpr char kGetKeys[] = "void CorvoIniData::GetKeys(std::list<tstring>&)";
constexpr char kGetKeysAndValues[] =
    "void CorvoIniData::GetKeysAndValues(std::list<tstring>&, std::list<tstring>&)";
constexpr char kConstructor[] = "CorvoIniData::CorvoIniData(const TCHAR*)";
constexpr char kLoad[] = "void CorvoIniData::LoadIniData()";
constexpr char kSave[] = "void CorvoIniData::SaveIniData()";

constexpr DWORD kLineBuffer = 1024;
constexpr DWORD kRetryInterval = 3000;  // ms between attempts to read a file that can't be

// An operation's body, with the lock held; what it throws is reported and leaves the result that it
// had reached.
template <class Body>
void Locked(CriticalSection& lock, const char* label, int line, Body body) {
  AtBoundary({kSource, label, line}, [&] {
    const LockCriticalSection held(&lock, true, kSource, line);
    body();
  });
}

// Whether there is no such file, for all that can be seen.
bool IsMissing(const char* path) {
  const file_layer::FoundPath found(file_layer::ResolveBareName(path).c_str());
  struct statx status;
  return !found.Exists() && !file_layer::GetStatus(found.Text(), status) &&
         (errno == ENOENT || errno == ENOTDIR);
}

tstring Upper(const char* key) {
  return tstring(key).MakeUpper();
}

// Takes a line into the entries; one that isn't "key=value" is passed over.
void TakeLine(char* line, std::map<tstring, tstring>& entries, bool& repeated) {
  char* const equals = std::strchr(line, '=');
  if (equals == nullptr) return;
  *equals = '\0';
  const char* const value = equals + 1 + std::strspn(equals + 1, " ");
  if (*value == '\0') return;
  const bool isNew = entries.insert_or_assign(Upper(line), tstring(value).TrimRight()).second;
  repeated = repeated || !isNew;
}

}  // namespace

CorvoIniData::CorvoIniData(const char* fileName) : m_fileName(), m_cs(false, "m_cs", false) {
  Locked(m_cs, kConstructor, __LINE__, [&] {
    // A host's lookup is never given what may not fit its buffer.
    if (fileName == nullptr || std::strlen(fileName) < sizeof m_fileName) {
      FindFileIgnoreCase(m_fileName, fileName, true);
    }
    HasFileChanged();
    LoadIniData();
  });
}

CorvoIniData::~CorvoIniData() = default;

tstring CorvoIniData::GetData(const char* key, bool& found) {
  tstring value;
  found = false;
  Locked(m_cs, kGetData, __LINE__, [&] {
    Refresh(kRetryInterval);
    const auto entry = m_data.find(Upper(key));
    if (entry == m_data.end()) return;
    value = entry->second;
    found = true;
  });
  return value;
}

tstring CorvoIniData::Get(const char* key) {
  bool found;
  return GetData(key, found);
}

void CorvoIniData::SetData(const char* key, const char* value) {
  Locked(m_cs, kSetData, __LINE__, [&] {
    Refresh(0);
    m_data[Upper(key)] = value;
    SaveChange();
  });
}

void CorvoIniData::Set(const char* key, const char* value) {
  SetData(key, value);
}

bool CorvoIniData::DeleteKey(const char* key) {
  bool erased = false;
  Locked(m_cs, kDeleteKey, __LINE__, [&] {
    Refresh(0);
    erased = m_data.erase(Upper(key)) != 0;
    SaveChange();
  });
  return erased;
}

void CorvoIniData::Delete() {
  Locked(m_cs, kDelete, __LINE__, [&] {
    m_data.clear();
    TFileHandler::Delete(m_fileName, false);
    m_fileExists = false;
    m_lastWriteTime = 0;
    m_unread = false;  // what the file held is meant to go
  });
}

void CorvoIniData::Reload() {
  Locked(m_cs, kReload, __LINE__, [&] {
    if (m_busy) return;
    HasFileChanged();
    LoadIniData();
  });
}

void CorvoIniData::GetKeys(std::list<tstring>& keys) {
  Locked(m_cs, kGetKeys, __LINE__, [&] {
    Refresh(kRetryInterval);
    for (const auto& entry : m_data) keys.push_back(entry.first);
  });
}

void CorvoIniData::GetKeysAndValues(std::list<tstring>& keys, std::list<tstring>& values) {
  Locked(m_cs, kGetKeysAndValues, __LINE__, [&] {
    Refresh(kRetryInterval);
    for (const auto& entry : m_data) {
      values.push_back(entry.second);  // first: out of memory, no key is left without a value
      keys.push_back(entry.first);
    }
  });
}

bool CorvoIniData::HasFileChanged() {
  return TFileHandler::HasFileChanged(m_fileName, m_fileExists, m_lastWriteTime);
}

// A file may become readable without a change of its modification time, and one that was gone for a
// while comes back with the old one. What can't be told unchanged counts as not read. While the
// store is busy with its file, it answers from memory.
void CorvoIniData::Refresh(DWORD retryAfter) {
  if (m_busy) return;
  const bool existed = m_fileExists;
  FileChange change;
  {
    const FlagScope busy(m_busy);
    change = file_layer::LookForChange(m_fileName, m_fileExists, m_lastWriteTime);
  }
  m_unread = m_unread || change == FileChange::kUnknown;
  const bool isBack = m_fileExists && !existed;
  const bool retries = m_unread && os_expired(m_lastAttempt, retryAfter);
  if (change == FileChange::kChanged || isBack || retries) LoadIniData();
}

void CorvoIniData::LoadIniData() {
  if (m_busy) return;
  bool repeated = false;
  AtBoundary({kSource, kLoad, __LINE__}, [&] {
    const FlagScope busy(m_busy);
    m_unread = true;  // however this ends, until it has been read
    m_lastAttempt = static_cast<DWORD>(os_clock());
    Entries entries;
    if (!ReadEntries(entries, repeated) && !IsMissing(m_fileName)) return;
    m_data.swap(entries);
    m_unread = false;
  });
  if (repeated) SaveIniData();
}

// Whether the file was read to its end.
bool CorvoIniData::ReadEntries(Entries& entries, bool& repeated) {
  TFileHandler file;
  if (!file.Open(m_fileName, OFM_READ, NLM_TEXT, false, false)) return false;
  char line[kLineBuffer];
  DWORD length;
  for (file.Read(line, sizeof line, &length); !file.EndOfFile();
       file.Read(line, sizeof line, &length)) {
    AtBoundary({kSource, kLoad, __LINE__}, [&] { TakeLine(line, entries, repeated); });
  }
  return !file.FailedSinceOpen();
}

void CorvoIniData::SaveIniData() {
  if (m_busy || m_unread) return;
  AtBoundary({kSource, kSave, __LINE__}, [&] {
    const FlagScope busy(m_busy);
    tstring text;
    for (const auto& [key, value] : m_data) text.append(key).append("=").append(value).append("\n");
    TFileHandler file;
    if (file.Open(m_fileName, OFM_WRITE, NLM_TEXT, false, false)) file.ReplaceText(text.c_str());
  });
}

// Writes the file, and takes its new time as known.
void CorvoIniData::SaveChange() {
  const HoldCancellation hold;
  SaveIniData();
  if (!m_busy) HasFileChanged();
}
