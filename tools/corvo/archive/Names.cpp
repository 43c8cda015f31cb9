// File names as text, and back.

#include "tools/corvo/archive/Names.h"

#include "tools/corvo/Hex.h"
#include "tools/corvo/Utf8.h"

namespace corvo {
namespace {

unsigned ByteAt(const std::string& bytes, std::size_t at) {
  return at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0;
}

// How many bytes may stand in a line as they are; 0 when the first must be escaped. Terminals obey
// the control characters of both sets, the second being U+0080 to U+009F.
std::size_t PrintableSize(const std::string& bytes, std::size_t at) {
  const Utf8Character character = CharacterAt(bytes, at);
  const char32_t code = character.code;
  const bool isControl = code < 0x20 || (code >= 0x7F && code < 0xA0);
  return isControl || code == U'\\' ? 0 : character.size;
}

void AppendEscaped(std::string& text, char c) {
  switch (c) {
    case '\\':
      text += "\\\\";
      break;
    case '\n':
      text += "\\n";
      break;
    case '\r':
      text += "\\r";
      break;
    default:
      text += EscapedByte(c);
  }
}

int HexValue(unsigned digit) {
  if (digit >= '0' && digit <= '9') return static_cast<int>(digit - '0');
  if (digit >= 'a' && digit <= 'f') return static_cast<int>(digit - 'a' + 10);
  return -1;
}

// Takes the escape that stands behind a backslash.
bool TakeEscape(const std::string& text, std::size_t& at, std::string& bytes) {
  switch (ByteAt(text, at++)) {
    case '\\':
      bytes += '\\';
      return true;
    case 'n':
      bytes += '\n';
      return true;
    case 'r':
      bytes += '\r';
      return true;
    case 'x':
      break;
    default:
      return false;
  }
  const int high = HexValue(ByteAt(text, at++));
  const int low = HexValue(ByteAt(text, at++));
  bytes += static_cast<char>(high * 16 + low);
  return high >= 0 && low >= 0;
}

}  // namespace

bool NeedsEscaping(const std::string& bytes) {
  std::size_t at = 0;
  while (at < bytes.size()) {
    const std::size_t size = PrintableSize(bytes, at);
    if (size == 0) return true;
    at += size;
  }
  return false;
}

std::string EscapeName(const std::string& bytes) {
  std::string text;
  std::size_t at = 0;
  while (at < bytes.size()) {
    const std::size_t size = PrintableSize(bytes, at);
    if (size == 0) {
      AppendEscaped(text, bytes[at++]);
    } else {
      text.append(bytes, at, size);
      at += size;
    }
  }
  return text;
}

std::optional<std::string> UnescapeName(const std::string& text) {
  std::string bytes;
  std::size_t at = 0;
  while (at < text.size()) {
    const char c = text[at++];
    if (c != '\\') {
      bytes += c;
    } else if (!TakeEscape(text, at, bytes)) {
      return std::nullopt;
    }
  }
  return bytes;
}

std::string NameInLine(const std::string& bytes) {
  return NeedsEscaping(bytes) ? '\\' + EscapeName(bytes) : bytes;
}

}  // namespace corvo
