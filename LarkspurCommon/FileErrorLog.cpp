// The file layer's failure reports: the trace copy and the log file.

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <memory>

#include "LarkspurCommon/CritSect.h"
#include "LarkspurCommon/FileHandler.h"
#include "LarkspurCommon/FileHandlerBoundary.h"
#include "LarkspurCommon/FileLayerSettings.h"
#include "LarkspurCommon/Immortal.h"
#include "platform/HoldCancellation.h"
#include "platform/HostServices.h"
#include "platform/Win32Compat.h"

using namespace file_layer;

namespace {

constexpr char kUnit[] = "FileHandler";
constexpr char kLabel[] = "void LogFileError(WORD, const TCHAR*, ...)";

constexpr DWORD kTraceFileLayer = 0x00280000;  // with a level added
constexpr DWORD kTraceFailedWrite = 0x00280002;

// Held for every append, so that entries of different threads stay whole.
Immortal<CriticalSection> csLogFileError(false, "csLogFileError", false);

// Marks the calling thread as reporting. The configuration's answers may need files, and failing
// ones report again: those reports are traced only, or the chain would never end.
class Reporting {
 public:
  Reporting() : m_nested(s_reporting) { s_reporting = true; }
  ~Reporting() { s_reporting = m_nested; }
  Reporting(const Reporting&) = delete;
  Reporting& operator=(const Reporting&) = delete;

  bool IsNested() const { return m_nested; }

 private:
  static thread_local bool s_reporting;
  const bool m_nested;
};

thread_local bool Reporting::s_reporting = false;

struct CloseStream {
  void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, CloseStream>;

Stream OpenForAppending(const tstring& path) {
  char onDisk[MAX_PATH];
  if (path.size() >= sizeof onDisk) return nullptr;
  std::FILE* stream = nullptr;
  if (fopen_s(&stream, DosToUnixFileName(onDisk, path.c_str()), "a") != 0) return nullptr;
  return Stream(stream);
}

tstring Prefix() {
  SYSTEMTIME now{};
  GetLocalTime(&now);
  return tstring::FromFormat("%02d/%02d/%d %02d:%02d - ", now.wDay, now.wMonth, now.wYear,
                             now.wHour, now.wMinute);
}

bool WriteText(std::FILE* stream, const tstring& text) {
  return std::fwrite(text.data(), 1, text.size(), stream) == text.size();
}

// Appends one entry. 0, or what failed; a file that can't be opened is passed over.
int Append(const tstring& path, const tstring& message) {
  const LockCriticalSection lock(&*csLogFileError, true, kUnit, __LINE__);
  const Stream stream = OpenForAppending(path);
  if (!stream) return 0;
  std::fseek(stream.get(), 0, SEEK_END);
  const bool written = WriteText(stream.get(), Prefix()) && WriteText(stream.get(), message) &&
                       std::fflush(stream.get()) == 0;  // a full disk shows only here
  return written ? 0 : errno;
}

void LogToFile(const tstring& message) {
  if (!FileLayerLogsErrorsToFile()) return;
  const tstring path =
      tstring::FromFormat("%s\\FileErrors.txt", FileLayerLoggingDirectory().c_str());
  const HoldCancellation hold;  // an entry is whole or not there
  const ReleaseGCSHelper hostScope(kUnit, __LINE__, true, true);
  const int error = Append(path, message);
  if (error == 0) return;
  tstring text;
  DebugA(kTraceFailedWrite, "%s - Error %lu (%s) writing data to \"%s\".", kLabel,
         static_cast<unsigned long>(error), text.GetErrorText(error).c_str(), path.c_str());
}

}  // namespace

void LogFileError(WORD level, const char* format, ...) {
  tstring message;
  va_list args;
  va_start(args, format);
  message.FormatV(format, args);
  va_end(args);
  DebugA(kTraceFileLayer | level, "%s", message.c_str());

  const Reporting reporting;
  if (reporting.IsNested()) return;
  AtBoundary(kLabel, __LINE__, [&] { LogToFile(message + "\n"); });
}
