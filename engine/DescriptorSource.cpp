// A recording behind an open descriptor.

#include "engine/DescriptorSource.h"

#include <errno.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "platform/Uninterrupted.h"

DWORD DescriptorSource::Read(void* buffer, DWORD length) {
  auto* const out = static_cast<unsigned char*>(buffer);
  DWORD taken = 0;
  while (taken < length) {
    const DWORD count = TakeFromBlock(out + taken, length - taken);
    if (count == 0) break;
    taken += count;
  }
  return taken;
}

DWORD DescriptorSource::TakeFromBlock(unsigned char* out, DWORD length) {
  if (m_position < m_blockStart || m_position >= m_blockStart + m_blockSize) {
    m_blockStart = m_position;
    m_blockSize = ReadAt(m_position, m_block, sizeof m_block);
    if (m_blockSize == 0) return 0;
  }
  const auto offset = static_cast<DWORD>(m_position - m_blockStart);
  const DWORD count = std::min(length, m_blockSize - offset);
  std::memcpy(out, m_block + offset, count);
  m_position += count;
  return count;
}

DWORD DescriptorSource::ReadAt(LONGLONG position, void* buffer, DWORD length) {
  auto* const out = static_cast<unsigned char*>(buffer);
  DWORD got = 0;
  while (got < length && m_error == 0) {
    const ssize_t count = Uninterrupted(
        [&] { return ::pread(m_descriptor, out + got, length - got, position + got); });
    if (count < 0) m_error = errno;
    if (count <= 0) break;
    got += static_cast<DWORD>(count);
  }
  return got;
}
