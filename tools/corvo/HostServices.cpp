// The functions that the library finds in this process in place of its own.

#include "platform/HostServices.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <mutex>
#include <thread>

#include "LarkspurCommon/Aregistry.h"
#include "LarkspurCommon/FileHandler.h"
#include "LarkspurCommon/debug.h"
#include "platform/Win32Compat.h"
#include "tools/corvo/HostServices.h"
#include "tools/corvo/InputError.h"
#include "tools/corvo/Paths.h"

namespace corvo {
namespace {

constexpr DWORD kFailureLevel = 2;
constexpr std::size_t kLongestLine = 1024;
constexpr char kEngineId[] = "27";  // both write their operation's signature into failure lines
constexpr char kFileLayerId[] = "28";
constexpr char kSignatureEnd[] = ") - ";

struct Host {
  std::string home;
  std::string settings;       // of the trace; everything else is in `home`
  std::string program;        // the library keeps its directories beside it
  std::string releaseMarker;  // never there
  bool trace = false;

  std::mutex mutex;  // guards what follows; all above is set before there are threads
  std::map<std::thread::id, std::vector<std::string>> reasons;  // for refusing, in order
};

// Never destroyed: the library may trace until the process has ended.
Host& TheHost() {
  static Host& host = *new Host;
  return host;
}

// From "16/11 17:58:18.123 corvo    (27,2) 1a2b,b7f4d6c0,06789: bool X::Y(int) - reason.\n" the
// reason; empty for other than failure lines.
std::string Reason(const std::string& line) {
  const std::size_t identifier = line.find('(');
  const std::size_t prefixEnd = line.find(": ", identifier);
  if (prefixEnd == std::string::npos || line.compare(identifier + 3, 3, ",2)") != 0) return {};
  const std::size_t begin = line.find_first_not_of(' ', prefixEnd + 1);
  std::string text = line.substr(begin, line.find_last_not_of(".\n") + 1 - begin);

  const std::string id = line.substr(identifier + 1, 2);
  const std::size_t signatureEnd = text.find(kSignatureEnd);
  if ((id != kEngineId && id != kFileLayerId) || signatureEnd == std::string::npos) return text;
  return text.substr(signatureEnd + std::strlen(kSignatureEnd));
}

bool Holds(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

// The engine's lines repeat what the file layer said before: once is enough.
void KeepReason(const std::string& reason) {
  Host& host = TheHost();
  const std::lock_guard<std::mutex> lock(host.mutex);
  std::vector<std::string>& reasons = host.reasons[std::this_thread::get_id()];
  const auto says = [&reason](const std::string& kept) {
    return Holds(kept, reason) || Holds(reason, kept);
  };
  if (std::none_of(reasons.begin(), reasons.end(), says)) reasons.push_back(reason);
}

}  // namespace

std::string DefaultHome() {
  const char* const state = std::getenv("XDG_STATE_HOME");
  if (state != nullptr && *state == '/') return std::string(state) + "/corvo";
  const char* const home = std::getenv("HOME");
  if (home != nullptr && *home != '\0') return std::string(home) + "/.local/state/corvo";
  throw InputError("neither XDG_STATE_HOME nor HOME is set: give --home");
}

void SetUpHost(const std::string& home, bool trace) {
  Host& host = TheHost();
  host.home = Directory(home);
  host.settings = host.home;
  host.program = host.home + "/corvo";
  host.releaseMarker = host.home + "/release";
  host.trace = trace;
  if (trace) InitDebug(nullptr, nullptr, nullptr);  // its lines carry the program's name
  const mode_t usersMask = ::umask(0);
  VMRegistry::global();  // opens files, and so sets the mask
  ::umask(usersMask);
  TakeReason();  // what its start found amiss is no reason for anything
}

std::string HomeDirectory() {
  return TheHost().home;
}

void UseSettingsDirectory(const std::string& directory) {
  TheHost().settings = directory;
}

std::vector<std::string> TakeReasons() {
  Host& host = TheHost();
  const std::lock_guard<std::mutex> lock(host.mutex);
  auto mine = host.reasons.extract(std::this_thread::get_id());
  if (mine.empty()) return {};
  return std::move(mine.mapped());
}

std::string TakeReason() {
  return JoinReasons(TakeReasons());
}

std::string JoinReasons(const std::vector<std::string>& reasons) {
  std::string all;
  for (const std::string& reason : reasons) all += (all.empty() ? "" : "; ") + reason;
  return all;
}

}  // namespace corvo

using corvo::TheHost;

extern "C" const char* CorvoSettingsDirectory() {
  return TheHost().settings.c_str();
}

extern "C" const char* CorvoReleaseMarker() {
  return TheHost().releaseMarker.c_str();
}

extern "C" DWORD GetModuleFileName(void*, char* buffer, DWORD size) {
  const std::string& program = TheHost().program;
  if (strcpy_s(buffer, size, program.c_str()) != 0) return 0;
  return static_cast<DWORD>(program.size());
}

// Decided here, not by the trace settings file: failures are needed for what the user is told,
// everything else only when he asks.
bool IsDebugEnabled(DWORD id) {
  return TheHost().trace || (id & 0xFFFF) <= corvo::kFailureLevel;
}

void ConsolePrint(unsigned long, const char* format, ...) {
  char line[corvo::kLongestLine];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(line, sizeof line, format, arguments);
  va_end(arguments);
  if (TheHost().trace) std::fputs(line, stderr);
  const std::string reason = corvo::Reason(line);
  if (!reason.empty()) corvo::KeepReason(reason);
}

// Removes links, never what they lead to.
bool RemoveDirectoryTree(unsigned long&, const char* directory) {
  std::error_code error;
  std::filesystem::remove_all(directory, error);
  return !error;
}
