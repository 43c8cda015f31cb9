#ifndef ENGINE_SEALEDHEADER_H
#define ENGINE_SEALEDHEADER_H

#include "engine/NaInfo.h"
#include "platform/Win32Types.h"

// The header that every sealed recording starts with, audio behind it: the RIFF header, "eyre",
// "fmt ", the record, "fact" and the header of "data". With the seal cleared and no "eyre" value it
// is what a digest begins with: nothing else says what a seal covers.
constexpr unsigned long kSealedHeaderSize = 12 + (8 + 8) + (8 + 16) + sizeof(NA_INFO) + (8 + 4) + 8;
static_assert(kSealedHeaderSize == 3170);

// Sealed recordings stay below 2 GiB.
constexpr LONGLONG kLongestFile = 0x7FFFFFFF;
constexpr unsigned long kMostAudio = kLongestFile - kSealedHeaderSize;

// Sets the record's ckID, ckSize and maker name, too. `eyreValue` is 8 bytes.
void BuildSealedHeader(unsigned char header[kSealedHeaderSize], unsigned long audioBytes,
                       unsigned long factValue, const long long* eyreValue, NA_INFO& record);

// Zeroes the record's flag and its whole signature area.
void ClearSeal(NA_INFO& record);

#endif
