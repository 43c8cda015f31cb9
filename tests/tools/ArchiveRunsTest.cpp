// corvo verify and corvo summary over archives: journals, shards, interrupted runs.

#include "tools/ShellTest.h"

namespace corvo_test {
namespace {

class ArchiveRuns : public ShellTest {
 protected:
  ArchiveRuns() { MakeArchive(); }
};

TEST_F(ArchiveRuns, TrustAJournalOnlyAsFarAsItGoes) {
  m_before = "resume() { corvo verify --status --resume \"$@\"; }; ";
  Walk({
      {"resume j in; cp j whole; resume j in; cmp j whole", 0, ""},
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
      {"resume j in/b.wav", 2,
       "corvo: j: belongs to other inputs: number 1 was in/a.wav and is in/b.wav\n"},
      {"resume j gone", 2,
       "corvo: j: belongs to other inputs: number 1 was in/a.wav and is gone\n"},
      // Fewer inputs than before; what a power failure leaves; a line that can't be read.
      {"resume k in/c.wav in/a.wav; resume k in/c.wav; head -c 20 /dev/zero >>k;"
       " resume k in/c.wav; corvo summary k;"
       " sed -i 's/isn.t marked/\"/' k; corvo verify --quiet --resume k in/c.wav | sed 1q",
       0,
       "in/c.wav: FAILED (unsealed: it isn't marked as sealed)\n"
       "1 input: 0 ok, 0 broken, 1 unsealed, 0 malformed, 0 unreadable, 0 changed\n"
       "in/c.wav: FAILED (unsealed: it isn't marked as sealed)\n"},
      {"resume j --strict in", 2, "corvo: j: is the journal of a run with other options\n"},
      {"flock j $CORVO verify --resume j in", 2, "corvo: j: another run is using it\n"},
      {"cp in/a.wav x; printf text >y; for f in x y; do resume $f in; done; cmp x in/a.wav && cat "
       "y",
       0,
       "corvo: x: holds other than results of \"corvo verify --json\"\n"
       "corvo: y: holds other than results of \"corvo verify --json\"\n"
       "text"},
  });
}

TEST_F(ArchiveRuns, FitTogetherOrTheSummaryTells) {
  Walk({
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
      // What a list hides may belong to any share; one of them has it as its result.
      {"for i in 1 2; do corvo verify --json --shard $i/2 --files-from in in/a.wav >$i; echo $?;"
       " done; corvo summary 1 2 | tail -1",
       0,
       "corvo: in: the list of names can't be read further: Is a directory\n2\n"
       "corvo: in: the list of names can't be read further: Is a directory\n2\n"
       "2 inputs: 1 ok, 0 broken, 0 unsealed, 0 malformed, 1 unreadable, 0 changed\n"},
  });
}

TEST_F(ArchiveRuns, ShowProgressOnATerminalAlone) {
  if (!Has("script")) GTEST_SKIP() << "no script(1) here";
  EXPECT_THAT(Output("script -qec \"$CORVO verify in >out\" /dev/null </dev/null"),
              testing::MatchesRegex("\r\x1b\\[K[0-4].* files, .*B.*, .*B/s.*\r\x1b\\[K"));
  Walk({{"corvo verify in | cmp - out", 0, ""}});
}

// Ten thousand recordings, each twenty-third of them damaged in one of three ways.
class BigArchive : public ShellTest {
 protected:
  static constexpr std::size_t kRecordings = kEmulated ? 1000 : 10000;

  BigArchive() {
    const std::string sealed = MakeSealed();
    const struct {
      std::string bytes;
      const char* result;
    } damages[] = {
        {With(sealed, 3200, "\1\2"), "FAILED (broken: its digest is not the one that was sealed)"},
        {With(sealed, 298, "\2"), "FAILED (unsealed: it isn't marked as sealed)"},
        {"Dear Sir,", "FAILED (malformed: it is no WAVE file)"},
    };
    for (std::size_t i = 0; i < kRecordings; ++i) {
      // Named so that they are read in this order.
      const std::string name =
          "archive/" + std::to_string(100 + i / 500) + "/" + std::to_string(10000 + i) + ".wav";
      const auto& damage = damages[i / 23 % 3];
      Write(name, i % 23 == 0 ? damage.bytes : sealed);
      m_expected += name + ": " + (i % 23 == 0 ? damage.result : "OK") + "\n";
    }
    m_expected += kEmulated ? "1000 inputs: 956 ok, 15 broken, 15 unsealed, 14 malformed"
                            : "10000 inputs: 9565 ok, 145 broken, 145 unsealed, 145 malformed";
    m_expected += ", 0 unreadable, 0 changed\n";
    Write("expected", m_expected);
  }

  std::string m_expected;
};

TEST_F(BigArchive, IsToldAlikeByAnyNumberOfJobsShardsAndMachines) {
  Walk({{"corvo verify --jobs 1 archive >told; echo $?; cmp told expected", 0, "1\n"},
        {"corvo verify --jobs 8 archive | cmp - expected", 0, ""},
        {"corvo verify --json -j1 archive >1; corvo verify --json -j8 archive | cmp 1 -", 0, ""},
        {"for i in 1 2 3 4; do corvo verify --json --shard $i/4 archive >result.$i & done; wait;"
         " corvo summary result.* >told; echo $?; cmp told expected",
         0, "1\n"}});
  Try({{"corvo summary result.[124] 2>&1 >/dev/null", 2, "shard 3/4 is missing"},
       {"corvo summary result.[124] 2>&1 >/dev/null", 2, "missing inputs"},
       {"corvo summary result.* result.2", 2, "twice"}});
  if (!Has("parallel")) GTEST_SKIP() << "no GNU parallel here";
  Walk(
      {{"rm result.*; parallel \"$CORVO verify --json --shard {}/4 archive >result.{}\" :::"
        " 1 2 3 4; corvo summary result.* | cmp - expected",
        0, ""}});
}

// The list comes through a pipe that stays open, so that the signal always finds the run waiting.
// Shells have background jobs ignore SIGINT.
// Under emulation a thread that returns from a signal's handler takes itself for another one: there
// the run is killed.
TEST_F(BigArchive, GoesOnWhereItWasInterrupted) {
  const std::string signal = kEmulated ? "KILL" : "INT";
  Try(
      {{"find archive -type f | LC_ALL=C sort >list; mkfifo names;"
        " sh -c 'echo $$ >pid; exec env --default-signal=INT '\"$CORVO\"'"
        " verify --resume journal --files-from names >part 2>note; ' & exec 3>names;"
        " head -n 300 list >&3; until test -e journal && test $(wc -l <journal) -gt 250;"
        " do sleep 0.05; done; kill -" +
            signal + " $(cat pid); wait $!",
        kEmulated ? 137 : 130, ""}});
  if (!kEmulated) Try({{"cat note", 0, "interrupted"}, {"cat note", 0, "journal"}});
  const std::string part = Read("part");
  EXPECT_THAT(part, Not(HasSubstr(" inputs: ")));
  EXPECT_EQ(m_expected.compare(0, part.size(), part), 0);

  Run("printf '{\"input\":' >>journal");  // a line that was cut short
  const std::string resume =
      "(cat list >names &) ; corvo verify --resume journal --files-from names | cmp - expected";
  Walk({{resume, 0, ""}, {resume, 0, ""}});  // then from the journal alone
  Try({{"corvo verify --strict --resume journal archive", 2, ""}});
}

}  // namespace
}  // namespace corvo_test
