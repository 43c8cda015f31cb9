#ifndef TOOLS_CORVO_PATHS_H
#define TOOLS_CORVO_PATHS_H

#include <string>

namespace corvo {

// The library looks for a bare name beside the program, ignores letter case where nothing is
// spelled exactly so, takes '\' for a separator and has room for 259 characters. A user of the
// command means the current directory and the very file that he names. These give the path by
// which the library can only meet that one, or throw InputError.

// Of an existing regular file. Links are followed, so that sealing replaces the recording and not
// a link to it.
std::string ExistingFile(const std::string& name);

// Of a file to be made in an existing directory. One that is there already is refused, unless the
// user said --force.
std::string NewFile(const std::string& name, bool force);

// Of a directory that is made if it is missing, and of one that must be there.
std::string Directory(const std::string& name);
std::string ExistingDirectory(const std::string& name);

}  // namespace corvo

#endif
