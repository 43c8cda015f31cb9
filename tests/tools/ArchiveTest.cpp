// corvo verify and corvo summary over archives.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <random>
#include <sstream>

#include "support/Bytes.h"
#include "support/Scratch.h"
#include "tools/Shell.h"
#include "tools/corvo/Utf8.h"
#include "tools/corvo/archive/Names.h"

namespace {

using corvo_test::MakeDirectory;
using corvo_test::Ran;
using corvo_test::ReadFile;
using corvo_test::Shell;
using corvo_test::With;
using corvo_test::WriteFile;
using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

constexpr bool kEmulated = sizeof CORVO_EMULATOR > 1;

struct Damage {
  const char* verdict;
  std::string bytes;
  const char* reason;
};

std::vector<Damage> Damages(const std::string& sealed) {
  return {
      {"broken", With(sealed, 3200, "\1\2"), "its digest is not the one that was sealed"},
      {"broken", With(sealed, 310, "\1\2"), "its digest is not the one that was sealed"},
      {"unsealed", With(sealed, 298, "\2"), "it isn't marked as sealed"},
      {"malformed", sealed.substr(0, 3190), "it lacks 20 of its 40 bytes of audio"},
      {"malformed", "Dear Sir,", "it is no WAVE file"},
      {"malformed", With(sealed, 52, "ALCX"), "it has no \"ALCH\" chunk where one belongs"},
  };
}

bool Has(const Shell& shell, const char* program) {
  return shell.Run(std::string("command -v ") + program).exitCode == 0;
}

TEST(CorvoArchive, TellsEachVerdictAsTextAsJsonAndByItsExitCode) {
  const Shell shell("verdicts");
  const std::string sealed = shell.MakeSealed();
  std::vector<Damage> rows = Damages(sealed);
  rows.push_back({"ok", sealed, ""});
  for (const Damage& row : rows) {
    SCOPED_TRACE(row.reason);
    const std::string verdict = row.verdict;
    const int exitCode = verdict == "ok" ? 0 : 1;
    WriteFile(shell.Path("x.wav"), row.bytes);
    const std::string line =
        verdict == "ok" ? "x.wav: OK\n" : "x.wav: FAILED (" + verdict + ": " + row.reason + ")\n";
    const Ran text = shell.Run("corvo verify x.wav");
    EXPECT_EQ(text.exitCode, exitCode);
    EXPECT_THAT(text.output, testing::StartsWith(line + "1 input: "));
    EXPECT_THAT(text.output, HasSubstr("1 " + verdict));

    const Ran lines = shell.Run("corvo verify --json x.wav");
    EXPECT_EQ(lines.exitCode, exitCode);
    const json object = json::parse(lines.output.substr(0, lines.output.find('\n')));
    EXPECT_EQ(object["verdict"], verdict);
    EXPECT_EQ(object["size"], row.bytes.size());
    EXPECT_EQ(object["reason"], verdict == "ok" ? json() : json(row.reason));
    EXPECT_EQ(object["computed_digest"].is_string() &&
                  object["computed_digest"] != object["stored_digest"],
              verdict == "broken");
    EXPECT_EQ(object.size(), 16u);  // the same members whatever is wrong
    const bool isSealed = verdict == "ok" || verdict == "broken" || row.bytes.size() == 3190;
    EXPECT_EQ(object["departures"].is_array(), isSealed);

    const Ran silent = shell.Run("corvo verify --status x.wav");
    EXPECT_EQ(silent.exitCode, exitCode);
    EXPECT_EQ(silent.output, "");
    EXPECT_EQ(shell.Run("corvo verify --quiet x.wav").output.find("x.wav: OK"), std::string::npos);
  }
}

TEST(CorvoArchive, TellsWhatCannotBeVerified) {
  const Shell shell("trouble");
  const std::string sealed = shell.MakeSealed();
  WriteFile(shell.Path("x.wav"), sealed);
  WriteFile(shell.Path("long.wav"), sealed + "more");
  const struct {
    const char* command;
    int exitCode;
    const char* part;
  } rows[] = {
      {"corvo verify gone.wav x.wav", 2,
       "gone.wav: FAILED (unreadable: No such file or directory)\nx.wav: OK\n2 inputs: 1 ok"},
      {"mkfifo pipe && corvo verify pipe", 2, "(unreadable: it is not a regular file)"},
      {"corvo verify </dev/null", 2, "nothing to check"},
      {"mkdir -p empty && corvo verify empty", 2, "nothing to check"},
      {"corvo verify --files-from gone", 2, "gone: No such file or directory"},
      {"corvo verify --shard 3/2 x.wav", 2, "3/2"},
      {"corvo verify long.wav", 0, "long.wav: OK"},
      {"corvo verify --strict long.wav", 1, "long.wav: FAILED (malformed: "},
      {"corvo verify --through-host-call x.wav long.wav", 0, "2 inputs: 2 ok"},
      {"corvo verify x.wav >/dev/full", 2, "can't be written"},
      {"corvo verify --files-from 'go\nne'", 2, "\\go\\nne: No such file"},
      {"cp x.wav late.wav && touch -d 2128-06-11 late.wav && corvo verify late.wav", 0, ": OK\n"},
      {"cp x.wav huge.wav && truncate -s 2G huge.wav && corvo verify huge.wav", 1,
       "huge.wav: FAILED (malformed: it is longer than any sealed recording)"},
      {"corvo verify --through-host-call huge.wav late.wav", 1, "2 inputs: 1 ok"},
      // The list never ends: this descriptor could write to it.
      {"mkfifo list && exec 3<>list && yes x.wav | head -20 >&3; timeout 60 $EMULATOR"
       " '" CORVO_COMMAND "' verify --json --files-from list >/dev/full",
       2, "can't be written"},
      {"corvo verify --resume journal --files-from - <&-", 2, "can't be read further: Bad file"},
      // While it is read, its times change all the time.
      {"cp x.wav big.wav && truncate -s 64M big.wav && printf '\\000\\000\\300\\003' |"
       " dd of=big.wav bs=1 seek=3166 conv=notrunc status=none;"
       " (until test -e stop; do touch big.wav; done) & corvo verify big.wav; code=$?;"
       " touch stop; wait; exit $code",
       2, "big.wav: FAILED (changed: it changed while it was read)"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.command);
    const Ran ran = shell.Run(row.command);
    EXPECT_EQ(ran.exitCode, row.exitCode);
    EXPECT_THAT(ran.output, HasSubstr(row.part));
  }
}

TEST(CorvoArchive, NamesAreBytesAndAreReadBack) {
  const Shell shell("names");
  const std::string sealed = shell.MakeSealed();
  const std::string names[] = {"a.wav",          "b\nc.wav",     "d\\e.wav",           "f\xFFg.wav",
                               "h\rj k\x01.wav", "\xC3\xA9.wav", std::string(250, 'l')};
  MakeDirectory(shell.Path("in"));
  for (const std::string& name : names) WriteFile(shell.Path("in/" + name), sealed);
  const std::string expected = R"(in/a.wav: OK
\in/b\nc.wav: OK
\in/d\\e.wav: OK
\in/f\xffg.wav: OK
\in/h\rj k\x01.wav: OK
)"
                               "in/" +
                               std::string(250, 'l') +
                               ": OK\nin/\xC3\xA9.wav: OK\n"
                               "7 inputs: 7 ok, 0 broken, 0 unsealed, 0 malformed, 0 unreadable, "
                               "0 changed\n";
  std::string sorted = shell.Run("corvo verify in").output;
  EXPECT_EQ(sorted.size(), expected.size());
  for (const char* command :
       {"corvo verify in | sed '$d; s/: OK$//' >list; corvo verify --files-from list",
        "find in -type f -print0 | LC_ALL=C sort -z | corvo verify -0 --files-from -",
        "corvo verify --json in >json; corvo summary json"}) {
    EXPECT_EQ(shell.Run(command).output, sorted) << command;
  }
  std::istringstream lines(expected);
  for (std::string line; std::getline(lines, line);) EXPECT_THAT(sorted, HasSubstr(line + "\n"));
}

TEST(CorvoArchive, ReadsBackAnyBytesThatItEscapes) {
  const char* const pieces[] = {"\\",   "\\x",          "a",        "\n",  "\xC3",
                                "\xA9", "\xED\xA0\x80", "\xC2\x9B", "\xF4"};
  std::mt19937 random(7);
  for (int round = 0; round < 20000; ++round) {
    std::string name;
    for (auto left = random() % 8; left != 0; --left) {
      const auto piece = random() % (std::size(pieces) + 4);
      name += piece < std::size(pieces) ? pieces[piece]
                                        : std::string(1, static_cast<char>(random() & 0xFF));
    }
    const std::string text = corvo::EscapeName(name);
    ASSERT_EQ(corvo::UnescapeName(text), name);
    ASSERT_FALSE(corvo::NeedsEscaping(name) && text == name);
    ASSERT_TRUE(corvo::IsUtf8(text));
    ASSERT_NO_THROW(json(text).dump());
    ASSERT_TRUE(std::none_of(text.begin(), text.end(), [](unsigned char c) { return c < 0x20; }));
  }
}

// The archive `in`: a.wav is sealed, b.wav broken, c.wav unsealed, d.wav no recording.
class SmallArchive : public testing::Test {
 protected:
  SmallArchive() : m_shell("small") {
    const std::string sealed = m_shell.MakeSealed();
    MakeDirectory(m_shell.Path("in"));
    WriteFile(m_shell.Path("in/a.wav"), sealed);
    WriteFile(m_shell.Path("in/b.wav"), With(sealed, 3200, "\1\2"));
    WriteFile(m_shell.Path("in/c.wav"), With(sealed, 298, "\2"));
    WriteFile(m_shell.Path("in/d.wav"), "Dear Sir,");
  }

  Shell m_shell;
};

TEST_F(SmallArchive, SkipsNothingInSilence) {
  m_shell.Walk({
      {"mkdir t t/b t/empty && ln in/a.wav t/b/x && ln in/a.wav t/b.x && ln -s b t/link &&"
       " ln -s ../in/a.wav t/to-file && ln -s gone t/torn && corvo verify t | sed '$d'",
       0,
       "t/b.x: OK\n"
       "t/b/x: OK\n"
       "t/link: FAILED (unreadable: it is a link to a directory: not followed)\n"
       "t/to-file: OK\n"
       "t/torn: FAILED (unreadable: No such file or directory)\n"},
      {"corvo verify t/link/ t/link --quiet", 0,
       "2 inputs: 2 ok, 0 broken, 0 unsealed, 0 malformed, 0 unreadable, 0 changed\n"},
      {"printf 'in/a.wav\n\n\\\\in/q\\q\nin/a.wav' | corvo verify --files-from - in/c.wav", 2,
       "in/c.wav: FAILED (unsealed: it isn't marked as sealed)\n"
       "in/a.wav: OK\n"
       ": FAILED (unreadable: the name is empty)\n"
       "\\\\\\in/q\\\\q: FAILED (unreadable: the line begins with a backslash, but is not an "
       "escaped"
       " name)\n"
       "in/a.wav: OK\n"
       "5 inputs: 2 ok, 0 broken, 1 unsealed, 0 malformed, 2 unreadable, 0 changed\n"},
      {"for n in -x '[a,b]' ++; do cp in/a.wav ./$n; done; corvo verify '[a,b]' ++ -- -x | sed "
       "'$d'",
       0, "./[a,b]: OK\n./++: OK\n./-x: OK\n"},
      // Longer than a path in a system call.
      {"n=$(printf '%0250d' 1); p=$n/$n/$n/$n/$n/$n/$n/$n/$n; mkdir -p $p b/$p; echo >b/$p/x.wav;"
       " mv b $p; corvo verify $n | cut -d: -f2-; rm -r $n",
       0,
       " FAILED (malformed: it is no WAVE file)\n"
       " 0 ok, 0 broken, 0 unsealed, 1 malformed, 0 unreadable, 0 changed\n"},
      // A directory of 4095 bytes, so that a path is cut between slashes behind it.
      {"n=$(printf '%0250d' 1); p=$n/$n/$n/$n/$n/$n/$n/$n/$n/$n/$n/$n/$n/$n/$n; t=$(printf '%077d' "
       "1);"
       " mkdir -p $p b/$n/$t; echo >b/$n/$t/x.wav; mv b $p; corvo verify $n | cut -d: -f2-;"
       " corvo verify $p/b/$n/$t//$PWD/in/a.wav | sed 1q | cut -d: -f2-; rm -r $n",
       0,
       " FAILED (malformed: it is no WAVE file)\n"
       " 0 ok, 0 broken, 0 unsealed, 1 malformed, 0 unreadable, 0 changed\n"
       " FAILED (unreadable: No such file or directory)\n"},
      // What a list hides may belong to any share; one of them has it as its result.
      {"for i in 1 2; do corvo verify --json --shard $i/2 --files-from in in/a.wav >$i; echo $?;"
       " done; corvo summary 1 2 | tail -1",
       0,
       "corvo: in: the list of names can't be read further: Is a directory\n2\n"
       "corvo: in: the list of names can't be read further: Is a directory\n2\n"
       "2 inputs: 1 ok, 0 broken, 0 unsealed, 0 malformed, 1 unreadable, 0 changed\n"},
  });
}

// Each thread is told its own reasons.
TEST_F(SmallArchive, AsksTheLibraryAsHostsDo) {
  m_shell.Walk({
      {"corvo verify -j4 --through-host-call in", 1,
       "in/a.wav: OK\n"
       "in/b.wav: FAILED (broken: Legal authentication failed for file - \"in/b.wav\")\n"
       "in/c.wav: FAILED (unsealed: no signature found within the file \"in/c.wav\")\n"
       "in/d.wav: FAILED (unsealed: no NA_INFO is found within the file \"in/d.wav\"; no signature"
       " found within the file \"in/d.wav\")\n"
       "4 inputs: 1 ok, 1 broken, 2 unsealed, 0 malformed, 0 unreadable, 0 changed\n"},
      {"cp in/c.wav 'Legal authentication failed'; corvo verify --through-host-call Legal* | sed "
       "1q",
       0,
       "Legal authentication failed: FAILED (unsealed: no signature found within the file \"Legal"
       " authentication failed\")\n"},
      {"corvo verify --json --through-host-call in/a.wav | grep -o '.departures.:[^,}]*'", 0,
       "\"departures\":null\n"},
  });
}

TEST_F(SmallArchive, TrustsAJournalOnlyAsFarAsItGoes) {
  m_shell.Walk({
      {"corvo verify --status --resume j in; cp j whole; corvo verify --status --resume j in;"
       " cmp j whole",
       0, ""},
      // What the journal says is taken over, unless the file has changed since.
      {"sed -i 's/isn.t marked/WAS TAKEN OVER/' j; touch in/a.wav in/b.wav;"
       " cp in/a.wav x; cat x >in/b.wav; corvo verify --resume j in",
       1,
       "in/a.wav: OK\n"
       "in/b.wav: OK\n"
       "in/c.wav: FAILED (unsealed: it WAS TAKEN OVER as sealed)\n"
       "in/d.wav: FAILED (malformed: it is no WAVE file)\n"
       "4 inputs: 2 ok, 0 broken, 1 unsealed, 1 malformed, 0 unreadable, 0 changed\n"},
      {"corvo summary --quiet j | tail -1", 0,
       "4 inputs: 2 ok, 0 broken, 1 unsealed, 1 malformed, 0 unreadable, 0 changed\n"},
      {"corvo verify --status --resume j in/b.wav", 2,
       "corvo: j: belongs to other inputs: number 1 was in/a.wav and is in/b.wav\n"},
      {"corvo verify --status --resume j gone", 2,
       "corvo: j: belongs to other inputs: number 1 was in/a.wav and is gone\n"},
      // Fewer inputs than before; what a power failure leaves; a line that can't be read.
      {"corvo verify --status --resume k in/c.wav in/a.wav; corvo verify --status --resume k "
       "in/c.wav;"
       " head -c 20 /dev/zero >>k; corvo verify --status --resume k in/c.wav; corvo summary k;"
       " sed -i 's/isn.t marked/\"/' k; corvo verify --quiet --resume k in/c.wav | sed 1q",
       0,
       "in/c.wav: FAILED (unsealed: it isn't marked as sealed)\n"
       "1 input: 0 ok, 0 broken, 1 unsealed, 0 malformed, 0 unreadable, 0 changed\n"
       "in/c.wav: FAILED (unsealed: it isn't marked as sealed)\n"},
      {"corvo verify --strict --resume j in", 2,
       "corvo: j: is the journal of a run with other options\n"},
      {"flock j $EMULATOR '" CORVO_COMMAND "' verify --resume j in", 2,
       "corvo: j: another run is using it\n"},
      {"cp in/a.wav x; printf text >y; for f in x y; do corvo verify --resume $f in; done;"
       " cmp x in/a.wav && cat y",
       0,
       "corvo: x: holds other than results of \"corvo verify --json\"\n"
       "corvo: y: holds other than results of \"corvo verify --json\"\n"
       "text"},
  });
}

TEST_F(SmallArchive, SummaryTellsWhatDoesNotFitTogether) {
  m_shell.Walk({
      {"corvo verify --json in >all; corvo verify --json --strict in >strict; sed '$d' all >torn;"
       " corvo verify --json in/a.wav >one; sed 2d all >gap; printf text >text",
       0, ""},
      {"corvo summary all --status", 1, ""},
      {"corvo summary torn >out; echo $?; tail -1 out", 0,
       "corvo: torn: its run didn't come to its end\n2\n"
       "4 inputs: 1 ok, 1 broken, 1 unsealed, 1 malformed, 0 unreadable, 0 changed\n"},
      {"corvo summary gap >out; echo $?; tail -1 out", 0,
       "corvo: missing inputs: 1, the first is number 2\n2\n"
       "3 of 4 inputs: 1 ok, 0 broken, 1 unsealed, 1 malformed, 0 unreadable, 0 changed\n"},
      {"corvo summary --status all strict", 2,
       "corvo: strict: its run had other options\n"
       "corvo: inputs that are there twice: 4, the first is number 1 in strict\n"},
      {"corvo summary --status one all", 2,
       "corvo: all: its run saw 4 inputs, another 1\n"
       "corvo: inputs that are there twice: 1, the first is number 1 in all\n"},
      {"corvo verify --json in/b.wav >other; corvo summary --status one other", 2,
       "corvo: other: its run saw other inputs\n"
       "corvo: inputs that are there twice: 1, the first is number 1 in other\n"},
      {"corvo verify --json 2>&- >none; corvo summary --status none all", 2,
       "corvo: all: its run saw 4 inputs, another 0\n"},
      {"for parts in 'one other' 'all one'; do cat $parts >two; corvo summary two; done", 2,
       "corvo: two: holds several runs\ncorvo: two: holds several runs\n"},
      {"ulimit -n 40; corvo summary --status $(yes all | head -60)", 2,
       "corvo: inputs that are there twice: 236, the first is number 1 in all\n"},
      {"sed 's/_inputs\":4/_inputs\":-1/' all >negative; corvo summary negative", 2,
       "corvo: negative: holds other than results of \"corvo verify --json\"\n"},
      {"corvo summary text", 2,
       "corvo: text: holds other than results of \"corvo verify --json\"\n"},
      {"cat all | corvo summary /dev/stdin", 2, "corvo: /dev/stdin: is not a regular file\n"},
  });
}

TEST_F(SmallArchive, ShowsProgressOnATerminalAlone) {
  if (!Has(m_shell, "script")) GTEST_SKIP() << "no script(1) here";
  EXPECT_THAT(
      m_shell
          .Run("script -qec \"$EMULATOR '" CORVO_COMMAND "' verify in >out\" /dev/null </dev/null")
          .output,
      testing::MatchesRegex("\r\x1b\\[K[0-4].* files, .*B.*, .*B/s.*\r\x1b\\[K"));
  EXPECT_EQ(m_shell.Run("corvo verify in | cmp - out").output, "");
}

// Ten thousand recordings, each twenty-third of them damaged in one of six ways.
class BigArchive : public testing::Test {
 protected:
  static constexpr int kRecordings = kEmulated ? 1000 : 10000;

  BigArchive() : m_shell("archive") {
    const std::string sealed = m_shell.MakeSealed();
    const std::vector<Damage> damages = Damages(sealed);
    for (int i = 0; i < kRecordings; ++i) {
      const std::string directory = "archive/" + std::to_string(i / 500);
      if (i % 500 == 0) MakeDirectory(m_shell.Path(directory));
      const Damage* const damage =
          i % 23 == 0 ? &damages[static_cast<std::size_t>(i / 23) % damages.size()] : nullptr;
      const std::string name = directory + "/" + std::to_string(i) + ".wav";
      WriteFile(m_shell.Path(name), damage == nullptr ? sealed : damage->bytes);
      const std::string line = damage == nullptr ? ": OK"
                                                 : std::string(": FAILED (") + damage->verdict +
                                                       ": " + damage->reason + ")";
      m_expected.push_back(name + line);
      ++m_counts[damage == nullptr ? "ok" : damage->verdict];
    }
    std::sort(m_expected.begin(), m_expected.end(), [](const auto& a, const auto& b) {
      return a.substr(0, a.find(": ")) < b.substr(0, b.find(": "));
    });
  }

  std::string Expected() const {
    std::string text;
    for (const std::string& line : m_expected) text += line + "\n";
    const auto count = [this](const char* verdict) { return std::to_string(m_counts.at(verdict)); };
    return text + std::to_string(kRecordings) + " inputs: " + count("ok") + " ok, " +
           count("broken") + " broken, " + count("unsealed") + " unsealed, " + count("malformed") +
           " malformed, 0 unreadable, 0 changed\n";
  }

  Shell m_shell;
  std::vector<std::string> m_expected;
  std::map<std::string, int> m_counts;
};

TEST_F(BigArchive, IsToldAlikeByAnyNumberOfJobsShardsAndMachines) {
  const std::string expected = Expected();
  const Ran one = m_shell.Run("corvo verify --jobs 1 archive");
  EXPECT_EQ(one.exitCode, 1);
  ASSERT_TRUE(one.output == expected) << one.output.substr(0, 2000);
  EXPECT_TRUE(m_shell.Run("corvo verify --jobs 8 archive").output == expected);
  EXPECT_EQ(m_shell
                .Run("corvo verify --json -j1 archive >1; corvo verify --json -j8 archive >8;"
                     " cmp 1 8")
                .exitCode,
            0);

  const std::string shard = "corvo verify --json --shard $i/4 archive >result.$i";
  m_shell.Run("for i in 1 2 3 4; do " + shard + " & done; wait");
  const Ran merged = m_shell.Run("corvo summary result.*");
  EXPECT_EQ(merged.exitCode, 1);
  EXPECT_TRUE(merged.output == expected) << merged.output.substr(0, 2000);

  const Ran partly = m_shell.Run("corvo summary result.1 result.2 result.4 2>&1 >/dev/null");
  EXPECT_EQ(partly.exitCode, 2);
  EXPECT_THAT(partly.output, AllOf(HasSubstr("shard 3/4 is missing"), HasSubstr("missing inputs")));
  EXPECT_THAT(m_shell.Run("corvo summary result.* result.2").output, HasSubstr("twice"));

  if (!Has(m_shell, "parallel")) GTEST_SKIP() << "no GNU parallel here";
  EXPECT_TRUE(m_shell
                  .Run("rm result.*; parallel \"$EMULATOR '" CORVO_COMMAND
                       "' verify --json --shard {}/4 archive >result.{}\" ::: 1 2 3 4;"
                       " corvo summary result.*")
                  .output == expected);
}

// The list comes through a pipe that stays open, so that the signal always finds the run waiting.
// Shells have background jobs ignore SIGINT.
// Under emulation a thread that returns from a signal's handler takes itself for another one: there
// the run is killed.
TEST_F(BigArchive, GoesOnWhereItWasInterrupted) {
  const std::string signal = kEmulated ? "KILL" : "INT";
  const Ran interrupted = m_shell.Run(
      "find archive -type f | LC_ALL=C sort >list; mkfifo names;"
      " sh -c 'echo $$ >pid; exec env --default-signal=INT '\"$EMULATOR\"' " CORVO_COMMAND
      " verify --resume journal --files-from names >part 2>note; ' & exec 3>names;"
      " head -n 300 list >&3; until test -e journal && test $(wc -l <journal) -gt 250;"
      " do sleep 0.05; done; kill -" +
      signal + " $(cat pid); wait $!");
  EXPECT_EQ(interrupted.exitCode, kEmulated ? 137 : 130);
  if (!kEmulated) {
    EXPECT_THAT(ReadFile(m_shell.Path("note")),
                AllOf(HasSubstr("interrupted"), HasSubstr("journal")));
  }
  const std::string part = ReadFile(m_shell.Path("part"));
  EXPECT_THAT(part, Not(HasSubstr(" inputs: ")));
  const std::string expected = Expected();
  EXPECT_EQ(expected.compare(0, part.size(), part), 0);

  m_shell.Run("printf '{\"input\":' >>journal");  // a line that was cut short
  const std::string resume =
      "(cat list >names &) ; corvo verify --resume journal --files-from names";
  EXPECT_TRUE(m_shell.Run(resume).output == expected);
  EXPECT_TRUE(m_shell.Run(resume).output == expected);  // now from the journal alone
  EXPECT_EQ(m_shell.Run("corvo verify --strict --resume journal archive").exitCode, 2);
}

TEST_F(SmallArchive, IsVerifiedWhereNothingMayBeWritten) {
  const std::string readOnly =
      "unshare -m sh -c 'mount --bind in in && mount -o remount,bind,ro in && ! touch in/new && ";
  if (m_shell.Run(readOnly + "true'").exitCode != 0) GTEST_SKIP() << "nothing can be mounted here";
  const std::string here = m_shell.Run("corvo verify in; corvo inspect in/*").output;
  EXPECT_THAT(here, HasSubstr("4 inputs: 1 ok"));
  const Ran there =
      m_shell.Run(readOnly + "$0 verify in; $0 inspect in/*' \"$EMULATOR " CORVO_COMMAND "\"");
  EXPECT_EQ(there.output.substr(there.output.find('\n') + 1), here);  // after what touch says
}

// Root's right to read everything is given up.
TEST_F(SmallArchive, TellsOfADirectoryThatMayNotBeRead) {
  const std::string verify =
      "chmod 0 closed; $(test $(id -u) != 0 ||"
      " echo setpriv --bounding-set=-dac_override,-dac_read_search)"
      " $EMULATOR '" CORVO_COMMAND
      "' verify closed in/a.wav; code=$?; chmod 700 closed; exit $code";
  m_shell.Run("mkdir closed && cp in/a.wav closed");
  const Ran ran = m_shell.Run(verify);
  EXPECT_EQ(ran.exitCode, 2);
  EXPECT_EQ(ran.output,
            "closed/: FAILED (unreadable: the directory can't be read: Permission denied)\n"
            "in/a.wav: OK\n"
            "2 inputs: 1 ok, 0 broken, 0 unsealed, 0 malformed, 1 unreadable, 0 changed\n");
}

TEST(CorvoArchive, LeavesNoTraceInTheArchive) {
  const Shell shell("trace");
  MakeDirectory(shell.Path("in/deep"));
  WriteFile(shell.Path("in/deep/x.wav"), shell.MakeSealed());
  // Named one by one: a pattern would have the shell read the directories.
  const std::string look = "stat -c '%x %y %z' in in/deep in/deep/x.wav >";
  shell.Run("touch -a -d 2001-01-01 in in/deep in/deep/x.wav; " + look + "1");
  shell.Run("corvo verify in; " + look + "2");
  EXPECT_EQ(ReadFile(shell.Path("1")), ReadFile(shell.Path("2")));

  if (kEmulated || shell.Run("strace -f -o calls true").exitCode != 0) {
    GTEST_SKIP() << "system calls can't be traced here";
  }
  EXPECT_EQ(shell
                .Run("unset HOME XDG_STATE_HOME; ASAN_OPTIONS=detect_leaks=0"
                     " strace -f -o calls " CORVO_COMMAND " verify in")
                .exitCode,
            0);
  // The thread sanitizer has a file of its own; the leak sanitizer can't be traced.
  const std::string writing =
      "grep -E '^[0-9]+ "
      "(unlink|rename|link|symlink|mkdir|rmdir|f?chmod|f?l?chown|utime|f?truncate)|"
      "O_WRONLY|O_RDWR|O_CREAT' calls | grep -v tsan.rodata";
  EXPECT_EQ(shell.Run(writing).output, "");
  EXPECT_THAT(ReadFile(shell.Path("calls")), HasSubstr("x.wav\", O_RDONLY|"));
}

}  // namespace
