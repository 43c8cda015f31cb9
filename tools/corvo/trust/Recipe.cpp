// How to check a seal without this program.

#include "tools/corvo/trust/Recipe.h"

#include <algorithm>
#include <cctype>
#include <iostream>

#include "LarkspurCommon/LittleEndian.h"
#include "tools/corvo/archive/Check.h"
#include "tools/corvo/archive/Names.h"
#include "tools/corvo/archive/Verdicts.h"

namespace corvo {
namespace {

// Places in the record's payload.
constexpr LONGLONG kBehindMaker = 6;  // "Tolva" and its zero byte, which sealing writes itself
constexpr LONGLONG kFlag = offsetof(NA_INFO, dwSigned) - offsetof(NA_INFO, szMaker);
constexpr LONGLONG kDigest = offsetof(NA_INFO, bySignature) - offsetof(NA_INFO, szMaker);
constexpr LONGLONG kBehindSeal = offsetof(NA_INFO, szItem10) - offsetof(NA_INFO, szMaker);

constexpr DWORD kRiffSizeWithoutAudio = 3162;
constexpr LONGLONG kChunkHeader = 8;
constexpr LONGLONG kSizeOfValue = 4;  // of a chunk's size, and of the fact value

// For a single-quoted shell word.
std::string Quoted(const std::string& name) {
  std::string word = name.front() == '-' ? "'./" : "'";
  for (const char c : name) word += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return word + "'";
}

// printf's argument for these bytes.
std::string PrintfText(const std::string& bytes) {
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (std::isalnum(byte) != 0 || c == ' ') {
      text += c;
    } else {
      text += {'\\', static_cast<char>('0' + byte / 64), static_cast<char>('0' + byte / 8 % 8),
               static_cast<char>('0' + byte % 8)};
    }
  }
  return text;
}

std::string Le32(DWORD value) {
  std::string bytes(4, '\0');
  StoreLe32(bytes.data(), value);
  return bytes;
}

class Recipe {
 public:
  Recipe(const std::string& name, const RecordingExamination& found)
      : m_name(name), m_found(found) {}

  void Print() const {
    std::cout << "#!/bin/sh\n"
                 "# Recomputes the seal of a recording. The digest covers a header in a fixed\n"
                 "# layout, in which the seal and the start time are zeros, and the audio.\n"
              << "file=" << Quoted(m_name)
              << "\ntest -r \"$file\" || { echo \"$file can't be read\" >&2; exit 2; }\n"
                 "computed=$({\n";
    PrintHeader();
    Tell("the audio: " + std::to_string(m_found.audioSize) + " bytes from offset " +
         std::to_string(m_found.audioOffset));
    std::cout << "  tail -c +" << m_found.audioOffset + 1 << " \"$file\" | head -c "
              << m_found.audioSize << '\n'
              << "} | sha1sum | cut -c 1-40)\n"
                 "# The digest that sealing has stored in the record:\n"
                 "stored=$({\n";
    PrintRecord(kDigest, kDigest + LONGLONG{kDigestSize});
    std::cout << "} | od -An -v -t x1 | tr -d ' \\n')\n"
                 "echo \"computed: $computed\"\n"
                 "echo \"stored:   $stored\"\n"
                 "if test \"$computed\" = \"$stored\"; then echo 'the seal is intact'\n"
                 "else echo 'the seal is broken'; exit 1; fi\n";
  }

 private:
  static void Tell(const std::string& what) { std::cout << "  # " << what << '\n'; }

  static void PrintBytes(const std::string& bytes) {
    std::cout << "  printf '" << PrintfText(bytes) << "'\n";
  }

  static void PrintZeros(LONGLONG count) {
    if (count > 0) std::cout << "  head -c " << count << " /dev/zero\n";
  }

  static void PrintPart(LONGLONG offset, LONGLONG size) {
    std::cout << "  dd if=\"$file\" bs=1 skip=" << offset << " count=" << size << " status=none\n";
  }

  // A part of the record's payload; what the file lacks of it counts as zeros.
  void PrintRecord(LONGLONG begin, LONGLONG end) const {
    const LONGLONG there = std::clamp(PresentRecord(), begin, end);
    if (there > begin) PrintPart(m_found.recordOffset + kChunkHeader + begin, there - begin);
    PrintZeros(end - there);
  }

  LONGLONG PresentRecord() const {
    const LONGLONG left = m_found.fileSize - m_found.recordOffset - kChunkHeader;
    return std::min(LONGLONG{m_found.recordSize}, left);
  }

  void PrintHeader() const {
    Tell("RIFF header, start time (zeros) and format, as sealing writes them");
    PrintBytes("RIFF" + Le32(kRiffSizeWithoutAudio + m_found.audioSize) + "WAVEeyre" + Le32(8));
    PrintZeros(8);
    PrintBytes("fmt " + Le32(16) + std::string("\x64\0\1\0", 4) + Le32(8000) + Le32(2000) +
               std::string("\1\0\2\0", 4));
    Tell("the record, with the maker's name as sealing writes it and zeros for the seal");
    PrintBytes("ALCH" + Le32(kNaInfoPayloadSize) + std::string("Tolva\0", kBehindMaker));
    PrintRecord(kBehindMaker, kFlag);
    PrintZeros(kBehindSeal - kFlag);
    PrintRecord(kBehindSeal, kNaInfoPayloadSize);
    Tell("the fact value, and the length of the audio");
    PrintBytes("fact" + Le32(4));
    PrintPart(m_found.factOffset, kSizeOfValue);
    PrintBytes("data");
    PrintPart(m_found.audioOffset - kSizeOfValue, kSizeOfValue);
  }

  const std::string& m_name;
  const RecordingExamination& m_found;
};

}  // namespace

Outcome PrintRecipe(const std::string& name) {
  RecordingExamination found;
  Check(RecordingFile(name), found);
  const RecordingVerdict verdict = found.verdict;
  if (verdict == RecordingVerdict::kOk || verdict == RecordingVerdict::kBroken) {
    Recipe(name, found).Print();
    return Outcome::kFine;
  }
  std::cerr << "corvo: " << NameInLine(name) << ": there is no seal to recompute ("
            << VerdictWord(verdict) << ": " << found.reason.c_str() << ")\n";
  return OutcomeOf(verdict);
}

}  // namespace corvo
