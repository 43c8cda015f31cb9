// Where a recording departs from the layout that sealing writes.

#include "engine/LayoutDepartures.h"

#include <cstring>

#include "engine/SealedHeader.h"

namespace {

// The fields that can differ: it begins as a WAVE file does, and the others are taken from it.
constexpr LayoutDeparture kRiffSize{4, 4, "RIFF size"};
constexpr LayoutDeparture kFields[] = {
    kRiffSize,
    {12, 8, "\"eyre\" chunk header"},
    {28, 8, "\"fmt \" chunk header"},
    {36, 16, "format block"},
    {52, 8, "\"ALCH\" chunk header"},
    {60, 6, "maker's name"},
    {322, 60, "signature area behind the digest"},
    {3150, 8, "\"fact\" chunk header"},
    {3162, 8, "\"data\" chunk header"},
};

void Add(RecordingExamination& found, const LayoutDeparture& departure) {
  if (found.departureCount < RecordingExamination::kMostDepartures) {
    found.departures[found.departureCount++] = departure;
  }
}

// What sealing would have written for this record and audio.
void BuildExpected(unsigned char header[kSealedHeaderSize], const RecordingExamination& found) {
  NA_INFO record = found.record;
  std::memset(record.bySignature + kDigestSize, 0, sizeof record.bySignature - kDigestSize);
  BuildSealedHeader(header, found.audioSize, found.factValue, &found.startTime, record);
}

// The first field alone where the audio isn't in its place: what follows it is just moved, and the
// sizes can't be known.
void CompareHeader(DescriptorSource& source, RecordingExamination& found) {
  const bool inPlace = found.hasAudio && found.audioOffset == LONGLONG{kSealedHeaderSize};
  unsigned char expected[kSealedHeaderSize];
  unsigned char actual[kSealedHeaderSize] = {};
  BuildExpected(expected, found);
  source.ReadAt(0, actual, sizeof actual);
  for (const LayoutDeparture& field : kFields) {
    if (!inPlace && field.offset == kRiffSize.offset) continue;
    const auto size = static_cast<std::size_t>(field.size);
    if (std::memcmp(actual + field.offset, expected + field.offset, size) == 0) continue;
    Add(found, field);
    if (!inPlace) return;
  }
}

}  // namespace

void FindDepartures(DescriptorSource& source, RecordingExamination& found) {
  CompareHeader(source, found);
  if (!found.hasAudio) return;
  const LONGLONG end = found.audioOffset + found.audioSize;
  if (found.missingAudio != 0)
    Add(found, {found.fileSize, found.missingAudio, "audio that the file lacks"});
  if (end < found.fileSize) Add(found, {end, found.fileSize - end, "behind the audio"});
}
