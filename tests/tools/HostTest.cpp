// The example hosts, as real processes: what they print, and that the library calls their versions
// of the host services.

#include "tools/ShellTest.h"

namespace corvo_test {
namespace {

// With copies of the hosts, since the library keeps its directories beside the program.
class ExampleHosts : public ShellTest {
 protected:
  ExampleHosts() { Run("mkdir bin etc && cp '" CORVO_HOSTS "'/host_c* bin"); }

  const std::string m_hosts[2] = {"$EMULATOR bin/host_c '" CORVO_LIBRARY "'",
                                  "$EMULATOR bin/host_cpp"};
};

TEST_F(ExampleHosts, SealAndVerify) {
  const std::string expected =
      "sealed: yes\n"
      "properties: Tolva;CONF;+442079460123;3f2b7c1e-5a90-4d6f-8b21-90c4e1d7a6f3;"
      "1min:5sec;1;+442079460917;Conference bridge;192.0.2.17;2024-05-17;09:30:00;;;4;17"
      ";;;;;;;Weekly planning call;;;0;0;Yes;Both parties were told of the recording.\n"
      "verified: yes\n";
  for (const std::string& host : m_hosts) {
    const std::string command = host + " \"$PWD/x.wav\" etc";
    Walk({{"rm -f etc/* && cp $SAMPLES/now-recording.wav x.wav", 0, ""},
          {command + " 2>/dev/null", 0, expected},
          {command + " 2>/dev/null", 0, expected}});  // sealing it again changes nothing
    // Through the host's own ConsolePrint, and with a trace settings file in its directory.
    Try({{"printf x | dd of=x.wav bs=1 seek=4000 conv=notrunc status=none; " + command, 1,
          "verified: no\n"},
         {command, 1, "(27,2) "},
         {"ls etc", 0, "corvo_debug_settings.ini\n"}});
  }
}

TEST_F(ExampleHosts, ReportWhatTheyCantDo) {
  for (const std::string& host : m_hosts) {
    Try({{host + " \"$PWD/gone.wav\" etc", 1, ""}, {host, 2, ""}});
  }
  Try({{"$EMULATOR bin/host_c ./gone.so x.wav etc", 2, ""}});
}

}  // namespace
}  // namespace corvo_test
