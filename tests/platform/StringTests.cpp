// The bounded text functions: what fits, what doesn't, and that nothing past the size is touched;
// and identifiers.

#include <errno.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "platform/Win32Compat.h"
#include "support/Scratch.h"

namespace {

constexpr size_t kSize = 5;

TEST(BoundedStrings, FitOrSaySo) {
  const struct {
    const char* name;
    int (*call)(char* out);  // `out` holds "ab"
    int result;
    const char* text;
  } kCases[] = {
      {"Copy", [](char* out) { return strcpy_s(out, kSize, "wxyz"); }, 0, "wxyz"},
      {"CopyTooLong", [](char* out) { return strcpy_s(out, kSize, "vwxyz"); }, ERANGE, ""},
      {"CopyNull", [](char* out) { return strcpy_s(out, kSize, nullptr); }, EINVAL, ""},
      {"CopyNoSize", [](char* out) { return strcpy_s(out, 0, "x"); }, EINVAL, "ab"},
      {"Append", [](char* out) { return strcat_s(out, kSize, "yz"); }, 0, "abyz"},
      {"AppendTooLong", [](char* out) { return strcat_s(out, kSize, "xyz"); }, ERANGE, ""},
      {"AppendNull", [](char* out) { return strcat_s(out, kSize, nullptr); }, EINVAL, ""},
      {"AppendToUnterminated", [](char* out) { return strcat_s(out, 2, "x"); }, EINVAL, ""},
      {"Count", [](char* out) { return strncpy_s(out, kSize, "wxyz!!", 4); }, 0, "wxyz"},
      {"CountBeyondText", [](char* out) { return strncpy_s(out, kSize, "xy", 40); }, 0, "xy"},
      {"CountZero", [](char* out) { return strncpy_s(out, kSize, "xy", 0); }, 0, ""},
      {"CountTooLong", [](char* out) { return strncpy_s(out, kSize, "vwxyz", 5); }, ERANGE, ""},
      {"Truncate", [](char* out) { return strncpy_s(out, kSize, "vwxyz", _TRUNCATE); }, STRUNCATE,
       "vwxy"},
      {"TruncateFits", [](char* out) { return strncpy_s(out, kSize, "wxyz", _TRUNCATE); }, 0,
       "wxyz"},
      {"Format", [](char* out) { return sprintf_s(out, kSize, "%d:%02d", 1, 2); }, 4, "1:02"},
      {"FormatTooLong", [](char* out) { return sprintf_s(out, kSize, "%d", 12345); }, -1, ""},
      {"FormatNoSize", [](char* out) { return sprintf_s(out, 0, "%d", 1); }, -1, "ab"}};
  for (const auto& test : kCases) {
    SCOPED_TRACE(test.name);
    char buffer[kSize + 4] = "ab";
    std::fill(buffer + kSize, std::end(buffer), '#');
    EXPECT_EQ(test.call(buffer), test.result);
    EXPECT_STREQ(buffer, test.text);
    EXPECT_EQ(std::string(buffer + kSize, 4), "####");
  }
}

TEST(BoundedStrings, WideTextIsCountedInCharacters) {
  wchar_t buffer[4] = L"";
  EXPECT_EQ(wcsncpy_s(buffer, 4, L"\u00e4\u00f6\u00fc\u00df", _TRUNCATE), STRUNCATE);
  EXPECT_STREQ(buffer, L"\u00e4\u00f6\u00fc");
}

TEST(BoundedStrings, OpeningAStreamTellsTheError) {
  FILE* file = stdin;
  EXPECT_EQ(fopen_s(&file, corvo_test::ScratchPath("missing/file").c_str(), "r"), ENOENT);
  EXPECT_EQ(file, nullptr);
  EXPECT_EQ(fopen_s(&file, nullptr, "r"), EINVAL);
}

TEST(Guid, IsRandomAndMarkedSo) {
  GUID first{}, second{};
  ASSERT_NE(CoCreateGuid(&first), 0);
  ASSERT_NE(CoCreateGuid(&second), 0);
  EXPECT_NE(std::memcmp(&first, &second, sizeof first), 0);
  EXPECT_EQ(first.Data3 >> 12, 4);
  EXPECT_EQ(first.Data4[0] >> 6, 2);
}

}  // namespace
