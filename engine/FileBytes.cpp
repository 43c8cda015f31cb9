// Reading a wanted number of bytes.

#include "engine/FileBytes.h"

DWORD ReadFully(TFileHandler& file, void* buffer, DWORD length) {
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
