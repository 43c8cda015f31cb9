// Indentation, function tracing and hex dumps.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <string>
#include <thread>
#include <vector>

#include "LarkspurCommon/debug.h"

namespace {

using Texts = std::vector<std::string>;

constexpr DWORD kDetail = 0x00270008;

Texts g_texts;

bool g_handOutKeyZero;
bool g_keyZeroReturned;

std::string Spaces(std::size_t count) {
  return std::string(count, ' ');
}

// Indentation and message.
void Record(const std::string& line) {
  const std::size_t start = line.find(": ") + 2;
  g_texts.push_back(line.substr(start, line.size() - start - 1));
}

class Trace : public testing::Test {
 protected:
  void SetUp() override {
    g_texts.clear();
    InitDebug(nullptr, "Recorder", nullptr);
    SetDebugFilterLevel(DFL_EVERYTHING);
    SetDebugHooks(
        [](wchar_t const* line, unsigned n) {
          Record({line, line + n});
        },
        [](char const* line, unsigned n) {
          Record({line, n});
        });
  }
  void TearDown() override { SetDebugHooks(nullptr, nullptr); }
};

}  // namespace

// As on a system whose first key is 0. The thread sanitizer calls it before it is ready itself.
extern "C" int __pthread_key_create(pthread_key_t* key, void (*destructor)(void*));  // glibc's own

extern "C" __attribute__((no_sanitize("thread"))) int pthread_key_create(
    pthread_key_t* key, void (*destructor)(void*)) noexcept {
  if (!g_handOutKeyZero) return __pthread_key_create(key, destructor);
  g_handOutKeyZero = false;
  *key = 0;
  return 0;
}

extern "C" int pthread_key_delete(pthread_key_t key) noexcept {
  const auto real =
      reinterpret_cast<decltype(&pthread_key_delete)>(dlsym(RTLD_NEXT, "pthread_key_delete"));
  if (key != 0) return real(key);
  g_keyZeroReturned = true;
  return 0;
}

TEST_F(Trace, FunctionsNest) {
  {
    const CDebugTraceFn open(kDetail, "Open", "name=%s", "a.wav");
    DebugA(kDetail, "inside");
    {
      const CDebugTraceFn wide(kDetail, "Read\xC3", L"%d, %ls", 1, L"x");
      const CDebugIndentOutput deeper;
      std::thread([] { DebugA(kDetail, "another thread"); }).join();
      DebugA(kDetail, "deep");
    }
    const CDebugTraceFn plain(kDetail, "operator%");
    SetDebugFilterLevel(DFL_REQUESTS);
    const CDebugTraceFn unwanted(kDetail, "Unwanted", "%d", 1);
    DebugA(0x00270005, "still inside");
    SetDebugFilterLevel(DFL_EVERYTHING);
  }
  EXPECT_EQ(g_texts, (Texts{"> Open(name=a.wav)", "  inside", "  > Read\xC3(1, x)",
                            "another thread", "      deep", "  < Read\xC3()", "  > operator%()",
                            "    still inside", "  < operator%()", "< Open()"}));
  EXPECT_EQ(GetThreadIndentLevel(), 0U);
}

TEST_F(Trace, EnterTemplateIsCutAt255) {
  const std::string name(200, 'n');
  { const CDebugTraceFn fits(kDetail, name.c_str(), "%s", std::string(52, 'x').c_str()); }
  { const CDebugTraceFn cut(kDetail, name.c_str(), (std::string(50, 'f') + "%d").c_str(), 12); }
  { const CDebugTraceFn longer(kDetail, name.c_str(), (std::string(60, 'f') + "%d").c_str(), 12); }
  { const CDebugTraceFn percent(kDetail, "a%b", "%d", 12); }
  EXPECT_EQ(g_texts[0], "> " + name + "(" + std::string(52, 'x') + ")");
  EXPECT_EQ(g_texts[2], "> " + name + "(" + std::string(50, 'f') + "12");
  EXPECT_EQ(g_texts[4], "> " + name + "(" + std::string(52, 'f'));
  EXPECT_EQ(g_texts[6], "> a%b(12)");
}

TEST_F(Trace, UnbalancedDecreaseRestartsEveryThread) {
  IncreaseThreadIndentLevel();
  IncreaseThreadIndentLevel();
  EXPECT_EQ(GetThreadIndentLevel(), 4U);
  std::thread([] {
    EXPECT_EQ(GetThreadIndentLevel(), 0U);
    DecreaseThreadIndentLevel();
  }).join();
  EXPECT_EQ(GetThreadIndentLevel(), 0U);
  DecreaseThreadIndentLevel();  // without a key: nothing
  IncreaseThreadIndentLevel();
  EXPECT_EQ(GetThreadIndentLevel(), 2U);
  DecreaseThreadIndentLevel();
  EXPECT_EQ(GetThreadIndentLevel(), 0U);
}

TEST_F(Trace, KeyZeroIsPutBack) {
  DecreaseThreadIndentLevel();  // no key left
  g_handOutKeyZero = true;
  IncreaseThreadIndentLevel();
  EXPECT_EQ(GetThreadIndentLevel(), 2U);
  EXPECT_TRUE(g_keyZeroReturned);
  DecreaseThreadIndentLevel();
}

TEST_F(Trace, DumpShapes) {
  const std::string wave = "RIFF$\x08" + std::string(2, '\0') + "WAVEfmt ";
  const std::string first = " 00000000: 52 49 46 46 24 08 00 00  57 41 56 45 66 6D 74 20  ";
  const struct {
    std::string bytes;
    Texts lines;
  } kRows[] = {
      {"", {}},
      {"\x7F", {" 00000000: 7F" + Spaces(48) + "."}},
      {"\xE9 ~\x1F", {" 00000000: E9 20 7E 1F" + Spaces(39) + ". ~."}},
      {wave, {first + "RIFF$...WAVEfmt "}},
      {wave + "%", {first + "RIFF$...WAVEfmt ", " 00000010: 25" + Spaces(48) + "%"}},
  };
  for (const auto& row : kRows) {
    g_texts.clear();
    Dump(kDetail, row.bytes.data(), static_cast<DWORD>(row.bytes.size()));
    Dump(kDetail, nullptr, 16);
    EXPECT_EQ(g_texts, row.lines);
  }
}
