// File names as text, and back.

#include "tools/corvo/archive/Names.h"

namespace corvo {
namespace {

constexpr char kDigits[] = "0123456789abcdef";

unsigned ByteAt(const std::string& bytes, std::size_t at) {
  return at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0;
}

// How many bytes a UTF-8 sequence has by its first one; 0 for bytes that begin none.
std::size_t DeclaredLength(unsigned first) {
  if (first < 0x80) return 1;
  if (first >= 0xC2 && first < 0xE0) return 2;
  if (first >= 0xE0 && first < 0xF0) return 3;
  return first >= 0xF0 && first < 0xF5 ? 4 : 0;
}

// Second bytes are limited where a shorter sequence would do, and for what is no character.
bool MayFollow(unsigned first, unsigned second) {
  switch (first) {
    case 0xE0:
      return second >= 0xA0;
    case 0xED:
      return second < 0xA0;
    case 0xF0:
      return second >= 0x90;
    case 0xF4:
      return second < 0x90;
    default:
      return true;
  }
}

// The length of the UTF-8 sequence that begins here, or 0.
std::size_t SequenceLength(const std::string& bytes, std::size_t at) {
  const unsigned first = ByteAt(bytes, at);
  const std::size_t length = DeclaredLength(first);
  for (std::size_t i = 1; i < length; ++i) {
    if ((ByteAt(bytes, at + i) & 0xC0) != 0x80) return 0;
  }
  return length < 2 || MayFollow(first, ByteAt(bytes, at + 1)) ? length : 0;
}

// How many bytes may stand in a line as they are; 0 when the first must be escaped. Terminals obey
// the control characters of both sets, the second being U+0080 to U+009F.
std::size_t PrintableLength(const std::string& bytes, std::size_t at) {
  const unsigned first = ByteAt(bytes, at);
  if (first < 0x20 || first == 0x7F || first == '\\') return 0;
  if (first == 0xC2 && ByteAt(bytes, at + 1) < 0xA0) return 0;
  return SequenceLength(bytes, at);
}

void AppendEscaped(std::string& text, char c) {
  const unsigned byte = static_cast<unsigned char>(c);
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
      text += {'\\', 'x', kDigits[byte / 16], kDigits[byte % 16]};
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

bool IsUtf8(const std::string& bytes) {
  std::size_t at = 0;
  while (at < bytes.size()) {
    const std::size_t length = SequenceLength(bytes, at);
    if (length == 0) return false;
    at += length;
  }
  return true;
}

bool NeedsEscaping(const std::string& bytes) {
  std::size_t at = 0;
  while (at < bytes.size()) {
    const std::size_t length = PrintableLength(bytes, at);
    if (length == 0) return true;
    at += length;
  }
  return false;
}

std::string EscapeName(const std::string& bytes) {
  std::string text;
  std::size_t at = 0;
  while (at < bytes.size()) {
    const std::size_t length = PrintableLength(bytes, at);
    if (length == 0) {
      AppendEscaped(text, bytes[at++]);
    } else {
      text.append(bytes, at, length);
      at += length;
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
