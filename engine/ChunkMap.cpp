// The map of a recording's chunks.

#include "engine/ChunkMap.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace {

constexpr DWORD kHeaderSize = sizeof(ChunkHeader);
constexpr DWORD kFormTypeSize = 4;

// What the walk to the audio looks for, in this order.
constexpr struct {
  char id[5];
  DigestInput taken;
} kWay[] = {{"RIFF", DigestInput::kRebuilt},
            {"eyre", DigestInput::kRebuilt},
            {"fmt ", DigestInput::kRebuilt},
            {"fact", DigestInput::kFactValue},
            {"data", DigestInput::kAudio}};

}  // namespace

void MappedSource::Rewind() {
  DescriptorSource::Rewind();
  m_found.chunkCount = 0;
  m_found.moreChunks = false;
  m_steps = 0;
  MoveTo(kHeaderSize);
  Meet({{'R', 'I', 'F', 'F'}, kFormTypeSize});
  MoveTo(0);
}

void MappedSource::Meet(const ChunkHeader& header) {
  m_lastChunk = Position() - kHeaderSize;
  m_lastSize = header.size;
  const DigestInput taken = Take(header);
  if (m_found.chunkCount == RecordingExamination::kMostChunks) {
    m_found.moreChunks = true;
    return;
  }
  RecordingChunk& chunk = m_found.chunks[m_found.chunkCount++];
  std::memcpy(chunk.id, header.id, sizeof chunk.id);
  chunk.declaredSize = header.size;
  chunk.offset = m_lastChunk;
  chunk.taken = taken;
}

// What the digest takes from the chunk just met, by its place on the way.
DigestInput MappedSource::Take(const ChunkHeader& header) {
  if (m_steps == std::size(kWay) || std::memcmp(header.id, kWay[m_steps].id, sizeof header.id) != 0)
    return DigestInput::kNothing;
  const DigestInput taken = kWay[m_steps++].taken;
  if (taken == DigestInput::kFactValue) m_found.factOffset = Position();
  return taken;
}

void MappedSource::CompleteMap(DWORD riffSize) {
  MeetTheRest();
  MarkRecord();
  Measure();
  m_found.chunks[0].declaredSize = riffSize;
}

void MappedSource::MeetTheRest() {
  ChunkHeader header;
  do {
    MoveTo(m_lastChunk + kHeaderSize + m_lastSize);
  } while (!m_found.moreChunks && !AtEnd() && ReadChunkHeader(*this, header));
}

void MappedSource::MarkRecord() {
  for (int i = 0; m_found.hasRecord && i < m_found.chunkCount; ++i) {
    RecordingChunk& chunk = m_found.chunks[i];
    if (chunk.offset == m_found.recordOffset) chunk.taken = DigestInput::kRecord;
  }
}

// A payload ends where the file does, or where the library has read the next chunk.
void MappedSource::Measure() {
  for (int i = 0; i < m_found.chunkCount; ++i) {
    RecordingChunk& chunk = m_found.chunks[i];
    const LONGLONG payload = chunk.offset + kHeaderSize;
    const bool last = i + 1 == m_found.chunkCount;
    const LONGLONG end = last ? m_found.fileSize : m_found.chunks[i + 1].offset;
    chunk.presentSize = std::clamp(end - payload, 0LL, LONGLONG{chunk.declaredSize});
  }
}
