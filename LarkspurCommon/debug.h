#ifndef LARKSPURCOMMON_DEBUG_H
#define LARKSPURCOMMON_DEBUG_H

#include <stdarg.h>

#include "platform/Export.h"
#include "platform/InterfaceCheck.h"
#include "platform/Win32Types.h"

class tstring;

// The trace log. Every call may come from any thread and never throws (a thread's cancellation
// does unwind through it). No lock is held while a line is built or handed out, so hooks and the
// exception handler may call whatever they like, this module included. But for a host's fopen_s
// that traces: it opens the settings file while the settings are locked. No trace call waits for
// that lock; other threads that read or change the settings do.
//
// A trace identifier is (ID number << 16) | level: IDs 0 to 127, levels 0 (always interesting) to
// 9 (detail), 0xFFFF in either half meaning any. 0x0000FFFF is unconditional: a line with it is
// written without asking the filter.
//
// One call gives one line, at most 1023 characters with the line feed that always ends it:
//   16/11 17:58:18.123 Recorder (27,2) 1a2b,b7f4d6c0,06789: text
// day/month, time, module name, (ID in hex, level), process, thread handle, kernel thread.

#define TRACE_PRINTF(text, args) __attribute__((format(printf, text, args)))

// Lines -------------------------------------------------------------------------------------------

CORVO_API void DebugA(DWORD id, char const* format, ...) TRACE_PRINTF(2, 3);
CORVO_API void DebugW(DWORD id, wchar_t const* format, ...);

// Unconditional lines.
CORVO_API void _DebugA(char const* format, ...) TRACE_PRINTF(1, 2);
CORVO_API void _DebugW(wchar_t const* format, ...);

CORVO_API void __DebugA(DWORD id, char const* format, va_list args) TRACE_PRINTF(2, 0);
CORVO_API void __DebugW(DWORD id, wchar_t const* format, va_list args);

// What the calls above guard: what a host's GetLocalTime, hook or console throws leaves these.
CORVO_API void __InternalDebugA(DWORD id, char const* format, va_list args) TRACE_PRINTF(2, 0);
CORVO_API void __InternalDebugW(DWORD id, wchar_t const* format, va_list args);

// Whether a line with this identifier would be written. Starts the module on first use and re-reads
// the settings file when the last look at it is more than 3 seconds old.
CORVO_API bool IsDebugEnabled(DWORD id);

// A hex dump, 16 bytes to a line. Null or empty writes nothing.
CORVO_API void Dump(DWORD id, void const* data, DWORD length);
CORVO_API void __InternalDump(DWORD id, void const* data, DWORD length);
CORVO_API char HEX(int value);         // the low 4 bits as one upper-case digit
CORVO_API char ASCII(char character);  // itself, or a full stop where it doesn't print

// Where lines go ----------------------------------------------------------------------------------

// Installs both hooks (note the order: wide first). A null one restores the default output for that
// width, the host's ConsolePrint. A hook gets one whole, terminated line and its length.
CORVO_API void SetDebugHooks(void (*wideHook)(wchar_t const* line, unsigned int length),
                             void (*narrowHook)(char const* line, unsigned int length));

// Who hears of exceptions caught inside trace calls and lock guards. Null removes it.
CORVO_API void SetExceptionHandlerCallback(void (*handler)(char const* file, char const* function,
                                                           int line));

// Exception reports, for catch-all handlers: the source file's name without extension, the
// function's full signature text and a line number. TraceException writes at 0x00250002;
// DebugTraceException tells the installed handler or, without one, writes unconditionally.
CORVO_API void TraceException(char const* file, char const* function, int line);
CORVO_API void DebugTraceException(char const* file, char const* function, int line);

// Indentation and function tracing ----------------------------------------------------------------

// The calling thread's indentation in spaces; a level is 2. A decrease without a matching increase
// restarts the indentation of every thread from 0.
CORVO_API unsigned int GetThreadIndentLevel();
CORVO_API void IncreaseThreadIndentLevel();
CORVO_API void DecreaseThreadIndentLevel();

// Raises the calling thread's indentation by one level while it lives.
class CORVO_API CDebugIndentOutput {
 public:
  CDebugIndentOutput();
  virtual ~CDebugIndentOutput();
  CDebugIndentOutput(const CDebugIndentOutput&) = delete;
  CDebugIndentOutput& operator=(const CDebugIndentOutput&) = delete;
};

// Writes "> function()" when constructed and "< function()" when destroyed, with the thread's lines
// between them indented. The formatted constructors write the arguments inside the parentheses.
// `function` is not copied and must outlive the object. Used by one thread.
class CORVO_API CDebugTraceFn {
 public:
  CDebugTraceFn(DWORD id, char const* function);
  CDebugTraceFn(DWORD id, char const* function, char const* format, ...) TRACE_PRINTF(4, 5);
  CDebugTraceFn(DWORD id, char const* function, wchar_t const* format, ...);
  virtual ~CDebugTraceFn();
  CDebugTraceFn(const CDebugTraceFn&) = delete;
  CDebugTraceFn& operator=(const CDebugTraceFn&) = delete;

 private:
  char const* m_function;  // null: the enter line was not wanted
  DWORD m_id;
};

CORVO_SIZE(4, 4, wchar_t);
CORVO_SIZE(4, 8, CDebugIndentOutput);
CORVO_SIZE(12, 24, CDebugTraceFn);

// The formatted constructors' enter line and indentation. "> function(format)" is cut at 255
// characters before the arguments are put in.
CORVO_API void InternalTraceFnA(DWORD id, char const* function, char const* format, va_list args)
    TRACE_PRINTF(3, 0);
CORVO_API void InternalTraceFnW(DWORD id, char const* function, wchar_t const* format,
                                va_list args);

// Settings ----------------------------------------------------------------------------------------
//
// What a host's service throws in one of these ends it, and goes to the exception handler alone.

enum DebugFilterLevel : unsigned int {
  DFL_OFF = 0,
  DFL_ESSENTIAL = 1,
  DFL_ERRORS = 2,
  DFL_NOTICES = 3,
  DFL_REQUESTS = 5,
  DFL_EVERYTHING = 9
};

// Starts the module, once: names it (null: after the module that `moduleHandle` stands for, or the
// running program) and reads the settings file. The first trace call does this for a host that
// doesn't. Doesn't wait for a thread that is at it already. `extra` is ignored.
CORVO_API void InitDebug(void* moduleHandle, char const* moduleName, char const* extra);

// Stops it for good: trace calls go on with the filter as it is.
CORVO_API void DeInitDebug();

CORVO_API DebugFilterLevel GetDebugFilterLevel();  // after a look at the file
CORVO_API void SetDebugFilterLevel(DebugFilterLevel level);

// Records display names for `count` consecutive IDs in the settings file.
CORVO_API void SetDebugIdNames(unsigned int firstId, unsigned int count, char const* const* names);

// The filter from the settings file, and back. A file that can't be read or written is harmless.
CORVO_API void ReadDebugSettings();
CORVO_API void WriteDebugSettings();

// The settings file, corvo_debug_settings.ini in the host's settings directory, and its entries in
// memory. Keys and values are compared byte by byte.
CORVO_API bool HasIniFileChanged();  // since the last such question
CORVO_API void ReadIniFile();        // if it has changed; unwritten changes are then dropped
CORVO_API void WriteIniFile();       // if there are unwritten changes
CORVO_API void UpdateIniFileEntry(tstring& key, tstring& value);
// Empty and not found, or the value as it is now: a text that stays as long as the library,
// whatever becomes of the entry. Each different text that is handed out takes its memory for good.
CORVO_API char const* GetData(char const* key, bool& found);

#undef TRACE_PRINTF

#endif
