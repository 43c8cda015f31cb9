#ifndef LARKSPURCOMMON_FILEHANDLER_H
#define LARKSPURCOMMON_FILEHANDLER_H

#include <cstddef>
#include <memory>

#include "LarkspurCommon/FileMark.h"
#include "LarkspurCommon/tstring.h"
#include "platform/Export.h"
#include "platform/InterfaceCheck.h"
#include "platform/Win32Types.h"

enum OpenFileMode : DWORD {
  OFM_READ = 0,       // the file must exist
  OFM_WRITE = 1,      // created if missing
  OFM_READWRITE = 2,  // created if missing
};

enum NewLine_Mode : DWORD {
  NLM_BINARY = 0,
  NLM_TEXT = 1,  // Write: "\n" becomes CR LF; Read: one line at a time, its end as "\n"
};

// The C library's time_t as hosts have it by default, 32 bits on i386. A host there that chose the
// wide one (_TIME_BITS=64) is free to, but its compiler refuses a time_t where this stands.
using FileSeconds = long;

// The class through which the system touches files. Paths may use either separator and any letter
// case; a bare file name always means a file in the running program's directory. A path that
// doesn't fit into 259 characters is refused.
//
// No operation throws. A failing one returns false (or what it states), keeps its reason as last
// error and logs it with LogFileError. An object is used by one thread at a time. Files of 2 GiB
// and more are refused with EOVERFLOW and writes beyond that with EFBIG, as by 32-bit system calls.
class CORVO_API TFileHandler {
 public:
  static LONG count;  // live objects; changed by interlocked operations only

  TFileHandler();
  virtual ~TFileHandler();
  TFileHandler(const TFileHandler&) = delete;
  TFileHandler& operator=(const TFileHandler&) = delete;

  void Init();  // the constructor's: a second call counts the object twice

  // Closes what was open first. `createDirectory` makes a missing directory where the file may be
  // created. Sets the process's file-creation mask to 002. On failure the path is empty, except
  // that a null or empty `path` leaves it as it was.
  bool Open(const char* path, OpenFileMode mode, NewLine_Mode newLine, bool truncate,
            bool createDirectory);
  // Creates a file with a new name in the configured temporary directory; GetPathname tells which.
  bool OpenTempFile(OpenFileMode mode, NewLine_Mode newLine, bool truncate, const char* prefix,
                    const char* extension);
  void Close();  // path, cache and last error stay

  // Both set `*count` (which may be null) to the bytes delivered, also when they fail. A short read
  // is passed on. The end of the file shows only in a read that delivers nothing; so does failure,
  // so that loops until EndOfFile() end.
  //
  // In text mode Read delivers one line and a terminator (`length` counts both, and must be at
  // least 1): LF, CR, CR LF and LF CR all end a line. One that `length` or the file cuts comes
  // unchanged.
  bool Read(void* buffer, DWORD length, DWORD* count);
  bool CachedRead(void* buffer, DWORD length, DWORD* count);  // bytes, whatever the newline mode

  // In text mode `buffer` is zero-terminated, `length` is unused and an empty text gives false. A
  // write that the system cuts short gives true: FailedSinceOpen and the last error tell.
  bool Write(const void* buffer, DWORD length);
  void WriteFormatString(const char* format, ...) __attribute__((format(printf, 2, 3)));

  // Makes `text`, with each "\n" as CR LF, what the file holds, in place, by as few writes as the
  // system allows: however it ends, the file isn't cut before the new text is whole, and empty
  // lines at its end take the place of what is to go. False when it may have the old lines still,
  // or such empty lines. For a regular file that is open for writing without truncation; its
  // position stays.
  bool ReplaceText(const char* text);

  // Origin 0: the start; 1: the descriptor's position, which is ahead of the reader's while the
  // cache holds unread bytes; 2: the end. Flushes to disk first. A failed move from the start or
  // the end opens the path again as Open did, a missing file or directory made where that made it,
  // but without truncation, and moves once more.
  bool MoveToPosition(DWORD origin, LONG distance);
  void MakeThisEndOfFile();  // at the descriptor's position; flushes to disk first
  DWORD GetFilePosition();   // the reader's; flushes to disk first; 0 closed, 0xFFFFFFFF failed
  bool EndOfFile();
  bool GetIsOpen();
  LONGLONG GetCurrentFileSize();  // 0 on failure

  bool Delete();  // closes first; false without a message when there is no such file
  // Closes first. `newName` is used as given, on the same file system, and must not exist.
  bool RenameFile(const char* newName);

  void GetName(tstring& name) const;  // file name and extension, without the directory
  const char* GetPathname() const;
  const char* DisplayLastError() const;

  // True once a read, a write (a short one included), a seek, a flush, a truncation or a question
  // for position or size has failed since the last successful Open, whatever came after it.
  bool FailedSinceOpen() const;
  // On disk when true. Files that can't be flushed, such as pipes, have nothing to lose: true.
  bool Flush();

  static bool FileExists(const char* path);   // a directory too
  static bool IsDirectory(const char* path);  // a bare name means the current directory's here
  static bool CreateDirectory(const char* path);
  static bool Delete(const char* path, bool recursive);
  // False when the host's CoCreateGuid gives nothing but names that are taken.
  static bool GetTempFilename(tstring& name, const char* prefix, const char* extension);
  static tstring GetMsgFileName(const GUID& guid, const char* extension);

  // Flushes a file, which must be readable, or a directory by name; true as for Flush. For a
  // directory that isn't readable the whole system's data is flushed.
  static bool FlushToDisk(const char* path);
  // Gives `to`, which must be readable, the permission bits of `from` and its owner and group, as
  // far as the process may and the file system can.
  static bool CopyOwnerAndMode(const char* from, const char* to);

  // What the file system knows of a file. By name, a path that is null, empty or not found gives
  // false (0 for the size) without a message; so does a closed object. Where FileSeconds can't
  // hold a file's time, GetLastWriteTime fails with EOVERFLOW. The SYSTEMTIME forms hold every year
  // up to 65535.
  static LONGLONG GetFileSize(const char* path);  // EOVERFLOW from 2 GiB on
  bool GetLastWriteTime(SYSTEMTIME& utc);
  bool GetCreationTime(SYSTEMTIME& utc);  // of the last change of status: there is no other
  static bool GetLastWriteTime(const char* path, FileSeconds& time);  // -1 when false
  static bool GetLastWriteTime(const char* path, SYSTEMTIME& utc);
  // Takes local time, where the getters give UTC. Fields beyond their range carry over.
  static bool SetLastWriteTime(const char* path, SYSTEMTIME& local);

  // Whether a file has appeared, gone, or been written since the last call. The caller keeps both
  // variables for the next one and starts with false and any time: one that differs from the
  // file's makes the first call true. `lastWriteTime` is a mark to compare with, in whole seconds:
  // where FileSeconds is too narrow it holds the time's low bits.
  static bool HasFileChanged(const char* path, bool& exists, FileSeconds& lastWriteTime);

  // The mark of the open file, and of what a path names now. On failure `mark` is untouched.
  bool GetMark(FileMark& mark);
  static bool GetMark(const char* path, FileMark& mark);

  // A hidden file's name begins with a dot. False when the file couldn't be renamed (an existing
  // file is never replaced); true also when there was nothing to do or no such file. The owner of a
  // renamed file may read and write it.
  static bool MakeHidden(const char* path);
  static bool MakeVisible(const char* path);

  // Finds a path on the disk whatever its letter case, hidden files by their visible names too.
  // `out` holds MAX_PATH characters and may be `path`. True when it names what exists. Otherwise it
  // has as much as was found, with the rest as given: all of it when the path is relative, or when
  // what was found doesn't fit; nothing when the path itself doesn't. A null or empty `path` asks
  // whether `out` names what exists. The wide form writes nothing when false.
  static bool GetFileNameFromDisk(char* out, const char* path);
  static bool GetFileNameFromDisk(wchar_t* out, const wchar_t* path);

  // The whole file's CRC-32 as 8 and MD5 digest as 32 lower-case hexadecimal digits. The getters
  // generate a text once: it stays as it is whatever is opened or written later. The generators
  // read the file to its end, or to where a read fails, and go back to where the reader was. A
  // closed object's file is opened again and left open. `clock` is an os_clock() value: once it is
  // 2 ms old, each block of 16 KiB is followed by a pause of 10 ms and a new value.
  const char* GetCRC(unsigned long& clock);
  const char* GetHash(unsigned long& clock);
  void GenerateCRC(unsigned long& clock);
  void GenerateHash(unsigned long& clock);

 private:
  static constexpr DWORD kCacheSize = 16384;

  CORVO_LOCAL bool Fail(const char* label, int error, const char* doing);
  CORVO_LOCAL bool FailData(const char* label, int error, const char* doing);
  CORVO_LOCAL void DescribeError(int error, const char* doing, const char* path);

  CORVO_LOCAL bool OpenAs(const char* path, OpenFileMode mode, NewLine_Mode newLine, bool truncate,
                          bool createDirectory, bool mustBeNew);
  CORVO_LOCAL bool ResolvePath(const char* path, tstring& resolved);
  CORVO_LOCAL bool OpenResolved(const tstring& path, bool truncate, bool mustBeNew = false);
  CORVO_LOCAL bool Reopen();
  CORVO_LOCAL bool OpenDescriptor(const tstring& path, bool truncate, bool mustBeNew);
  CORVO_LOCAL bool RefuseOpening();
  CORVO_LOCAL bool FailOpening(int error, const tstring& path);

  char* Window() { return m_cache ? m_cache.get() : &m_reserve; }
  DWORD WindowSize() const { return m_cache ? kCacheSize : DWORD{sizeof m_reserve}; }
  DWORD Unread() const { return m_cacheCount - m_cachePosition; }
  void EmptyCache() { m_cachePosition = m_cacheCount = 0; }
  CORVO_LOCAL DWORD TakeUnread(char* out, DWORD length);
  CORVO_LOCAL bool ReadDescriptor(char* out, DWORD size, DWORD taken, DWORD& delivered);
  CORVO_LOCAL bool Refill(DWORD taken);
  CORVO_LOCAL bool ReadPastCache(char* out, DWORD length, DWORD& got);
  CORVO_LOCAL bool ReadLine(char* buffer, DWORD length, DWORD& got);

  CORVO_LOCAL bool WriteBytes(const void* bytes, std::size_t size);
  CORVO_LOCAL bool HasRoomFor(std::size_t size);
  CORVO_LOCAL bool WriteText(const char* text);

  CORVO_LOCAL bool FlushAs(const char* label);
  CORVO_LOCAL bool SeekStep(DWORD origin, LONG distance);

  int m_descriptor = -1;
  tstring m_path;
  tstring m_hash;
  tstring m_crc;
  tstring m_lastError;
  std::unique_ptr<char[]> m_cache;
  DWORD m_cachePosition = 0;
  DWORD m_cacheCount = 0;
  NewLine_Mode m_newLineMode = NLM_BINARY;
  OpenFileMode m_openMode = OFM_READ;
  bool m_truncate = false;
  bool m_createDirectory = false;
  bool m_endOfFile = false;

  bool m_failedSinceOpen = false;
  char m_reserve = 0;  // a cache of one character where there is no other
  DWORD m_room = 0;    // that writes have left below 2 GiB, at least; what moves the file resets it
};

CORVO_SIZE(4, 4, OpenFileMode);
CORVO_SIZE(4, 4, NewLine_Mode);
CORVO_SIZE(136, 184, TFileHandler);

// Reports a failure of the file layer: a trace line at `level` (0 to 9) and, where the
// configuration asks for it, an entry in "FileErrors.txt" in the logging directory. Any thread;
// never throws.
CORVO_API void LogFileError(WORD level, const char* format, ...)
    __attribute__((format(printf, 2, 3)));

// The running program's directory with its final separator, followed by `name` and `extension`,
// each of which may be null; no name, no extension. Names no existing file when the program's path
// is unknown, or what the host tells it with throws.
CORVO_API tstring GetFullPathRelativeToCorvoPath(const char* name, const char* extension);

// Removes a directory with all it holds; `clock` is an os_clock() value for giving up the processor
// now and then. The library's own version removes nothing and returns true: the host supplies it.
CORVO_API bool RemoveDirectoryTree(unsigned long& clock, const char* directory);

#endif
