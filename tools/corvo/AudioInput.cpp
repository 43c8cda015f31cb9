// Audio that the user gives, in a WAVE file or raw.

#include "tools/corvo/AudioInput.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string_view>

#include "LarkspurCommon/LittleEndian.h"
#include "tools/corvo/GsmBlocks.h"
#include "tools/corvo/InputError.h"

namespace corvo {
namespace {

struct CodecRow {
  Codec codec;
  const char* name;
  std::size_t blockBytes;
};

constexpr CodecRow kCodecs[] = {
    {Codec::kG726, "g726", 1}, {Codec::kGsm, "gsm", kGsmBlockBytes}, {Codec::kPcm, "pcm", 2}};

struct FormatRow {
  WORD tag;
  WORD bitsPerSample;
  Codec codec;
};

constexpr FormatRow kFormats[] = {{kTagPcm, 16, Codec::kPcm},
                                  {kTagGsm, 0, Codec::kGsm},
                                  {kTagG726, 2, Codec::kG726},
                                  {kTagG726Other, 2, Codec::kG726}};

constexpr std::size_t kFormTypeOffset = 8;  // of "WAVE" behind "RIFF" and the size
constexpr std::size_t kFirstChunk = 12;
constexpr std::size_t kChunkHeaderBytes = 8;
constexpr std::size_t kFormatBytes = 16;  // the fields that all formats have

const CodecRow& RowOf(Codec codec) {
  return *std::find_if(std::begin(kCodecs), std::end(kCodecs),
                       [codec](const CodecRow& row) { return row.codec == codec; });
}

std::string ReadWhole(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  file.peek();  // fails on what opens but can't be read: a directory
  if (!file.is_open() || file.bad()) throw InputError(name, std::strerror(errno));
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

bool IsWave(const std::string& bytes) {
  return bytes.compare(0, 4, "RIFF") == 0 && bytes.compare(kFormTypeOffset, 4, "WAVE") == 0;
}

// The payload of the first chunk with this id. Chunks of odd size are padded.
std::string_view Chunk(const std::string& name, std::string_view wave, std::string_view id) {
  wave.remove_prefix(kFirstChunk);
  while (wave.size() >= kChunkHeaderBytes) {
    const bool found = wave.substr(0, id.size()) == id;
    const std::size_t size = LoadLe32(&wave[4]);
    wave.remove_prefix(kChunkHeaderBytes);
    if (size > wave.size()) throw InputError(name, "ends within a chunk");
    if (found) return wave.substr(0, size);
    wave.remove_prefix(std::min(size + size % 2, wave.size()));
  }
  throw InputError(name, "has no chunk \"" + std::string(id) + "\"");
}

Codec CodecOf(const std::string& name, std::string_view format) {
  if (format.size() < kFormatBytes) throw InputError(name, "has too small a format chunk");
  const WORD tag = LoadLe16(&format[0]);
  const WORD channels = LoadLe16(&format[2]);
  const DWORD samplesPerSecond = LoadLe32(&format[4]);
  const WORD bitsPerSample = LoadLe16(&format[14]);
  const auto row = std::find_if(std::begin(kFormats), std::end(kFormats), [&](const FormatRow& f) {
    return f.tag == tag && f.bitsPerSample == bitsPerSample;
  });
  if (row == std::end(kFormats) || channels != 1 || samplesPerSecond != kSampleRate) {
    throw InputError(name, "holds format " + std::to_string(tag) + " with " +
                               std::to_string(channels) + " channels, " +
                               std::to_string(samplesPerSecond) + " Hz, " +
                               std::to_string(bitsPerSample) +
                               " bits, not one channel at 8000 Hz of 16-bit linear, GSM 6.10 or"
                               " 2-bit G.726 audio");
  }
  return row->codec;
}

Audio ReadWave(const std::string& name, const std::string& bytes) {
  const Codec codec = CodecOf(name, Chunk(name, bytes, "fmt "));
  return {codec, std::string(Chunk(name, bytes, "data"))};
}

Audio ReadRaw(const std::string& name, std::string&& bytes, std::optional<Codec> codec) {
  if (!codec) throw InputError(name, "is no WAVE file: --codec must tell what it holds");
  if (*codec != Codec::kGsm) return {*codec, std::move(bytes)};
  if (!AreGsmFrames(bytes)) throw InputError(name, "is not made of GSM 6.10 frames");
  return {*codec, PackGsmFrames(bytes)};
}

}  // namespace

Audio ReadAudio(const std::string& file, std::optional<Codec> codec) {
  std::string bytes = ReadWhole(file);
  Audio audio = IsWave(bytes) ? ReadWave(file, bytes) : ReadRaw(file, std::move(bytes), codec);
  const CodecRow& row = RowOf(audio.codec);
  if (codec && *codec != audio.codec) {
    throw InputError(file, std::string("holds ") + row.name + " audio, not " + RowOf(*codec).name);
  }
  if (audio.bytes.empty()) throw InputError(file, "holds no audio");
  if (audio.bytes.size() % row.blockBytes != 0) {
    throw InputError(file, std::string("ends within a ") + row.name + " block");
  }
  return audio;
}

}  // namespace corvo
