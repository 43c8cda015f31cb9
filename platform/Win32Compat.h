#ifndef PLATFORM_WIN32COMPAT_H
#define PLATFORM_WIN32COMPAT_H

/* Win32-style calls. The library has a working version of each on top of POSIX; a host process that
   exports one of the same name runs its own instead, also for the library's calls.

   Every call may be made from any thread. An int result is non-zero for success, except those of
   the "_s" functions, which are zero for success. Where a call on the file system fails, errno
   tells why. A file time is a signed 64-bit count of 100 ns units since 1601-01-01. Paths hold at
   most MAX_PATH - 1 characters, and '\' separates like '/'. Usable from C. */

#include <stdbool.h>
#include <stddef.h>
#include <stdio.h>
#include <wchar.h>

#include "platform/Export.h"
#include "platform/InterfaceCheck.h"
#include "platform/Win32Types.h"

CORVO_SIZE(4, 4, wchar_t);

struct dirent;

#ifdef __cplusplus
extern "C" {
#endif

/* Time ------------------------------------------------------------------------------------------

   Local time is the process's time zone (TZ), with the rules that held at the date in question. */

CORVO_API void GetLocalTime(SYSTEMTIME* local);
CORVO_API void GetSystemTime(SYSTEMTIME* utc);

/* A calendar date and time of day, in whatever zone, as a file time in the same zone, and back. A
   date that doesn't exist, a year outside 1601 to 30827 or a negative file time gives zero and
   leaves the output alone. The day of the week is ignored on the way in. */
CORVO_API int SystemTimeToFileTime(const SYSTEMTIME* time, long long* fileTime);
CORVO_API int FileTimeToSystemTime(const long long* fileTime, SYSTEMTIME* time);

/* From UTC to local time and back; every 100 ns unit is kept. A local time that occurs twice, when
   clocks go back, means its first occurrence; one that clocks skip is read with the offset in force
   before, so that half past two becomes half past three. Zero, and no output, where either time
   would be negative, and in the last two days that a file time can hold. */
CORVO_API int FileTimeToLocalFileTime(const long long* utc, long long* local);
CORVO_API int LocalFileTimeToFileTime(const long long* local, long long* utc);

/* Pauses the calling thread for the whole time, signals or not. Zero gives up the processor once.
 */
CORVO_API void Sleep(DWORD milliseconds);

/* Files and directories -------------------------------------------------------------------------
 */

/* The text with '\' turned into '/', in `out` (MAX_PATH characters; may be `path` itself). Returns
   `out`, which is empty when path is null or doesn't fit. */
CORVO_API char* DosToUnixFileName(char* out, const char* path);

/* Finds `path` on the disk ignoring letter case. `found` (MAX_PATH characters; may be `path`
   itself) gets the path with '/' for '\', each component as it is spelled on disk: an exact
   spelling wins over a differing one, the first in byte order among several differing ones. From
   the first component that doesn't exist on, the path stays as written. Relative paths start at
   the current directory. True when the whole path exists. A path that is null or doesn't fit gives
   false and an empty `found`. The last argument changes nothing. */
CORVO_API bool FindFileIgnoreCase(char* found, const char* path, bool unused);

/* The calls below look up paths as FindFileIgnoreCase does, except that the last component of a
   target is used as written: a move or copy never lands on a neighbour that differs in case. */

/* Copies a regular file. All or nothing: the target appears, or is replaced, when the copy is
   complete, and a failure leaves no target where none was. A new target gets the permission bits
   of the source and, where the process may set it, its owner; a replaced one keeps its own. Only
   where the target's directory can't be written is an existing target overwritten in place, which a
   failure can leave incomplete. With failIfExists an existing target is refused. Nothing is flushed
   to the disk. */
CORVO_API int CopyFile(const char* from, const char* to, int failIfExists);

/* Renames a file or directory. Never replaces an existing target (EEXIST) and never crosses file
   systems (EXDEV). */
CORVO_API int MoveFile(const char* from, const char* to);

/* Creates a directory and its missing parents. One that exists already is success; a file in its
   place is not. `security` is ignored. */
CORVO_API int CreateDirectory(const char* path, void* security);

/* A buffer for one directory entry, with room for the longest name, whichever layout of dirent the
   caller was compiled with; null when there is no memory. */
CORVO_API struct dirent* AllocateDirEntry(const char* directory);
CORVO_API void FreeDirEntry(struct dirent* entry);

/* The path of the running program (module null) or of a module opened with dlopen, and its length.
   Zero, and an empty buffer, when it isn't known or doesn't fit. */
CORVO_API DWORD GetModuleFileName(void* module, char* buffer, DWORD size);

/* Splits a path into drive ("C:"), directory with its last separator, name, and extension with its
   dot. Dots that lead a name belong to the name. Parts that are null, with size zero, are left out.
   When a part doesn't fit the result is an error number and all parts are empty. */
CORVO_API int _splitpath_s(const char* path, char* drive, size_t driveSize, char* directory,
                           size_t directorySize, char* name, size_t nameSize, char* extension,
                           size_t extensionSize);

/* Opens a stream: 0 and the stream, or an error number and null. */
CORVO_API int fopen_s(FILE** file, const char* path, const char* mode);

/* Identity and counting -------------------------------------------------------------------------
 */

/* A random (version 4) GUID from the kernel. Zero, and an untouched `guid`, when there is none. */
CORVO_API int CoCreateGuid(GUID* guid);

/* Atomic; the new value. */
CORVO_API LONG InterlockedIncrement(LONG* value);
CORVO_API LONG InterlockedDecrement(LONG* value);

/* Bounded strings -------------------------------------------------------------------------------

   Sizes count characters, terminator included. The output is always terminated. What doesn't fit
   leaves the output empty and gives ERANGE; a null argument or a size of zero gives EINVAL. */

/* As a count: copy as much as fits. Text that was cut then gives STRUNCATE. */
#define _TRUNCATE ((size_t)-1)
#define STRUNCATE 80

CORVO_API int strcpy_s(char* out, size_t size, const char* text);
CORVO_API int strcat_s(char* out, size_t size, const char* text);

/* At most `count` characters of the text, and the terminator. */
CORVO_API int strncpy_s(char* out, size_t size, const char* text, size_t count);
CORVO_API int wcsncpy_s(wchar_t* out, size_t size, const wchar_t* text, size_t count);

/* The number of characters, or -1 with an empty output where the text doesn't fit. */
CORVO_API int sprintf_s(char* out, size_t size, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

#ifdef __cplusplus
}
#endif

#endif
