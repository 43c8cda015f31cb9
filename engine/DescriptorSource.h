#ifndef ENGINE_DESCRIPTORSOURCE_H
#define ENGINE_DESCRIPTORSOURCE_H

#include "engine/ChunkWalk.h"

// A recording behind an open descriptor. It is read by position in blocks, and skipped parts aren't
// read at all; the descriptor's own position stays where it is.
class DescriptorSource : public ByteSource {
 public:
  DescriptorSource(int descriptor, LONGLONG size) : m_descriptor(descriptor), m_size(size) {}

  DWORD Read(void* buffer, DWORD length) override;
  void Skip(DWORD length) override { m_position += length; }
  bool AtEnd() override { return m_error != 0 || m_position >= m_size; }
  void Rewind() override { m_position = 0; }

  LONGLONG Position() const { return m_position; }
  void MoveTo(LONGLONG position) { m_position = position; }
  int Error() const { return m_error; }  // errno of the first read that failed

  // Reads up to `length` bytes at a position, past the block. Less than that: the end or an error.
  DWORD ReadAt(LONGLONG position, void* buffer, DWORD length);

 private:
  static constexpr DWORD kBlock = 4096;  // a sealed recording's whole header

  DWORD TakeFromBlock(unsigned char* out, DWORD length);

  int m_descriptor;
  LONGLONG m_size;
  LONGLONG m_position = 0;
  LONGLONG m_blockStart = 0;
  DWORD m_blockSize = 0;
  int m_error = 0;
  unsigned char m_block[kBlock];
};

#endif
