#ifndef ENGINE_FILEBYTES_H
#define ENGINE_FILEBYTES_H

#include "LarkspurCommon/FileHandler.h"

// Reads until `length` bytes have come or the file gives no more; returns how many came. A single
// read may stop short of what the file holds.
inline DWORD ReadFully(TFileHandler& file, void* buffer, DWORD length) {
  auto* const bytes = static_cast<unsigned char*>(buffer);
  DWORD total = 0;
  while (total < length) {
    DWORD count = 0;
    const bool ok = file.Read(bytes + total, length - total, &count);
    total += count;
    if (!ok || count == 0) break;
  }
  return total;
}

#endif
