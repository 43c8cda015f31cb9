// What a crash leaves in the temporary directory, and what an administrator does with it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "support/Bytes.h"
#include "support/Scratch.h"
#include "tools/Shell.h"

namespace {

using corvo_test::ListDirectory;
using corvo_test::MakeDirectory;
using corvo_test::Ran;
using corvo_test::ReadFile;
using corvo_test::Shell;
using corvo_test::With;
using corvo_test::WriteFile;
using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;

// The temporary directory `t` of a server that crashed an hour ago: c is complete, i incomplete.
class CorvoRecover : public testing::Test {
 protected:
  CorvoRecover() : m_shell("recover"), m_sealed(m_shell.MakeSealed()) {
    m_shell.Run("rm -rf *");
    MakeDirectory(m_shell.Path("t"));
    Leave('c', m_sealed);
    Leave('1', With(m_sealed, 298, std::string(24, '\0')));  // before the seal was written
    m_shell.Run("touch -d '1 hour ago' t/*");
  }

  static std::string Name(char digit) { return "QRT" + std::string(32, digit) + ".tmp"; }
  void Leave(char digit, const std::string& bytes) const {
    WriteFile(m_shell.Path("t/" + Name(digit)), bytes);
  }

  // With C and I for the two.
  Ran Run(std::string command) const {
    return m_shell.Run("C=t/" + Name('c') + " I=t/" + Name('1') + "; " + command);
  }

  Shell m_shell;
  const std::string m_sealed;
};

TEST_F(CorvoRecover, ListsWhoseTheRecordingsAre) {
  Leave('F', m_sealed.substr(0, 3190));  // written just now
  m_shell.Run("touch t/QRT1.tmp t/" + std::string(40, 'x') + "; ln -s " + Name('c') + " t/" +
              Name('d'));
  const Ran text = Run("corvo recover t");
  EXPECT_EQ(text.exitCode, 2);  // for the link
  EXPECT_THAT(text.output,
              HasSubstr("t/" + Name('1') + ": incomplete (it isn't marked as sealed)"));
  EXPECT_THAT(text.output, HasSubstr("t/" + Name('c') + ": complete\n    3210 bytes, written "));
  EXPECT_THAT(text.output, HasSubstr("\n    szMaker      Tolva\n"));
  EXPECT_THAT(text.output, HasSubstr("t/" + Name('d') + ": unreadable (Too many levels"));
  EXPECT_THAT(text.output, HasSubstr("; a server may still be at work on it\n"));
  EXPECT_THAT(text.output, HasSubstr("\n4 leftovers: 1 complete, 2 incomplete, 1 unreadable\n"));

  const Ran lines = Run("rm t/" + Name('d') + "; corvo recover --json t");
  EXPECT_EQ(lines.exitCode, 1);
  std::istringstream stream(lines.output);
  std::vector<std::string> found;
  for (std::string line; std::getline(stream, line);) {
    const json object = json::parse(line);
    found.push_back(object["state"].get<std::string>() + (object["recent"] ? " recent" : ""));
    EXPECT_EQ(object["metadata"].is_array(), object["state"] == "complete");
  }
  EXPECT_THAT(found, ElementsAre("incomplete", "incomplete recent", "complete"));
  EXPECT_EQ(Run("mkdir e; corvo recover e").exitCode, 0);
  EXPECT_EQ(Run("corvo recover gone").exitCode, 2);
}

// What is not safe is not done, and costs nothing.
TEST_F(CorvoRecover, RefusesWhatCouldLoseARecording) {
  WriteFile(m_shell.Path("there.wav"), m_sealed);
  WriteFile(m_shell.Path("other.wav"), With(m_sealed, 3200, "\1"));
  const struct {
    const char* command;
    const char* reason;
  } rows[] = {
      {"corvo recover $C --to there.wav", "there.wav: exists already"},
      {"ln -s gone link; corvo recover $C --to link", "link: exists already"},
      {"corvo recover $C --to no/such/a.wav", "no/such/a.wav"},
      {"corvo recover $I --to a.wav", "is no complete recording: it isn't marked as sealed"},
      {"corvo recover $C --remove", "is a complete recording, perhaps the only copy"},
      {"corvo recover $C --same-as other.wav", "other.wav: holds other bytes than"},
      {"corvo recover $C --same-as $C", "is the same file"},
      {"ln $C hard.wav; corvo recover $C --same-as hard.wav; code=$?; rm hard.wav; exit $code",
       "is the same file"},
      {"corvo recover there.wav --remove", "is not named as"},
      {"touch $I; corvo recover $I --remove", "changed less than 10 minutes ago"},
      {"corvo recover $I --remove --to a.wav", "excludes"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.command);
    const Ran ran = Run(row.command);
    EXPECT_EQ(ran.exitCode, 2);
    EXPECT_THAT(ran.output, HasSubstr(row.reason));
    EXPECT_EQ(ReadFile(m_shell.Path("t/" + Name('c'))), m_sealed);
    EXPECT_THAT(ListDirectory(m_shell.Path("t")), ElementsAre(Name('1'), Name('c')));
    EXPECT_EQ(ReadFile(m_shell.Path("there.wav")), m_sealed);
    EXPECT_EQ(ReadFile(m_shell.Path("a.wav")), "");
  }
}

TEST_F(CorvoRecover, RestoresWithPermissionsAndRemoves) {
  const Ran ran = Run("chmod 640 $C; corvo recover $C --to a.wav && stat -c %a a.wav");
  EXPECT_EQ(ran.output, "a.wav: restored\n640\n");
  EXPECT_EQ(ReadFile(m_shell.Path("a.wav")), m_sealed);
  EXPECT_EQ(Run("corvo recover $I --remove").output, "t/" + Name('1') + ": removed\n");
  EXPECT_THAT(ListDirectory(m_shell.Path("t")), ElementsAre());
  Leave('c', m_sealed);
  EXPECT_EQ(Run("touch -d '1 hour ago' $C; corvo recover $C --same-as a.wav").exitCode, 0);
  EXPECT_THAT(ListDirectory(m_shell.Path("t")), ElementsAre());
}

// The temporary directory is in memory, as it is on many servers.
TEST_F(CorvoRecover, RestoresAcrossFileSystems) {
  const Ran ran =
      Run("m=$(mktemp -d /dev/shm/recover-XXXXXX) && test $(stat -c %d $m) != $(stat -c %d .) ||"
          " { rm -rf $m; exit 77; }\n"
          "cp --preserve=timestamps $C $m && chmod 604 $m/* && ls $m >before &&"
          " corvo recover $m/QRT* --to a.wav && stat -c %a a.wav && ls $m; rm -r $m");
  if (ran.exitCode == 77) GTEST_SKIP() << "there is one file system here";
  EXPECT_EQ(ran.output, "a.wav: restored\n604\n");
  EXPECT_EQ(ReadFile(m_shell.Path("a.wav")), m_sealed);
  const Ran failing =
      Run("m=$(mktemp -d /dev/shm/recover-XXXXXX); cp --preserve=timestamps $C $m;"
          " (ulimit -f 2; trap '' XFSZ; corvo recover $m/QRT* --to b.wav); cmp $m/QRT* $C && ls;"
          " rm -r $m");
  EXPECT_THAT(failing.output, HasSubstr("File too large"));
  EXPECT_THAT(failing.output, testing::Not(HasSubstr("b.wav\n")));
}

}  // namespace
