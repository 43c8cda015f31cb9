#ifndef ENGINE_FILEBYTES_H
#define ENGINE_FILEBYTES_H

#include "LarkspurCommon/FileHandler.h"

// Reads until `length` bytes have come or the file gives no more; returns how many came. A single
// read may stop short of what the file holds.
DWORD ReadFully(TFileHandler& file, void* buffer, DWORD length);

#endif
