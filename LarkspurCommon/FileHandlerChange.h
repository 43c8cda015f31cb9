#ifndef LARKSPURCOMMON_FILEHANDLERCHANGE_H
#define LARKSPURCOMMON_FILEHANDLERCHANGE_H

#include "LarkspurCommon/FileHandler.h"

namespace file_layer {

enum class FileChange {
  kNone,
  kChanged,
  kUnknown,  // the file is there, but its times can't be read: reported
};

// TFileHandler::HasFileChanged, for who must not take "unknown" for "unchanged".
FileChange LookForChange(const char* path, bool& exists, FileSeconds& lastWriteTime);

}  // namespace file_layer

#endif
