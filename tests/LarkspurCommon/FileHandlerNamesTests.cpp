// Where paths lead, what is refused and how it is told, and what becomes of files by name.

#include <dlfcn.h>

#include <cerrno>
#include <filesystem>

#include "FileHandlerTest.h"
#include "platform/Win32Compat.h"

using namespace corvo_test;

static std::string g_removedTree;  // what the host's RemoveDirectoryTree was last given
static bool g_noGuids;
static std::string g_alias, g_aliased;

bool RemoveDirectoryTree(unsigned long&, const char* directory) {
  g_removedTree = directory;
  return true;
}

// A host's lookup, which knows another name for a file.
extern "C" bool FindFileIgnoreCase(char* found, const char* path, bool always) {
  static const auto own = reinterpret_cast<bool (*)(char*, const char*, bool)>(
      ::dlsym(RTLD_NEXT, "FindFileIgnoreCase"));
  return own(found, path != nullptr && path == g_alias ? g_aliased.c_str() : path, always);
}

extern "C" int CoCreateGuid(GUID* guid) {
  static DWORD next = 0x1234ABCD;
  if (!g_noGuids) *guid = {next++, 0x5, 0x67, {0, 1, 2, 3, 4, 5, 6, 0xFF}};
  return !g_noGuids;
}

TEST_F(FileHandlerTest, RefusalsTellWhyAndChangeNothing) {
  const std::string plain = Make("plain", ""), huge = Make("huge", "");
  std::filesystem::resize_file(huge, 0x80000000U);
  const std::pair<std::string, int> rows[] = {{plain + "x", ENOENT},
                                              {ScratchDirectory(), EISDIR},
                                              {"/" + std::string(260, 'x'), ENAMETOOLONG},
                                              {std::string(250, 'x'), ENAMETOOLONG},
                                              {huge, EOVERFLOW}};
  for (const auto& [path, error] : rows) {
    trace.Clear();
    EXPECT_FALSE(Open(path, error == ENOENT ? OFM_READ : OFM_WRITE, true));
    ExpectTold(error, "opening", path);
    EXPECT_EQ(error == ENOENT, trace.Texts(0x28, '2').empty()) << "a missing file is no failure";
    EXPECT_STREQ("", file.GetPathname());
  }
  EXPECT_EQ(0x80000000U, std::filesystem::file_size(huge)) << "refused, but truncated";
  EXPECT_FALSE(Open(plain + "/", OFM_READ));
  EXPECT_EQ("Cannot open file \"" + plain + "/\" as it is a directory", LastError());
  EXPECT_FALSE(Open("", OFM_READ));
  EXPECT_EQ("No file has been specified", LastError());
}

TEST_F(FileHandlerTest, PathsLeadToTheDisk) {
  MakeDirectory(ScratchPath("bin"));
  const std::pair<std::string, std::string> rows[] = {
      // as asked, as opened
      {ScratchDirectory() + "\\cALLS.tXT", Make("Calls.Txt", "old")},
      {"X.INI", Make("bin/x.ini", "old")}};
  for (const auto& [asked, opened] : rows) {
    EXPECT_TRUE(Open(asked, OFM_WRITE));
    EXPECT_EQ(opened, file.GetPathname());
    EXPECT_TRUE(Open(file.GetPathname(), OFM_READ, true));
    EXPECT_EQ("old", ReadFile(opened)) << "truncated only when asked, and for writing";
    EXPECT_TRUE(Open(asked, OFM_WRITE, true) && ReadFile(opened).empty());
  }
  g_alias = Make("alias", "not this one");
  g_aliased = Make("meant", "");
  std::filesystem::last_write_time(g_aliased, std::filesystem::file_time_type());
  bool exists = false;
  FileSeconds time = 0, meant = 0;
  EXPECT_TRUE(TFileHandler::HasFileChanged(g_alias.c_str(), exists, time));
  EXPECT_TRUE(TFileHandler::GetLastWriteTime(g_aliased.c_str(), meant));
  EXPECT_EQ(meant, time) << "the file that the host's lookup leads to";
}

TEST_F(FileHandlerTest, OnlyADatabaseDirectoryThatAFailedOpenMadeGoes) {
  const std::string within = ScratchPath("bin/made/"), outside = ScratchPath("made/deep/");
  const std::pair<std::string, std::string> rows[] = {
      {within, within}, {within, ""}, {outside, ""}};
  for (const auto& [directory, removed] : rows) {
    g_removedTree.clear();
    EXPECT_FALSE(file.Open((directory + "x").c_str(), OpenFileMode{3}, NLM_BINARY, false, true));
    EXPECT_EQ(removed, g_removedTree);
  }
}

TEST_F(FileHandlerTest, TemporaryNamesAreFree) {
  MakeDirectory(ScratchPath("bin/tempfiles"));
  Make("bin/tempfiles/P1234abcd0005006700010203040506ff.t", "taken");
  const auto open = [&] { return file.OpenTempFile(OFM_READWRITE, NLM_BINARY, true, "P", ".t"); };
  EXPECT_TRUE(open());
  EXPECT_EQ(ScratchPath("bin/tempfiles/P1234abce0005006700010203040506ff.t"), file.GetPathname());
  g_noGuids = true;
  EXPECT_TRUE(open() && !open()) << "one name is free";
  g_noGuids = false;
}

TEST_F(FileHandlerTest, FilesAloneAreDeletedAndRenamed) {
  const std::string path = Make("before", "bytes"), taken = Make("taken", "kept");
  ASSERT_TRUE(Open(path, OFM_READ));
  EXPECT_FALSE(file.RenameFile(taken.c_str()));
  ExpectTold(EEXIST, "deleting", path);
  EXPECT_EQ("kept", ReadFile(taken));
  EXPECT_TRUE(file.RenameFile(ScratchPath("After").c_str()) && !Exists(path));
  EXPECT_EQ("bytes", ReadFile(ScratchPath("After")));
  EXPECT_TRUE(Open(ScratchPath("AFTER"), OFM_READ) && file.Delete());
  EXPECT_FALSE(file.Delete() || Exists(ScratchPath("After")));
  MakeDirectory(ScratchPath("Dir"));
  EXPECT_TRUE(Open(ScratchPath("Dir"), OFM_READ));
  EXPECT_FALSE(file.Delete() || TFileHandler::Delete(ScratchPath("Dir").c_str(), false));
  EXPECT_TRUE(TFileHandler::Delete(ScratchPath("dIR").c_str(), true));
  EXPECT_EQ(ScratchPath("Dir"), g_removedTree);
}
