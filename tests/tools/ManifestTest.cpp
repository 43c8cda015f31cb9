// corvo manifest.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Scratch.h"
#include "tools/Shell.h"

namespace {

using corvo_test::MakeDirectory;
using corvo_test::Ran;
using corvo_test::ReadFile;
using corvo_test::Shell;
using corvo_test::WriteFile;
using testing::HasSubstr;

constexpr char kNone[] = ", SHA-256 of the previous manifest: none\n";

struct Step {
  const char* command;
  int exitCode;
  const char* part;  // of the output
};

// The archive `in` with the sealed a.wav, b.wav and d/c.wav, and its manifest `list`.
class CorvoManifest : public testing::Test {
 protected:
  CorvoManifest() : m_shell("manifest") {
    MakeDirectory(m_shell.Path("in"));
    m_shell.Run(
        "make() { head -c $2 $SAMPLES/now-recording.g726 >s.g726 && corvo record --force $1 s.g726"
        " --codec g726 --start 7 && corvo seal $1; }; mkdir in/d;"
        " make in/a.wav 40; make in/b.wav 50; make in/d/c.wav 60; make other.wav 70;"
        " corvo manifest in -o list");
  }

  void Try(const Step& step) const {
    SCOPED_TRACE(step.command);
    const Ran ran = m_shell.Run(step.command);
    EXPECT_EQ(ran.exitCode, step.exitCode);
    EXPECT_THAT(ran.output, HasSubstr(step.part));
  }

  const Shell m_shell;
};

TEST_F(CorvoManifest, IsWhatSha256sumWritesAndChecks) {
  for (const char* name : {"new\nline", "back\\slash", "re\rturn", "\xFF", "d.wav", "-"}) {
    WriteFile(m_shell.Path(std::string("in/") + name), name);
  }
  const std::string byOthers =
      m_shell.Run("cd in; find . -type f -print0 | LC_ALL=C sort -z | xargs -0 sha256sum").output;
  for (const char* command : {"corvo manifest in --jobs 1", "cd in && corvo manifest . -j 8"}) {
    EXPECT_EQ(m_shell.Run(command).output, byOthers + "# files: 9" + kNone) << command;
  }
  Try({"corvo manifest in/ -o all && cd in && sha256sum --strict --quiet -c ../all", 0, ""});
  Try({"corvo manifest --check all in", 0,
       "9 listed: 9 ok, 0 resealed, 0 altered, 0 missing, 0 unreadable, 0 unlisted\n"});
}

TEST_F(CorvoManifest, TellsWhatBecameOfEachFile) {
  const Step rows[] = {
      {"corvo manifest --check list in", 0, "in/a.wav: OK\nin/b.wav: OK\nin/d/c.wav: OK\n3 listed"},
      {"corvo manifest --check list in --quiet", 0,
       "3 listed: 3 ok, 0 resealed, 0 altered, 0 missing, 0 unreadable, 0 unlisted\n"},
      {"cp other.wav in/a.wav && corvo verify --status in && corvo manifest --check list in", 1,
       "in/a.wav: FAILED (resealed: it is not what was listed, though its seal is intact)\n"},
      {"printf xy | dd of=in/b.wav bs=1 seek=3190 conv=notrunc status=none;"
       " corvo manifest --check list in --quiet",
       1, "in/b.wav: FAILED (altered: it is not what was listed, and is broken)\n3 listed"},
      {"rm in/d/c.wav; corvo manifest --check list in", 1,
       "in/d/c.wav: FAILED (missing: No such file or directory)\n"
       "3 listed: 0 ok, 1 resealed, 1 altered, 1 missing, 0 unreadable, 0 unlisted\n"},
      {"rm -r in/d; corvo manifest --check list in --status | wc -c", 0, "0\n"},
      {"mkdir in/d; ln -s gone in/d/c.wav; corvo manifest --check list in", 2,
       "in/d/c.wav: FAILED (unreadable: No such file or directory)\n"},
      {"corvo manifest --check '' in", 2, "the name is empty"},
      {"rm in/d/c.wav; mkdir in/d/c.wav; corvo manifest --check list in", 2,
       "in/d/c.wav: FAILED (unreadable: it is a directory)\n"}};
  for (const Step& row : rows) Try(row);
}

TEST_F(CorvoManifest, FilesThatAreNotListedFailAStrictCheck) {
  Try({"cp other.wav in/d; corvo manifest --check list in", 0, "0 unreadable, 1 unlisted\n"});
  Try({"corvo manifest --check list in --strict", 1,
       "in/d/other.wav: FAILED (unlisted: it is not in the manifest)\n3 listed: 3 ok"});
}

TEST_F(CorvoManifest, EachOneVouchesForTheOneBeforeIt) {
  const std::string digest = m_shell.Run("sha256sum <list | cut -c 1-64").output;
  Try({"corvo manifest in --previous list -o next && tail -n 1 next", 0,
       ("# files: 3, SHA-256 of the previous manifest: " + digest).c_str()});
  Try({"corvo manifest --check next --previous list in", 0, "3 ok"});
  Try({"corvo manifest --check next --previous next in", 1,
       "next: FAILED (it is not the manifest before this one)\n"});
  Try({"corvo manifest --check list --previous next in", 1, "next: FAILED"});
  Try({"sed 1d list >cut; corvo manifest in --previous cut -o other; test ! -e other", 0,
       "cut: it is no manifest: line 3: it doesn't fit the 2 lines before it"});
}

TEST_F(CorvoManifest, OneThatWasTamperedWithIsRefused) {
  const Step rows[] = {
      {"sed '$d' list", 2, "x: it is no complete manifest: its last line is missing"},
      {"head -c -1 list", 2, "x: it is no manifest: line 4: it must be the last"},
      {"cat list list", 2, "line 4: it must be the last"},
      {"sed 2d list", 2, "line 3: it doesn't fit the 2 lines before it"},
      {"sed 's/files: 3/files: 03/' list", 2, "line 4: it doesn't fit"},
      {"sed 2p list", 2, "line 3: the name isn't behind the one before it"},
      {"sed 's,./b.wav,./d/../b.wav,' list", 2, "line 2: there is no digest and file name"},
      {"sed 's,./b.wav,/b.wav,' list", 2, "line 2: there is no digest"},
      {"sed '2s,^.,g,' list", 2, "line 2: there is no digest"},
      {"sed '2s,b.wav,b.wav\\x00,' list", 2, "line 2: there is no digest"},
      {"sed '2s,^,\\\\,; 2s,b,\\\\b,' list", 2, "line 2: there is no digest"},
      {"cat in/a.wav", 2, "line 1: there is no digest"},
      {"sed '1,3d; s/: 3/: 0/' list", 2, "line 1: it lists no files"},
      {"true", 2, "x: it is no complete manifest"}};
  for (const Step& row : rows) {
    Try({(std::string(row.command) + " >x; corvo manifest --check x in").c_str(), row.exitCode,
         row.part});
  }
}

TEST_F(CorvoManifest, IsCompleteOrIsNotMade) {
  const std::string old = ReadFile(m_shell.Path("list"));
  const Step rows[] = {
      {"corvo manifest in -o list", 2, "list: exists already"},
      {"corvo manifest in >in/list", 2, "in/list: it is the manifest that is being made"},
      {"rm in/list; corvo manifest in -o in/list", 2, "it is the manifest that is being made"},
      {"mkfifo in/pipe; corvo manifest in -o new", 2, "in/pipe: it is not a regular file"},
      {"corvo manifest in | grep '^#'; test $? = 1 && test ! -e new && ls in", 0, "pipe\n"},
      {"rm -r in/*; corvo manifest in -o new || test ! -e new", 0, "nothing to list"},
      {"corvo manifest list", 2, "list: is not a directory"},
      {"corvo manifest gone", 2, "gone: No such file or directory"},
      {"corvo manifest --check list in -o new", 2, "--check"},
      {"corvo manifest in --strict", 2, "--check"}};
  for (const Step& row : rows) Try(row);
  EXPECT_EQ(ReadFile(m_shell.Path("list")), old);
}

TEST_F(CorvoManifest, IsSignedByTheToolsPeopleHave) {
  const char* const signers[][2] = {
      {"openssl",
       "openssl genpkey -algorithm ed25519 -out key && openssl pkey -in key -pubout -out public &&"
       " openssl pkeyutl -sign -rawin -in list -inkey key -out sig && check() { openssl pkeyutl"
       " -verify -rawin -in list -pubin -inkey public -sigfile sig; }"},
      {"minisign",
       "minisign -G -W -p public -s key && minisign -S -s key -m list -x sig </dev/null &&"
       " check() { minisign -V -p public -m list -x sig; }"}};
  std::string absent;
  for (const auto& [program, sign] : signers) {
    if (m_shell.Run(std::string("command -v ") + program).exitCode != 0) {
      absent += std::string(" ") + program;
      continue;
    }
    const std::string checked =
        std::string("rm -f key public sig list; corvo manifest in -o list && ") + sign +
        " && check";
    EXPECT_EQ(m_shell.Run(checked).exitCode, 0) << program;
    EXPECT_EQ(m_shell.Run(checked + " && echo '# files: 3' >>list && ! check").exitCode, 0)
        << program;
  }
  if (!absent.empty()) GTEST_SKIP() << "not installed:" << absent;
}

}  // namespace
