// Shows the bytes of hostile texts.

#include "tools/corvo/evidence/Visible.h"

#include <algorithm>
#include <iterator>

namespace corvo {
namespace {

constexpr char32_t kNone = 0xFFFFFFFF;

struct Range {
  char32_t first, last;
};

// Controls, and what has no width or changes the direction of the text.
constexpr Range kHidden[] = {{0x00, 0x1F},     {0x7F, 0x9F},     {0xAD, 0xAD},
                             {0x61C, 0x61C},   {0x180E, 0x180E}, {0x200B, 0x200F},
                             {0x2028, 0x202E}, {0x2060, 0x206F}, {0xFE00, 0xFE0F},
                             {0xFEFF, 0xFEFF}, {0xFFF9, 0xFFFB}, {0xE0000, 0xE0FFF}};

bool IsHidden(char32_t character) {
  return std::any_of(std::begin(kHidden), std::end(kHidden), [=](const Range& range) {
    return character >= range.first && character <= range.last;
  });
}

std::size_t SequenceLength(unsigned char lead) {
  if (lead < 0x80) return 1;
  if (lead >= 0xC2 && lead <= 0xDF) return 2;
  if (lead >= 0xE0 && lead <= 0xEF) return 3;
  return lead >= 0xF0 && lead <= 0xF4 ? 4 : 0;
}

// The character that starts at `at`, and how many bytes it takes; kNone and 1 for what is none.
char32_t Decode(const std::string& bytes, std::size_t at, std::size_t& length) {
  constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(bytes[at + i]); };
  const std::size_t wanted = SequenceLength(byte(0));
  length = 1;
  if (wanted == 0 || wanted > bytes.size() - at) return kNone;
  char32_t character = wanted == 1 ? byte(0) : byte(0) & (0x7Fu >> wanted);
  for (std::size_t i = 1; i < wanted; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return kNone;
    character = character << 6 | (byte(i) & 0x3F);
  }
  const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
  if (character < kLeast[wanted] || character > 0x10FFFF || surrogate) return kNone;
  length = wanted;
  return character;
}

}  // namespace

std::string Visible(const std::string& bytes) {
  static const char kDigits[] = "0123456789abcdef";
  std::string text;
  std::size_t length = 1;
  for (std::size_t at = 0; at < bytes.size(); at += length) {
    const char32_t character = Decode(bytes, at, length);
    if (character == U'\\') {
      text += "\\\\";
    } else if (character != kNone && !IsHidden(character)) {
      text.append(bytes, at, length);
    } else {
      for (std::size_t i = at; i < at + length; ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        text += {'\\', 'x', kDigits[byte / 16], kDigits[byte % 16]};
      }
    }
  }
  return text;
}

}  // namespace corvo
