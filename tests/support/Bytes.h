#ifndef TESTS_SUPPORT_BYTES_H
#define TESTS_SUPPORT_BYTES_H

#include <cstddef>
#include <string>

namespace corvo_test {

// The lowest 16 or 32 bits, least byte first.
inline std::string Le16(std::size_t value) {
  return {static_cast<char>(value & 0xFF), static_cast<char>(value >> 8 & 0xFF)};
}

inline std::string Le32(std::size_t value) {
  return Le16(value) + Le16(value >> 16);
}

// `bytes` with what stands at `at` overwritten.
inline std::string With(std::string bytes, std::size_t at, const std::string& replacement) {
  return bytes.replace(at, replacement.size(), replacement);
}

}  // namespace corvo_test

#endif
