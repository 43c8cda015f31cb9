#ifndef TOOLS_CORVO_COMMANDS_H
#define TOOLS_CORVO_COMMANDS_H

#include <optional>
#include <string>

#include "platform/Win32Types.h"

namespace corvo {

// What came of a file, from good to bad: the program's exit code.
enum class Outcome { kFine = 0, kRefused = 1, kBadInput = 2 };

// The commands that take recordings, for one of them. Each prints one line (ShowProperties: a
// block) about it, and throws InputError for what is not a recording.

// Times and codec as far as the user gave them.
struct SealPlan {
  std::optional<long long> start;
  std::optional<long long> end;
  std::optional<long long> duration;
  std::optional<UWORD> codec;
};

Outcome Seal(const std::string& name, const SealPlan& plan);
Outcome ShowStatus(const std::string& name);

// Raw: the property text as it is; otherwise one line for each item.
Outcome ShowProperties(const std::string& name, bool raw);

}  // namespace corvo

#endif
