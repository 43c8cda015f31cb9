// Positions, and what a file handler does, says and remembers when a system call fails.

#include <dlfcn.h>

#include <cerrno>
#include <utility>

#include "FileHandlerTest.h"
#include "platform/Win32Compat.h"

using namespace corvo_test;

namespace {

char g_buffer[8];
bool g_countingThrows;
bool g_lookThrows;

using Operation = bool (*)(TFileHandler&);
const Operation kReadSome = [](TFileHandler& file) { return file.Read(g_buffer, 8, nullptr); };
const Operation kWriteSome = [](TFileHandler& file) { return file.Write("abcd", 4); };
const Operation kToStart = [](TFileHandler& file) { return file.MoveToPosition(0, 0); };
const Operation kMakeEnd = [](TFileHandler& file) {
  file.MakeThisEndOfFile();
  return file.EndOfFile();
};

}  // namespace

extern "C" LONG InterlockedIncrement(LONG* value) {
  if (g_countingThrows) throw 1;
  return __atomic_add_fetch(value, 1, __ATOMIC_SEQ_CST);
}

// A host's version of a member that reading and writing call.
bool TFileHandler::GetIsOpen() {
  static const auto own = reinterpret_cast<bool (*)(TFileHandler*)>(
      ::dlsym(RTLD_NEXT, "_ZN12TFileHandler9GetIsOpenEv"));
  if (std::exchange(g_lookThrows, false)) throw 1;
  return own(this);
}

// Who copies looks at the file alone: without a failure there, the bytes would be missed by nobody.
TEST_F(FileHandlerTest, WhatAHostThrowsIsAFailureOfTheFile) {
  for (const Operation operation : {kWriteSome, kReadSome}) {
    ASSERT_TRUE(Open(Make("a", "0123456789"), OFM_READWRITE));
    g_lookThrows = true;
    EXPECT_FALSE(operation(file));
    EXPECT_TRUE(file.FailedSinceOpen());
  }
  EXPECT_TRUE(file.EndOfFile()) << "or loops over reads wouldn't end";
}

TEST_F(FileHandlerTest, FailuresAreToldOnceAndRemembered) {
  const struct {
    Operation operation;
    SystemCall call;
    int failures, error;
    bool result;
    const char* doing;  // what the report says; null: there is none
  } rows[] = {{kReadSome, kRead, 1, EIO, false, "reading data from"},
              {kReadSome, kRead, 3, EINTR, true, nullptr},
              {kWriteSome, kWrite, 1, ENOSPC, false, "writing data to"},
              {kWriteSome, kWrite, 3, EINTR, true, nullptr},
              {kToStart, kFsync, 1, EIO, true, "flushing"},
              {kToStart, kLseek, 2, EIO, false, "changing file position in"},
              {kMakeEnd, kFtruncate, 1, EIO, false, "setting end of file to current position for"},
              {kToStart, kFsync, 3, EINTR, true, nullptr},
              {kToStart, kFsync, 1, EINVAL, true, nullptr}};  // as for a pipe
  const std::string path = Make("a", "0123456789");
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    ASSERT_TRUE(Open(path, OFM_READWRITE));
    trace.Clear();
    On(row.call) = {row.failures, row.error};
    EXPECT_EQ(row.result, row.operation(file));
    EXPECT_EQ(row.doing != nullptr, file.FailedSinceOpen());
    if (row.doing != nullptr) ExpectTold(row.error, row.doing, path);
  }
}

TEST_F(FileHandlerTest, FailedTruncationsAndFlushesByNameFail) {
  const std::string path = Make("a", "old");
  On(kFtruncate) = {1, EIO};
  EXPECT_FALSE(Open(path, OFM_WRITE, true) || file.GetIsOpen());
  On(kFsync) = {1, EIO};
  EXPECT_FALSE(TFileHandler::FlushToDisk(path.c_str()));
  On(kOpen) = {2, EACCES};
  EXPECT_FALSE(TFileHandler::FlushToDisk(path.c_str()));
  EXPECT_TRUE(TFileHandler::FlushToDisk(ScratchDirectory().c_str()));
  EXPECT_EQ(1, On(kSync).calls) << "for a directory that can't be opened";
}

TEST_F(FileHandlerTest, WritesThatDoNotFitAreNotForgotten) {
  const std::string path = ScratchPath("a");
  ASSERT_TRUE(Open(path, OFM_READWRITE, true));
  On(kWrite).most = 3;
  EXPECT_TRUE(kWriteSome(file) && file.FailedSinceOpen()) << "done as far as it goes";
  ExpectTold(ENOSPC, "writing data to", path);
  On(kWrite).most = -1;
  EXPECT_TRUE(kWriteSome(file));
  EXPECT_EQ("abcabcd", ReadFile(path));
  trace.Clear();
  EXPECT_TRUE(file.MoveToPosition(0, 0x7FFFFFFF - 6) && kWriteSome(file));
  EXPECT_FALSE(kWriteSome(file));
  ExpectTold(EFBIG, "writing data to", path);
  EXPECT_EQ(0x7FFFFFFF - 2, file.GetCurrentFileSize()) << "all of a write or nothing";
  EXPECT_TRUE(file.MoveToPosition(0, 0x7FFFFFFF - 4) && kReadSome(file));
  EXPECT_FALSE(kWriteSome(file)) << "the read has moved on";
}

TEST_F(FileHandlerTest, AFailedReadDeliversWhatWasCachedAndThenTheEnd) {
  ASSERT_TRUE(Open(Make("a", "0123456789"), OFM_READ) && kReadSome(file));
  On(kRead) = {2, EIO};
  DWORD got = 99;
  EXPECT_FALSE(file.Read(g_buffer, 8, &got) || got != 2 || file.EndOfFile());
  EXPECT_FALSE(file.Read(g_buffer, 8, &got) || got != 0 || !file.EndOfFile());
}

TEST_F(FileHandlerTest, AFailedMoveOpensAgainWithoutTruncation) {
  const std::string path = ScratchPath("dir/a");
  ASSERT_TRUE(file.Open(path.c_str(), OFM_READWRITE, NLM_BINARY, true, true));
  EXPECT_TRUE(kWriteSome(file));
  On(kLseek) = {1, EIO};
  EXPECT_TRUE(kToStart(file));
  EXPECT_EQ("abcd", ReadFile(path));
  RemoveTree(ScratchPath("dir"));
  On(kLseek) = {1, EIO};
  EXPECT_TRUE(kToStart(file) && Exists(path)) << "made again, with its directory";
}

TEST_F(FileHandlerTest, MovesEmptyTheCacheAndSetTheEnd) {
  ASSERT_TRUE(Open(Make("a", std::string(100, 'x')), OFM_READWRITE));
  const struct {
    DWORD origin;
    LONG distance;
    bool moves, end;
    DWORD position;  // afterwards
  } rows[] = {{0, 40, true, false, 40},
              {1, 20, true, false, 120},           // on from the descriptor, not from the reader
              {2, 0x7FFFFFFF, false, false, 0},    // opened again, which helps no more
              {1, 0x7FFFFFFF, false, false, 100},  // where it was, having read
              {2, 5, true, true, 105}};
  for (const auto& row : rows) {
    kReadSome(file);
    EXPECT_EQ(row.moves, file.MoveToPosition(row.origin, row.distance));
    EXPECT_EQ(row.end, file.EndOfFile());
    EXPECT_EQ(row.position, file.GetFilePosition());
  }
  EXPECT_TRUE(kMakeEnd(file));
  EXPECT_EQ(105, file.GetCurrentFileSize());
}

TEST_F(FileHandlerTest, AHandlerThatTheHostCannotCountWorks) {
  const std::string path = Make("a", "0123456789");
  trace.Clear();
  g_countingThrows = true;
  EXPECT_NO_THROW({
    TFileHandler uncounted;
    EXPECT_TRUE(uncounted.Open(path.c_str(), OFM_READ, NLM_BINARY, false, false));
    EXPECT_TRUE(kReadSome(uncounted));
  });
  g_countingThrows = false;
  EXPECT_EQ(1u, trace.Texts(0x25, '2').size());
}

TEST_F(FileHandlerTest, AnswersWhatItIsAndWritesFormattedText) {
  const std::string path = ScratchPath("bin/Formatted.txt");
  EXPECT_EQ(file.GetCurrentFileSize(), 0);
  EXPECT_THAT(trace.Texts().back(), testing::HasSubstr("has it has not been opened"));
  EXPECT_FALSE(file.MoveToPosition(0, 0));
  SYSTEMTIME time{};
  EXPECT_FALSE(file.GetCreationTime(time));

  ASSERT_TRUE(file.Open(path.c_str(), OFM_WRITE, NLM_TEXT, true, false));
  file.WriteFormatString("%s=%d\n", "a", 7);
  EXPECT_FALSE(file.MoveToPosition(3, 0)) << "there is no such origin";
  EXPECT_TRUE(file.GetCreationTime(time) && time.wYear >= 2024);
  tstring name;
  file.GetName(name);
  EXPECT_EQ(name, "Formatted.txt");
  EXPECT_EQ(ReadFile(path), "a=7\r\n");
}
