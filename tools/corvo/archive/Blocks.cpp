// Reads files of any length in little memory.

#include "tools/corvo/archive/Blocks.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <vector>

#include "platform/Uninterrupted.h"

namespace corvo {
namespace {

constexpr LONGLONG kBlock = 128LL * 1024;

}  // namespace

int ReadBlocks(const Descriptor& file, LONGLONG offset, LONGLONG length,
               const BlockConsumer& consumer) {
  std::vector<unsigned char> block(static_cast<std::size_t>(kBlock));
  while (length > 0) {
    const auto wanted = static_cast<std::size_t>(std::min(length, kBlock));
    const ssize_t got = Uninterrupted(
        [&] { return ::pread(file.Number(), block.data(), wanted, static_cast<off_t>(offset)); });
    if (got <= 0) return got == 0 ? 0 : errno;
    consumer(block.data(), static_cast<unsigned>(got));
    offset += got;
    length -= got;
  }
  return 0;
}

}  // namespace corvo
