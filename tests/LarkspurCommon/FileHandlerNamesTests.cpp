// Where paths lead, what is refused and how it is told, and what becomes of files by name.

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "FileHandlerTest.h"
#include "platform/Win32Compat.h"

using namespace corvo_test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr char kOpening[] =
    "bool TFileHandler::Open(const TCHAR*, OpenFileMode, NewLine_Mode, bool, bool) - ";

unsigned ModeOf(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

}  // namespace

bool g_noGuids;

extern "C" int CoCreateGuid(GUID* guid) {
  static DWORD next = 0x1234ABCD;
  if (g_noGuids) return 0;
  *guid = {next++, 0x5, 0x67, {0, 1, 2, 3, 4, 5, 6, 0xFF}};
  return 1;
}

TEST_F(FileHandlerTest, RefusalsTellWhy) {
  const std::string plain = Make("plain", ""), huge = Make("huge", "");
  std::filesystem::resize_file(huge, 0x80000000U);
  const struct {
    std::string path;
    OpenFileMode mode;
    const char *error, *tail;  // the path stands between them
    char level;
  } rows[] = {
      {"", OFM_READ, "No file has been specified", "", '5'},
      {ScratchPath("no/"), OFM_READ, "Cannot open file \"", "\" as it is a directory", '5'},
      {plain + "x", OFM_READ, "Error 2 (No such file or directory) opening file \"", "\"", '5'},
      {plain + "/x", OFM_READ, "Error 20 (Not a directory) opening file \"", "\"", '2'},
      {ScratchDirectory(), OFM_WRITE, "Error 21 (Is a directory) opening file \"", "\"", '2'},
      {"/" + std::string(260, 'x'), OFM_WRITE, "Error 36 (File name too long) opening file \"",
       "\"", '2'},
      {"/" + std::string(256, 'x'), OFM_WRITE, "Error 36 (File name too long) opening file \"",
       "\"", '2'},
      {std::string(250, 'x'), OFM_WRITE, "Error 36 (File name too long) opening file \"", "\"",
       '2'},
      {huge, OFM_WRITE, "Error 75 (Value too large for defined data type) opening file \"", "\"",
       '2'},
  };
  for (const auto& row : rows) {
    trace.Clear();
    EXPECT_FALSE(file.Open(row.path.c_str(), row.mode, NLM_BINARY, true, false));
    const std::string error = row.error + row.path + row.tail;
    EXPECT_EQ(error, file.DisplayLastError());
    EXPECT_THAT(trace.Texts(0x28, row.level), ElementsAre(kOpening + error + "."));
    EXPECT_STREQ("", file.GetPathname());
    EXPECT_FALSE(file.Delete());
  }
  EXPECT_EQ(0x80000000U, std::filesystem::file_size(huge)) << "refused, but truncated";
  file.Open(plain.c_str(), OFM_READ, NLM_BINARY, false, false);
  EXPECT_FALSE(file.Open(nullptr, OFM_READ, NLM_BINARY, false, false));
  EXPECT_EQ(plain, file.GetPathname());
  EXPECT_FALSE(file.GetIsOpen());
}

TEST_F(FileHandlerTest, PathsLeadToTheDisk) {
  const std::string calls = Make("Calls.Txt", "");
  MakeDirectory(ScratchPath("bin"));
  const std::pair<std::string, std::string> rows[] = {// as asked, as opened
                                                      {ScratchPath("cALLS.tXT"), calls},
                                                      {ScratchDirectory() + "\\CALLS.txt", calls},
                                                      {"X.INI", Make("bin/x.ini", "")}};
  for (const auto& [asked, opened] : rows) {
    EXPECT_TRUE(TFileHandler::FileExists(asked.c_str()));
    ASSERT_TRUE(file.Open(asked.c_str(), OFM_READ, NLM_BINARY, false, false));
    EXPECT_EQ(opened, file.GetPathname());
    EXPECT_TRUE(file.Open(file.GetPathname(), OFM_READ, NLM_BINARY, false, false));
    tstring name;
    file.GetName(name);
    EXPECT_EQ(opened.substr(opened.rfind('/') + 1), name);
  }
}

TEST_F(FileHandlerTest, ModesCreateAndTruncate) {
  const struct {
    OpenFileMode mode;
    bool truncate;
    const char* left;  // of "old"
    bool creates;
  } rows[] = {{OFM_READ, true, "old", false},  {OFM_WRITE, false, "old", true},
              {OFM_WRITE, true, "", true},     {OFM_READWRITE, false, "old", true},
              {OFM_READWRITE, true, "", true}, {OpenFileMode{3}, true, "old", false}};
  ::umask(077);
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.mode << row.truncate);
    const std::string old = Make("old", "old"), fresh = ScratchPath("fresh");
    EXPECT_EQ(row.mode <= OFM_READWRITE,
              file.Open(old.c_str(), row.mode, NLM_BINARY, row.truncate, false));
    EXPECT_EQ(row.left, ReadFile(old));
    EXPECT_EQ(row.creates, file.Open(fresh.c_str(), row.mode, NLM_BINARY, row.truncate, false));
    EXPECT_EQ(row.creates ? 0664u : 0u, ModeOf(fresh));
    ::unlink(fresh.c_str());
  }
  EXPECT_TRUE(file.Open("/dev/null", OFM_WRITE, NLM_BINARY, true, false)) << "nothing to truncate";
}

TEST_F(FileHandlerTest, OnlyADatabaseDirectoryThatAFailedOpenMadeGoes) {
  const std::string within = ScratchPath("bin/made/"), outside = ScratchPath("made/deep/");
  const auto fail = [&](const std::string& path, OpenFileMode mode) {
    g_removedTree.clear();
    EXPECT_FALSE(file.Open(path.c_str(), mode, NLM_BINARY, false, true));
  };
  fail(within + "x", OFM_READ);
  EXPECT_FALSE(Exists(within)) << "made for a file that is only read";
  fail(within + "x", OpenFileMode{3});
  EXPECT_EQ(within, g_removedTree);
  fail(within + "x", OpenFileMode{3});
  EXPECT_EQ("", g_removedTree) << "it was there before";
  EXPECT_THAT(trace.Texts(0x28, '3'), IsEmpty());
  fail(outside + "x", OpenFileMode{3});
  EXPECT_EQ("", g_removedTree);
  EXPECT_THAT(
      trace.Texts(0x28, '3'),
      ElementsAre(kOpening + ("Directory \"" + outside) + "\" does not exist within \"" +
                  ScratchPath("bin") + "\", therefore ignoring request to delete directory tree."));
}

TEST_F(FileHandlerTest, TemporaryNamesAreFree) {
  const std::string directory = ScratchPath("bin/tempfiles");
  MakeDirectory(directory);
  Make("bin/tempfiles/QRT1234abcd0005006700010203040506ff.tmp", "taken");
  tstring name;
  EXPECT_TRUE(TFileHandler::GetTempFilename(name, "QRT", ".tmp"));
  EXPECT_EQ(directory + "\\QRT1234abce0005006700010203040506ff.tmp", name);
  ASSERT_TRUE(file.OpenTempFile(OFM_READWRITE, NLM_BINARY, true, "P", ""));
  EXPECT_EQ(directory + "/P1234abcf0005006700010203040506ff", file.GetPathname());
  g_noGuids = true;
  EXPECT_TRUE(file.OpenTempFile(OFM_READWRITE, NLM_BINARY, true, "Q", "")) << "one name is free";
  EXPECT_FALSE(file.OpenTempFile(OFM_READWRITE, NLM_BINARY, true, "Q", ""));
  EXPECT_STREQ("No free temporary file name has been found", file.DisplayLastError());
  g_noGuids = false;
}

TEST_F(FileHandlerTest, DeletesFilesOnly) {
  const std::string path = Make("Gone", ""), directory = ScratchPath("Dir");
  MakeDirectory(directory);
  ASSERT_TRUE(file.Open(ScratchPath("GONE").c_str(), OFM_READ, NLM_BINARY, false, false));
  EXPECT_TRUE(file.Delete());
  EXPECT_FALSE(Exists(path));
  EXPECT_EQ(path, file.GetPathname());
  EXPECT_FALSE(file.Delete());
  for (const char* none : {static_cast<const char*>(nullptr), "", path.c_str()}) {
    EXPECT_FALSE(TFileHandler::Delete(none, true));
    EXPECT_FALSE(TFileHandler::FileExists(none));
    EXPECT_FALSE(TFileHandler::IsDirectory(none));
  }
  EXPECT_THAT(trace.Texts(), IsEmpty()) << "nothing there is no failure";

  ASSERT_TRUE(file.Open(directory.c_str(), OFM_READ, NLM_BINARY, false, false));
  EXPECT_FALSE(file.Delete());
  EXPECT_FALSE(file.RenameFile(ScratchPath("x").c_str()));
  EXPECT_FALSE(TFileHandler::Delete(directory.c_str(), false));
  const std::string refusal = " - Not deleting directory \"" + directory + "\".";
  EXPECT_THAT(trace.Texts(0x28, '5'),
              ElementsAre("bool TFileHandler::Delete()" + refusal,
                          "bool TFileHandler::RenameFile(const TCHAR*)" + refusal,
                          "static bool TFileHandler::Delete(const TCHAR*, bool)" + refusal));
  EXPECT_TRUE(TFileHandler::Delete(ScratchPath("dIR").c_str(), true));
  EXPECT_EQ(directory, g_removedTree);
}

TEST_F(FileHandlerTest, RenamesOntoFreeNamesOnly) {
  const std::string path = Make("before", "bytes"), taken = Make("taken", "kept");
  ASSERT_TRUE(file.Open(path.c_str(), OFM_READ, NLM_BINARY, false, false));
  EXPECT_FALSE(file.RenameFile(taken.c_str()));
  const std::string error = "Error 17 (File exists) deleting file \"" + path + "\"";
  EXPECT_EQ(error, file.DisplayLastError());
  EXPECT_THAT(trace.Texts(0x28, '2'),
              ElementsAre("bool TFileHandler::RenameFile(const TCHAR*) - " + error + "."));
  EXPECT_EQ("kept", ReadFile(taken));
  EXPECT_FALSE(file.RenameFile((ScratchDirectory() + std::string(260, '/') + "x").c_str()));
  EXPECT_TRUE(file.RenameFile(ScratchPath("after").c_str()));
  EXPECT_EQ("bytes", ReadFile(ScratchPath("after")));
  EXPECT_FALSE(Exists(path));
}

TEST_F(FileHandlerTest, OwnerAndModeAreTakenOver) {
  const std::string from = Make("from", ""), to = Make("to", "");
  const bool mayChown = ::chown(from.c_str(), 12345, 54321) == 0;
  ::chmod(from.c_str(), 0640);
  ::chmod(to.c_str(), 0604);
  EXPECT_TRUE(TFileHandler::CopyOwnerAndMode(from.c_str(), to.c_str()));
  struct stat status {};
  ASSERT_EQ(0, ::stat(to.c_str(), &status));
  EXPECT_EQ(0640u, status.st_mode & 07777);
  EXPECT_TRUE(!mayChown || (status.st_uid == 12345 && status.st_gid == 54321));
  EXPECT_FALSE(TFileHandler::CopyOwnerAndMode(from.c_str(), ScratchPath("none").c_str()));
}
