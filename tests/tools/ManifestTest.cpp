// corvo manifest.

#include "tools/ShellTest.h"

namespace corvo_test {
namespace {

// The archive `in` with the sealed a.wav, b.wav and d/c.wav, and its manifest `list`.
class CorvoManifest : public ShellTest {
 protected:
  CorvoManifest() {
    Run("make() { head -c $2 $SAMPLES/now-recording.g726 >s.g726 && corvo record --force $1 s.g726"
        " --codec g726 --start 7 && corvo seal $1; }; mkdir -p in/d;"
        " make in/a.wav 40; make in/b.wav 50; make in/d/c.wav 60; make other.wav 70;"
        " corvo manifest in -o list");
    m_before = "manifest() { corvo manifest \"$@\"; }; check() { manifest --check \"$@\"; }; ";
  }
};

TEST_F(CorvoManifest, IsWhatSha256sumWritesAndChecks) {
  for (const std::string name : {"new\nline", "back\\slash", "re\rturn", "\xFF", "d.wav", "-"}) {
    Write("in/" + name, name);
  }
  const std::string expected =
      Output("cd in; find . -type f -print0 | LC_ALL=C sort -z | xargs -0 sha256sum") +
      "# files: 9, SHA-256 of the previous manifest: none\n";
  Walk({{"manifest in --jobs 1", 0, expected},
        {"cd in && manifest . -j 8", 0, expected},
        {"manifest in/ -o all && cd in && sha256sum --strict --quiet -c ../all", 0, ""}});
  Try({{"check all in", 0,
        "9 listed: 9 ok, 0 resealed, 0 altered, 0 missing, 0 unreadable, 0 unlisted\n"}});
}

TEST_F(CorvoManifest, TellsWhatBecameOfEachFile) {
  Try({
      {"check list in", 0, "in/a.wav: OK\nin/b.wav: OK\nin/d/c.wav: OK\n3 listed"},
      {"check list in --quiet", 0,
       "3 listed: 3 ok, 0 resealed, 0 altered, 0 missing, 0 unreadable, 0 unlisted\n"},
      {"cp other.wav in/a.wav && corvo verify --status in && check list in", 1,
       "in/a.wav: FAILED (resealed: it is not what was listed, though its seal is intact)\n"},
      {"printf xy | dd of=in/b.wav bs=1 seek=3190 conv=notrunc status=none; check list in --quiet",
       1, "in/b.wav: FAILED (altered: it is not what was listed, and is broken)\n3 listed"},
      {"rm in/d/c.wav; check list in", 1,
       "in/d/c.wav: FAILED (missing: No such file or directory)\n"
       "3 listed: 0 ok, 1 resealed, 1 altered, 1 missing, 0 unreadable, 0 unlisted\n"},
      {"rm -r in/d; check list in --status | wc -c", 0, "0\n"},
      {"mkdir in/d; ln -s gone in/d/c.wav; check list in", 2,
       "in/d/c.wav: FAILED (unreadable: No such file or directory)\n"},
      {"check '' in", 2, "the name is empty"},
      {"rm in/d/c.wav; mkdir in/d/c.wav; check list in", 2,
       "in/d/c.wav: FAILED (unreadable: it is a directory)\n"},
  });
}

TEST_F(CorvoManifest, FilesThatAreNotListedFailAStrictCheck) {
  Try({{"cp other.wav in/d; check list in", 0, "0 unreadable, 1 unlisted\n"},
       {"check list in --strict", 1,
        "in/d/other.wav: FAILED (unlisted: it is not in the manifest)\n3 listed: 3 ok"}});
}

TEST_F(CorvoManifest, EachOneVouchesForTheOneBeforeIt) {
  const std::string digest = Output("sha256sum <list | cut -c 1-64");
  Try({{"manifest in --previous list -o next && tail -n 1 next", 0,
        "# files: 3, SHA-256 of the previous manifest: " + digest},
       {"check next --previous list in", 0, "3 ok"},
       {"check next --previous next in", 1,
        "next: FAILED (it is not the manifest before this one)\n"},
       {"check list --previous next in", 1, "next: FAILED"},
       {"sed 1d list >cut; manifest in --previous cut -o other; test ! -e other", 0,
        "cut: it is no manifest: line 3: it doesn't fit the 2 lines before it"}});
}

TEST_F(CorvoManifest, OneThatWasTamperedWithIsRefused) {
  const struct {
    std::string make;
    const char* reason;
  } rows[] = {{"sed '$d' list", "x: it is no complete manifest: its last line is missing"},
              {"head -c -1 list", "x: it is no manifest: line 4: it must be the last"},
              {"cat list list", "line 4: it must be the last"},
              {"sed 2d list", "line 3: it doesn't fit the 2 lines before it"},
              {"sed 's/files: 3/files: 03/' list", "line 4: it doesn't fit"},
              {"sed 2p list", "line 3: the name isn't behind the one before it"},
              {"sed 's,./b.wav,./d/../b.wav,' list", "line 2: there is no digest and file name"},
              {"sed 's,./b.wav,/b.wav,' list", "line 2: there is no digest"},
              {"sed '2s,^.,g,' list", "line 2: there is no digest"},
              {"sed '2s,b.wav,b.wav\\x00,' list", "line 2: there is no digest"},
              {"sed '2s,^,\\\\,; 2s,b,\\\\b,' list", "line 2: there is no digest"},
              {"sed '1,3d; s/: 3/: 0/' list", "line 1: it lists no files"},
              {"true", "x: it is no complete manifest"}};
  for (const auto& row : rows) Try({{row.make + " >x; check x in", 2, row.reason}});
}

TEST_F(CorvoManifest, IsCompleteOrIsNotMade) {
  const std::string old = Read("list");
  Try({{"manifest in -o list", 2, "list: exists already"},
       {"manifest in >in/list", 2, "in/list: it is the manifest that is being made"},
       {"rm in/list; manifest in -o in/list", 2, "it is the manifest that is being made"},
       {"mkfifo in/pipe; manifest in -o new", 2, "in/pipe: it is not a regular file"},
       {"manifest in | grep '^#'; test $? = 1 && test ! -e new && ls in", 0, "pipe\n"},
       {"rm -r in/*; manifest in -o new || test ! -e new", 0, "nothing to list"},
       {"manifest list", 2, "list: is not a directory"},
       {"manifest gone", 2, "gone: No such file or directory"},
       {"check list in -o new", 2, "--check"},
       {"manifest in --strict", 2, "--check"}});
  EXPECT_EQ(Read("list"), old);
}

// As docs/external-trust.md shows.
TEST_F(CorvoManifest, IsSignedByTheToolsPeopleHave) {
  const char* const signers[][2] = {
      {"openssl",
       "openssl genpkey -algorithm ed25519 -out key && openssl pkey -in key -pubout -out public &&"
       " openssl pkeyutl -sign -rawin -in list -inkey key -out sig && check() { openssl pkeyutl"
       " -verify -rawin -in list -pubin -inkey public -sigfile sig; }"},
      {"minisign",
       "minisign -G -W -p public -s key && minisign -S -s key -m list -x sig </dev/null &&"
       " check() { minisign -V -p public -m list -x sig; }"}};
  for (const auto& [program, sign] : signers) {
    if (!Has(program)) GTEST_SKIP() << program << " isn't installed";
    const std::string signedAndChecked = std::string("rm -f key public sig; ") + sign + " && check";
    EXPECT_EQ(Run(signedAndChecked).exitCode, 0) << program;
    EXPECT_EQ(Run(signedAndChecked + " && echo '# files: 3' >>list && ! check").exitCode, 0)
        << program;
  }
}

}  // namespace
}  // namespace corvo_test
