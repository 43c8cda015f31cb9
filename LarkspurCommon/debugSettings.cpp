// The filter's settings, the start of the trace module and its end.

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cwchar>
#include <iterator>
#include <mutex>
#include <string>

#include "LarkspurCommon/debug.h"
#include "LarkspurCommon/debugIniFile.h"
#include "LarkspurCommon/debugState.h"
#include "LarkspurCommon/tstring.h"
#include "platform/HostServices.h"
#include "platform/Win32Compat.h"

namespace {

constexpr char szDefModuleName[] = "Unknown ";
constexpr unsigned kModuleNameLength = 8;
constexpr char kLevelKey[] = "Filter Level";
constexpr char kBitmapKey[] = "ID Bitmap";
constexpr char kNameKey[] = "Module Name";
constexpr WORD kHighestLevel = 9;
constexpr WORD kReleaseLevel = 1;  // of an installed release whose file sets none

// What callers are told, for each level.
constexpr DebugFilterLevel kOfferedLevels[] = {
    DFL_OFF,      DFL_ESSENTIAL, DFL_ERRORS,   DFL_NOTICES,  DFL_NOTICES,
    DFL_REQUESTS, DFL_REQUESTS,  DFL_REQUESTS, DFL_REQUESTS, DFL_EVERYTHING};
static_assert(std::size(kOfferedLevels) == kHighestLevel + 1);

// The bitmap is the file's, where that has one: until then there is nothing to write over it.
// Guarded by s_DebugLock.
bool s_bitmapIsRead = false;

bool IsRelease() {
  char const* marker = CorvoReleaseMarker();
  struct statx status;
  return marker != nullptr && ::statx(AT_FDCWD, marker, 0, STATX_TYPE, &status) == 0;
}

void ReadFilterLevel() {
  bool found = false;
  const tstring text = GetData(kLevelKey, found);
  if (found) {
    const auto level = static_cast<WORD>(static_cast<unsigned long>(text));
    s_wDebugLevel.store(std::min(level, kHighestLevel), std::memory_order_relaxed);
  } else if (IsRelease()) {
    s_wDebugLevel.store(kReleaseLevel, std::memory_order_relaxed);
  }
}

// Two hex digits; what begins with anything else is 0.
unsigned char ParseByte(std::string const& pair) {
  if (std::isxdigit(static_cast<unsigned char>(pair[0])) == 0) return 0;
  return static_cast<unsigned char>(std::strtol(pair.c_str(), nullptr, 16));
}

// A shorter text changes the leading bytes only; its last one may be a single digit.
void ReadIdBitmap() {
  bool found = false;
  const std::string text = GetData(kBitmapKey, found);
  const std::size_t count = std::min(s_DebugIdBitmap.size(), (text.size() + 1) / 2);
  for (std::size_t i = 0; i < count; ++i) {
    s_DebugIdBitmap[i].store(ParseByte(text.substr(2 * i, 2)), std::memory_order_relaxed);
  }
}

tstring FormatIdBitmap() {
  tstring text;
  for (const auto& byte : s_DebugIdBitmap) {
    text.AppendFormat("%02x", unsigned{byte.load(std::memory_order_relaxed)});
  }
  return text;
}

void UpdateEntry(tstring key, tstring value) {
  UpdateIniFileEntry(key, value);
}

tstring FindModuleName(void* module) {
  char path[MAX_PATH] = "";
  char name[_MAX_FNAME] = "";
  GetModuleFileName(module, path, MAX_PATH - 1);
  _splitpath_s(path, nullptr, 0, nullptr, 0, name, sizeof name, nullptr, 0);
  return name[0] != '\0' ? name : szDefModuleName;
}

// Where the encoding doesn't know the name (yet), its plain characters.
std::wstring Widen(tstring const& name) {
  std::wstring wide;
  tstring::Convert(name, wide);
  if (!wide.empty()) return wide;
  for (const char byte : name) {
    const std::wint_t character = std::btowc(static_cast<unsigned char>(byte));
    wide += character == WEOF ? L'?' : static_cast<wchar_t>(character);
  }
  return wide;
}

// Names the module and enables every ID, once, however many threads want to.
void SetModuleName(tstring name) {
  name.LeftJustify(kModuleNameLength, ' ');
  char narrow[kModuleNameLength + 1];
  wchar_t wide[kModuleNameLength + 1]{};
  strncpy_s(narrow, std::size(narrow), name.c_str(), _TRUNCATE);
  wcsncpy_s(wide, std::size(wide), Widen(name).c_str(), _TRUNCATE);
  static std::mutex s_naming;  // its owner runs nothing that could trace
  const std::lock_guard<std::mutex> lock(s_naming);
  if (s_moduleNamed.load()) return;
  std::copy(std::begin(narrow), std::end(narrow), s_szModuleNameA);
  std::copy(std::begin(wide), std::end(wide), s_szModuleNameW);
  for (auto& byte : s_DebugIdBitmap) byte.store(0xFF, std::memory_order_relaxed);
  s_moduleNamed.store(true, std::memory_order_release);
}

// The settings, unless a thread is in them already, this one included. Trace calls take them so:
// their owner may be in a host's fopen_s, which may trace, or wait for what the caller holds.
class SettingsIfFree {
 public:
  SettingsIfFree() : m_held(s_DebugLock->TryLock()) {}
  ~SettingsIfFree() {
    if (m_held) s_DebugLock->Unlock();
  }
  SettingsIfFree(const SettingsIfFree&) = delete;
  SettingsIfFree& operator=(const SettingsIfFree&) = delete;

  bool AreHeld() const { return m_held; }

 private:
  const bool m_held;
};

bool IsStartedOrStopped() {
  return s_bInitialised.load(std::memory_order_acquire) || s_bDeInitCalled.load();
}

// While another thread is in the settings this one goes on with the filter as it is.
void Start() {
  const SettingsIfFree settings;
  if (!settings.AreHeld() || IsStartedOrStopped()) return;
  ReadDebugSettings();
  WriteDebugSettings();
  s_bInitialised.store(true, std::memory_order_release);
}

}  // namespace

void InitDebug(void* moduleHandle, char const* moduleName, char const*) {
  static thread_local bool t_starting = false;
  if (t_starting || IsStartedOrStopped()) return;
  const FlagScope starting(t_starting);  // a host's GetModuleFileName may trace
  const FlagScope inside(t_inSettings);
  Contain(
      [&] {
        if (!s_moduleNamed.load()) {
          SetModuleName(moduleName != nullptr ? tstring(moduleName) : FindModuleName(moduleHandle));
        }
        Start();
      },
      [] { s_bInitialised.store(true, std::memory_order_release); });
}

void DeInitDebug() {
  Contain([] {
    const DebugLockHelper lock(*s_DebugLock);
    RestartIndentation();
    UnloadIniFile();
    s_bInitialised.store(false);
    s_bDeInitCalled.store(true);
  });
}

DebugFilterLevel GetDebugFilterLevel() {
  RunSettingsCall("DebugFilterLevel GetDebugFilterLevel()", __LINE__, [] { ReadDebugSettings(); });
  const WORD level = s_wDebugLevel.load(std::memory_order_relaxed);
  return level <= kHighestLevel ? kOfferedLevels[level] : DFL_OFF;
}

void SetDebugFilterLevel(DebugFilterLevel level) {
  RunSettingsCall("void SetDebugFilterLevel(DebugFilterLevel)", __LINE__, [level] {
    const DebugLockHelper lock(*s_DebugLock);  // a look at the file must not come in between
    s_wDebugLevel.store(static_cast<WORD>(level), std::memory_order_relaxed);
    WriteDebugSettings();
  });
}

void SetDebugIdNames(unsigned int firstId, unsigned int count, char const* const* names) {
  if (names == nullptr) return;
  constexpr char kSignature[] =
      "void SetDebugIdNames(unsigned int, unsigned int, const char* const*)";
  RunSettingsCall(kSignature, __LINE__, [&] {
    const DebugLockHelper lock(*s_DebugLock);
    ReadIniFile();
    for (unsigned int i = 0; i < count; ++i) {
      UpdateEntry(tstring::FromFormat("ID %02x Name", firstId + i),
                  names[i] != nullptr ? names[i] : "");
    }
    WriteDebugSettings();
  });
}

void RereadDebugSettings() {
  const SettingsIfFree settings;
  if (settings.AreHeld() && !s_bDeInitCalled.load()) ReadDebugSettings();
}

void ReadDebugSettings() {
  RunSettingsCall("void ReadDebugSettings()", __LINE__, [] {
    const DebugLockHelper lock(*s_DebugLock);
    if (s_bDeInitCalled.load()) return;  // there are no entries: the level would seem to be unset
    const bool named = s_moduleNamed.load();
    ReadIniFile();
    ReadFilterLevel();
    ReadIdBitmap();
    s_bitmapIsRead = named;
  });
}

void WriteDebugSettings() {
  RunSettingsCall("void WriteDebugSettings()", __LINE__, [] {
    const DebugLockHelper lock(*s_DebugLock);
    ReadIniFile();
    UpdateEntry(kLevelKey, unsigned{s_wDebugLevel.load(std::memory_order_relaxed)});
    if (s_bitmapIsRead) {
      UpdateEntry(kNameKey, s_szModuleNameA);
      UpdateEntry(kBitmapKey, FormatIdBitmap());
    }
    WriteIniFile();
  });
}
