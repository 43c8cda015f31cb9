#ifndef TOOLS_CORVO_TRUST_MANIFESTRUN_H
#define TOOLS_CORVO_TRUST_MANIFESTRUN_H

#include <string>

#include "tools/corvo/archive/Check.h"
#include "tools/corvo/archive/Inputs.h"

namespace corvo {

// What writing and checking a manifest share.

// The walk through a directory whose files stand in manifests under names below it. Throws
// InputError when it is none.
class ListedDirectory {
 public:
  explicit ListedDirectory(const std::string& directory);

  InputPlan Inputs() const;
  std::string NameOf(const std::string& path) const;  // "./" and what is below the directory
  std::string PathOf(const std::string& name) const;

 private:
  std::string m_prefix;  // ends with "/"
};

// Digests a whole file. False: `refusal` tells why it can't be read, or that it changed meanwhile.
bool DigestUnchanged(const RecordingFile& file, std::string& digest, std::string& refusal);

}  // namespace corvo

#endif
