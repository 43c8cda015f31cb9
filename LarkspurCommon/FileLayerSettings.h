#ifndef LARKSPURCOMMON_FILELAYERSETTINGS_H
#define LARKSPURCOMMON_FILELAYERSETTINGS_H

#include "LarkspurCommon/tstring.h"

// What the file layer asks of the configuration, which stands above it and answers. Asked each time
// it is needed, by any thread, and never with a lock held: the answer may itself use files.

tstring FileLayerTempDirectory();
tstring FileLayerDatabaseDirectory();
tstring FileLayerLoggingDirectory();
bool FileLayerLogsErrorsToFile();

#endif
