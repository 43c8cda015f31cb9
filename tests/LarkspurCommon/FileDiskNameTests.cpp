// The system's own case-insensitive lookup.

#include <dirent.h>

#include <cstdlib>
#include <stdexcept>

#include "FileHandlerTest.h"
#include "platform/Win32Compat.h"

using namespace corvo_test;

namespace {
enum class Host { kGives, kHasNone, kThrows } g_host;
int g_buffers;  // that the library holds
}  // namespace

extern "C" dirent* AllocateDirEntry(const char*) {
  if (g_host == Host::kThrows) throw std::runtime_error("host");
  if (g_host == Host::kHasNone) return nullptr;
  ++g_buffers;
  return static_cast<dirent*>(std::calloc(1, 280));
}

extern "C" void FreeDirEntry(dirent* entry) {
  --g_buffers;
  std::free(entry);
}

TEST_F(FileHandlerTest, DiskNamesAreFoundInAnyCase) {
  const std::string root = ScratchDirectory(), data = root + "/Data", calls = data + "/Calls";
  MakeDirectory(data + "/.Sub");
  WriteFile(calls, "");
  // Spelled as on the disk, what is in the first takes 259 characters; in the other one more.
  const std::string fits = root + '/' + std::string(255 - root.size(), 'd'), tooLong = fits + 'd';
  for (const std::string& name : {fits, tooLong}) {
    MakeDirectory(name);
    WriteFile(name + "/.a", "");
  }
  const struct {
    std::string path;
    bool found;
    std::string out;
    Host host = Host::kGives;
  } rows[] = {
      {root + "\\data\\CALLS", true, calls},
      {data + "//Calls", true, data + "//Calls"},
      {root + "//DATA///CALLS", true, calls},
      {root + "/DATA/", true, data + "/"},
      {root + "/data/SUB/../sub", true, data + "/.Sub/../.Sub"},
      {root + "/DATA/no/calls", false, data + "/no/calls"},
      {"/PROC/self", true, "/proc/self"},
      {fits + "/A", true, fits + "/.a"},
      {tooLong + "/A", false, tooLong + "/A"},
      {root + '/' + std::string(MAX_PATH, 'x'), false, ""},
      {"PROC", false, "PROC"},
      {root + "\\DATA", false, root + "/DATA", Host::kHasNone},
      {root + "/DATA", false, root + "/DATA", Host::kThrows},
  };
  const std::size_t descriptors = ListDirectory("/proc/self/fd").size();
  for (const auto& row : rows) {
    SCOPED_TRACE(row.path);
    g_host = row.host;
    char out[MAX_PATH] = "old";
    EXPECT_EQ(row.found, TFileHandler::GetFileNameFromDisk(out, row.path.c_str()));
    EXPECT_EQ(row.out, out);
    EXPECT_EQ(row.found, TFileHandler::GetFileNameFromDisk(out, "")) << "asks whether out exists";
    wchar_t wide[MAX_PATH] = L"old";
    const std::wstring path(row.path.begin(), row.path.end());
    EXPECT_EQ(row.found, TFileHandler::GetFileNameFromDisk(wide, path.c_str()));
    EXPECT_EQ(row.found ? row.out : "old", tstring(wide));
  }
  EXPECT_EQ(0, g_buffers);
  EXPECT_EQ(descriptors, ListDirectory("/proc/self/fd").size());
}
