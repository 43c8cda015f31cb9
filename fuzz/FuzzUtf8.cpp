// Any bytes as UTF-8, against a decoder of its own and the C library's encoder.

#include <climits>
#include <cstdlib>
#include <cwchar>
#include <vector>

#include "LarkspurCommon/tstring.h"
#include "Target.h"

namespace {

using Characters = std::vector<unsigned>;

// The number of ones at the front of a byte.
int LeadingOnes(unsigned byte) {
  int ones = 0;
  while (ones < 8 && (byte & 0x80u >> ones) != 0) ++ones;
  return ones;
}

// Decodes up to the first byte that can't go on; byte-order marks are dropped.
Characters Decode(const std::string& text) {
  Characters characters;
  for (std::size_t at = 0; at < text.size();) {
    const unsigned lead = static_cast<unsigned char>(text[at++]);
    const int ones = LeadingOnes(lead);
    if (ones == 1 || ones > 6) break;
    unsigned value = ones == 0 ? lead : lead & (0x7Fu >> ones);
    for (int i = 1; i < ones; ++i) {
      const unsigned next = at < text.size() ? static_cast<unsigned char>(text[at++]) : 0;
      if (LeadingOnes(next) != 1) return characters;
      value = value * 64 + next % 64;
    }
    if (value >= 0xD800 && value < 0xE000) break;
    if (value != 0xFEFF) characters.push_back(value);
  }
  return characters;
}

// What the C library makes of them up to a NUL: nothing, where there is one that it can't express.
std::string Encode(const Characters& characters) {
  std::string encoded;
  for (const unsigned character : characters) {
    if (character == 0) break;
    char bytes[MB_LEN_MAX];
    std::mbstate_t state{};
    const std::size_t count = std::wcrtomb(bytes, static_cast<wchar_t>(character), &state);
    if (count == static_cast<std::size_t>(-1)) return {};
    encoded.append(bytes, count);
  }
  return encoded;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  UseUtf8();
  const std::string bytes = Input(data, size).Rest();
  const std::string text = bytes.substr(0, bytes.find('\0'));
  const std::string expected = Encode(Decode(text));

  tstring converted = "what was there before";
  converted.FromUTF8(text.c_str());
  Require(converted == expected, "the text in the process's encoding");
  Require(tstring::ConvertFromUTF8(text.c_str()) == expected, "the same as a new string");
  tstring again;
  Require(again.FromUTF8(expected.c_str()) == expected, "what was converted stays as it is");

  std::wstring wide;
  tstring::Convert(converted, wide);
  Require(tstring(wide) == expected, "the same by way of wide characters");
  return 0;
}
