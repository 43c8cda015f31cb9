// The three header layouts, chunk by chunk, each written as one block over the file's start.

#include <array>
#include <cstring>

#include "LarkspurCommon/LittleEndian.h"
#include "engine/CorvoVerifiedRecording.h"
#include "engine/SealedHeader.h"
#include "engine/WaveFormat.h"
#include "platform/Win32Compat.h"

namespace {

constexpr FormatBlock kLinearPcm{kTagPcm, 1, 8000, 16000, 2, 16};
constexpr FormatBlock kG726Adpcm{kTagG726, 1, 8000, 2000, 1, 2};

constexpr std::size_t kRiffSizeOffset = 4;

// A header under construction. Chunk sizes count the payload alone.
class Header {
 public:
  Header() {
    Chunk("RIFF", 0);  // the size is known at the end
    Bytes("WAVE", 4);
  }

  Header& Chunk(const char* id, unsigned long size) {
    Bytes(id, 4);
    return Le32(size);
  }
  Header& Bytes(const void* bytes, std::size_t size) {
    std::memcpy(m_bytes.data() + m_size, bytes, size);
    m_size += size;
    return *this;
  }
  Header& Le16(WORD value) {
    StoreLe16(m_bytes.data() + m_size, value);
    m_size += 2;
    return *this;
  }
  Header& Le32(unsigned long value) {
    StoreLe32(m_bytes.data() + m_size, static_cast<DWORD>(value));
    m_size += 4;
    return *this;
  }
  Header& Format(const FormatBlock& format) {
    return Le16(format.tag)
        .Le16(format.channels)
        .Le32(format.samplesPerSecond)
        .Le32(format.averageBytesPerSecond)
        .Le16(format.blockAlign)
        .Le16(format.bitsPerSample);
  }

  // The header is complete, but for the audio that belongs behind it.
  Header& Finish(unsigned long audioBytes) {
    const std::size_t counted = m_size - (kRiffSizeOffset + 4);
    StoreLe32(m_bytes.data() + kRiffSizeOffset, static_cast<DWORD>(counted + audioBytes));
    return *this;
  }

  const unsigned char* Data() const { return m_bytes.data(); }
  std::size_t Size() const { return m_size; }

 private:
  std::array<unsigned char, kSealedHeaderSize> m_bytes;  // room for the longest of the three
  std::size_t m_size = 0;
};

void WriteTo(TFileHandler& file, const Header& header) {
  file.MoveToPosition(0, 0);
  file.Write(header.Data(), static_cast<DWORD>(header.Size()));
}

// The maker's bytes behind the new name's terminator keep their values.
void StampRecord(NA_INFO& record) {
  std::memcpy(record.ckID, "ALCH", sizeof record.ckID);
  record.ckSize = kNaInfoPayloadSize;
  strncpy_s(record.szMaker, sizeof record.szMaker, "Tolva", _TRUNCATE);
}

Header SealedHeader(unsigned long audioBytes, unsigned long factValue, const long long* eyreValue,
                    NA_INFO& record) {
  StampRecord(record);
  Header header;
  header.Chunk("eyre", kEyreSize).Bytes(eyreValue, kEyreSize);
  header.Chunk("fmt ", kFormatBlockSize).Format(kG726Adpcm);
  header.Bytes(&record, sizeof record);
  header.Chunk("fact", kFactSize).Le32(factValue);
  header.Chunk("data", audioBytes);
  return header.Finish(audioBytes);
}

}  // namespace

void BuildSealedHeader(unsigned char bytes[kSealedHeaderSize], unsigned long audioBytes,
                       unsigned long factValue, const long long* eyreValue, NA_INFO& record) {
  std::memcpy(bytes, SealedHeader(audioBytes, factValue, eyreValue, record).Data(),
              kSealedHeaderSize);
}

void ClearSeal(NA_INFO& record) {
  record.dwSigned = 0;
  std::memset(record.bySignature, 0, sizeof record.bySignature);
}

void VerifyRecording::WriteG726WAVHeader(TFileHandler& file, unsigned long audioBytes,
                                         unsigned long factValue, long long* eyreValue,
                                         NA_INFO* record) {
  WriteTo(file, SealedHeader(audioBytes, factValue, eyreValue, *record));
}

void VerifyRecording::WriteWAVHeader(TFileHandler& file, unsigned long audioBytes,
                                     NA_INFO* record) {
  StampRecord(*record);
  Header header;
  header.Chunk("fmt ", kFormatBlockSize).Format(kLinearPcm);
  header.Bytes(record, sizeof *record);
  header.Chunk("fact", kFactSize).Le32(audioBytes);  // bytes, not samples
  header.Chunk("data", audioBytes);
  WriteTo(file, header.Finish(audioBytes));
}

void VerifyRecording::WriteWAVHeader(TFileHandler& file, unsigned long audioBytes, NA_INFO* record,
                                     _gsm_wavehdrz format) {
  StampRecord(*record);
  Header header;
  header.Chunk("fmt ", sizeof format).Bytes(&format, sizeof format);
  header.Bytes(record, sizeof *record);
  header.Chunk("fact", kFactSize).Le32(audioBytes);  // bytes, not samples
  header.Chunk("data", audioBytes);
  WriteTo(file, header.Finish(audioBytes));
}
