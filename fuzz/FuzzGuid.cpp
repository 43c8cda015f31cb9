// Any bytes as the text of a GUID, against a parser of its own; and any GUID as text and back.

#include <cctype>
#include <cstring>

#include "LarkspurCommon/tstring.h"
#include "Target.h"

namespace {

bool IsSpace(char ch) {
  return ch == ' ' || (ch >= '\t' && ch <= '\r');
}

int HexValue(char ch) {
  static const std::string digits = "0123456789abcdef";
  const auto lower = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
  const std::size_t at = digits.find(lower);
  return ch == '\0' || at == std::string::npos ? -1 : static_cast<int>(at);
}

class Parser {
 public:
  explicit Parser(const std::string& text) : m_text(text) {}

  bool Guid(GUID& guid) {
    unsigned long long number = 0;
    if (At() == '{') ++m_at;
    if (!Field(0xFFFFFFFF, number)) return false;
    guid.Data1 = static_cast<DWORD>(number);
    if (!Field(0xFFFF, number)) return false;
    guid.Data2 = static_cast<WORD>(number);
    if (!Field(0xFFFF, number)) return false;
    guid.Data3 = static_cast<WORD>(number);
    for (int i = 0; i < 8; ++i) {
      if (i == 2 && At() != '-') return false;
      if (i == 2) ++m_at;
      if (!Pair(guid.Data4[i])) return false;
    }
    return At() == '\0' || At() == '}' || IsSpace(At());
  }

 private:
  char At(std::size_t ahead = 0) const {
    return m_at + ahead < m_text.size() ? m_text[m_at + ahead] : '\0';
  }

  // As the C library reads a hex number of 32 bits: with blanks, a sign and "0x" before it.
  bool Field(unsigned long long most, unsigned long long& number) {
    while (IsSpace(At())) ++m_at;
    const bool negative = At() == '-';
    if (At() == '-' || At() == '+') ++m_at;
    if (At() == '0' && (At(1) == 'x' || At(1) == 'X') && HexValue(At(2)) >= 0) m_at += 2;
    if (HexValue(At()) < 0) return false;
    bool over = false;
    number = 0;
    for (; HexValue(At()) >= 0; ++m_at) {
      number = number * 16 + static_cast<unsigned>(HexValue(At()));
      over = over || number > 0xFFFFFFFF;
      number &= 0xFFFFFFFF;
    }
    if (over) {
      number = 0xFFFFFFFF;
    } else if (negative) {
      number = (0x100000000 - number) & 0xFFFFFFFF;
    }
    return At() == '-' && number <= most && ++m_at != 0;
  }

  bool Pair(unsigned char& byte) {
    if (HexValue(At()) < 0 || HexValue(At(1)) < 0) return false;
    byte = static_cast<unsigned char>(HexValue(At()) * 16 + HexValue(At(1)));
    m_at += 2;
    return true;
  }

  const std::string& m_text;
  std::size_t m_at = 0;
};

bool Same(const GUID& left, const GUID& right) {
  return std::memcmp(&left, &right, sizeof left) == 0;
}

void ParseText(const std::string& text) {
  GUID expected{};
  if (!Parser(text).Guid(expected)) expected = GUID{};
  Require(Same(static_cast<GUID>(tstring(text)), expected), "the text means this GUID");
}

void GoThereAndBack(const std::string& bytes) {
  GUID guid;
  if (bytes.size() < sizeof guid) return;
  std::memcpy(&guid, bytes.data(), sizeof guid);
  const tstring text = tstring::FromGuid(guid);
  Require(text.size() == 38 && text[0] == '{' && text[37] == '}', "a GUID has 38 characters");
  Require(Same(static_cast<GUID>(text), guid), "its text means the same GUID");
  Require(Same(static_cast<GUID>(tstring(text.substr(1, 36))), guid), "so it does without braces");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes = Input(data, size).Rest();
  ParseText(bytes.substr(0, bytes.find('\0')));
  GoThereAndBack(bytes);
  return 0;
}
