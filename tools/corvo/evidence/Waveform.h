#ifndef TOOLS_CORVO_EVIDENCE_WAVEFORM_H
#define TOOLS_CORVO_EVIDENCE_WAVEFORM_H

#include <vector>

#include "tools/corvo/archive/Blocks.h"

namespace corvo {

// The envelope of decoded audio: for each slice of time the least and the greatest sample.
struct Waveform {
  struct Column {
    int least;
    int greatest;
  };
  static constexpr int kColumnsPerRow = 900;
  static constexpr int kMostRows = 12;
  static constexpr int kSamplesPerSecond = 8000;

  LONGLONG samples = 0;
  LONGLONG secondsPerRow = 0;
  std::vector<Column> columns;  // the last row may be short
};

// Decodes 16 kbit/s G.726 audio in memory that doesn't depend on the length. Gives 0, or the error
// for which the system refused to read.
int DecodeWaveform(const Descriptor& file, LONGLONG offset, LONGLONG length, Waveform& waveform);

}  // namespace corvo

#endif
