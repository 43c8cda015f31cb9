#ifndef LARKSPURCOMMON_LITTLEENDIAN_H
#define LARKSPURCOMMON_LITTLEENDIAN_H

#include <cstdint>

// Little-endian values from and to bytes at any alignment, whatever the machine's byte order.

inline std::uint16_t LoadLe16(const void* bytes) {
  const auto* b = static_cast<const unsigned char*>(bytes);
  return static_cast<std::uint16_t>(b[0] | b[1] << 8);
}

inline std::uint32_t LoadLe32(const void* bytes) {
  const auto* b = static_cast<const unsigned char*>(bytes);
  return std::uint32_t{b[0]} | std::uint32_t{b[1]} << 8 | std::uint32_t{b[2]} << 16 |
         std::uint32_t{b[3]} << 24;
}

inline void StoreLe16(void* bytes, std::uint16_t value) {
  auto* b = static_cast<unsigned char*>(bytes);
  b[0] = static_cast<unsigned char>(value);
  b[1] = static_cast<unsigned char>(value >> 8);
}

inline void StoreLe32(void* bytes, std::uint32_t value) {
  auto* b = static_cast<unsigned char*>(bytes);
  b[0] = static_cast<unsigned char>(value);
  b[1] = static_cast<unsigned char>(value >> 8);
  b[2] = static_cast<unsigned char>(value >> 16);
  b[3] = static_cast<unsigned char>(value >> 24);
}

#endif
