// A 32-bit host whose stack is aligned to 4 bytes enters the library. Where that keeps vectors on
// its stack they would be misplaced; check-hardening looks for functions that don't see to it.

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "LarkspurCommon/debug.h"
#include "LarkspurCommon/sha1.h"
#include "LarkspurCommon/tstring.h"
#include "engine/RecordingSeal.h"
#include "support/Scratch.h"

// Calls a function with the stack so many bytes below the alignment to 16 that compilers rely on.
extern "C" void CallUnaligned(unsigned bytes, void (*function)(void*), void* argument);
// Where the stack was when it was called.
extern "C" void TellStack(void* position);

asm(R"(
  .text
  .type CallUnaligned, @function
CallUnaligned:
  .cfi_startproc
  push %ebp
  .cfi_def_cfa_offset 8
  .cfi_offset %ebp, -8
  mov %esp, %ebp
  .cfi_def_cfa_register %ebp
  and $-16, %esp
  sub 8(%ebp), %esp
  sub $12, %esp
  push 16(%ebp)
  call *12(%ebp)
  leave
  .cfi_def_cfa %esp, 4
  ret
  .cfi_endproc
  .size CallUnaligned, .-CallUnaligned

  .type TellStack, @function
TellStack:
  mov 4(%esp), %eax
  lea 4(%esp), %ecx
  mov %ecx, (%eax)
  ret
  .size TellStack, .-TellStack
)");

namespace {

using corvo_test::ScratchPath;

struct Results {
  std::string path = ScratchPath("a.wav");
  bool sealed = false, present = false, verified = false, read = false;
  std::string properties;
  unsigned char digest[20] = {};
  tstring text;
};

void UseLibrary(void* out) {
  Results& results = *static_cast<Results*>(out);
  const char* const path = results.path.c_str();
  char properties[2048];
  long long start = 0, end = 659'000'000;
  results.sealed = CreateSignature(path, 0, &start, &end);
  results.present = IsSignaturePresent(path);
  results.verified = VerifySignature(path);
  results.read = GetRecordingProperty(path, properties);
  results.properties = properties;
  SHA1_CTX context;
  SHA1Init(&context);
  const unsigned char bytes[200] = {};
  SHA1Update(&context, bytes, sizeof bytes);
  SHA1Final(results.digest, &context);
  results.text.Format("%.3f %d %s", 2.5, 7, "text");
  DebugA(0x00270002, "%.3f %s", 0.5, "traced");
}

std::string g_lastLine;

}  // namespace

TEST(UnalignedStack, EveryMultipleOfFourWillDo) {
  SetDebugHooks(nullptr,
                [](const char* line, unsigned length) { g_lastLine.assign(line, length); });
  for (const unsigned below : {0u, 4u, 8u, 12u}) {
    SCOPED_TRACE(below);
    std::uintptr_t stack = 0;
    CallUnaligned(below, TellStack, &stack);
    EXPECT_EQ((stack + below) % 16, 0u) << "the stack isn't where this test wants it";

    Results results;
    std::filesystem::copy_file(CORVO_RECORDING, results.path,
                               std::filesystem::copy_options::overwrite_existing);
    CallUnaligned(below, UseLibrary, &results);
    EXPECT_TRUE(results.sealed && results.present && results.verified && results.read);
    EXPECT_NE(results.properties.find(";1min:5sec;"), std::string::npos) << results.properties;
    EXPECT_EQ(std::string(reinterpret_cast<char*>(results.digest), 4), "\xc4\x5d\x01\xb1");
    EXPECT_EQ(results.text, "2.500 7 text");
    EXPECT_NE(g_lastLine.find(": 0.500 traced\n"), std::string::npos) << g_lastLine;
  }
}
