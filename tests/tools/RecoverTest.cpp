// corvo recover.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include "support/Bytes.h"
#include "support/Scratch.h"
#include "tools/Shell.h"

namespace {

using corvo_test::Exists;
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
using testing::IsEmpty;

constexpr char kName[] = "QRT0123456789abcdef0123456789abcdef.tmp";
constexpr char kOther[] = "QRTffffffffffffffffffffffffffffffff.tmp";

struct Step {
  const char* command;
  int exitCode;
  const char* part;  // of the output
};

// The temporary directory `tmp` of a host, and the recordings in `rec`. $Q and $R are the paths of
// two temporary files; `old` makes a file as if written two hours ago.
class CorvoRecover : public testing::Test {
 protected:
  CorvoRecover()
      : m_shell(std::string("recover") +
                testing::UnitTest::GetInstance()->current_test_info()->name()),
        m_sealed(m_shell.MakeSealed()) {
    for (const char* directory : {"tmp", "rec", "host"}) MakeDirectory(m_shell.Path(directory));
    WriteFile(m_shell.Path("host/corvo_settings.ini"),
              "TempFilesDir=" + m_shell.Path("tmp") + "\nLogFileErrorsToFile=N\n");
  }

  Ran Run(const std::string& command) const {
    return m_shell.Run(std::string("Q=tmp/") + kName + " R=tmp/" + kOther +
                       "; old() { touch -d '2 hours ago' \"$@\"; }; " + command);
  }

  void Try(const Step& step) const {
    SCOPED_TRACE(step.command);
    const Ran ran = Run(step.command);
    EXPECT_EQ(ran.exitCode, step.exitCode);
    EXPECT_THAT(ran.output, HasSubstr(step.part));
  }

  std::string Leave(const std::string& bytes) const {
    const std::string path = m_shell.Path(std::string("tmp/") + kName);
    WriteFile(path, bytes);
    Run("old $Q");
    return path;
  }

  std::string Text(const std::string& name) const { return ReadFile(m_shell.Path(name)); }
  std::vector<std::string> Left() const { return ListDirectory(m_shell.Path("tmp")); }
  std::vector<std::string> Recordings() const { return ListDirectory(m_shell.Path("rec")); }

  // What remains when a host dies while it seals a copy of the sample.
  void Crash(const std::string& instant) const {
    Run("cp $SAMPLES/now-recording.wav rec/a.wav; $EMULATOR '" CORVO_KILLED_HOST "' " + instant +
        " \"$PWD/rec/a.wav\" \"$PWD/host\"; old tmp/*");
  }

  const Shell m_shell;
  const std::string m_sealed;
};

TEST_F(CorvoRecover, PutsBackWhatASuddenDeathLeftInTheTemporaryDirectory) {
  Crash("moving");
  ASSERT_THAT(Recordings(), IsEmpty());
  const Ran list = Run("corvo recover --dir tmp");
  EXPECT_EQ(list.exitCode, 1);
  EXPECT_THAT(list.output, HasSubstr(".tmp: complete (sealed and intact: it may be the only copy)\n"
                                     "    size         7802\n"));
  EXPECT_THAT(list.output, HasSubstr("    start        2024-05-17T09:30:00.0000000Z\n"));
  EXPECT_THAT(list.output, HasSubstr("    szItem03     +442079460123\n"));
  Try({"corvo recover --restore tmp/* --to rec/a.wav", 0, ".tmp: restored as rec/a.wav\n"});
  Try({"corvo verify rec/a.wav", 0, "rec/a.wav: OK\n"});
  Try({"corvo recover --dir tmp", 0, "0 leftovers: "});
}

TEST_F(CorvoRecover, RemovesWhatIsLeftOfAnInterruptedCopy) {
  Crash("copying");
  ASSERT_THAT(Recordings(), ElementsAre("a.wav"));
  Try({"corvo recover --dir tmp", 1,
       ".tmp: incomplete (not sealed yet, with 1000 of 4632 bytes of audio)\n"});
  Try({"corvo recover --restore tmp/* --to rec/b.wav", 1, ".tmp: NOT RESTORED: incomplete (not "});
  Try({"corvo recover --remove tmp/*", 0, ".tmp: removed\n"});
  EXPECT_THAT(Left(), IsEmpty());
  EXPECT_THAT(Recordings(), ElementsAre("a.wav"));
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
    SCOPED_TRACE(row.description);
    const std::string path = Leave(row.bytes);
    Try({"corvo recover --dir tmp", 1, row.description});
    const Ran ran = Run("corvo recover --json --dir tmp");
    const json object = json::parse(ran.output.substr(0, ran.output.find('\n')));
    EXPECT_EQ(object["kind"], row.kind);
    EXPECT_EQ(object["verdict"], row.verdict);
    EXPECT_EQ(object["recent"], false);
    EXPECT_EQ(object["size"], row.bytes.size());

    const bool isIncomplete = std::string(row.kind) == "incomplete";
    EXPECT_EQ(Run("corvo recover --remove $Q").exitCode, isIncomplete ? 0 : 1);
    EXPECT_EQ(Exists(path), !isIncomplete);
  }
}

TEST_F(CorvoRecover, ListsSealingsFilesAloneAndChangesNothing) {
  Leave(m_sealed);
  Run("cp $Q tmp/QRT0123.tmp; cp $Q tmp/${Q#tmp/}x; cp $Q tmp/x${Q#tmp/}; cp $Q tmp/$(basename $Q"
      " .tmp)0.tmp; cp $Q tmp/QRTg123456789abcdef0123456789abcdef.tmp; mkdir $R; ln -s ../$Q"
      " tmp/QRTeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeee.tmp");
  const std::string before = Run("ls -lU --time-style=full-iso tmp").output;
  Try({"rm -r $STATE; corvo recover --dir tmp; test $? = 1 -a ! -e $STATE", 0,
       "1 leftover: 1 comp"});
  EXPECT_EQ(Run("ls -lU --time-style=full-iso tmp").output, before);

  Try({"corvo recover --dir \"$PWD\"'\\TMP'", 1, "/tmp/QRT0123456789abcdef"});
  Run("mv tmp 'new\nline'");
  Try({"corvo recover --dir 'new\nline'", 1, "\\new\\nline/QRT0123456789abcdef"});
  Run("mv new* $(printf '\\377')");
  const Ran ran = Run("corvo recover --json --dir $(printf '\\377')");
  const json object = json::parse(ran.output.substr(0, ran.output.find('\n')));
  EXPECT_EQ(object["name"], std::string("\\xff/") + kName);
  EXPECT_EQ(object["escaped"], true);
}

TEST_F(CorvoRecover, LeavesRecentFilesToTheServer) {
  Leave(m_sealed);
  Run("touch $Q");
  const Step rows[] = {
      {"corvo recover --dir tmp", 1, ".tmp: complete, recent (sealed"},
      {"corvo recover --restore $Q --to rec/a.wav", 1, "NOT RESTORED: complete, recent"},
      {"corvo recover --older-than 2h --restore $Q --to rec/a.wav", 1, "NOT RESTORED"},
      {"cp $Q rec/same.wav; corvo recover --remove $Q --sealed-as rec/same.wav", 1, "NOT REMOVED"},
      {": >$R; corvo recover --remove $R", 1, "NOT REMOVED: incomplete, recent (malformed"},
      {"rm $Q; corvo recover --dir tmp", 0, "1 incomplete, 0 unreadable, 1 of them recent\n"},
      {"touch -d tomorrow $R; corvo recover --remove $R", 1, "NOT REMOVED: incomplete, recent"},
      {"corvo recover --older-than 0s --dir tmp", 1, "1 incomplete, 0 unreadable, 0 of them re"},
      {"corvo recover --older-than 0s --remove $R", 0, "removed\n"}};
  for (const Step& row : rows) Try(row);
}

TEST_F(CorvoRecover, NeverReplacesAFileAndLosesNothing) {
  const std::string leftover = Leave(m_sealed);
  WriteFile(m_shell.Path("rec/a.wav"), "mine");
  const Step rows[] = {
      {"corvo recover --restore $Q --to rec/a.wav", 2, "rec/a.wav: exists already"},
      {"ln -s gone rec/link; corvo recover --restore $Q --to rec/link", 2, "exists already"},
      {"corvo recover --restore $Q --to rec", 2, "rec: exists already"},
      {"corvo recover --restore $Q --to gone/a.wav", 2, "gone/a.wav: No such file"},
      {"corvo recover --restore $Q --to rec/b.wav --remove $Q", 2, "excludes"},
      {"corvo recover --restore $Q", 2, "--to"},
      {"corvo recover --restore $Q --to ''", 2, "the name is empty"},
      {"corvo recover --restore $R --to rec/b.wav", 2, "No such file or directory\n"},
      {"ln -s ../$Q $R; corvo recover --restore $R --to rec/b.wav", 2, "is not a regular file\n"},
      {"corvo recover --remove $R", 2, "is not a regular file\n"},
      {"corvo recover --remove rec/a.wav", 2, "rec/a.wav: is no temporary file"},
      {"corvo recover --dir gone", 2, "gone: No such file or directory\n"},
      {"corvo recover", 2, "--dir, --restore or --remove is required"}};
  for (const Step& row : rows) Try(row);
  EXPECT_EQ(ReadFile(leftover), m_sealed);
  EXPECT_EQ(Text("rec/a.wav"), "mine");
  EXPECT_THAT(Recordings(), ElementsAre("a.wav", "link"));
}

TEST_F(CorvoRecover, RemovesASealedOneOnlyForItsTwin) {
  const std::string leftover = Leave(m_sealed);
  WriteFile(m_shell.Path("rec/broken.wav"), With(m_sealed, 3200, "\1\2"));
  WriteFile(m_shell.Path("rec/start.wav"), With(m_sealed, 20, "\x8"));
  WriteFile(m_shell.Path("rec/same.wav"), m_sealed);
  const Step rows[] = {
      {"corvo recover --remove $Q", 1, "NOT REMOVED: complete"},
      {"corvo recover --remove $Q --sealed-as $Q", 1, "is this very file\n"},
      {"ln $Q rec/link.wav; corvo recover --remove $Q --sealed-as rec/link.wav", 1, "very file\n"},
      {"corvo recover --remove $Q --sealed-as rec/broken.wav", 1, "rec/broken.wav is broken: "},
      {"corvo recover --remove $Q --sealed-as rec/start.wav", 1, "is another recording\n"},
      {"corvo recover --remove $Q --sealed-as rec/gone.wav", 1, "is unreadable: No such file"}};
  for (const Step& row : rows) Try(row);
  EXPECT_EQ(ReadFile(leftover), m_sealed);
  Try({"corvo recover --remove $Q --sealed-as rec/same.wav", 0, "removed\n"});
  Leave(With(m_sealed, 3200, "\1\2"));
  Try({"corvo recover --remove $R $Q --sealed-as rec/same.wav", 2, "No such file"});
  EXPECT_FALSE(Exists(leftover)) << "the others are done all the same";
}

// To a directory on another file system than the scratch directory, where there is one.
class CorvoRecoverAcross : public CorvoRecover {
 protected:
  CorvoRecoverAcross() {
    char name[] = "/dev/shm/corvo-recover-XXXXXX";
    if (::mkdtemp(name) != nullptr) m_directory = name;
  }
  ~CorvoRecoverAcross() override {
    if (!m_directory.empty()) corvo_test::RemoveTree(m_directory);
  }

  void SetUp() override {
    struct stat here, there;
    if (m_directory.empty() || ::stat(m_shell.Path("tmp").c_str(), &here) != 0 ||
        ::stat(m_directory.c_str(), &there) != 0 || here.st_dev == there.st_dev) {
      GTEST_SKIP() << "there is no second file system";
    }
  }

  std::string m_directory;
};

TEST_F(CorvoRecoverAcross, CopiesAndKeepsWhatTheFileSystemKnows) {
  const std::string leftover = Leave(m_sealed);
  const std::string look = "stat -c '%a %u %g %y' ";
  Run("chmod 640 $Q");
  const std::string before = Run(look + "$Q").output;
  Try({("corvo recover --restore $Q --to " + m_directory + "/a.wav").c_str(), 0, "restored as"});
  EXPECT_FALSE(Exists(leftover));
  EXPECT_EQ(ReadFile(m_directory + "/a.wav"), m_sealed);
  EXPECT_EQ(Run(look + m_directory + "/a.wav").output, before);
  EXPECT_THAT(ListDirectory(m_directory), ElementsAre("a.wav"));
}

// The limit ends a copy as a full disk does.
TEST_F(CorvoRecoverAcross, ACopyThatFailsLeavesTheLeftoverAndNothingElse) {
  const std::string leftover = Leave(m_sealed);
  Try({("trap '' XFSZ; ulimit -f 2; corvo recover --restore $Q --to " + m_directory + "/a.wav")
           .c_str(),
       2, "File too large; nothing is lost: see tmp/QRT"});
  EXPECT_EQ(ReadFile(leftover), m_sealed);
  EXPECT_THAT(ListDirectory(m_directory), IsEmpty());
}

}  // namespace
