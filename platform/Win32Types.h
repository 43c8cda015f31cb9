#ifndef PLATFORM_WIN32TYPES_H
#define PLATFORM_WIN32TYPES_H

/* The Windows-style scalar and record types that the interfaces name. Their sizes are the same on
   every target. Usable from C. */

#include "platform/InterfaceCheck.h"

typedef unsigned int DWORD;
typedef unsigned int SQLUINTEGER;
typedef int LONG;
typedef unsigned short WORD;
typedef unsigned short UWORD;
typedef long long LONGLONG;
typedef char TCHAR;

/* Buffer sizes in characters, terminator included. */
#define MAX_PATH 260
#define _MAX_DRIVE 3
#define _MAX_DIR 256
#define _MAX_FNAME 256
#define _MAX_EXT 256

typedef struct SYSTEMTIME {
  WORD wYear;
  WORD wMonth;     /* 1 to 12 */
  WORD wDayOfWeek; /* 0 is Sunday */
  WORD wDay;
  WORD wHour;
  WORD wMinute;
  WORD wSecond;
  WORD wMilliseconds;
} SYSTEMTIME;

typedef struct GUID {
  DWORD Data1;
  WORD Data2;
  WORD Data3;
  unsigned char Data4[8];
} GUID;

CORVO_SIZE(4, 4, DWORD);
CORVO_SIZE(4, 4, LONG);
CORVO_SIZE(4, 4, SQLUINTEGER);
CORVO_SIZE(8, 8, LONGLONG);
CORVO_SIZE(16, 16, SYSTEMTIME);
CORVO_SIZE(16, 16, GUID);

#endif
