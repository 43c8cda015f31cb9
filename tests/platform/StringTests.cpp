// The bounded text functions: what fits, what doesn't, and that nothing past the size is touched.

#include <errno.h>
#include <gtest/gtest.h>

#include "platform/Win32Compat.h"

TEST(BoundedStrings, FitOrSaySo) {
  const struct {
    int (*call)(char* out);  // `out` holds "ab"
    int result;
    const char* text;
  } rows[] = {{[](char* out) { return strcpy_s(out, 5, "wxyz"); }, 0, "wxyz"},
              {[](char* out) { return strcpy_s(out, 5, "vwxyz"); }, ERANGE, ""},
              {[](char* out) { return strcat_s(out, 5, "yz"); }, 0, "abyz"},
              {[](char* out) { return strcat_s(out, 5, "xyz"); }, ERANGE, ""},
              {[](char* out) { return strcat_s(out, 2, "x"); }, EINVAL, ""},  // not terminated
              {[](char* out) { return strncpy_s(out, 5, "wxyz!!", 4); }, 0, "wxyz"},
              {[](char* out) { return strncpy_s(out, 5, "vwxyz", 5); }, ERANGE, ""},
              {[](char* out) { return strncpy_s(out, 5, "vwxyz", _TRUNCATE); }, STRUNCATE, "vwxy"},
              {[](char* out) { return sprintf_s(out, 5, "%d:%02d", 1, 2); }, 4, "1:02"},
              {[](char* out) { return sprintf_s(out, 5, "%d", 12345); }, -1, ""}};
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    char buffer[] = "ab\0######";
    EXPECT_EQ(row.call(buffer), row.result);
    EXPECT_STREQ(buffer, row.text);
    EXPECT_STREQ(buffer + 5, "####");
  }
}
