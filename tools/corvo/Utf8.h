#ifndef TOOLS_CORVO_UTF8_H
#define TOOLS_CORVO_UTF8_H

#include <cstddef>
#include <string>

namespace corvo {

struct Utf8Character {
  char32_t code = 0;
  std::size_t size = 0;  // in bytes; 0: none begins there
};

// The character that begins at `at`, which lies within the text. What is longer than it need be, a
// surrogate or beyond U+10FFFF is none.
Utf8Character CharacterAt(const std::string& bytes, std::size_t at);

bool IsUtf8(const std::string& bytes);

}  // namespace corvo

#endif
