#ifndef ENGINE_NAINFO_H
#define ENGINE_NAINFO_H

#include <cstddef>

#include "platform/Win32Types.h"

// The metadata record of a recording, exactly as it stands in the file: the "ALCH" chunk's header
// and its payload, packed, integers little-endian. Texts end at their first zero byte or at their
// field's end; the bytes behind a terminator are part of the record, and the seal covers them.
// The two digits of a call-detail field give its place in the property text. A plain value: never
// shared, never referenced by field (the numbers are not aligned; copy them).
struct __attribute__((packed)) _na_info {
  char ckID[4];  // "ALCH"
  DWORD ckSize;  // payload bytes: 3090
  char szMaker[28];
  unsigned char szItem02[4];
  char szItem03[32];
  char szItem04[36];
  unsigned char szItem06[2];
  char szItem07[32];
  char szItem08[32];
  DWORD dwIPAddress;  // IPv4; the most significant byte is the first dotted octet
  char szItem12[32];
  char szItem13[32];
  DWORD dwItem14;
  DWORD dwSigned;                 // 1: sealed; anything else: not sealed
  unsigned char bySignature[80];  // SHA-1 digest in bytes 0 to 19, the rest zero
  char szItem10[32];
  char szItem11[32];
  DWORD dwItem15;
  char szItem16[32];
  char szItem17[32];
  char szItem18[32];
  char szItem19[32];
  char szItem20[32];
  char szItem21[16];
  char szItem22[128];
  char szItem23[16];
  char szItem24[32];
  DWORD dwItem25;
  DWORD dwItem26;
  char szDuration[32];  // "%dmin:%dsec", written when sealing
  unsigned char byOpaque[260];
  char szItem28[2048];
};
using NA_INFO = _na_info;

// The WAVE standard's format block for GSM 6.10, filled by the caller of WriteWAVHeader.
struct __attribute__((packed)) _gsm_wavehdrz {
  WORD wFormatTag;  // 49
  WORD nChannels;
  DWORD nSamplesPerSec;
  DWORD nAvgBytesPerSec;
  WORD nBlockAlign;
  WORD wBitsPerSample;
  WORD cbSize;
  WORD wSamplesPerBlock;
};

constexpr std::size_t kNaInfoPayloadSize = sizeof(NA_INFO) - offsetof(NA_INFO, szMaker);
constexpr std::size_t kDigestSize = 20;  // of SHA-1, at the start of bySignature

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__,
              "the record is used as the file's own bytes: a big-endian port converts its numbers");
static_assert(sizeof(NA_INFO) == 3098 && kNaInfoPayloadSize == 3090);
static_assert(sizeof(_gsm_wavehdrz) == 20);

#define CORVO_NA_INFO_FIELD(field, offset, width) \
  static_assert(offsetof(NA_INFO, field) == (offset) && sizeof(NA_INFO::field) == (width), #field)
CORVO_NA_INFO_FIELD(ckID, 0, 4);
CORVO_NA_INFO_FIELD(ckSize, 4, 4);
CORVO_NA_INFO_FIELD(szMaker, 8, 28);
CORVO_NA_INFO_FIELD(szItem02, 36, 4);
CORVO_NA_INFO_FIELD(szItem03, 40, 32);
CORVO_NA_INFO_FIELD(szItem04, 72, 36);
CORVO_NA_INFO_FIELD(szItem06, 108, 2);
CORVO_NA_INFO_FIELD(szItem07, 110, 32);
CORVO_NA_INFO_FIELD(szItem08, 142, 32);
CORVO_NA_INFO_FIELD(dwIPAddress, 174, 4);
CORVO_NA_INFO_FIELD(szItem12, 178, 32);
CORVO_NA_INFO_FIELD(szItem13, 210, 32);
CORVO_NA_INFO_FIELD(dwItem14, 242, 4);
CORVO_NA_INFO_FIELD(dwSigned, 246, 4);
CORVO_NA_INFO_FIELD(bySignature, 250, 80);
CORVO_NA_INFO_FIELD(szItem10, 330, 32);
CORVO_NA_INFO_FIELD(szItem11, 362, 32);
CORVO_NA_INFO_FIELD(dwItem15, 394, 4);
CORVO_NA_INFO_FIELD(szItem16, 398, 32);
CORVO_NA_INFO_FIELD(szItem17, 430, 32);
CORVO_NA_INFO_FIELD(szItem18, 462, 32);
CORVO_NA_INFO_FIELD(szItem19, 494, 32);
CORVO_NA_INFO_FIELD(szItem20, 526, 32);
CORVO_NA_INFO_FIELD(szItem21, 558, 16);
CORVO_NA_INFO_FIELD(szItem22, 574, 128);
CORVO_NA_INFO_FIELD(szItem23, 702, 16);
CORVO_NA_INFO_FIELD(szItem24, 718, 32);
CORVO_NA_INFO_FIELD(dwItem25, 750, 4);
CORVO_NA_INFO_FIELD(dwItem26, 754, 4);
CORVO_NA_INFO_FIELD(szDuration, 758, 32);
CORVO_NA_INFO_FIELD(byOpaque, 790, 260);
CORVO_NA_INFO_FIELD(szItem28, 1050, 2048);
#undef CORVO_NA_INFO_FIELD

#endif
