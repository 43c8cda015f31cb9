#ifndef LARKSPURCOMMON_FILEHANDLERSYSTEM_H
#define LARKSPURCOMMON_FILEHANDLERSYSTEM_H

#include <sys/stat.h>
#include <sys/types.h>

#include "LarkspurCommon/FileMark.h"
#include "platform/Win32Types.h"

// The system calls of the file layer. Each fails with errno set, and none with EINTR.
namespace file_layer {

// The largest size and position that 32-bit system calls report.
constexpr off_t kLargestFile = 0x7FFFFFFF;

// By `statx`: 32-bit calls fail for files with times beyond 2038.
bool GetStatus(int descriptor, struct statx& status);
bool GetStatus(const char* path, struct statx& status);

FileMark MarkOf(const struct statx& status);

// Whether a file of this size can be handled; false with EOVERFLOW.
bool SizeFits(const struct statx& status);

// fsync. What can't be flushed (a pipe, a terminal, a directory on some file systems) is success.
bool FlushDescriptor(int descriptor);

// lseek; -1 with EOVERFLOW, and the old position, where the new one is beyond kLargestFile.
off_t Seek(int descriptor, off_t distance, int whence);

// How many bytes can be written from the descriptor's position up to kLargestFile. What has no
// position, such as a pipe, has room for as many.
bool GetRoom(int descriptor, DWORD& room);

// ftruncate
bool SetSize(int descriptor, off_t size);

}  // namespace file_layer

#endif
