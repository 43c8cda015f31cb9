#ifndef TOOLS_CORVO_RECORDINGMAKER_H
#define TOOLS_CORVO_RECORDINGMAKER_H

#include <optional>
#include <string>
#include <vector>

#include "tools/corvo/AudioInput.h"
#include "tools/corvo/Metadata.h"

namespace corvo {

struct RecordingPlan {
  std::string output;
  std::string input;
  std::optional<Codec> codec;  // needed for raw audio
  std::string metadataFile;    // JSON; empty: none
  std::vector<Item> items;     // win over those of the file
  long long start = 0;         // kept in G.726 recordings
  bool force = false;          // replace an existing file
};

// Makes a finished, unsealed recording: complete, or not at all. Throws InputError.
void MakeRecording(const RecordingPlan& plan);

}  // namespace corvo

#endif
