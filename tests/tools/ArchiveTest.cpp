// corvo verify: what it tells of the files of an archive, and how it names them.

#include <algorithm>
#include <random>

#include "tools/ShellTest.h"
#include "tools/corvo/Utf8.h"
#include "tools/corvo/archive/Names.h"

namespace corvo_test {
namespace {

using CorvoArchive = ShellTest;

TEST_F(CorvoArchive, TellsEachVerdictAsTextAsJsonAndByItsExitCode) {
  const std::string sealed = MakeSealed();
  const struct {
    std::string verdict;
    std::string bytes;
    std::string reason;
    bool isSealed;
  } rows[] = {
      {"ok", sealed, "", true},
      {"broken", With(sealed, 3200, "\1\2"), "its digest is not the one that was sealed", true},
      {"broken", With(sealed, 310, "\1\2"), "its digest is not the one that was sealed", true},
      {"unsealed", With(sealed, 298, "\2"), "it isn't marked as sealed", false},
      {"malformed", sealed.substr(0, 3190), "it lacks 20 of its 40 bytes of audio", true},
      {"malformed", "Dear Sir,", "it is no WAVE file", false},
      {"malformed", With(sealed, 52, "ALCX"), "it has no \"ALCH\" chunk where one belongs", false},
  };
  for (const auto& row : rows) {
    const bool isOk = row.verdict == "ok";
    const int exitCode = isOk ? 0 : 1;
    Write("x.wav", row.bytes);
    const std::string line =
        isOk ? "x.wav: OK\n" : "x.wav: FAILED (" + row.verdict + ": " + row.reason + ")\n";
    Try({{"corvo verify x.wav", exitCode, "1 " + row.verdict},
         {"corvo verify --json x.wav", exitCode, "{"}});
    Walk({{"corvo verify x.wav | sed 's/^1 input: .*/1/'", 0, line + "1\n"},
          {"corvo verify --status x.wav", exitCode, ""},
          {"corvo verify --quiet x.wav | grep -c 'x.wav: OK'", 1, "0\n"}});
    const json object = Json("corvo verify --json x.wav");
    EXPECT_EQ(object["verdict"], row.verdict);
    EXPECT_EQ(object["size"], row.bytes.size());
    EXPECT_EQ(object["reason"], isOk ? json() : json(row.reason));
    EXPECT_EQ(object["computed_digest"].is_string() &&
                  object["computed_digest"] != object["stored_digest"],
              row.verdict == "broken");
    EXPECT_EQ(object.size(), 16u);  // the same members whatever is wrong
    EXPECT_EQ(object["departures"].is_array(), row.isSealed);
  }
}

TEST_F(CorvoArchive, TellsWhatCannotBeVerified) {
  Write("x.wav", MakeSealed());
  Try({
      {"corvo verify gone.wav x.wav", 2,
       "gone.wav: FAILED (unreadable: No such file or directory)\nx.wav: OK\n2 inputs: 1 ok"},
      {"mkfifo pipe && corvo verify pipe", 2, "(unreadable: it is not a regular file)"},
      {"corvo verify </dev/null", 2, "nothing to check"},
      {"mkdir empty && corvo verify empty", 2, "nothing to check"},
      {"corvo verify --files-from gone", 2, "gone: No such file or directory"},
      {"corvo verify --shard 3/2 x.wav", 2, "3/2"},
      {"cp x.wav long.wav; echo >>long.wav; corvo verify long.wav", 0, "long.wav: OK"},
      {"corvo verify --strict long.wav", 1, "long.wav: FAILED (malformed: "},
      {"corvo verify x.wav >/dev/full", 2, "can't be written"},
      {"corvo verify --files-from 'go\nne'", 2, "\\go\\nne: No such file"},
      {"cp x.wav late.wav && touch -d 2128-06-11 late.wav && corvo verify late.wav", 0, ": OK\n"},
      {"cp x.wav huge.wav && truncate -s 2G huge.wav && corvo verify huge.wav", 1,
       "huge.wav: FAILED (malformed: it is longer than any sealed recording)"},
      {"corvo verify --through-host-call huge.wav late.wav long.wav", 1, "3 inputs: 2 ok"},
      // The list never ends: this descriptor could write to it.
      {"mkfifo list && exec 3<>list && yes x.wav | head -20 >&3; timeout 60 $CORVO verify --json"
       " --files-from list >/dev/full",
       2, "can't be written"},
      {"corvo verify --resume journal --files-from - <&-", 2, "can't be read further: Bad file"},
      // While it is read, its times change all the time.
      {"cp x.wav big.wav && truncate -s 64M big.wav && printf '\\000\\000\\300\\003' |"
       " dd of=big.wav bs=1 seek=3166 conv=notrunc status=none;"
       " (until test -e stop; do touch big.wav; done) & corvo verify big.wav; code=$?;"
       " touch stop; wait; exit $code",
       2, "big.wav: FAILED (changed: it changed while it was read)"},
  });
}

TEST_F(CorvoArchive, NamesAreBytesAndAreReadBack) {
  const std::string sealed = MakeSealed();
  const std::string longName(250, 'l');
  for (const std::string& name :
       {std::string("a.wav"), std::string("b\nc.wav"), std::string("d\\e.wav"),
        std::string("f\xFFg.wav"), std::string("h\rj k\x01\u009b.wav"), std::string("\u00e9.wav"),
        longName}) {
    Write("in/" + name, sealed);
  }
  const std::string expected =
      "in/a.wav: OK\n"
      "\\in/b\\nc.wav: OK\n"
      "\\in/d\\\\e.wav: OK\n"
      "\\in/f\\xffg.wav: OK\n"
      "\\in/h\\rj k\\x01\\xc2\\x9b.wav: OK\n"
      "in/" +
      longName +
      ": OK\n"
      "in/\u00e9.wav: OK\n"
      "7 inputs: 7 ok, 0 broken, 0 unsealed, 0 malformed, 0 unreadable, 0 changed\n";
  Walk(
      {{"corvo verify in", 0, expected},
       {"corvo verify in | sed '$d; s/: OK$//' >list; corvo verify --files-from list", 0, expected},
       {"find in -type f -print0 | LC_ALL=C sort -z | corvo verify -0 --files-from -", 0, expected},
       {"corvo verify --json in >json; corvo summary json", 0, expected}});
}

TEST_F(CorvoArchive, ReadsBackAnyBytesThatItEscapes) {
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
    ASSERT_TRUE(std::none_of(text.begin(), text.end(), [](unsigned char c) { return c < 0x20; }));
  }
}

class SmallArchive : public ShellTest {
 protected:
  SmallArchive() { MakeArchive(); }
};

TEST_F(SmallArchive, SkipsNothingInSilence) {
  Walk({
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
       "\\\\\\in/q\\\\q: FAILED (unreadable: the line begins with a backslash, but is not an"
       " escaped name)\n"
       "in/a.wav: OK\n"
       "5 inputs: 2 ok, 0 broken, 1 unsealed, 0 malformed, 2 unreadable, 0 changed\n"},
      {"for n in -x '[a,b]' ++; do cp in/a.wav ./$n; done; corvo verify '[a,b]' ++ -- -x | sed"
       " '$d'",
       0, "./[a,b]: OK\n./++: OK\n./-x: OK\n"},
      // Longer than a path in a system call.
      {"n=$(printf '%0250d' 1); p=$n/$n/$n/$n/$n/$n/$n/$n/$n; mkdir -p $p b/$p; echo >b/$p/x.wav;"
       " mv b $p; corvo verify $n | sed -n 's/.*wav: //p'; rm -r $n",
       0, "FAILED (malformed: it is no WAVE file)\n"},
      // A directory of 4095 bytes, so that a path is cut between slashes behind it.
      {"n=$(printf '%0250d' 1); p=$n/$n/$n/$n/$n/$n/$n/$n/$n/$n/$n/$n/$n/$n/$n;"
       " t=$(printf '%077d' 1); mkdir -p $p b/$n/$t; echo >b/$n/$t/x.wav; mv b $p;"
       " corvo verify $n | sed -n 's/.*wav: //p';"
       " corvo verify $p/b/$n/$t//$PWD/in/a.wav | sed -n 's/.*wav: //p'; rm -r $n",
       0,
       "FAILED (malformed: it is no WAVE file)\n"
       "FAILED (unreadable: No such file or directory)\n"},
  });
}

// Each thread is told its own reasons.
TEST_F(SmallArchive, AsksTheLibraryAsHostsDo) {
  Walk({
      {"corvo verify -j4 --through-host-call in", 1,
       "in/a.wav: OK\n"
       "in/b.wav: FAILED (broken: Legal authentication failed for file - \"in/b.wav\")\n"
       "in/c.wav: FAILED (unsealed: no signature found within the file \"in/c.wav\")\n"
       "in/d.wav: FAILED (unsealed: no NA_INFO is found within the file \"in/d.wav\"; no signature"
       " found within the file \"in/d.wav\")\n"
       "4 inputs: 1 ok, 1 broken, 2 unsealed, 0 malformed, 0 unreadable, 0 changed\n"},
      {"cp in/c.wav 'Legal authentication failed'; corvo verify --through-host-call Legal* | sed"
       " 1q",
       0,
       "Legal authentication failed: FAILED (unsealed: no signature found within the file \"Legal"
       " authentication failed\")\n"},
      {"corvo verify --json --through-host-call in/a.wav | grep -o '.departures.:[^,}]*'", 0,
       "\"departures\":null\n"},
  });
}

TEST_F(SmallArchive, IsVerifiedWhereNothingMayBeWritten) {
  const std::string readOnly =
      "unshare -m sh -c 'mount --bind in in && mount -o remount,bind,ro in && ! touch in/new"
      " 2>/dev/null && ";
  if (Run(readOnly + "true'").exitCode != 0) GTEST_SKIP() << "nothing can be mounted here";
  const std::string here = Output("corvo verify in; corvo inspect in/*");
  EXPECT_THAT(here, HasSubstr("4 inputs: 1 ok"));
  EXPECT_EQ(Output(readOnly + "$0 verify in; $0 inspect in/*' \"$CORVO\""), here);
}

// Root's right to read everything is given up.
TEST_F(SmallArchive, TellsOfADirectoryThatMayNotBeRead) {
  Walk(
      {{"mkdir closed && cp in/a.wav closed; chmod 0 closed; $(test $(id -u) != 0 ||"
        " echo setpriv --bounding-set=-dac_override,-dac_read_search)"
        " $CORVO verify closed in/a.wav; code=$?; chmod 700 closed; exit $code",
        2,
        "closed/: FAILED (unreadable: the directory can't be read: Permission denied)\n"
        "in/a.wav: OK\n"
        "2 inputs: 1 ok, 0 broken, 0 unsealed, 0 malformed, 1 unreadable, 0 changed\n"}});
}

TEST_F(CorvoArchive, LeavesNoTraceInTheArchive) {
  Write("in/deep/x.wav", MakeSealed());
  // Named one by one: a pattern would have the shell read the directories.
  const std::string look = "stat -c '%x %y %z' in in/deep in/deep/x.wav";
  const std::string before = Output("touch -a -d 2001-01-01 in in/deep in/deep/x.wav; " + look);
  Run("corvo verify in");
  EXPECT_EQ(Output(look), before);

  if (kEmulated || Run("strace -f -o calls true").exitCode != 0) {
    GTEST_SKIP() << "system calls can't be traced here";
  }
  // The thread sanitizer has a file of its own; the leak sanitizer can't be traced.
  Try({{"unset HOME XDG_STATE_HOME; ASAN_OPTIONS=detect_leaks=0 strace -f -o calls $CORVO verify"
        " in",
        0, ""},
       {"cat calls", 0, "x.wav\", O_RDONLY|"}});
  Walk(
      {{"grep -E '^[0-9]+ (unlink|rename|link|symlink|mkdir|rmdir|f?chmod|f?l?chown|utime|"
        "f?truncate)|O_WRONLY|O_RDWR|O_CREAT' calls | grep -v tsan.rodata",
        1, ""}});
}

}  // namespace
}  // namespace corvo_test
