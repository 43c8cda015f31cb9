#ifndef LARKSPURCOMMON_SHABLOCKS_H
#define LARKSPURCOMMON_SHABLOCKS_H

#include <cstddef>
#include <cstdint>
#include <cstring>

// How SHA-1 and SHA-256 cut a message into blocks and pad it; internal to the library. `Context`
// has their members, `compress` takes its state, blocks and how many they are.

constexpr std::size_t kShaBlockSize = 64;

inline std::uint32_t LoadBe32(const unsigned char* b) {
  return std::uint32_t{b[0]} << 24 | std::uint32_t{b[1]} << 16 | std::uint32_t{b[2]} << 8 |
         std::uint32_t{b[3]};
}

inline void StoreBe32(unsigned char* bytes, std::uint32_t value) {
  bytes[0] = static_cast<unsigned char>(value >> 24);
  bytes[1] = static_cast<unsigned char>(value >> 16);
  bytes[2] = static_cast<unsigned char>(value >> 8);
  bytes[3] = static_cast<unsigned char>(value);
}

template <class Context>
std::size_t PendingShaBytes(const Context& context) {
  return context.count[0] / 8 % kShaBlockSize;
}

template <class Context>
void AddToShaCount(Context& context, unsigned int length) {
  const std::uint64_t count = std::uint64_t{context.count[1]} << 32 | context.count[0];
  const std::uint64_t sum = count + std::uint64_t{length} * 8;
  context.count[0] = static_cast<std::uint32_t>(sum);
  context.count[1] = static_cast<std::uint32_t>(sum >> 32);
}

template <class Context, class Compress>
void FeedShaBlocks(Context& context, const unsigned char* data, unsigned int length,
                   Compress compress) {
  if (length == 0) return;  // `data` may then be null, which memcpy must not see
  const std::size_t pending = PendingShaBytes(context);
  AddToShaCount(context, length);
  const std::size_t missing = kShaBlockSize - pending;
  if (length < missing) {
    std::memcpy(context.buffer + pending, data, length);
    return;
  }
  std::size_t left = length;
  if (pending > 0) {
    std::memcpy(context.buffer + pending, data, missing);
    compress(context.state, context.buffer, 1);
    data += missing;
    left -= missing;
  }
  compress(context.state, data, left / kShaBlockSize);
  const std::size_t rest = left % kShaBlockSize;
  if (rest > 0) std::memcpy(context.buffer, data + left - rest, rest);
}

// The digest is then the state.
template <class Context, class Compress>
void FeedShaPadding(Context& context, Compress compress) {
  constexpr std::size_t kLengthOffset = 56;  // of the 64-bit length in the last block
  std::size_t used = PendingShaBytes(context);
  context.buffer[used++] = 0x80;
  if (used > kLengthOffset) {
    std::memset(context.buffer + used, 0, kShaBlockSize - used);
    compress(context.state, context.buffer, 1);
    used = 0;
  }
  std::memset(context.buffer + used, 0, kLengthOffset - used);
  StoreBe32(context.buffer + kLengthOffset, context.count[1]);
  StoreBe32(context.buffer + kLengthOffset + 4, context.count[0]);
  compress(context.state, context.buffer, 1);
}

#endif
