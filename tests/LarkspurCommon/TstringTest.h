#ifndef TESTS_LARKSPURCOMMON_TSTRINGTEST_H
#define TESTS_LARKSPURCOMMON_TSTRINGTEST_H

#include <gtest/gtest.h>
#include <locale.h>

#include <algorithm>
#include <string>
#include <vector>

#include "LarkspurCommon/tstring.h"
#include "support/TraceLog.h"

// The string class's lines of level 8 that have come since the last call, without the place in the
// source that an assertion names.
inline std::vector<std::string> TakeReports(corvo_test::TraceLog& log) {
  std::vector<std::string> reports = log.Texts(0x0F, '8');
  for (std::string& text : reports) text.resize(std::min(text.find(", file tstring"), text.size()));
  log.Clear();
  return reports;
}

// Runs the test's text as UTF-8, whatever the machine's locale.
class TstringUtf8 : public testing::Test {
 protected:
  void SetUp() override { ASSERT_NE(setlocale(LC_CTYPE, "C.UTF-8"), nullptr); }
  void TearDown() override { setlocale(LC_CTYPE, "C"); }
};

#endif
