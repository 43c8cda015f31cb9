// Removing a directory tree is the host's: this stands in for a host without it, and removes
// nothing.

#include "LarkspurCommon/FileHandler.h"

bool RemoveDirectoryTree(unsigned long&, const char*) {
  return true;
}
