// Examines a recording by reading its audio once.

#include <errno.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

#include "LarkspurCommon/FileHandlerPaths.h"
#include "LarkspurCommon/FileHandlerSystem.h"
#include "LarkspurCommon/sha1.h"
#include "engine/ChunkMap.h"
#include "engine/CorvoVerifiedRecording.h"
#include "engine/LayoutDepartures.h"
#include "engine/SealedHeader.h"
#include "platform/HoldCancellation.h"
#include "platform/Uninterrupted.h"

namespace {

constexpr DWORD kAudioBlock = 128 * 1024;

tstring Text(int error) {
  tstring text;
  return text.GetErrorText(error);
}

// Why a recording can't be one, in an auditor's words.
tstring Text(const WalkRefusal& refusal) {
  switch (refusal.kind) {
    case WalkRefusal::kNone:
      break;
    case WalkRefusal::kNoRiff:
    case WalkRefusal::kNoWave:
      return "it is no WAVE file";
    case WalkRefusal::kNoChunk:
      return tstring::FromFormat("it has no \"%s\" chunk where one belongs", refusal.chunk);
    case WalkRefusal::kEmptyChunk:
      return tstring::FromFormat("its \"%s\" chunk is empty", refusal.chunk);
    case WalkRefusal::kSmallChunk:
      return tstring::FromFormat("its \"%s\" chunk of %lu bytes is too small", refusal.chunk,
                                 refusal.value);
    case WalkRefusal::kChannels:
      return tstring::FromFormat("it declares %lu channels instead of 1", refusal.value);
    case WalkRefusal::kFormat:
      return tstring::FromFormat("it declares audio format %lu instead of %u", refusal.value,
                                 unsigned{kTagG726});
  }
  return {};
}

// Feeds audio to the digest. Gives 0, or the error; ENODATA where the file ends before.
int DigestAudio(DescriptorSource& source, LONGLONG offset, unsigned long length,
                SHA1_CTX& context) {
  const std::unique_ptr<unsigned char[]> block(new (std::nothrow) unsigned char[kAudioBlock]);
  if (block == nullptr) return ENOMEM;
  while (length != 0) {
    const auto count = static_cast<DWORD>(std::min<unsigned long>(length, kAudioBlock));
    if (source.ReadAt(offset, block.get(), count) != count) {
      return source.Error() != 0 ? source.Error() : ENODATA;
    }
    SHA1Update(&context, block.get(), count);
    offset += count;
    length -= count;
  }
  return 0;
}

int DigestRecording(DescriptorSource& source, NA_INFO record, unsigned long factValue,
                    LONGLONG audioOffset, unsigned long audioBytes, unsigned char* digest) {
  const long long noEyreValue = 0;
  unsigned char header[kSealedHeaderSize];
  ClearSeal(record);
  BuildSealedHeader(header, audioBytes, factValue, &noEyreValue, record);
  SHA1_CTX context;
  SHA1Init(&context);
  SHA1Update(&context, header, sizeof header);
  const int error = DigestAudio(source, audioOffset, audioBytes, context);
  SHA1Final(digest, &context);
  return error;
}

// A file opened for reading, closed also where the thread is cancelled meanwhile.
class OpenedFile {
 public:
  explicit OpenedFile(const char* path)
      : m_descriptor(Uninterrupted(
            [&] { return ::open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY); })) {}
  OpenedFile(const OpenedFile&) = delete;
  OpenedFile& operator=(const OpenedFile&) = delete;
  ~OpenedFile() {
    const HoldCancellation hold;
    if (m_descriptor != -1) ::close(m_descriptor);
  }

  int Descriptor() const { return m_descriptor; }

 private:
  int m_descriptor;
};

void RefuseToRead(int error, RecordingExamination& found) {
  found = {};
  found.reason = Text(error);
}

// One examination of an open file.
class Examination {
 public:
  Examination(VerifyRecording& engine, int descriptor, RecordingExamination& found)
      : m_engine(engine), m_descriptor(descriptor), m_found(found) {}

  void Run() {
    if (!Begin()) return;
    MappedSource source(m_descriptor, m_found);
    LookAround(source);
    m_sealed = m_found.hasRecord && m_engine.IsSignaturePresent(m_found.record);
    if (m_sealed) FindDepartures(source, m_found);
    int error = source.Error();
    if (error == 0 && HoldsDigest() && HoldsAllAudio()) error = Digest(source);
    struct statx after;
    if (!file_layer::GetStatus(m_descriptor, after)) {
      Conclude(RecordingVerdict::kUnreadable, Text(errno));
    } else if (file_layer::MarkOf(after) != m_before) {
      Conclude(RecordingVerdict::kChanged, "it changed while it was read");
    } else if (error != 0) {
      Conclude(RecordingVerdict::kUnreadable, Text(error));
    } else {
      Judge();
    }
  }

 private:
  void Conclude(RecordingVerdict verdict, const tstring& reason) {
    m_found.verdict = verdict;
    m_found.reason = reason;
  }

  bool Begin() {
    struct statx status;
    if (!file_layer::GetStatus(m_descriptor, status)) {
      Conclude(RecordingVerdict::kUnreadable, Text(errno));
      return false;
    }
    if (!S_ISREG(status.stx_mode)) {
      Conclude(RecordingVerdict::kUnreadable, "it is not a regular file");
      return false;
    }
    m_before = file_layer::MarkOf(status);
    m_found.fileSize = m_before.size;
    if (m_found.fileSize > kLongestFile) {  // the way through its chunks could take hours
      Conclude(RecordingVerdict::kMalformed, "it is longer than any sealed recording");
      return false;
    }
    return true;
  }

  // Record, audio and chunks. A refused walk to the record is what is told, before one to the
  // audio.
  void LookAround(MappedSource& source) {
    unsigned long riffSize = 0;
    WalkRefusal audioRefusal;
    m_found.hasRecord = ReadRecord(source, m_found.record, &riffSize, m_refusal);
    if (m_found.hasRecord) {
      m_found.recordOffset = source.LastChunk();
      m_found.recordSize = source.LastSize();
    }
    FindAudio(source, audioRefusal);
    if (m_found.hasRecord) m_refusal = audioRefusal;
    if (m_refusal.kind == WalkRefusal::kNoRiff || m_refusal.kind == WalkRefusal::kNoWave) {
      m_found.chunkCount = 0;
    } else {
      source.CompleteMap(static_cast<DWORD>(riffSize));
    }
  }

  void FindAudio(MappedSource& source, WalkRefusal& refusal) {
    unsigned long factValue = 0;
    unsigned long audioBytes = 0;
    long long eyreValue = 0;
    m_found.hasAudio = WalkToG726Audio(source, factValue, eyreValue, audioBytes, refusal);
    m_found.startTime = eyreValue;
    m_found.factValue = static_cast<DWORD>(factValue);
    if (!m_found.hasAudio) return;
    m_found.audioOffset = source.Position();
    m_found.audioSize = static_cast<DWORD>(audioBytes);
    const LONGLONG left = m_found.fileSize - m_found.audioOffset;
    m_found.missingAudio =
        static_cast<DWORD>(std::max(LONGLONG{m_found.audioSize} - std::max(left, 0LL), 0LL));
  }

  // Recordings that were never sealed hold none: their audio needn't be read.
  bool HoldsDigest() const {
    const unsigned char* const stored = m_found.record.bySignature;
    return m_found.hasRecord &&
           (m_sealed || std::any_of(stored, stored + kDigestSize, [](int byte) { return byte; }));
  }

  bool DeclaresTooMuchAudio() const { return m_found.audioSize > kMostAudio; }

  bool HoldsAllAudio() const {
    return m_found.hasAudio && m_found.missingAudio == 0 && !DeclaresTooMuchAudio();
  }

  int Digest(DescriptorSource& source) {
    std::memcpy(m_found.storedDigest, m_found.record.bySignature, kDigestSize);
    const int error =
        DigestRecording(source, m_found.record, m_found.factValue, m_found.audioOffset,
                        m_found.audioSize, m_found.computedDigest);
    m_found.hasDigest = error == 0;
    return error;
  }

  void Judge() {
    if (m_found.hasRecord && !m_sealed) {
      Conclude(RecordingVerdict::kUnsealed, "it isn't marked as sealed");
    } else if (!m_found.hasRecord || !m_found.hasAudio) {
      Conclude(RecordingVerdict::kMalformed, Text(m_refusal));
    } else if (DeclaresTooMuchAudio()) {
      Conclude(RecordingVerdict::kMalformed,
               "it declares more audio than any sealed recording holds");
    } else if (m_found.missingAudio != 0) {
      Conclude(RecordingVerdict::kMalformed,
               tstring::FromFormat("it lacks %u of its %u bytes of audio", m_found.missingAudio,
                                   m_found.audioSize));
    } else if (std::memcmp(m_found.computedDigest, m_found.storedDigest, kDigestSize) != 0) {
      Conclude(RecordingVerdict::kBroken, "its digest is not the one that was sealed");
    } else {
      Conclude(RecordingVerdict::kOk, {});
    }
  }

  VerifyRecording& m_engine;
  int m_descriptor;
  RecordingExamination& m_found;
  FileMark m_before{};
  WalkRefusal m_refusal;
  bool m_sealed = false;
};

}  // namespace

void VerifyRecording::Examine(int descriptor, RecordingExamination& found) {
  found = {};
  Examination(*this, descriptor, found).Run();
}

void VerifyRecording::Examine(const char* pszFileName, RecordingExamination& found) {
  const tstring resolved = file_layer::ResolveBareName(pszFileName);
  const file_layer::FoundPath path(resolved.c_str());
  const bool isNamed = pszFileName != nullptr && *pszFileName != '\0';
  if (isNamed && *path.Text() == '\0') return RefuseToRead(ENAMETOOLONG, found);
  const OpenedFile file(path.Text());
  if (file.Descriptor() == -1) return RefuseToRead(errno, found);
  Examine(file.Descriptor(), found);
}

bool VerifyRecording::ComputeDigest(int descriptor, const NA_INFO& record, unsigned long factValue,
                                    LONGLONG audioOffset, unsigned long audioBytes,
                                    unsigned char digest[kDigestSize]) {
  DescriptorSource source(descriptor, audioOffset + static_cast<LONGLONG>(audioBytes));
  return DigestRecording(source, record, factValue, audioOffset, audioBytes, digest) == 0;
}
