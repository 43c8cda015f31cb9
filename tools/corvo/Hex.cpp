// Bytes as digits.

#include "tools/corvo/Hex.h"

namespace corvo {

std::string Hex(const unsigned char* bytes, std::size_t size) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  text.reserve(2 * size);
  for (std::size_t i = 0; i < size; ++i) text += {kDigits[bytes[i] / 16], kDigits[bytes[i] % 16]};
  return text;
}

std::string EscapedByte(char byte) {
  const auto number = static_cast<unsigned char>(byte);
  return "\\x" + Hex(&number, 1);
}

}  // namespace corvo
