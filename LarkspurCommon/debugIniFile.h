#ifndef LARKSPURCOMMON_DEBUGINIFILE_H
#define LARKSPURCOMMON_DEBUGINIFILE_H

#include "LarkspurCommon/CritSect.h"
#include "LarkspurCommon/Immortal.h"

// Guards the settings file, its entries and every change of the filter. Held by a thread while it
// is anywhere inside the settings, never while a line is written: but for those that the host
// traces from its own fopen_s, in there. So no trace call waits for it.
extern Immortal<DebugLock> s_DebugLock;

// Drops the entries, unwritten changes included.
void UnloadIniFile();

#endif
