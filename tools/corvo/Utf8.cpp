// Tells characters from other bytes.

#include "tools/corvo/Utf8.h"

namespace corvo {
namespace {

constexpr std::size_t kLongest = 4;
constexpr char32_t kLeast[kLongest + 1] = {0, 0, 0x80, 0x800, 0x10000};  // by size

// How many bytes a character has by its first one; 0 for bytes that begin none.
std::size_t DeclaredSize(unsigned char first) {
  if (first < 0x80) return 1;
  if (first >= 0xC0 && first < 0xE0) return 2;
  if (first >= 0xE0 && first < 0xF0) return 3;
  return first >= 0xF0 && first < 0xF8 ? kLongest : 0;
}

}  // namespace

Utf8Character CharacterAt(const std::string& bytes, std::size_t at) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(bytes[at + i]); };
  const std::size_t size = DeclaredSize(byte(0));
  if (size == 0 || size > bytes.size() - at) return {};
  char32_t code = size == 1 ? byte(0) : byte(0) & (0x7Fu >> size);
  for (std::size_t i = 1; i < size; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return {};
    code = code << 6 | (byte(i) & 0x3F);
  }
  const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
  if (code < kLeast[size] || code > 0x10FFFF || surrogate) return {};
  return {code, size};
}

bool IsUtf8(const std::string& bytes) {
  for (std::size_t at = 0; at < bytes.size();) {
    const std::size_t size = CharacterAt(bytes, at).size;
    if (size == 0) return false;
    at += size;
  }
  return true;
}

}  // namespace corvo
