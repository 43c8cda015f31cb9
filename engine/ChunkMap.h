#ifndef ENGINE_CHUNKMAP_H
#define ENGINE_CHUNKMAP_H

#include <cstddef>

#include "engine/DescriptorSource.h"
#include "engine/Examination.h"

// A recording whose chunks are kept as the latest walk from its start has met them: a chunk's place
// on the way to the audio decides what the digest takes from it.
class MappedSource : public DescriptorSource {
 public:
  MappedSource(int descriptor, RecordingExamination& found)
      : DescriptorSource(descriptor, found.fileSize), m_found(found) {}

  void Rewind() override;
  void Meet(const ChunkHeader& header) override;

  LONGLONG LastChunk() const { return m_lastChunk; }  // where the header met last begins
  DWORD LastSize() const { return m_lastSize; }       // what it declares

  // Goes on from the chunk met last to the end of the file, as far as the map has room, and fills
  // in what is not known on the way.
  void CompleteMap(DWORD riffSize);

 private:
  void MeetTheRest();
  void MarkRecord();
  DigestInput Take(const ChunkHeader& header);
  void Measure();

  RecordingExamination& m_found;
  std::size_t m_steps = 0;  // of the way to the audio, since the start
  LONGLONG m_lastChunk = 0;
  DWORD m_lastSize = 0;
};

#endif
