#ifndef TOOLS_CORVO_EVIDENCE_BUILDID_H
#define TOOLS_CORVO_EVIDENCE_BUILDID_H

#include <string>

namespace corvo {

// The GNU build-id of this program, and of the library that it has loaded, in hex: it tells exactly
// which build ran. Empty where the linker was told to leave it out.
std::string ProgramBuildId();
std::string LibraryBuildId();

}  // namespace corvo

#endif
