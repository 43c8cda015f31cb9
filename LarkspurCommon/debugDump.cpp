// Hex dumps.

#include <algorithm>

#include "LarkspurCommon/debug.h"
#include "LarkspurCommon/debugState.h"

namespace {

constexpr DWORD kBytesPerLine = 16;
constexpr int kOffsetDigits = 8;
constexpr int kOffsetWidth = 1 + kOffsetDigits + 1;                   // " 00000000:"
constexpr int kHexWidth = kOffsetWidth + int{kBytesPerLine} * 3 + 1;  // one gap half way
constexpr int kLineSize = kHexWidth + 2 + int{kBytesPerLine} + 1;

char* PutOffset(char* out, DWORD offset) {
  *out++ = ' ';
  for (int shift = 4 * (kOffsetDigits - 1); shift >= 0; shift -= 4) {
    *out++ = HEX(static_cast<int>(offset >> shift & 0xF));
  }
  *out++ = ':';
  return out;
}

void DumpLine(DWORD id, unsigned char const* bytes, DWORD count, DWORD offset) {
  char line[kLineSize];
  char* hex = PutOffset(line, offset);
  char* text = line + kHexWidth + 2;
  for (DWORD i = 0; i < count; ++i) {
    if (i == kBytesPerLine / 2) *hex++ = ' ';
    *hex++ = ' ';
    *hex++ = HEX(bytes[i] >> 4);
    *hex++ = HEX(bytes[i]);
    *text++ = ASCII(static_cast<char>(bytes[i]));
  }
  std::fill(hex, line + kHexWidth + 2, ' ');
  *text = '\0';
  DebugA(id, "%s", line);
}

}  // namespace

void Dump(DWORD id, void const* data, DWORD length) {
  RunGuarded("void Dump(DWORD, const void*, DWORD)", __LINE__,
             [&] { __InternalDump(id, data, length); });
}

void __InternalDump(DWORD id, void const* data, DWORD length) {
  if (data == nullptr || length == 0) return;
  const KeepErrno keep;
  if (id != kUnconditional && !IsDebugEnabled(id)) return;
  const auto* bytes = static_cast<unsigned char const*>(data);
  for (DWORD left = length, count; left != 0; left -= count) {
    count = std::min(left, kBytesPerLine);
    DumpLine(id, bytes + (length - left), count, length - left);
  }
}

char HEX(int value) {
  return "0123456789ABCDEF"[value & 0xF];
}

char ASCII(char character) {
  const auto code = static_cast<signed char>(character);
  return code >= 32 && code != 127 ? character : '.';
}
