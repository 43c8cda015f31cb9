// corvo recover.

#include <stdlib.h>
#include <sys/stat.h>

#include "tools/ShellTest.h"

namespace corvo_test {
namespace {

constexpr char kName[] = "tmp/QRT0123456789abcdef0123456789abcdef.tmp";
constexpr char kOther[] = "tmp/QRTffffffffffffffffffffffffffffffff.tmp";

// The temporary directory `tmp` of a host, and the recordings in `rec`. $Q and $R are the paths of
// two temporary files; `old` makes a file as if written two hours ago.
class CorvoRecover : public ShellTest {
 protected:
  CorvoRecover() : m_sealed(MakeSealed()) {
    Run("mkdir tmp rec");
    m_before = std::string("Q=") + kName + " R=" + kOther +
               "; old() { touch -d '2 hours ago' \"$@\"; }; recover() { corvo recover \"$@\"; }; ";
  }

  void Leave(const std::string& bytes) const {
    Write(kName, bytes);
    Run("old $Q");
  }

  const std::string m_sealed;
};

// As a death between the removal of the recording and the move leaves it.
TEST_F(CorvoRecover, PutsBackTheOnlyCopy) {
  Run("cp $SAMPLES/now-recording.wav $Q; corvo seal $Q; old $Q");
  Try({{"recover --dir tmp", 1,
        ".tmp: complete (sealed and intact: it may be the only copy)\n    size         7802\n"},
       {"recover --dir tmp", 1, "    start        2024-05-17T09:30:00.0000000Z\n"},
       {"recover --dir tmp", 1, "    szItem03     +442079460123\n"},
       {"recover --restore tmp/* --to rec/a.wav", 0, ".tmp: restored as rec/a.wav\n"},
       {"corvo verify rec/a.wav", 0, "rec/a.wav: OK\n"},
       {"recover --dir tmp", 0, "0 leftovers: "}});
}

TEST_F(CorvoRecover, RemovesWhatIsLeftOfAnInterruptedCopy) {
  Run("head -c 64000000 /dev/zero >s.g726; corvo record rec/a.wav s.g726 --codec g726 --start 7;"
      " $CORVO --home home seal rec/a.wav & until test $(cat home/tempfiles/* | wc -c) -gt 9999;"
      " do :; done; kill -KILL $!; wait; mv home/tempfiles/* tmp; old tmp/*");
  Try({{"recover --dir tmp", 1, ".tmp: incomplete (not sealed yet, with "},
       {"recover --restore tmp/* --to rec/b.wav", 1, ".tmp: NOT RESTORED: incomplete (not "},
       {"recover --remove tmp/*", 0, ".tmp: removed\n"}});
  EXPECT_THAT(List("tmp"), IsEmpty());
  EXPECT_THAT(List("rec"), ElementsAre("a.wav"));
}

TEST_F(CorvoRecover, TellsWhatEachFileIs) {
  const std::string unsealed =
      With(With(m_sealed, 298, std::string(1, '\0')), 302, std::string(20, '\0'));
  const struct {
    std::string bytes;
    const char* kind;
    const char* verdict;
    const char* description;
  } rows[] = {
      {m_sealed, "complete", "ok", "complete (sealed and intact: it may be the only copy)"},
      {With(m_sealed, 3200, "\1\2"), "damaged", "broken", "damaged (broken: its digest is not"},
      {m_sealed.substr(0, 3190), "damaged", "malformed", "damaged (malformed: it lacks 20 of"},
      {With(m_sealed, 298, std::string(1, '\0')), "damaged", "unsealed", "damaged (unsealed: "},
      {With(m_sealed, 52, "X"), "damaged", "malformed", "damaged (malformed: it has no"},
      {With(m_sealed, 0, "X"), "damaged", "malformed", "damaged (malformed: it is no WAVE"},
      {unsealed, "incomplete", "unsealed", "incomplete (not sealed yet, with all its audio)"},
      {unsealed.substr(0, 3180), "incomplete", "unsealed", "with 10 of 40 bytes of audio)"},
      {std::string(3210, '\0'), "incomplete", "malformed", "incomplete (malformed: it is no WAVE"},
      {"", "incomplete", "malformed", "incomplete (malformed: "}};
  for (const auto& row : rows) {
    Leave(row.bytes);
    Try({{"recover --dir tmp", 1, row.description}});
    const json object = Json("recover --json --dir tmp");
    EXPECT_EQ(object["kind"], row.kind);
    EXPECT_EQ(object["verdict"], row.verdict);
    EXPECT_EQ(object["recent"], false);
    EXPECT_EQ(object["size"], row.bytes.size());
    const bool isIncomplete = std::string(row.kind) == "incomplete";
    Try({{"recover --remove $Q", isIncomplete ? 0 : 1, ""}});
    EXPECT_EQ(Exists(Path(kName)), !isIncomplete);
  }
}

TEST_F(CorvoRecover, ListsSealingsFilesAloneAndChangesNothing) {
  Leave(m_sealed);
  Run("cp $Q tmp/QRT0123.tmp; cp $Q ${Q}x; cp $Q tmp/x${Q#tmp/}; cp $Q ${Q%.tmp}0.tmp;"
      " cp $Q tmp/QRTg123456789abcdef0123456789abcdef.tmp; mkdir $R;"
      " ln -s ../$Q tmp/QRTeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeee.tmp");
  const std::string look = "ls -lU --time-style=full-iso tmp";
  const std::string before = Output(look);
  Try({{"rm -r $STATE; recover --dir tmp; test $? = 1 -a ! -e $STATE", 0, "1 leftover: 1 comp"},
       {"recover --dir \"$PWD\"'\\TMP'", 1, "/tmp/QRT0123456789abcdef"}});
  EXPECT_EQ(Output(look), before);
  Try({{"mv tmp 'new\nline'; recover --dir 'new\nline'", 1, "\\new\\nline/QRT0123456789abcdef"}});
  const json object = Json("mv new* $(printf '\\377'); recover --json --dir $(printf '\\377')");
  EXPECT_EQ(object["name"], std::string("\\xff") + (kName + 3));
  EXPECT_EQ(object["escaped"], true);
}

TEST_F(CorvoRecover, LeavesRecentFilesToTheServer) {
  Write(kName, m_sealed);
  Try({{"recover --dir tmp", 1, ".tmp: complete, recent (sealed"},
       {"recover --restore $Q --to rec/a.wav", 1, "NOT RESTORED: complete, recent"},
       {"recover --older-than 2h --restore $Q --to rec/a.wav", 1, "NOT RESTORED"},
       {"cp $Q rec/same.wav; recover --remove $Q --sealed-as rec/same.wav", 1, "NOT REMOVED"},
       {": >$R; recover --remove $R", 1, "NOT REMOVED: incomplete, recent (malformed"},
       {"rm $Q; recover --dir tmp", 0, "1 incomplete, 0 unreadable, 1 of them recent\n"},
       {"touch -d tomorrow $R; recover --remove $R", 1, "NOT REMOVED: incomplete, recent"},
       {"recover --older-than 0s --dir tmp", 1, "1 incomplete, 0 unreadable, 0 of them re"},
       {"recover --older-than 0s --remove $R", 0, "removed\n"}});
}

TEST_F(CorvoRecover, NeverReplacesAFileAndLosesNothing) {
  Leave(m_sealed);
  Write("rec/a.wav", "mine");
  Try({{"recover --restore $Q --to rec/a.wav", 2, "rec/a.wav: exists already"},
       {"ln -s gone rec/link; recover --restore $Q --to rec/link", 2, "exists already"},
       {"recover --restore $Q --to rec", 2, "rec: exists already"},
       {"recover --restore $Q --to gone/a.wav", 2, "gone/a.wav: No such file"},
       {"recover --restore $Q --to rec/b.wav --remove $Q", 2, "excludes"},
       {"recover --restore $Q", 2, "--to"},
       {"recover --restore $Q --to ''", 2, "the name is empty"},
       {"recover --restore $R --to rec/b.wav", 2, "No such file or directory\n"},
       {"ln -s ../$Q $R; recover --restore $R --to rec/b.wav", 2, "is not a regular file\n"},
       {"recover --remove $R", 2, "is not a regular file\n"},
       {"recover --remove rec/a.wav", 2, "rec/a.wav: is no temporary file"},
       {"recover --dir gone", 2, "gone: No such file or directory\n"},
       {"recover", 2, "--dir, --restore or --remove is required"}});
  EXPECT_EQ(Read(kName), m_sealed);
  EXPECT_EQ(Read("rec/a.wav"), "mine");
  EXPECT_THAT(List("rec"), ElementsAre("a.wav", "link"));
}

TEST_F(CorvoRecover, RemovesASealedOneOnlyForItsTwin) {
  Leave(m_sealed);
  Write("rec/broken.wav", With(m_sealed, 3200, "\1\2"));
  Write("rec/start.wav", With(m_sealed, 20, "\x8"));
  Write("rec/same.wav", m_sealed);
  Try({{"recover --remove $Q", 1, "NOT REMOVED: complete"},
       {"recover --remove $Q --sealed-as $Q", 1, "is this very file\n"},
       {"ln $Q rec/link.wav; recover --remove $Q --sealed-as rec/link.wav", 1, "very file\n"},
       {"recover --remove $Q --sealed-as rec/broken.wav", 1, "rec/broken.wav is broken: "},
       {"recover --remove $Q --sealed-as rec/start.wav", 1, "is another recording\n"},
       {"recover --remove $Q --sealed-as rec/gone.wav", 1, "is unreadable: No such file"}});
  EXPECT_EQ(Read(kName), m_sealed);
  Try({{"recover --remove $Q --sealed-as rec/same.wav", 0, "removed\n"}});
  Leave(With(m_sealed, 3200, "\1\2"));
  Try({{"recover --remove $R $Q --sealed-as rec/same.wav", 2, "No such file"}});
  EXPECT_FALSE(Exists(Path(kName))) << "the others are done all the same";
}

// To a directory on another file system than the scratch directory, where there is one. The limit
// ends a copy as a full disk does.
TEST_F(CorvoRecover, CopiesToAnotherFileSystemWholeOrNotAtAll) {
  char there[] = "/dev/shm/corvo-recover-XXXXXX";
  struct stat here, other;
  if (::mkdtemp(there) == nullptr || ::stat(Path("tmp").c_str(), &here) != 0 ||
      ::stat(there, &other) != 0 || here.st_dev == other.st_dev) {
    RemoveTree(there);
    GTEST_SKIP() << "there is no second file system";
  }
  Leave(m_sealed);
  m_before += std::string("there=") + there + "; look() { stat -c '%a %u %g %y' $1; }; ";
  Try({{"trap '' XFSZ; ulimit -f 2; recover --restore $Q --to $there/a.wav", 2,
        "File too large; nothing is lost: see tmp/QRT"}});
  EXPECT_EQ(Read(kName), m_sealed);
  EXPECT_THAT(ListDirectory(there), IsEmpty());

  const std::string before = Output("chmod 640 $Q; look $Q");
  Try({{"recover --restore $Q --to $there/a.wav", 0, "restored as"}});
  EXPECT_FALSE(Exists(Path(kName)));
  EXPECT_EQ(ReadFile(there + std::string("/a.wav")), m_sealed);
  EXPECT_EQ(Output("look $there/a.wav"), before);
  EXPECT_THAT(ListDirectory(there), ElementsAre("a.wav"));
  RemoveTree(there);
}

}  // namespace
}  // namespace corvo_test
