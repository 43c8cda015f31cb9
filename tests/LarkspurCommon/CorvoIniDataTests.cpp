// The store and its file: what is read and written, changes from outside, and what must not be
// lost.

#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "LarkspurCommon/CorvoIniData.h"
#include "support/Scratch.h"
#include "support/TraceLog.h"

namespace corvo_test {
namespace {

using testing::ElementsAre;

class CorvoIniDataTest : public testing::Test {
 protected:
  CorvoIniDataTest() { RemoveTree(m_path); }

  void Edit(const std::string& bytes) { EditFile(m_path, bytes); }  // from outside

  static std::string Listing(CorvoIniData& store) {
    std::list<tstring> keys, values;
    store.GetKeysAndValues(keys, values);
    std::string listing;
    auto value = values.begin();
    for (const tstring& key : keys) {
      listing += key + "=" + *value++ + "|";
    }
    return listing;
  }

  const std::string m_path = ScratchPath("store.ini");
};

TEST_F(CorvoIniDataTest, LinesAreReadByTheRules) {
  const std::string longLine = std::string(1020, 'k') + "=vw";
  const struct {
    const char* name;
    std::string file;
    std::string listing;
  } rows[] = {
      {"BlanksOfTheKeyStay", "  name = value \t\v\f \r\n", "  NAME =value|"},
      {"OnlyBlanksLeadAValue", "k=  \tv\n", "K=\tv|"},
      {"SecondEqualsIsTheValues", "Key=a=b\n", "KEY=a=b|"},
      {"EveryLineEnd", "a=1\rb=2\nc=3\n\rd=4\r\n\r\ne=5", "A=1|B=2|C=3|D=4|E=5|"},
      {"EmptyValue", "k=\r\n", "K=|"},
      {"EmptyValueWithoutLineEnd", "a=1\nk=  ", "A=1|"},
      {"WithoutEquals", "[section]\n; comment\n\nk=v\n", "K=v|"},
      {"EmptyKey", "=v\n", "=v|"},
      {"LongLineIsCut", longLine + "rest=x\n", std::string(1020, 'K') + "=vw|REST=x|"},
      {"LongLineIsCutBehindEquals", std::string(1022, 'k') + "=\nb=2\n", "B=2|"},
      {"ZeroBytesEndAText", std::string("a\0=1\nb=2\0x\n", 11), "B=2|"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    WriteFile(m_path, row.file);
    CorvoIniData store(m_path.c_str());
    EXPECT_EQ(Listing(store), row.listing);
    EXPECT_EQ(ReadFile(m_path), row.file) << "read only";
  }
}

TEST_F(CorvoIniDataTest, FileIsWrittenSortedWithUpperCaseKeys) {
  WriteFile(m_path, "b=2\na=1\n");
  CorvoIniData store(m_path.c_str());
  store.Set("Foo", " as given ");
  EXPECT_EQ(ReadFile(m_path), "A=1\r\nB=2\r\nFOO= as given \r\n");
  EXPECT_EQ(store.Get("fOO"), " as given ");
  bool found = true;
  EXPECT_EQ(store.GetData("missing", found), "");
  EXPECT_FALSE(found);

  WriteFile(m_path, "one=1\n");
  EXPECT_FALSE(store.DeleteKey("missing"));
  EXPECT_TRUE(store.DeleteKey("foo"));
  EXPECT_EQ(ReadFile(m_path), "A=1\r\nB=2\r\n") << "the same second: the edit isn't seen";
  store.DeleteKey("a");
  store.DeleteKey("b");
  EXPECT_TRUE(Exists(m_path));
  EXPECT_EQ(ReadFile(m_path), "");
  store.Delete();
  EXPECT_FALSE(Exists(m_path));
}

TEST_F(CorvoIniDataTest, RepeatedKeysAreWrittenOnceAtOnce) {
  WriteFile(m_path, "b=0\na=1\nA=2\n");
  CorvoIniData store(m_path.c_str());
  EXPECT_EQ(ReadFile(m_path), "A=2\r\nB=0\r\n");
}

TEST_F(CorvoIniDataTest, ChangesFromOutsideAreSeen) {
  CorvoIniData store(m_path.c_str());
  store.Set("a", "1");
  Edit("a=2\n");
  EXPECT_EQ(store.Get("a"), "2");
  RemoveTree(m_path);
  EXPECT_EQ(Listing(store), "");
  Edit("b=3\n");
  EXPECT_EQ(Listing(store), "B=3|");

  const std::string aside = m_path + ".aside";
  ASSERT_EQ(::rename(m_path.c_str(), aside.c_str()), 0);
  EXPECT_EQ(Listing(store), "");
  ASSERT_EQ(::rename(aside.c_str(), m_path.c_str()), 0);
  store.Set("c", "4");
  EXPECT_EQ(ReadFile(m_path), "B=3\r\nC=4\r\n") << "back with the time that it had";
}

// Half a file would be all that is left of the settings.
TEST_F(CorvoIniDataTest, CancelledThreadLeavesAWholeFile) {
  CorvoIniData store(m_path.c_str());
  for (int key = 0; key < 50; ++key) store.Set(std::to_string(key).c_str(), "value");
  const std::string whole = ReadFile(m_path);
  for (int round = 0; round < 20; ++round) {
    pthread_t thread;
    const auto set = [](void* data) -> void* {
      for (;; ::pthread_testcancel()) static_cast<CorvoIniData*>(data)->Set("0", "value");
    };
    ASSERT_EQ(::pthread_create(&thread, nullptr, set, &store), 0);
    ::usleep(static_cast<useconds_t>(500 * round));
    ASSERT_EQ(::pthread_cancel(thread), 0);
    ASSERT_EQ(::pthread_join(thread, nullptr), 0);
    ASSERT_EQ(ReadFile(m_path), whole);
  }
}

TEST_F(CorvoIniDataTest, OddPathIsFoundInAnyCaseAndANullOneHarmsNothing) {
  WriteFile(m_path, "a=1\n");
  CorvoIniData store(ScratchPath("STORE.Ini").c_str());
  EXPECT_EQ(store.Get("a"), "1");
  for (const char* path : {static_cast<const char*>(nullptr), "", "/nowhere/at/all.ini"}) {
    CorvoIniData nowhere(path);
    nowhere.Set("a", "1");
    EXPECT_EQ(nowhere.Get("a"), "1") << "memory keeps what no file can";
  }
}

// A file of more than 2 GiB is there, but can't be opened.
TEST_F(CorvoIniDataTest, FileThatCannotBeReadIsNotOverwritten) {
  WriteFile(m_path, "a=1\n");
  CorvoIniData store(m_path.c_str());
  ASSERT_EQ(::truncate(m_path.c_str(), 3'000'000'000), 0);
  TouchFile(m_path);
  TraceLog trace;
  store.Set("b", "2");
  EXPECT_EQ(Listing(store), "A=1|B=2|");
  struct stat status {};
  ASSERT_EQ(::stat(m_path.c_str(), &status), 0);
  EXPECT_EQ(status.st_size, 3'000'000'000);
  int told = 0;
  for (const std::string& text : trace.Texts(0x28, '2')) told += text.find(m_path) != text.npos;
  EXPECT_EQ(told, 1) << "not at each operation";
  Edit("c=3\n");
  EXPECT_EQ(Listing(store), "C=3|");
}

TEST_F(CorvoIniDataTest, DirectoryInTheFilesPlaceEndsNothing) {
  CorvoIniData store(m_path.c_str());
  store.Set("a", "1");
  RemoveTree(m_path);
  MakeDirectory(m_path);
  TouchFile(m_path);
  store.Set("b", std::string(5000, 'v').c_str());
  EXPECT_EQ(Listing(store), "A=1|B=" + std::string(5000, 'v') + "|");
  store.Delete();
  EXPECT_TRUE(Exists(m_path));
}

TEST_F(CorvoIniDataTest, EightThreadsLoseNoUpdate) {
  constexpr int kThreads = 8;
  constexpr int kRounds = 60;
  CorvoIniData store(m_path.c_str());
  std::atomic<int> waiting{kThreads};
  std::vector<std::thread> threads;
  for (int number = 0; number < kThreads; ++number) {
    threads.emplace_back([&, number] {
      const std::string own = "key" + std::to_string(number);
      --waiting;
      while (waiting != 0) std::this_thread::yield();
      for (int round = 0; round < kRounds; ++round) {
        const std::string value = std::to_string(round);
        store.Set((own + "." + value).c_str(), value.c_str());
        store.Set(own.c_str(), value.c_str());
        EXPECT_EQ(store.Get(own.c_str()), value);
        if (round % 3 != 0) continue;
        EXPECT_TRUE(store.DeleteKey((own + "." + value).c_str()));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  CorvoIniData read(m_path.c_str());
  EXPECT_EQ(Listing(read), Listing(store));
  std::list<tstring> keys;
  read.GetKeys(keys);
  EXPECT_EQ(keys.size(), kThreads * (1u + kRounds * 2 / 3));
}

}  // namespace
}  // namespace corvo_test
