#ifndef TESTS_ENGINE_RECORDINGS_H
#define TESTS_ENGINE_RECORDINGS_H

#include <string>

#include "engine/NaInfo.h"
#include "support/Bytes.h"

namespace corvo_test {

// A WAVE file, chunk by chunk; it can lie about sizes, order and names.
class Wave {
 public:
  Wave& Chunk(const std::string& id, const std::string& payload);
  Wave& ChunkClaiming(const std::string& id, unsigned claimedSize, const std::string& payload);
  Wave& Raw(const std::string& bytes);
  Wave& Riff(const std::string& id) { return m_riff = id, *this; }
  Wave& FormType(const std::string& id) { return m_formType = id, *this; }

  std::string Bytes() const;

 private:
  std::string m_riff = "RIFF";
  std::string m_formType = "WAVE";
  std::string m_chunks;
};

// A 16-byte format block at 8000 samples per second.
std::string Format(unsigned tag, unsigned channels, unsigned bits);

// A record with a long maker name, "alpha" as item 3, 1.2.3.4, 7 as item 15, and bytes behind the
// texts' terminators.
NA_INFO SampleRecord();
std::string Payload(const NA_INFO& record);  // of the "ALCH" chunk

// An unsealed G.726 recording of SampleRecord() in an order and shape of its own: fact value 4711,
// "eyre" 0x1122334455667788, and a "LIST" chunk behind the audio.
std::string G726Recording(const std::string& audio);

constexpr long long kOldEyre = 0x1122334455667788;

// The bytes of `size` sound-like audio bytes, none of them regular.
std::string Audio(std::size_t size);

// The record that a file in the sealed layout holds.
NA_INFO RecordOf(const std::string& sealedFile);

}  // namespace corvo_test

#endif
