// Shows the bytes of hostile texts.

#include "tools/corvo/evidence/Visible.h"

#include <algorithm>
#include <iterator>

#include "tools/corvo/Hex.h"
#include "tools/corvo/Utf8.h"

namespace corvo {
namespace {

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

}  // namespace

std::string Visible(const std::string& bytes) {
  std::string text;
  for (std::size_t at = 0; at < bytes.size();) {
    const Utf8Character character = CharacterAt(bytes, at);
    if (character.size == 0 || IsHidden(character.code)) {
      text += EscapedByte(bytes[at++]);  // the rest of a hidden character then begins none either
    } else {
      text += character.code == U'\\' ? "\\\\" : bytes.substr(at, character.size);
      at += character.size;
    }
  }
  return text;
}

std::string VisibleOnPage(const std::string& bytes) {
  const std::string visible = Visible(bytes);
  std::string text;
  for (std::size_t at = 0; at < visible.size(); ++at) {
    const bool atEnd = at == 0 || at + 1 == visible.size();
    const bool dropped = visible[at] == ' ' && (atEnd || visible[at - 1] == ' ');
    text += dropped ? EscapedByte(' ') : std::string(1, visible[at]);
  }
  return text;
}

}  // namespace corvo
