#ifndef TESTS_LARKSPURCOMMON_FILEHANDLERTEST_H
#define TESTS_LARKSPURCOMMON_FILEHANDLERTEST_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "LarkspurCommon/Aregistry.h"
#include "LarkspurCommon/FileHandler.h"
#include "support/Scratch.h"
#include "support/SystemCalls.h"
#include "support/TraceLog.h"

namespace corvo_test {

class FileHandlerTest : public testing::Test {
 protected:
  FileHandlerTest() {
    VMRegistry::global();  // what its start does is no test's concern
    trace.Clear();
    BehaveAgain();
  }
  ~FileHandlerTest() override { BehaveAgain(); }

  // A file in the scratch directory; its path.
  static std::string Make(const std::string& name, const std::string& bytes) {
    WriteFile(ScratchPath(name), bytes);
    return ScratchPath(name);
  }

  bool Open(const std::string& path, OpenFileMode mode, bool truncate = false) {
    return file.Open(path.c_str(), mode, NLM_BINARY, truncate, false);
  }

  std::string LastError() const { return file.DisplayLastError(); }

  // That a failure is the last error, and has been traced once.
  void ExpectTold(int error, const std::string& doing, const std::string& path) {
    EXPECT_EQ("Error " + std::to_string(error) + " (" + std::strerror(error) + ") " + doing +
                  " file \"" + path + "\"",
              LastError());
    EXPECT_THAT(trace.Texts(), testing::ElementsAre(testing::EndsWith(") - " + LastError() + ".")));
  }

  TFileHandler file;
  TraceLog trace;
};

}  // namespace corvo_test

#endif
