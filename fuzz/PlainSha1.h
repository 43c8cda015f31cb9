#ifndef FUZZ_PLAINSHA1_H
#define FUZZ_PLAINSHA1_H

#include <cstdint>
#include <string>

// SHA-1 (RFC 3174) of a whole text, as short as it can be written: what the library's own digests
// are compared with.
inline std::string PlainSha1(std::string text) {
  const std::uint64_t bits = std::uint64_t{text.size()} * 8;
  text += '\x80';
  while (text.size() % 64 != 56) text += '\0';
  for (int shift = 56; shift >= 0; shift -= 8) text += static_cast<char>(bits >> shift & 0xFF);

  const auto rotated = [](std::uint32_t x, int n) { return x << n | x >> (32 - n); };
  std::uint32_t h[5] = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0};
  for (std::size_t block = 0; block < text.size(); block += 64) {
    std::uint32_t w[80];
    for (std::size_t t = 0; t < 80; ++t) {
      w[t] = 0;
      for (std::size_t i = 0; t < 16 && i < 4; ++i) {
        w[t] = w[t] << 8 | static_cast<unsigned char>(text[block + 4 * t + i]);
      }
      if (t >= 16) w[t] = rotated(w[t - 3] ^ w[t - 8] ^ w[t - 14] ^ w[t - 16], 1);
    }
    std::uint32_t a = h[0], b = h[1], c = h[2], d = h[3], e = h[4];
    for (std::size_t t = 0; t < 80; ++t) {
      const std::uint32_t mixes[] = {(b & c) | (~b & d), b ^ c ^ d, (b & c) | (b & d) | (c & d),
                                     b ^ c ^ d};
      const std::uint32_t constants[] = {0x5A827999, 0x6ED9EBA1, 0x8F1BBCDC, 0xCA62C1D6};
      const std::uint32_t next = rotated(a, 5) + mixes[t / 20] + e + w[t] + constants[t / 20];
      e = d, d = c, c = rotated(b, 30), b = a, a = next;
    }
    h[0] += a, h[1] += b, h[2] += c, h[3] += d, h[4] += e;
  }
  std::string digest;
  for (const std::uint32_t word : h) {
    for (int shift = 24; shift >= 0; shift -= 8) digest += static_cast<char>(word >> shift & 0xFF);
  }
  return digest;
}

#endif
