// Conversions between bits, characters, decimal and hex digits.

#include "LarkspurCommon/tstring.h"

namespace {

constexpr unsigned int kBitsPerHexDigit = 4;
constexpr unsigned int kBitsPerByte = 8;

unsigned char ByteOf(char ch) {
  return static_cast<unsigned char>(ch);
}

char CharacterOf(unsigned char byte) {
  return static_cast<char>(byte);
}

// Makes a character of each `perGroup` digits of `bitsPerDigit`, counted from the right.
tstring Joined(tstring const& digits, unsigned int bitsPerDigit, std::size_t perGroup,
               char (*toCharacter)(unsigned char)) {
  tstring result;
  result.reserve(digits.size() / perGroup + 1);
  unsigned int value = 0;
  std::size_t left = digits.size();
  for (const char digit : digits) {
    value = value << bitsPerDigit | HexToNum(digit);
    if (--left % perGroup != 0) continue;
    result.push_back(toCharacter(static_cast<unsigned char>(value)));
    value = 0;
  }
  return result;
}

// Splits each character of `bits` bits into digits of `bitsPerDigit`, the highest first.
tstring Split(tstring const& text, unsigned int bits, unsigned int bitsPerDigit,
              unsigned char (*toNumber)(char)) {
  const unsigned int mask = (1u << bitsPerDigit) - 1;
  tstring result;
  result.reserve(text.size() * (bits / bitsPerDigit));
  for (const char ch : text) {
    for (unsigned int shift = bits; shift > 0;) {
      shift -= bitsPerDigit;
      result.push_back(NumToHex(static_cast<unsigned char>(toNumber(ch) >> shift & mask)));
    }
  }
  return result;
}

// Modulo 2^64.
unsigned long long Value(tstring const& digits, unsigned int base) {
  unsigned long long value = 0;
  for (const char digit : digits) value = value * base + HexToNum(digit);
  return value;
}

}  // namespace

tstring tstring::b2x(tstring const& bits) {
  return bits.isbdigit() ? Joined(bits, 1, kBitsPerHexDigit, NumToHex) : tstring();
}

tstring tstring::b2c(tstring const& bits) {
  return bits.isbdigit() ? Joined(bits, 1, kBitsPerByte, CharacterOf) : tstring();
}

tstring tstring::b2d(tstring const& bits) {
  return bits.isbdigit() ? tstring(Value(bits, 2)) : tstring();
}

tstring tstring::c2b(tstring const& bytes) {
  return Split(bytes, kBitsPerByte, 1, ByteOf);
}

tstring tstring::c2x(tstring const& bytes) {
  return Split(bytes, kBitsPerByte, kBitsPerHexDigit, ByteOf);
}

tstring tstring::c2d(tstring const& bytes) {
  return x2d(c2x(bytes));
}

tstring tstring::x2b(tstring const& hex) {
  return hex.isxdigit() ? Split(hex, kBitsPerHexDigit, 1, HexToNum) : tstring();
}

tstring tstring::x2c(tstring const& hex) {
  constexpr std::size_t kDigitsPerByte = kBitsPerByte / kBitsPerHexDigit;
  return hex.isxdigit() ? Joined(hex, kBitsPerHexDigit, kDigitsPerByte, CharacterOf) : tstring();
}

tstring tstring::x2d(tstring const& hex) {
  return hex.isxdigit() ? tstring(Value(hex, 16)) : tstring();
}

tstring tstring::d2x(tstring const& decimal) {
  const unsigned long long value = decimal.isdigit() ? Value(decimal, 10) : 0;
  return value == 0 ? tstring() : FromFormat("%llx", value);
}

tstring tstring::d2b(tstring const& decimal) {
  return x2b(d2x(decimal));
}

tstring tstring::d2c(tstring const& decimal) {
  return x2c(d2x(decimal));
}

tstring& tstring::x2b() {
  return *this = x2b(*this);
}

tstring& tstring::x2c() {
  return *this = x2c(*this);
}

tstring& tstring::x2d() {
  return *this = x2d(*this);
}
