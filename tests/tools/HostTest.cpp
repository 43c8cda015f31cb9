// The example hosts, as real processes: what they print, and that the library calls their versions
// of the host services.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Scratch.h"
#include "tools/Shell.h"

namespace {

using corvo_test::ListDirectory;
using corvo_test::Ran;
using corvo_test::Shell;
using testing::Contains;
using testing::HasSubstr;

const char* const kHosts[] = {"$EMULATOR bin/host_c '" CORVO_LIBRARY "'", "$EMULATOR bin/host_cpp"};

// With copies of the hosts, since the library keeps its directories beside the program.
Shell HostShell(const std::string& name) {
  Shell shell(name);
  shell.Run("mkdir bin etc && cp '" CORVO_HOSTS "'/host_c* bin");
  return shell;
}

TEST(ExampleHosts, SealAndVerify) {
  const Shell shell = HostShell("hosts");
  for (const std::string host : kHosts) {
    SCOPED_TRACE(host);
    shell.Run("rm -f etc/* && cp $SAMPLES/now-recording.wav x.wav");
    const std::string command = host + " \"$PWD/x.wav\" etc";
    for (int round = 0; round < 2; ++round) {  // sealing a sealed recording changes nothing
      const Ran ran = shell.Run(command + " 2>/dev/null");
      EXPECT_EQ(ran.output,
                "sealed: yes\n"
                "properties: Tolva;CONF;+442079460123;3f2b7c1e-5a90-4d6f-8b21-90c4e1d7a6f3;"
                "1min:5sec;1;+442079460917;Conference bridge;192.0.2.17;2024-05-17;09:30:00;;;4;17"
                ";;;;;;;Weekly planning call;;;0;0;Yes;Both parties were told of the recording.\n"
                "verified: yes\n");
      EXPECT_EQ(ran.exitCode, 0);
    }
    shell.Run("printf x | dd of=x.wav bs=1 seek=4000 conv=notrunc status=none");
    const Ran tampered = shell.Run(command);
    EXPECT_EQ(tampered.exitCode, 1);
    EXPECT_THAT(tampered.output, HasSubstr("verified: no\n"));
    EXPECT_THAT(tampered.output, HasSubstr("(27,2) "));  // through the host's own ConsolePrint
    EXPECT_THAT(ListDirectory(shell.Path("etc")), Contains("corvo_debug_settings.ini"));
  }
}

TEST(ExampleHosts, ReportWhatTheyCantDo) {
  const Shell shell = HostShell("unable");
  for (const std::string host : kHosts) {
    SCOPED_TRACE(host);
    EXPECT_EQ(shell.Run(host + " \"$PWD/gone.wav\" etc").exitCode, 1);
    EXPECT_EQ(shell.Run(host).exitCode, 2);
  }
  EXPECT_EQ(shell.Run("$EMULATOR bin/host_c ./gone.so x.wav etc").exitCode, 2);
}

}  // namespace
