#ifndef TOOLS_CORVO_FLUSH_H
#define TOOLS_CORVO_FLUSH_H

#include <string>

namespace corvo {

// Give 0 when a file, or the directory in which it has its name, is on disk; else the error for
// which it may not be. Some file systems flush no directories, and say so: that is no error.
int FlushFile(const std::string& path);
int FlushDirectoryOf(const std::string& path);

}  // namespace corvo

#endif
