// The trace settings file: reading, writing, and its entries in memory. Everything here runs under
// s_DebugLock.

#include "LarkspurCommon/debugIniFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <limits>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>

#include "LarkspurCommon/FlagScope.h"
#include "LarkspurCommon/InPlaceText.h"
#include "LarkspurCommon/debug.h"
#include "LarkspurCommon/debugState.h"
#include "LarkspurCommon/tstring.h"
#include "platform/HoldCancellation.h"
#include "platform/HostServices.h"
#include "platform/Win32Compat.h"

Immortal<DebugLock> s_DebugLock;

namespace {

constexpr char sDbgFileName[] = "/corvo_debug_settings.ini";
constexpr int kReadSize = 512;  // a longer line counts as several
constexpr long long kNoTime = std::numeric_limits<long long>::min();

using Entries = std::map<tstring, tstring>;

// A plain pointer: the host may trace after the library's destructors have run.
Entries* piniData = nullptr;
bool bIniFileExists = false;
bool bIniFileLoaded = false;                 // the entries are those of the file as last seen
bool bIniFileBeingRead = false;              // a host's fopen_s may come back here
long long ftLastIniFileWriteTime = kNoTime;  // seconds
bool bIniFileChanged = false;                // there are changes that aren't in the file

// Every text that a caller was given, once: another thread may read the file, or stop the module,
// while it is still looked at. As few as the file ever had different values of the keys asked for.
Immortal<std::set<tstring>> s_handedOut;

std::string IniFilePath() {
  char const* directory = CorvoSettingsDirectory();
  return directory != nullptr ? directory + std::string(sDbgFileName) : std::string();
}

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

// Reading anything else (a pipe, a device) might never end.
bool IsRegularFile(std::string const& path) {
  struct statx status;
  return ::statx(AT_FDCWD, path.c_str(), 0, STATX_TYPE, &status) == 0 && S_ISREG(status.stx_mode);
}

File OpenIniFile(char const* mode) {
  std::FILE* file = nullptr;
  if (fopen_s(&file, IniFilePath().c_str(), mode) != 0) return nullptr;
  return File(file);
}

void AddLine(std::string_view line, Entries& entries) {
  if (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.remove_suffix(1);
  const std::size_t equals = line.find('=');
  if (equals == std::string_view::npos) return;
  const std::size_t start = line.find_first_not_of(' ', equals + 1);
  if (start == std::string_view::npos) return;
  tstring value(std::string(line.substr(start)));
  value.TrimRight();
  entries.emplace(std::string(line.substr(0, equals)), value);  // the first one counts
}

bool ReadLines(Entries& entries) {
  if (!IsRegularFile(IniFilePath())) return false;
  const File file = OpenIniFile("r");
  if (file == nullptr) return false;
  char line[kReadSize];
  while (std::fgets(line, sizeof line, file.get()) != nullptr) AddLine(line, entries);
  return std::ferror(file.get()) == 0;
}

// Leaves the entries as they are when the file can't be read: the next look tries again, and until
// then nothing is written over it, however the reading ended.
void LoadEntries() {
  const FlagScope reading(bIniFileBeingRead);
  Entries entries;
  if (bIniFileExists && !ReadLines(entries)) return;
  if (piniData == nullptr) return;  // the host's fopen_s stopped the module
  piniData->swap(entries);
  bIniFileChanged = false;
  bIniFileLoaded = true;
}

std::string AllLines() {
  std::string lines;
  for (const auto& [key, value] : *piniData) lines.append(key).append("=").append(value) += '\n';
  return lines;
}

bool WriteLines() {
  File file = OpenIniFile(bIniFileExists ? "r+" : "w");
  if (file == nullptr || piniData == nullptr) return false;
  const bool replaced = ReplaceInPlace(::fileno(file.get()), AllLines());
  return std::fclose(file.release()) == 0 && replaced;
}

// Whether the file has come, gone or changed since it was last looked at; what can't be told
// unchanged counts as changed.
bool TakeWriteTime(std::string const& path) {
  if (::access(path.c_str(), F_OK) != 0) {
    const bool existed = bIniFileExists;
    bIniFileExists = false;
    ftLastIniFileWriteTime = kNoTime;
    return existed;
  }
  bIniFileExists = true;
  struct statx status;
  const bool known = ::statx(AT_FDCWD, path.c_str(), 0, STATX_MTIME, &status) == 0;
  const long long writeTime = known ? status.stx_mtime.tv_sec : kNoTime;
  if (known && writeTime == ftLastIniFileWriteTime) return false;
  ftLastIniFileWriteTime = writeTime;
  return true;
}

}  // namespace

void UnloadIniFile() {
  const DebugLockHelper lock(*s_DebugLock);
  delete piniData;
  piniData = nullptr;
  bIniFileLoaded = false;
  bIniFileChanged = false;
}

bool HasIniFileChanged() {
  bool changed = false;
  RunSettingsCall("bool HasIniFileChanged()", __LINE__, [&] {
    const DebugLockHelper lock(*s_DebugLock);
    changed = TakeWriteTime(IniFilePath());
  });
  return changed;
}

void ReadIniFile() {
  RunSettingsCall("void ReadIniFile()", __LINE__, [] {
    const DebugLockHelper lock(*s_DebugLock);
    if (s_bDeInitCalled.load() || bIniFileBeingRead) return;
    if (piniData == nullptr) {
      piniData = new Entries;
      ftLastIniFileWriteTime = kNoTime;
    }
    if (HasIniFileChanged()) bIniFileLoaded = false;
    if (!bIniFileLoaded) LoadEntries();
  });
}

void WriteIniFile() {
  RunSettingsCall("void WriteIniFile()", __LINE__, [] {
    const DebugLockHelper lock(*s_DebugLock);
    if (!bIniFileChanged || !bIniFileLoaded) return;
    const HoldCancellation hold;  // no half written file
    if (WriteLines()) bIniFileChanged = false;
    HasIniFileChanged();
  });
}

void UpdateIniFileEntry(tstring& key, tstring& value) {
  RunSettingsCall("void UpdateIniFileEntry(tstring&, tstring&)", __LINE__, [&] {
    const DebugLockHelper lock(*s_DebugLock);
    if (piniData == nullptr) ReadIniFile();
    if (piniData == nullptr) return;  // the module has been stopped
    const auto [entry, added] = piniData->try_emplace(key, value);
    if (!added) {
      if (entry->second == value) return;
      entry->second = value;
    }
    bIniFileChanged = true;
  });
}

char const* GetData(char const* key, bool& found) {
  char const* text = "";
  found = false;
  RunSettingsCall("const char* GetData(const char*, bool&)", __LINE__, [&] {
    const DebugLockHelper lock(*s_DebugLock);
    if (piniData == nullptr || key == nullptr) return;
    const auto entry = piniData->find(key);
    if (entry == piniData->end()) return;
    text = s_handedOut->insert(entry->second).first->c_str();
    found = true;
  });
  return text;
}
