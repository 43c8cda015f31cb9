#ifndef TESTS_LARKSPURCOMMON_FILEHANDLERTEST_H
#define TESTS_LARKSPURCOMMON_FILEHANDLERTEST_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/types.h>

#include <string>

#include "LarkspurCommon/FileHandler.h"
#include "support/Scratch.h"
#include "support/TraceLog.h"

namespace corvo_test {

enum Call { kOpen, kRead, kWrite, kFsync, kSync, kLseek, kFtruncate, kAllocateCache, kCalls };

// How this test program's own version of a call behaves. None waits for the disk.
struct Behaviour {
  int failures = 0;   // the next so many calls fail ...
  int error = 0;      // ... with this
  ssize_t most = -1;  // the bytes that one call moves at most; -1: all
  int calls = 0;      // so far
};
Behaviour& On(Call call);

extern std::string g_removedTree;  // what the host's RemoveDirectoryTree was last given

class FileHandlerTest : public testing::Test {
 protected:
  ~FileHandlerTest() override;  // every call behaves again
  // A file in the scratch directory; its path.
  static std::string Make(const std::string& name, const std::string& bytes);

  TFileHandler file;
  TraceLog trace;
};

}  // namespace corvo_test

#endif
