#ifndef TESTS_LARKSPURCOMMON_HEXTEXT_H
#define TESTS_LARKSPURCOMMON_HEXTEXT_H

#include <cstddef>
#include <string>

// Bytes as lowercase hexadecimal digits, the way published digests are written.
inline std::string HexText(const unsigned char* bytes, std::size_t size) {
  std::string text;
  for (std::size_t i = 0; i < size; ++i) {
    text += "0123456789abcdef"[bytes[i] >> 4];
    text += "0123456789abcdef"[bytes[i] & 15];
  }
  return text;
}

#endif
