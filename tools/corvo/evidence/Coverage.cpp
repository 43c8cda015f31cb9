// What a seal protects in a recording and what it leaves open.

#include "tools/corvo/evidence/Coverage.h"

#include <algorithm>

#include "tools/corvo/evidence/Visible.h"

namespace corvo {
namespace {

constexpr LONGLONG kChunkHeader = 8;
constexpr LONGLONG kStampedName = 6;  // of the maker's name: "Tolva" and its zero byte

class Map {
 public:
  explicit Map(const RecordingExamination& found) : m_found(found) {}

  std::vector<CoveredRange> Draw() {
    for (int i = 0; i < m_found.chunkCount; ++i) {
      const RecordingChunk& chunk = m_found.chunks[i];
      const bool last = i + 1 == m_found.chunkCount;
      m_end = last ? m_found.fileSize : m_found.chunks[i + 1].offset;
      m_at = chunk.offset;
      AddChunk(chunk);
      AddRest("not part of what is sealed");
    }
    return m_ranges;
  }

 private:
  void Add(LONGLONG size, Protection protection, const std::string& what) {
    const LONGLONG taken = std::min(size, m_end - m_at);
    if (taken <= 0) return;
    m_ranges.push_back({m_at, taken, protection, what});
    m_at += taken;
  }
  void AddRest(const char* what) { Add(m_end - m_at, Protection::kOpen, what); }

  void AddChunk(const RecordingChunk& chunk) {
    const std::string name = "\"" + Visible(std::string(chunk.id, sizeof chunk.id)) + "\"";
    switch (chunk.taken) {
      case DigestInput::kRebuilt:
        return AddRebuilt(chunk, name);
      case DigestInput::kRecord:
        return AddRecord(name);
      case DigestInput::kFactValue:
        return AddFact(chunk, name);
      case DigestInput::kAudio:
        Add(4, Protection::kFixed, name + " marking");
        Add(4, Protection::kCovered, "length of the audio");
        Add(m_found.audioSize, Protection::kCovered, "audio");
        return AddRest("behind the audio");
      case DigestInput::kNothing:
        return AddUnknown(chunk, name);
    }
  }

  // A size matters only where the way to something further on leads over the chunk: what is read
  // of "eyre", "fact" and the record has a fixed length.
  void AddHeader(const std::string& name, bool leadsOn) {
    if (leadsOn) return Add(kChunkHeader, Protection::kFixed, name + " marking and size");
    Add(4, Protection::kFixed, name + " marking");
    Add(4, Protection::kOpen, "size of " + name);
  }

  void AddRebuilt(const RecordingChunk& chunk, const std::string& name) {
    if (chunk.offset == 0) {
      Add(4, Protection::kFixed, name + " marking");
      Add(4, Protection::kOpen, "RIFF size");
      return Add(4, Protection::kFixed, "\"WAVE\" marking");
    }
    const bool isEyre = std::string(chunk.id, sizeof chunk.id) == "eyre";
    AddHeader(name, !isEyre || chunk.offset < m_found.recordOffset);
    if (isEyre) {
      return Add(8, Protection::kOpen, "start time");
    }
    Add(4, Protection::kFixed, "audio format and number of channels");
    AddRest("rest of the format block");
  }

  void AddRecord(const std::string& name) {
    constexpr LONGLONG kFlag = offsetof(NA_INFO, dwSigned);
    constexpr LONGLONG kItem10 = offsetof(NA_INFO, szItem10);
    AddHeader(name, m_found.recordOffset < m_found.audioOffset);
    Add(kStampedName, Protection::kOpen, "first six bytes of the maker's name");
    Add(kFlag - kChunkHeader - kStampedName, Protection::kCovered, "details, first part");
    Add(4 + LONGLONG{kDigestSize}, Protection::kSeal, "mark \"sealed\" and digest");
    Add(kItem10 - kFlag - 4 - LONGLONG{kDigestSize}, Protection::kOpen, "behind the digest");
    Add(LONGLONG{sizeof(NA_INFO)} - kItem10, Protection::kCovered, "details, second part");
  }

  // Only its size leads on, to whatever is still looked for behind it.
  void AddUnknown(const RecordingChunk& chunk, const std::string& name) {
    const bool leadsOn = chunk.offset < std::max(m_found.recordOffset, m_found.audioOffset);
    Add(4, Protection::kOpen, name + " marking");
    Add(4, leadsOn ? Protection::kFixed : Protection::kOpen, "size of " + name);
    AddRest((name + ", a part that sealing doesn't know").c_str());
  }

  void AddFact(const RecordingChunk& chunk, const std::string& name) {
    AddHeader(name, chunk.offset < m_found.recordOffset);
    Add(4, Protection::kCovered, "count of sound samples (fact value)");
  }

  const RecordingExamination& m_found;
  LONGLONG m_at = 0;
  LONGLONG m_end = 0;
  std::vector<CoveredRange> m_ranges;
};

}  // namespace

std::vector<CoveredRange> FindCoverage(const RecordingExamination& found) {
  if (!found.hasRecord || !found.hasAudio || found.moreChunks) return {};
  const auto holdsRecord = [](const RecordingChunk& chunk) {
    return chunk.taken == DigestInput::kRecord;
  };
  // The ways to the record and to the audio may read the same bytes as different chunks.
  if (std::none_of(found.chunks, found.chunks + found.chunkCount, holdsRecord)) return {};
  return Map(found).Draw();
}

LONGLONG CountBytes(const std::vector<CoveredRange>& ranges, Protection protection) {
  LONGLONG bytes = 0;
  for (const CoveredRange& range : ranges) {
    if (range.protection == protection) bytes += range.size;
  }
  return bytes;
}

const char* ProtectionWord(Protection protection) {
  switch (protection) {
    case Protection::kCovered:
      return "covered";
    case Protection::kFixed:
      return "fixed";
    case Protection::kSeal:
      return "seal";
    case Protection::kOpen:
      return "not covered";
  }
  return "";
}

}  // namespace corvo
