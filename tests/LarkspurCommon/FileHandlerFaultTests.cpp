// Positions, and what a file handler does, says and remembers when a system call fails.

#include <cerrno>

#include "FileHandlerTest.h"

using namespace corvo_test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Operation = bool (*)(TFileHandler&);

char g_buffer[8];

const Operation kReadSome = [](TFileHandler& file) { return file.Read(g_buffer, 8, nullptr); };
const Operation kWriteSome = [](TFileHandler& file) { return file.Write("abcd", 4); };
const Operation kToStart = [](TFileHandler& file) { return file.MoveToPosition(0, 0); };
const Operation kFromHere = [](TFileHandler& file) { return file.MoveToPosition(1, 0); };
const Operation kNowhere = [](TFileHandler& file) { return file.MoveToPosition(3, 0); };
const Operation kFlush = [](TFileHandler& file) { return file.Flush(); };
const Operation kMakeEnd = [](TFileHandler& file) {
  file.MakeThisEndOfFile();
  return file.EndOfFile();
};
const Operation kPosition = [](TFileHandler& file) { return file.GetFilePosition() != 0xFFFFFFFF; };
const Operation kByName = [](TFileHandler& file) {
  return TFileHandler::FlushToDisk(file.GetPathname());
};

}  // namespace

TEST_F(FileHandlerTest, FailuresAreToldOnceAndRemembered) {
  constexpr char kMove[] = "bool TFileHandler::MoveToPosition(DWORD, LONG)";
  constexpr char kMoving[] = "Error 5 (Input/output error) changing file position in";
  constexpr char kEnd[] = "void TFileHandler::MakeThisEndOfFile()";
  constexpr char kEnding[] =
      "Error 5 (Input/output error) setting end of file to current position for";
  constexpr char kFlushing[] = "Error 5 (Input/output error) flushing";
  const struct {
    Operation operation;
    Call call;
    int failures, error;
    bool result;
    const char *label, *told;  // null: nothing
  } rows[] = {
      {kReadSome, kRead, 1, EIO, false, "bool TFileHandler::CachedRead(void*, DWORD, DWORD*)",
       "Error 5 (Input/output error) reading data from"},
      {kWriteSome, kWrite, 1, ENOSPC, false, "bool TFileHandler::Write(const void*, DWORD)",
       "Error 28 (No space left on device) writing data to"},
      {kToStart, kFsync, 1, EIO, true, kMove, kFlushing},
      {kToStart, kLseek, 1, EIO, true, kMove, kMoving},  // after reopening
      {kToStart, kLseek, 2, EIO, false, kMove, kMoving},
      {kFromHere, kLseek, 1, EIO, false, kMove, kMoving},
      {kNowhere, kLseek, 0, 0, false, kMove,
       "Error 22 (Invalid argument) changing file position in"},
      {kPosition, kLseek, 1, EIO, false, "DWORD TFileHandler::GetFilePosition()",
       "Error 5 (Input/output error) determining current position for"},
      {kMakeEnd, kLseek, 1, EIO, false, kEnd, kEnding},
      {kMakeEnd, kFtruncate, 1, EIO, false, kEnd, kEnding},
      {kFlush, kFsync, 1, EIO, false, "bool TFileHandler::Flush()", kFlushing},
      {kFlush, kFsync, 1, EINVAL, true, nullptr, nullptr},
      {kToStart, kFsync, 1, EROFS, true, nullptr, nullptr},
      {kByName, kFsync, 1, EINVAL, true, nullptr, nullptr},
      {kReadSome, kRead, 3, EINTR, true, nullptr, nullptr},
      {kWriteSome, kWrite, 3, EINTR, true, nullptr, nullptr},
      {kFlush, kFsync, 3, EINTR, true, nullptr, nullptr},
      {kMakeEnd, kFtruncate, 3, EINTR, true, nullptr, nullptr},
  };
  const std::string path = Make("a", "0123456789");
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << "row " << &row - rows);
    ASSERT_TRUE(file.Open(path.c_str(), OFM_READWRITE, NLM_BINARY, false, false));
    trace.Clear();
    On(row.call).failures = row.failures;
    On(row.call).error = row.error;
    EXPECT_EQ(row.result, row.operation(file));
    EXPECT_EQ(row.told != nullptr, file.FailedSinceOpen());
    if (row.told == nullptr) {
      EXPECT_THAT(trace.Texts(), IsEmpty());
      continue;
    }
    const std::string error = row.told + (" file \"" + path) + "\"";
    EXPECT_EQ(error, file.DisplayLastError());
    EXPECT_THAT(trace.Texts(0x28, '2'), ElementsAre(row.label + (" - " + error) + "."));
  }
}

TEST_F(FileHandlerTest, AFailedTruncationOrFlushByNameFails) {
  const std::string path = Make("a", "old");
  On(kFtruncate) = {1, EIO};
  EXPECT_FALSE(file.Open(path.c_str(), OFM_WRITE, NLM_BINARY, true, false));
  EXPECT_FALSE(file.GetIsOpen());
  On(kFsync) = {1, EIO};
  EXPECT_FALSE(TFileHandler::FlushToDisk(path.c_str()));
  EXPECT_FALSE(TFileHandler::FlushToDisk(ScratchPath("none").c_str()));
  EXPECT_TRUE(TFileHandler::FlushToDisk(ScratchDirectory().c_str()));
  EXPECT_EQ(0, On(kSync).calls);
  On(kOpen) = {1, EACCES};
  EXPECT_TRUE(TFileHandler::FlushToDisk(ScratchDirectory().c_str())) << "only to be searched";
  EXPECT_EQ(1, On(kSync).calls);
  On(kOpen) = {1, EACCES};
  EXPECT_FALSE(TFileHandler::FlushToDisk(path.c_str()));
  EXPECT_EQ(4u, trace.Texts(0x28, '2').size());
}

TEST_F(FileHandlerTest, AShortWriteIsDoneButNotForgotten) {
  const std::string path = ScratchPath("a");
  ASSERT_TRUE(file.Open(path.c_str(), OFM_WRITE, NLM_BINARY, true, false));
  On(kWrite).most = 3;
  EXPECT_TRUE(kWriteSome(file));
  On(kWrite).most = -1;
  EXPECT_TRUE(kWriteSome(file));
  EXPECT_EQ("abcabcd", ReadFile(path));
  EXPECT_TRUE(file.FailedSinceOpen());
  EXPECT_EQ("Error 28 (No space left on device) writing data to file \"" + path + "\"",
            std::string(file.DisplayLastError()));
  EXPECT_EQ(1u, trace.Texts(0x28, '2').size());
}

TEST_F(FileHandlerTest, NothingIsWrittenBeyondTwoGigabytes) {
  const std::string path = ScratchPath("large");
  ASSERT_TRUE(file.Open(path.c_str(), OFM_READWRITE, NLM_BINARY, true, false));
  const auto writes = [&](DWORD size) { return file.Write("abcdef", size); };
  EXPECT_TRUE(writes(3));
  ASSERT_TRUE(file.MoveToPosition(0, 0x7FFFFFFF - 6));
  EXPECT_TRUE(writes(4));
  EXPECT_FALSE(writes(3));
  EXPECT_EQ(0x7FFFFFFF - 2, file.GetCurrentFileSize()) << "nothing of what doesn't fit";
  EXPECT_EQ("Error 27 (File too large) writing data to file \"" + path + "\"",
            std::string(file.DisplayLastError()));
  ASSERT_TRUE(file.MoveToPosition(0, 0x7FFFFFFF - 3));
  EXPECT_TRUE(kReadSome(file));
  EXPECT_FALSE(writes(3)) << "the read has moved on";
  EXPECT_TRUE(writes(2));
  EXPECT_FALSE(writes(1));
  EXPECT_EQ(0x7FFFFFFF, file.GetCurrentFileSize());
}

TEST_F(FileHandlerTest, AFailedReadDeliversWhatWasCached) {
  ASSERT_TRUE(file.Open(Make("a", "0123456789").c_str(), OFM_READ, NLM_BINARY, false, false));
  ASSERT_TRUE(kReadSome(file));
  On(kRead) = {2, EIO};
  for (const DWORD delivered : {2u, 0u}) {
    DWORD got = 99;
    EXPECT_FALSE(file.Read(g_buffer, 8, &got));
    EXPECT_EQ(delivered, got);
    EXPECT_EQ(delivered == 0, file.EndOfFile());
  }
}

TEST_F(FileHandlerTest, AFailedMoveOpensAgainWithoutTruncation) {
  const std::string path = ScratchPath("dir/a");
  ASSERT_TRUE(file.Open(path.c_str(), OFM_READWRITE, NLM_BINARY, true, true));
  ASSERT_TRUE(kWriteSome(file));
  On(kLseek) = {1, EIO};
  EXPECT_TRUE(kToStart(file));
  EXPECT_EQ("abcd", ReadFile(path));

  RemoveTree(ScratchPath("dir"));
  On(kLseek) = {1, EIO};
  EXPECT_TRUE(kToStart(file));
  EXPECT_TRUE(Exists(path)) << "made again, with its directory";
  EXPECT_TRUE(file.FailedSinceOpen());

  On(kLseek) = {1, EIO};
  On(kOpen) = {1, EMFILE};
  EXPECT_FALSE(kToStart(file));
  EXPECT_STREQ("", file.GetPathname());
  EXPECT_FALSE(kToStart(file));
  EXPECT_STREQ("No file has been specified", file.DisplayLastError());
}

TEST_F(FileHandlerTest, MovesFlushEmptyTheCacheAndSetTheEnd) {
  const std::string path = Make("a", std::string(100, 'x'));
  ASSERT_TRUE(file.Open(path.c_str(), OFM_READWRITE, NLM_BINARY, false, false));
  const struct {
    DWORD origin;
    LONG distance;
    bool moves;
    DWORD position;  // afterwards
    bool end;
  } rows[] = {
      {0, 40, true, 40, false},
      {1, 20, true, 120, false},  // on from the descriptor, not from the reader
      {2, 0, true, 100, true},
      {2, -1, true, 99, false},
      {2, 5, true, 105, true},
      {0, 0x7FFFFFFF, true, 0x7FFFFFFF, false},
      {0, -1, false, 0, false},
      {2, 0x7FFFFFFF, false, 0, false},  // opened again, which helps no more
      {0, 10, true, 10, false},
      {1, 0x7FFFFFFF, false, 100, false},  // where it was
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::Message() << row.origin << " " << row.distance);
    kReadSome(file);
    On(kFsync).calls = 0;
    EXPECT_EQ(row.moves, file.MoveToPosition(row.origin, row.distance));
    EXPECT_LT(0, On(kFsync).calls);
    EXPECT_EQ(row.end, file.EndOfFile());
    EXPECT_EQ(row.position, file.GetFilePosition());
  }
  ASSERT_TRUE(file.MoveToPosition(0, 30));
  EXPECT_TRUE(kMakeEnd(file));
  EXPECT_EQ(30, file.GetCurrentFileSize());
  file.Close();
  EXPECT_EQ(0, file.GetCurrentFileSize());
  EXPECT_EQ("Error getting file size for file \"" + path + "\" has it has not been opened",
            std::string(file.DisplayLastError()));
}
