#ifndef TOOLS_CORVO_TRACESETTINGS_H
#define TOOLS_CORVO_TRACESETTINGS_H

#include <optional>
#include <string>
#include <vector>

#include "tools/corvo/Commands.h"

namespace corvo {

// The trace settings file, through the library's own reader and writer. A running server takes a
// change up within three seconds. Each throws InputError.

// The level, the module that wrote the file last, and the IDs that are switched off.
Outcome ShowTraceSettings();

// 0 (off) to 9 (everything).
Outcome SetTraceLevel(unsigned level);

// Every ID that the library uses or the file names: number, on or off, name. First switches those
// of `on` (two hex digits each, or "all") on and those of `off` off, single ones after "all".
Outcome SwitchTraceIds(const std::vector<std::string>& on, const std::vector<std::string>& off);

}  // namespace corvo

#endif
