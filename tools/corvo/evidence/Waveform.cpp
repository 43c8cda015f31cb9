// From audio to an envelope that fits a page.

#include "tools/corvo/evidence/Waveform.h"

#include <algorithm>

#include "tools/corvo/evidence/G726Decoder.h"

namespace corvo {
namespace {

constexpr LONGLONG kSamplesPerByte = 4;

// Rows as long as clocks are read, the shortest that do.
LONGLONG ChooseSecondsPerRow(LONGLONG samples) {
  constexpr LONGLONG kSteps[] = {5,   10,   20,   30,   60,   120,   300,
                                 600, 1200, 1800, 3600, 7200, 14400, 28800};
  for (const LONGLONG step : kSteps) {
    if (samples <= step * Waveform::kSamplesPerSecond * Waveform::kMostRows) return step;
  }
  return 86400;  // so that a file of the largest size takes few more rows
}

// Columns share a row's samples as evenly as whole samples can.
LONGLONG ColumnStart(std::size_t column, LONGLONG rowSamples) {
  const LONGLONG columns = Waveform::kColumnsPerRow;
  return (static_cast<LONGLONG>(column) * rowSamples + columns - 1) / columns;
}

}  // namespace

int DecodeWaveform(const Descriptor& file, LONGLONG offset, LONGLONG length, Waveform& waveform) {
  waveform.samples = length * kSamplesPerByte;
  waveform.secondsPerRow = ChooseSecondsPerRow(waveform.samples);
  const LONGLONG rowSamples = waveform.secondsPerRow * Waveform::kSamplesPerSecond;
  G726Decoder decoder;
  LONGLONG position = 0;
  LONGLONG nextColumn = 0;  // where it begins; a division for each sample would take long
  const auto take = [&](int sample) {
    if (position++ == nextColumn) {
      waveform.columns.push_back({sample, sample});
      nextColumn = ColumnStart(waveform.columns.size(), rowSamples);
    }
    Waveform::Column& slice = waveform.columns.back();
    slice.least = std::min(slice.least, sample);
    slice.greatest = std::max(slice.greatest, sample);
  };
  return ReadBlocks(file, offset, length, [&](const unsigned char* bytes, unsigned count) {
    for (unsigned i = 0; i < count; ++i) {
      for (int shift = 6; shift >= 0; shift -= 2) take(decoder.Decode(bytes[i] >> shift & 3));
    }
  });
}

}  // namespace corvo
