// Unique identifiers: CoCreateGuid, which a host may replace.

#include <sys/random.h>

#include "platform/Uninterrupted.h"
#include "platform/Win32Compat.h"

namespace {

// The kernel gives so few bytes whole or not at all.
bool FillRandomly(GUID* guid) {
  const ssize_t got = Uninterrupted([=] { return ::getrandom(guid, sizeof *guid, 0); });
  return got == static_cast<ssize_t>(sizeof *guid);
}

}  // namespace

int CoCreateGuid(GUID* guid) {
  GUID random;
  if (guid == nullptr || !FillRandomly(&random)) return 0;
  random.Data3 = static_cast<WORD>((random.Data3 & 0x0FFF) | 0x4000);  // version 4: random
  random.Data4[0] = static_cast<unsigned char>((random.Data4[0] & 0x3F) | 0x80);  // RFC 4122
  *guid = random;
  return 1;
}
