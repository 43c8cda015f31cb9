// A 32-bit host whose stack is aligned to 4 bytes enters the library. Where that keeps vectors on
// its stack they would be misplaced; check-hardening looks for functions that don't see to it.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
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

const std::string g_path = ScratchPath("a.wav");
std::string g_lastLine;

// Calls of many kinds; tells what they gave.
void UseLibrary(void* out) {
  const char* const path = g_path.c_str();
  char properties[2048];
  long long start = 0, end = 659'000'000;
  const bool answers[] = {CreateSignature(path, 0, &start, &end), IsSignaturePresent(path),
                          VerifySignature(path), GetRecordingProperty(path, properties)};
  SHA1_CTX context;
  SHA1Init(&context);
  const unsigned char bytes[200] = {};
  SHA1Update(&context, bytes, sizeof bytes);
  unsigned char digest[20];
  SHA1Final(digest, &context);
  DebugA(0x00270002, "%.3f %s", 0.5, "traced");
  tstring text;
  text.Format("%d%d%d%d %.11s %02x%02x%02x%02x %.3f %s", answers[0], answers[1], answers[2],
              answers[3], std::strstr(properties, ";1min"), digest[0], digest[1], digest[2],
              digest[3], 2.5, "text");
  *static_cast<std::string*>(out) = text.c_str();
}

}  // namespace

TEST(UnalignedStack, EveryMultipleOfFourWillDo) {
  SetDebugHooks(nullptr,
                [](const char* line, unsigned length) { g_lastLine.assign(line, length); });
  for (const unsigned below : {0u, 4u, 8u, 12u}) {
    SCOPED_TRACE(below);
    std::uintptr_t stack = 0;
    CallUnaligned(below, TellStack, &stack);
    EXPECT_EQ((stack + below) % 16, 0u) << "the stack isn't where this test wants it";

    std::string told;
    std::filesystem::copy_file(CORVO_RECORDING, g_path,
                               std::filesystem::copy_options::overwrite_existing);
    CallUnaligned(below, UseLibrary, &told);
    EXPECT_EQ(told, "1111 ;1min:5sec; c45d01b1 2.500 text");
    EXPECT_NE(g_lastLine.find(": 0.500 traced\n"), std::string::npos) << g_lastLine;
  }
}
