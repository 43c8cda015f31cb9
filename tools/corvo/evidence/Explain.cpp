// Why a seal doesn't hold, as far as recomputing it under other readings can tell.

#include "tools/corvo/evidence/Explain.h"

#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <optional>

#include "LarkspurCommon/LittleEndian.h"
#include "engine/CorvoVerifiedRecording.h"

namespace corvo {
namespace {

// Where sealing puts things: docs/sealed-format.md.
constexpr std::size_t kRiffSizeOffset = 4;
constexpr std::size_t kRecordOffset = 52;
constexpr std::size_t kFactValueOffset = 3158;
constexpr std::size_t kAudioSizeOffset = 3166;
constexpr DWORD kHeaderSize = 3170;
constexpr DWORD kRiffSizeWithoutAudio = 3162;

constexpr LONGLONG kMostAudio = 0x7FFFFFFF - LONGLONG{kHeaderSize};  // of any sealed recording

constexpr DWORD kSamplesPerByte = 4;  // of G.726 audio with 2 bits a sample
constexpr int kFewBytes = 4;          // of a digest; that the other 16 agree by chance is excluded

// What a digest is computed over.
struct Reading {
  const NA_INFO* record;
  DWORD factValue;
  LONGLONG audioOffset;
  LONGLONG audioSize;  // as the file or a guess has it, be it negative or more than there is
};

std::string Bytes(LONGLONG count) {
  return std::to_string(count) + (count == 1 ? " byte" : " bytes");
}

std::string Joined(const std::vector<std::string>& parts, const char* between) {
  std::string text;
  for (const std::string& part : parts) text += (text.empty() ? "" : between) + part;
  return text;
}

class Explainer {
 public:
  Explainer(int descriptor, const RecordingExamination& found)
      : m_descriptor(descriptor), m_found(found) {}

  std::vector<Explanation> Run() {
    if (m_found.hasAudio && m_found.hasRecord) TryWhatWasFound();
    if (!m_matched && !IsInPlace()) TrySealedLayout();
    if (!m_matched && m_found.missingAudio != 0) TellWhatIsMissing();
    if (m_explanations.empty()) TellWhatWasTried();
    return m_explanations;
  }

 private:
  void Add(const char* kind, const std::string& expert, const std::string& plain) {
    m_explanations.push_back({kind, expert, plain});
  }
  void AddMatch(const char* kind, const std::string& expert, const std::string& plain) {
    m_matched = true;
    Add(kind, expert, plain);
  }
  void AddTried(const std::string& what, const std::vector<std::string>& values) {
    if (!values.empty()) m_tried.push_back(what + Joined(values, ", "));
  }

  static bool HoldsDigest(const NA_INFO& record) {
    const unsigned char* const stored = record.bySignature;
    return std::any_of(stored, stored + kDigestSize, [](int byte) { return byte != 0; });
  }
  bool HoldsStoredDigest() const { return HoldsDigest(m_found.record); }

  bool IsReadable(const Reading& reading) const {
    const LONGLONG left = m_found.fileSize - reading.audioOffset;
    return reading.audioSize >= 0 && reading.audioSize <= std::min(left, kMostAudio);
  }

  bool Matches(const Reading& reading) const {
    unsigned char digest[kDigestSize];
    return IsReadable(reading) &&
           VerifyRecording().ComputeDigest(m_descriptor, *reading.record, reading.factValue,
                                           reading.audioOffset,
                                           static_cast<unsigned long>(reading.audioSize), digest) &&
           std::memcmp(digest, reading.record->bySignature, sizeof digest) == 0;
  }

  Reading AsFound() const {
    return {&m_found.record, m_found.factValue, m_found.audioOffset, m_found.audioSize};
  }

  void TryWhatWasFound() {
    if (m_found.missingAudio == 0) CompareDigests();
    if (m_matched || !HoldsStoredDigest()) return;
    if (!m_found.hasDigest) TryLongFile();
    if (!m_matched) TryLengths();
    if (!m_matched) TryFactValues();
  }

  void CompareDigests() {
    if (!m_found.hasDigest) return;
    int differing = 0;
    for (std::size_t i = 0; i < kDigestSize; ++i) {
      differing += m_found.storedDigest[i] != m_found.computedDigest[i] ? 1 : 0;
    }
    if (differing == 0) {
      AddMatch("flag-cleared",
               "the stored digest matches; the flag at offset " +
                   std::to_string(m_found.recordOffset + LONGLONG{offsetof(NA_INFO, dwSigned)}) +
                   " is " + std::to_string(m_found.record.dwSigned) + " instead of 1",
               "What the seal covers is what was once sealed. The mark that says \"sealed\" is not "
               "as sealing writes it.");
    } else if (differing <= kFewBytes) {
      AddMatch(
          "digest-damaged",
          "the stored digest itself is damaged: " + std::to_string(differing) +
              " of its 20 bytes differ from the computed one",
          "The seal itself was damaged, not what it protects: " + std::to_string(20 - differing) +
              " of its 20 bytes are exactly those that this very recording yields.");
    } else if (!HoldsStoredDigest()) {
      Add("digest-erased", "the stored digest is all zeros",
          "The place of the seal's fingerprint is empty. Without it nothing can be said about "
          "changes.");
    } else {
      m_tried.emplace_back("a stored digest of which few bytes are damaged");
    }
  }

  // No digest was computed, since the file is longer than any recording.
  void TryLongFile() {
    if (!Matches(AsFound())) return AddTried("the audio as declared", {""});
    const std::string rest = Bytes(m_found.fileSize - m_found.audioOffset - m_found.audioSize);
    AddMatch("file-too-long",
             "digest matches over the audio as declared; behind it stand " + rest +
                 ", more than any sealed recording has",
             "What the seal covers is what was sealed. Behind it the file holds " + rest +
                 " that the seal doesn't cover; programs may play or show those.");
  }

  // The lengths that other places of the file speak for.
  std::vector<LONGLONG> OtherLengths() const {
    const LONGLONG riff = m_found.chunkCount == 0 ? 0 : m_found.chunks[0].declaredSize;
    const LONGLONG size = m_found.audioSize;
    std::vector<LONGLONG> lengths;
    for (const LONGLONG length :
         {riff - LONGLONG{kRiffSizeWithoutAudio}, m_found.fileSize - m_found.audioOffset,
          LONGLONG{m_found.factValue / kSamplesPerByte}, size - 1}) {
      const bool known = std::find(lengths.begin(), lengths.end(), length) != lengths.end();
      if (length != size && !known && IsReadable(WithLength(length))) lengths.push_back(length);
    }
    return lengths;
  }

  Reading WithLength(LONGLONG length) const {
    Reading reading = AsFound();
    reading.audioSize = length;
    return reading;
  }

  void TryLengths() {
    std::vector<std::string> tried;
    for (const LONGLONG length : OtherLengths()) {
      if (Matches(WithLength(length))) return AddLength(length);
      tried.push_back(std::to_string(length));
    }
    AddTried("as length of the audio ", tried);
  }

  void AddLength(LONGLONG length) {
    const LONGLONG change = length - m_found.audioSize;
    const LONGLONG behind = m_found.fileSize - m_found.audioOffset - length;
    const std::string plain =
        "The sealed sound is complete. Of what the seal covers, the number that says how long the "
        "sound is was changed and nothing else: ";
    if (m_found.missingAudio != 0) {
      const std::string rest =
          behind == 0 ? "" : ". Behind the sealed sound stand " + Bytes(behind) + " more";
      AddMatch("audio-size-raised",
               "digest matches over the first " + Bytes(length) +
                   " of the audio: its declared size is " + Bytes(-change) + " too large",
               plain + "it is " + std::to_string(-change) + " too large" + rest + ".");
    } else if (change < 0) {
      AddMatch("trailing-ignored",
               "digest matches once the last " + Bytes(-change) + " of the audio are ignored",
               plain + "it counts " + Bytes(-change) +
                   " as sound that stand behind the sealed sound and are not part of it.");
    } else {
      AddMatch("trailing-counted",
               "digest matches once " + Bytes(change) + " more of the file are counted as audio",
               plain + "it leaves out the last " + Bytes(change) + " of the sealed sound.");
    }
  }

  void TryFactValues() {
    if (!IsReadable(AsFound())) return;
    std::vector<std::string> tried;
    const DWORD size = m_found.audioSize;
    for (const DWORD value : {DWORD{size * kSamplesPerByte}, DWORD{0}, size}) {
      Reading reading = AsFound();
      reading.factValue = value;
      if (value == m_found.factValue) continue;
      if (Matches(reading)) return AddFactValue(value);
      tried.push_back(std::to_string(value));
    }
    AddTried("as fact value ", tried);
  }

  void AddFactValue(DWORD value) {
    AddMatch("fact-changed",
             "digest matches once the fact value at offset " + std::to_string(m_found.factOffset) +
                 " is " + std::to_string(value) + " instead of " +
                 std::to_string(m_found.factValue),
             "Of what the seal covers, a technical number, the count of sound samples, was changed "
             "and nothing else.");
  }

  bool IsRecordInPlace() const {
    return m_found.hasRecord && m_found.recordOffset == LONGLONG{kRecordOffset} &&
           m_found.recordSize >= kNaInfoPayloadSize;
  }
  // Whether the chunks lead to the very bytes that the sealed layout does, so that these are tried.
  bool IsInPlace() const {
    return IsRecordInPlace() && m_found.hasAudio && m_found.audioOffset == LONGLONG{kHeaderSize} &&
           m_found.factOffset == LONGLONG{kFactValueOffset};
  }

  // Reads record, fact value and audio where sealing puts them, whatever the chunks say.
  void TrySealedLayout() {
    unsigned char header[kHeaderSize];
    if (::pread(m_descriptor, header, sizeof header, 0) != ssize_t{sizeof header}) return;
    NA_INFO record;
    std::memcpy(&record, header + kRecordOffset, sizeof record);
    if (!HoldsDigest(record)) return;
    const LONGLONG sizes[] = {
        LONGLONG{LoadLe32(header + kAudioSizeOffset)},
        LONGLONG{LoadLe32(header + kRiffSizeOffset)} - LONGLONG{kRiffSizeWithoutAudio},
        m_found.fileSize - LONGLONG{kHeaderSize}};
    std::vector<std::string> tried;
    for (const LONGLONG* size = std::begin(sizes); size != std::end(sizes); ++size) {
      const Reading reading{&record, LoadLe32(header + kFactValueOffset), kHeaderSize, *size};
      if (std::find(std::begin(sizes), size, *size) != size || !IsReadable(reading)) continue;
      if (Matches(reading)) return AddSealedLayout(*size);
      tried.push_back(std::to_string(*size));
    }
    AddTried("record, fact value and audio where sealing puts them, with as length ", tried);
  }

  void AddSealedLayout(LONGLONG size) {
    const std::string record = m_found.hasRecord
                                   ? "a record of " + Bytes(m_found.recordSize) + " at offset " +
                                         std::to_string(m_found.recordOffset)
                                   : "no record";
    const std::string audio = m_found.hasAudio ? Bytes(m_found.audioSize) + " of audio at offset " +
                                                     std::to_string(m_found.audioOffset)
                                               : "no audio";
    AddMatch("header-changed",
             "digest matches when record, fact value and " + Bytes(size) +
                 " of audio are read where sealing puts them; the chunks lead to " + record +
                 " and " + audio,
             "At the places where sealing puts them, sound and details are what was sealed, as far "
             "as the seal covers them. " +
                 OutsideSealedLayout(size));
  }

  // What an intact sealed layout doesn't speak for. Another program may well find that first.
  std::string OutsideSealedLayout(LONGLONG size) const {
    std::vector<std::string> others;
    if (m_found.hasRecord && !IsRecordInPlace()) others.emplace_back("another record");
    if (m_found.hasAudio &&
        (m_found.audioOffset != LONGLONG{kHeaderSize} || LONGLONG{m_found.audioSize} != size)) {
      others.emplace_back("other sound");
    }
    std::string text =
        others.empty() ? "The markings around them are not as sealing writes them: programs may "
                         "not find sound or details by them."
                       : "But by its markings the file also holds " + Joined(others, " and ") +
                             ": that is not what was sealed, and programs may play or show it.";
    const LONGLONG behind = m_found.fileSize - LONGLONG{kHeaderSize} - size;
    if (behind > 0) {
      text += " Behind the sealed sound stand " + Bytes(behind) +
              " that the seal doesn't cover; programs may play or show those.";
    }
    return text;
  }

  void TellWhatIsMissing() {
    const std::string missing = Bytes(m_found.missingAudio);
    std::string plain = "The file declares " + missing +
                        " of sound more than it holds: either the end is missing or the number "
                        "was changed.";
    if (HoldsStoredDigest()) {
      plain +=
          " Whether what is there is unchanged can't be told, since the seal covers the whole.";
    }
    Add("audio-short",
        "the file holds " + missing + " of audio fewer than it declares: " +
            std::to_string(m_found.audioSize) + " are declared, " +
            std::to_string(m_found.audioSize - m_found.missingAudio) + " are there",
        plain);
  }

  void TellWhatWasTried() {
    if (m_tried.empty() && !HoldsStoredDigest()) {
      return Add("no-digest",
                 "no stored digest was found, neither by the chunks nor where sealing puts it",
                 "No fingerprint that the file could be compared with was found in it. Whether it "
                 "was changed can't be told from it.");
    }
    const std::string tried = m_tried.empty() ? "there was nothing to compute the digest over"
                                              : "tried without success: " + Joined(m_tried, "; ");
    if (HoldsStoredDigest()) {
      return Add("unexplained", tried,
                 "What exactly was changed can't be told: nothing that was tried explains it.");
    }
    Add("unexplained", "the chunks lead to no stored digest; " + tried,
        "By its markings the file holds no fingerprint, and what stands where sealing puts one "
        "fits nothing that was tried. Whether the file was changed can't be told from it.");
  }

  int m_descriptor;
  const RecordingExamination& m_found;
  bool m_matched = false;  // some reading yields the stored digest, so that the cause is known
  std::vector<std::string> m_tried;
  std::vector<Explanation> m_explanations;
};

}  // namespace

std::vector<Explanation> Explain(int descriptor, const RecordingExamination& found) {
  const bool explicable = found.verdict == RecordingVerdict::kBroken ||
                          found.verdict == RecordingVerdict::kUnsealed ||
                          found.verdict == RecordingVerdict::kMalformed;
  if (!explicable) return {};
  return Explainer(descriptor, found).Run();
}

}  // namespace corvo
