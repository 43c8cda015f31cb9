// Builds recordings, good and bad.

#include "Recordings.h"

#include <cstring>

namespace corvo_test {

Wave& Wave::Chunk(const std::string& id, const std::string& payload) {
  return ChunkClaiming(id, static_cast<unsigned>(payload.size()), payload);
}

Wave& Wave::ChunkClaiming(const std::string& id, unsigned claimedSize, const std::string& payload) {
  return Raw(id + Le32(claimedSize) + payload);
}

Wave& Wave::Raw(const std::string& bytes) {
  m_chunks += bytes;
  return *this;
}

std::string Wave::Bytes() const {
  return m_riff + Le32(static_cast<unsigned>(m_chunks.size()) + 4) + m_formType + m_chunks;
}

std::string Format(unsigned tag, unsigned channels, unsigned bits) {
  return Le16(tag) + Le16(channels) + Le32(8000) + Le32(1000 * bits) + Le16(1) + Le16(bits);
}

NA_INFO SampleRecord() {
  NA_INFO record{};
  std::memcpy(record.ckID, "ALCH", 4);
  record.ckSize = 3090;
  std::strcpy(record.szMaker, "Recorder Mark II");
  std::strcpy(record.szItem03, "alpha");
  record.dwIPAddress = 0x01020304;
  record.dwItem15 = 7;
  std::strcpy(record.szDuration, "not measured yet, 31 characters");
  std::memset(record.bySignature, 0xEE, sizeof record.bySignature);
  return record;
}

std::string Payload(const NA_INFO& record) {
  return {reinterpret_cast<const char*>(&record) + 8, sizeof record - 8};
}

std::string G726Recording(const std::string& audio) {
  return Wave()
      .Chunk("LIST", std::string(30, 'x'))
      .Chunk("eyre", Le32(0x55667788) + Le32(0x11223344))
      .Chunk("fmt ", Format(100, 1, 4) + Le16(0))
      .Chunk("ALCH", Payload(SampleRecord()))
      .Chunk("fact", Le32(4711))
      .Chunk("data", audio)
      .Chunk("LIST", std::string(50, 'y'))
      .Bytes();
}

std::string Audio(std::size_t size) {
  std::string bytes;
  unsigned state = 1;
  for (std::size_t i = 0; i < size; ++i) {
    state = state * 1103515245 + 12345;
    bytes += static_cast<char>(state >> 16);
  }
  return bytes;
}

NA_INFO RecordOf(const std::string& sealedFile) {
  NA_INFO record{};
  std::memcpy(&record, sealedFile.data() + 52, sizeof record);
  return record;
}

}  // namespace corvo_test
