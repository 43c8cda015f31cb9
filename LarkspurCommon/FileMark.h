#ifndef LARKSPURCOMMON_FILEMARK_H
#define LARKSPURCOMMON_FILEMARK_H

#include "platform/InterfaceCheck.h"
#include "platform/Win32Types.h"

// Which file it is, and in which state. Two marks are equal when both are of the same file and
// nothing has changed its contents, its attributes or its names in between, as far as the file
// system's clock tells: it ticks every few milliseconds.
struct FileMark {
  unsigned long long device;
  unsigned long long inode;
  LONGLONG size;          // bytes
  LONGLONG lastWrite;     // ns since 1970
  LONGLONG statusChange;  // ns since 1970
};
CORVO_SIZE(40, 40, FileMark);

inline bool operator==(const FileMark& a, const FileMark& b) {
  return a.device == b.device && a.inode == b.inode && a.size == b.size &&
         a.lastWrite == b.lastWrite && a.statusChange == b.statusChange;
}

inline bool operator!=(const FileMark& a, const FileMark& b) {
  return !(a == b);
}

#endif
