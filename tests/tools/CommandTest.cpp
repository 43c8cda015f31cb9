// The corvo command from end to end, as a user meets it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Bytes.h"
#include "support/Scratch.h"
#include "tools/Shell.h"

namespace {

using corvo_test::Le16;
using corvo_test::Le32;
using corvo_test::ListDirectory;
using corvo_test::Ran;
using corvo_test::ReadFile;
using corvo_test::ScratchPath;
using corvo_test::Shell;
using corvo_test::WriteFile;
using testing::ElementsAre;
using testing::HasSubstr;

struct Format {
  unsigned tag = 1, channels = 1, rate = 8000, align = 2, bits = 16;
};

// A WAVE file with a chunk of odd size, and its pad byte, before the audio.
std::string Wave(const Format& f, const std::string& audio) {
  return "RIFF" + Le32(60) + "WAVEfmt " + Le32(16) + Le16(f.tag) + Le16(f.channels) + Le32(f.rate) +
         Le32(f.rate * f.align) + Le16(f.align) + Le16(f.bits) + "LIST" + Le32(3) + "abc" +
         std::string(1, '\0') + "data" + Le32(audio.size()) + audio;
}

TEST(CorvoCommand, SealsVerifiesAndFindsAChangedByte) {
  const Shell shell("life");
  shell.Walk({
      {"cp $SAMPLES/now-recording.wav call.wav", 0, ""},
      {"corvo status call.wav", 1, "call.wav: not sealed\n"},
      {"corvo properties call.wav", 1, "call.wav: not sealed: it has no properties\n"},
      {"corvo verify call.wav | head -1", 0,
       "call.wav: FAILED (unsealed: it isn't marked as sealed)\n"},
      {"corvo seal call.wav && cp call.wav copy.wav", 0, "call.wav: sealed\n"},
      {"corvo status call.wav", 0, "call.wav: sealed\n"},
      {"corvo verify call.wav", 0,
       "call.wav: OK\n1 input: 1 ok, 0 broken, 0 unsealed, 0 malformed, 0 unreadable, 0 changed\n"},
      {"corvo seal call.wav --start 5 && cmp call.wav copy.wav", 0, "call.wav: sealed already\n"},
      {"corvo properties --raw call.wav", 0,
       "Tolva;CONF;+442079460123;3f2b7c1e-5a90-4d6f-8b21-90c4e1d7a6f3;0min:2sec;1;+442079460917;"
       "Conference bridge;192.0.2.17;2024-05-17;09:30:00;;;4;17;;;;;;;Weekly planning call;;;0;0;"
       "Yes;Both parties were told of the recording.\n"},
      {"printf x | dd of=call.wav bs=1 seek=4000 conv=notrunc status=none", 0, ""},
      {"corvo verify call.wav", 1,
       "call.wav: FAILED (broken: its digest is not the one that was sealed)\n"
       "1 input: 0 ok, 1 broken, 0 unsealed, 0 malformed, 0 unreadable, 0 changed\n"},
      {"corvo status call.wav", 0, "call.wav: sealed\n"},
      {"dd if=copy.wav of=call.wav bs=1 skip=4000 seek=4000 count=1 conv=notrunc status=none && "
       "corvo verify call.wav | head -1",
       0, "call.wav: OK\n"},
  });
  EXPECT_THAT(ListDirectory(shell.Path("")), ElementsAre("call.wav", "copy.wav"));
}

// The library would take the nearest spelling, split at the backslash, or replace the link.
TEST(CorvoCommand, MeansExactlyTheFileThatIsNamed) {
  const std::string deep = "d=" + std::string(130, 'd') +
                           "; mkdir -p $d/$d && cd $d/$d && cp $SAMPLES/now-recording.wav x.wav &&"
                           " corvo status x.wav";
  Shell("names").Walk({
      {"cp $SAMPLES/now-recording.wav call.wav && ln -s call.wav link.wav && mkdir dir", 0, ""},
      {"corvo seal Call.wav", 2, "corvo: Call.wav: No such file or directory\n"},
      {"corvo seal dir", 2, "corvo: dir: is not a regular file\n"},
      {"cp call.wav 'dir\\call.wav' && corvo status 'dir\\call.wav'", 2,
       "corvo: dir\\call.wav: the full path holds a \"\\\"\n"},
      {deep.c_str(), 2, "corvo: x.wav: the full path is longer than 259 characters\n"},
      {"head -c 3000 call.wav >short.wav && head -c 20 call.wav >shorter.wav", 0, ""},
      {"corvo status short.wav shorter.wav", 2,
       "short.wav: not sealed\n"
       "corvo: shorter.wav: is not a recording with a metadata record\n"},
      {"corvo seal link.wav && test -h link.wav && corvo status call.wav", 0,
       "link.wav: sealed\ncall.wav: sealed\n"},
  });
}

TEST(CorvoCommand, TakesTimesFromTheUserOrTheRecording) {
  struct Row {
    const char* options;
    const char* duration;
    std::string startBytes;  // as the sealed file's "eyre" chunk holds them
  };
  const std::string ownStart("\x00\x5C\xEB\xC9\x3C\xA8\xDA\x01", 8);  // 2024-05-17T09:30:00Z
  const Row rows[] = {
      {"", "0min:2sec", ownStart},
      {"--duration 1m5s", "1min:5sec", ownStart},
      {"--duration 1h0m59.9999999s", "60min:59sec", ownStart},
      {"--start 0 --end 659000000", "1min:5sec", std::string(8, '\0')},
      {"--start 1601-01-01T00:00:00.0000258Z", "0min:2sec", "\x02\x01" + std::string(6, '\0')},
  };
  const Shell shell("times");
  for (const Row& row : rows) {
    SCOPED_TRACE(row.options);
    const Ran ran =
        shell.Run(std::string("cp $SAMPLES/now-recording.wav x.wav && corvo seal x.wav ") +
                  row.options + " && corvo properties x.wav | grep szDuration");
    EXPECT_EQ(ran.output, std::string("x.wav: sealed\n   5 szDuration   ") + row.duration + "\n");
    EXPECT_EQ(ReadFile(shell.Path("x.wav")).substr(20, 8), row.startBytes);
  }
}

TEST(CorvoCommand, RefusesToGuessTimes) {
  Shell("notimes").Walk({
      {"cp $SAMPLES/*.wav .", 0, ""},
      {"corvo seal nobody-available.wav", 2,
       "corvo: nobody-available.wav: doesn't tell its start time: give --start\n"},
      {"corvo seal now-recording.wav --end 7", 2,
       "corvo: now-recording.wav: would end before its start\n"},
      {"corvo seal now-recording.wav --start 9223372036854775807", 2,
       "corvo: now-recording.wav: would never end\n"},
      {"for t in '' x 9223372036854775808 -1 1.5 2024-05-17T09:30:00 2024-02-30T00:00:00Z ' 5'; do"
       " corvo seal now-recording.wav --start \"$t\" 2>/dev/null; echo $?; done | sort -u",
       0, "2\n"},
      {"for t in '' s m 1x .5 1.s -1 1s1m 1.12345678 12345678901; do"
       " corvo seal now-recording.wav --duration \"$t\" 2>/dev/null; echo $?; done | sort -u",
       0, "2\n"},
      {"corvo seal --start 1 nobody-available.wav && corvo verify --status nobody-available.wav", 0,
       "nobody-available.wav: sealed\n"},
  });
}

TEST(CorvoCommand, MakesRecordingsOfEachKind) {
  struct Row {
    const char* name;
    std::string input;
    const char* options;
    std::size_t audioOffset;
    std::string audio;
  };
  const std::string samples = CORVO_SAMPLES "/";
  const std::string gsm =
      ReadFile(samples + "nobody-available.wav").substr(3158);  // 65-byte blocks
  const std::string frames = ReadFile(samples + "nobody-available.gsm");
  const std::string silentHalf(  // behind the last four bits of the first frame
      "\x82\x74\x61\x4D\x28\x00\x48\x92\x24\x49\x92\x28\x00\x48\x92\x24"
      "\x49\x92\x28\x00\x48\x92\x24\x49\x92\x28\x00\x48\x92\x24\x49\x92",
      32);
  const Row rows[] = {
      {"RawG726", "abc", "--codec g726", 3170, "abc"},
      {"WaveG726", Wave({100, 1, 8000, 1, 2}, "abc"), "", 3170, "abc"},
      {"RawPcm", "abcd", "--codec pcm", 3154, "abcd"},
      {"WavePcm", Wave({}, "abcd"), "", 3154, "abcd"},
      {"RawGsm", frames, "--codec gsm", 3158, gsm},
      {"RawGsmOddFrame", frames.substr(0, 33), "--codec gsm", 3158,
       gsm.substr(0, 32) + static_cast<char>(gsm[32] & 0x0F) + silentHalf},
      {"WaveGsm", Wave({49, 1, 8000, 65, 0}, gsm), "", 3158, gsm},
  };
  const Shell shell("kinds");
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    WriteFile(shell.Path("in"), row.input);
    const Ran ran = shell.Run(std::string("corvo record --force out.wav in ") + row.options);
    EXPECT_EQ(ran.output, "");
    EXPECT_EQ(ran.exitCode, 0);
    const std::string made = ReadFile(shell.Path("out.wav"));
    ASSERT_GT(made.size(), row.audioOffset);
    EXPECT_TRUE(made.substr(row.audioOffset) == row.audio);
  }
}

TEST(CorvoCommand, RefusesAudioThatARecordingCantHold) {
  struct Row {
    std::string input;
    const char* codec;
    const char* reason;
  };
  const char* const format =
      " bits, not one channel at 8000 Hz of 16-bit linear, GSM 6.10 or"
      " 2-bit G.726 audio";
  const Row rows[] = {
      {"abcd", "", "is no WAVE file: --codec must tell what it holds"},
      {"", "--codec pcm", "holds no audio"},
      {"abc", "--codec pcm", "ends within a pcm block"},
      {std::string(66, '\xD0'), "--codec gsm", ""},
      {std::string(33, '\xC0'), "--codec gsm", "is not made of GSM 6.10 frames"},
      {Wave({}, "abcd"), "--codec gsm", "holds pcm audio, not gsm"},
      {Wave({49, 1, 8000, 65, 0}, std::string(66, 'x')), "", "ends within a gsm block"},
      {Wave({1, 2, 8000, 4, 16}, "abcd"), "", "holds format 1 with 2 channels, 8000 Hz, 16"},
      {Wave({100, 1, 8000, 1, 4}, "abcd"), "", "holds format 100 with 1 channels, 8000 Hz, 4"},
      {Wave({}, "abcd").substr(0, 58), "", "ends within a chunk"},
      {Wave({}, "abcd").substr(0, 50), "", "has no chunk \"data\""},
  };
  const Shell shell("audio");
  for (const Row& row : rows) {
    WriteFile(shell.Path("in"), row.input);
    const Ran ran = shell.Run(std::string("corvo record --force out.wav in ") + row.codec);
    const bool wrongFormat = std::string(row.reason).rfind("holds format", 0) == 0;
    EXPECT_EQ(ran.output, *row.reason == '\0' ? ""
                                              : std::string("corvo: in: ") + row.reason +
                                                    (wrongFormat ? format : "") + "\n");
    EXPECT_EQ(ran.exitCode, *row.reason == '\0' ? 0 : 2);
  }
}

TEST(CorvoCommand, PutsMetadataIntoTheRecord) {
  const Shell shell("metadata");
  WriteFile(shell.Path("m.json"),
            R"({"szItem03": "from; file", "szItem06": "ab", "szItem28": "\u00e9\n", "dwItem14": 1,
                "dwItem26": 4294967295, "dwIPAddress": "192.0.2.255"})");
  shell.Walk({
      {"corvo record --item szItem03= x.wav $SAMPLES/now-recording.g726 --codec g726 --metadata"
       " m.json --item dwItem15=0 --item szItem02=a=bc --start 1",
       0, ""},
      {"corvo seal x.wav && corvo properties --raw x.wav", 0,
       "x.wav: sealed\n"
       "Tolva;a=bc;;;0min:2sec;ab;;;192.0.2.255;;;;;1;0;;;;;;;;;;0;4294967295;Yes;\xC3\xA9\n\n"},
      {"corvo properties x.wav | tail -3", 0,
       "  26 dwItem26     4294967295\n"
       "  27 dwSigned     Yes\n"
       "  28 szItem28     \xC3\xA9\\x0a\n"},
  });
}

TEST(CorvoCommand, RefusesMetadataThatDoesntFit) {
  struct Row {
    const char* name;
    const char* value;  // for --item; in the JSON object as a string
    const char* json;   // another form that only the JSON object can have
    const char* reason;
  };
  const Row rows[] = {
      {"szItem99", "a", "1", "is no metadata item"},
      {"dwSigned", "1", "1", "is no metadata item"},
      {"szItem02", "abcde", "null", "must be a text of at most 4 bytes"},
      {"szItem06", "\u00e9\u00e9", "7", "must be a text of at most 2 bytes"},
      {"dwItem14", "4294967296", "4294967296", "must be a number up to 4294967295"},
      {"dwItem15", "-1", "-1", "must be a number up to 4294967295"},
      {"dwItem26", " 1", "true", "must be a number up to 4294967295"},
      {"dwIPAddress", "192.0.2.256", "1", "must be an address such as 192.0.2.1"},
  };
  const Shell shell("unfit");
  const std::string record = "corvo record x.wav $SAMPLES/now-recording.g726 --codec g726 ";
  for (const Row& row : rows) {
    const std::string name(row.name);
    const std::string refusal = "corvo: " + name + " " + row.reason + "\n";
    EXPECT_EQ(shell.Run(record + "--item '" + name + "=" + row.value + "'").output, refusal);
    for (const std::string& value : {"\"" + std::string(row.value) + "\"", std::string(row.json)}) {
      WriteFile(shell.Path("m.json"), "{\"" + name + "\": " + value + "}");
      EXPECT_EQ(shell.Run(record + "--metadata m.json").output, refusal);
    }
  }
  shell.Walk({
      {"corvo record x.wav - --item szItem03", 2, "corvo: --item szItem03: is not NAME=VALUE\n"},
      {"echo '{\"szItem03\": \"a\\u0000b\"}' >m.json;"
       "corvo record x.wav - --metadata m.json",
       2, "corvo: szItem03 must not hold a zero byte\n"},
      {"echo '[1' >m.json; corvo record x.wav - --metadata m.json", 2,
       "corvo: m.json: holds no JSON object\n"},
      {"corvo record x.wav - --metadata gone", 2, "corvo: gone: No such file or directory\n"},
      {"ls", 0, "m.json\n"},
  });
}

// Neither files nor directories, nor those that the command keeps for itself.
TEST(CorvoCommand, DatesBeyond2038AreLikeAnyOther) {
  Shell("late").Walk({
      {"mkdir -p in etc && cp $SAMPLES/now-recording.wav in/a.wav && touch etc/corvo_settings.ini "
       "&&"
       " corvo settings --dir etc set CfgMaxTime=300 &&"
       " touch -d 2128-06-11 in/a.wav in etc/corvo_settings.ini etc",
       0, ""},
      {"corvo seal in/a.wav && touch -d 2128-06-11 in/a.wav in && corvo verify in/a.wav >log", 0,
       "in/a.wav: sealed\n"},
      {"corvo settings --dir etc export etc/corvo_settings.ini --force", 2,
       "corvo: etc/corvo_settings.ini: is what would be exported\n"},
      {"corvo settings --dir etc list CfgMaxTime | grep -c 300", 0, "1\n"},
      {"find $STATE -exec touch -d 2128-06-11 {} + && corvo --home $STATE/corvo verify in >log", 0,
       ""},
  });
}

TEST(CorvoCommand, WritesARecordingWholeOrNotAtAll) {
  Shell("whole").Walk({
      {"cp $SAMPLES/now-recording.g726 in && echo mine >x.wav && ln -s gone dangling.wav", 0, ""},
      {"corvo record x.wav in --codec g726", 2,
       "corvo: x.wav: exists already; --force replaces it\n"},
      {"corvo record dangling.wav in --codec g726 2>/dev/null", 2, ""},
      {"corvo record gone/x.wav in --codec g726", 2,
       "corvo: gone/x.wav: No such file or directory\n"},
      {"corvo record . in --codec g726", 2, "corvo: .: names no file\n"},
      {"(ulimit -f 4; trap '' XFSZ; corvo record y.wav in --codec g726 2>/dev/null)", 2, ""},
      {"cat x.wav", 0, "mine\n"},
      {"(umask 077; corvo record --force x.wav in --codec g726) && stat -c %a x.wav", 0, "600\n"},
      {"ls", 0, "dangling.wav\nin\nx.wav\n"},
  });
}

TEST(CorvoCommand, ShowsTheTraceWithoutChangingItsSettings) {
  const Shell shell("trace");
  shell.Run("cp $SAMPLES/now-recording.wav x.wav; corvo seal x.wav");
  shell.Run("echo 'Filter Level=0' >$STATE/corvo/corvo_debug_settings.ini");

  const Ran traced = shell.Run("corvo --trace verify --through-host-call x.wav");
  EXPECT_THAT(traced.output, HasSubstr(" corvo    (27,8) "));
  EXPECT_THAT(traced.output, HasSubstr(": > VerifySignature(\"" + shell.Path("x.wav") + "\")\n"));
  EXPECT_THAT(shell.Run("cat $STATE/corvo/corvo_debug_settings.ini").output,
              HasSubstr("Filter Level=0\n"));
}

TEST(CorvoCommand, KeepsItsOwnFilesInItsHome) {
  Shell("home").Walk({
      {"cp $SAMPLES/now-recording.wav x.wav && corvo --home h seal x.wav", 0, "x.wav: sealed\n"},
      {"ls && ls h/tempfiles && test ! -e $STATE", 0, "h\nx.wav\n"},
      {"rm -r h/tempfiles && echo >h/tempfiles &&"
       " corvo --home h verify --through-host-call x.wav | sed 's/ open.*//; q'",
       0, "x.wav: FAILED (unreadable: Error 20 (Not a directory)\n"},
      {"corvo --home x.wav status x.wav", 2, "corvo: x.wav: Not a directory\n"},
      {"unset XDG_STATE_HOME HOME; corvo status x.wav", 2,
       "corvo: neither XDG_STATE_HOME nor HOME is set: give --home\n"},
  });
}

TEST(CorvoCommand, KeepsAServersSettings) {
  const std::string refused =
      "corvo: " + ScratchPath("settings/etc/corvo_settings.ini") + ": is not a regular file\n";
  Shell("settings")
      .Walk({
          {"mkdir etc etc2 && corvo settings --dir gone list", 2,
           "corvo: gone: No such file or directory\n"},
          {"corvo settings --dir etc list cfgmaxtime WAVSDir", 1,
           "CfgMaxTime=120  (default)\nWAVSDir  (not set)\n"},
          {"corvo settings --dir etc set CfgMaxTime=200 OutcallingRetries=11", 2,
           "corvo: OutcallingRetries: must be a number from 0 to 10\n"},
          {"corvo settings --dir etc set MiradorMode=maybe", 2,
           "corvo: MiradorMode: must be Y or N\n"},
          {"corvo settings --dir etc set own=1", 2,
           "corvo: own: is no known setting; --force sets it all the same\n"},
          {"ls etc", 0, ""},
          {"corvo settings --dir etc set --force own=a=b cfgmaxtime=200 WAVSDir=/srv "
           "HOSTIPADDRESS=x",
           0, ""},
          {"corvo settings --dir etc get CFGMAXTIME own", 0, "200\na=b\n"},
          {"corvo settings --dir etc get SOG", 1, "corvo: SOG: is not set\n"},
          {"corvo settings --dir etc list | grep -v default | grep -v 'not set'", 0,
           "HOSTIPADDRESS=x  (file)\nWAVSDir=/srv  (file)\nCfgMaxTime=200  (file)\nOWN=a=b  "
           "(file)\n"},
          {"corvo settings --dir etc export out && tr -d '\\r' <out", 0,
           "CFGMAXTIME=200\nOWN=a=b\n"},
          {"corvo settings --dir etc export out", 2,
           "corvo: out: exists already; --force replaces it\n"},
          {"corvo settings --dir etc export --force etc/corvo_settings.ini", 2,
           "corvo: etc/corvo_settings.ini: is what would be exported\n"},
          {"corvo settings --dir etc get WAVSDir", 0, "/srv\n"},
          {"corvo settings --dir etc2 set --force HOSTIPADDRESS=own stale=1 &&"
           " corvo settings --dir etc2 import --clear out && tr -d '\\r' <etc2/corvo_settings.ini",
           0, "CFGMAXTIME=200\nHOSTIPADDRESS=own\nOWN=a=b\n"},
          {"corvo settings --dir etc2 export --all --force out && corvo settings --dir etc import "
           "--all"
           " --clear out && cmp etc*/*",
           0, ""},
          {"rm etc/* && mkdir etc/corvo_settings.ini && corvo settings --dir etc set SOG=1", 2,
           refused.c_str()},
      });
}

TEST(CorvoCommand, SetsWhatAServerTraces) {
  Shell("tracing").Walk({
      {"mkdir etc && corvo trace --dir etc show", 0,
       "level 5, or 1 on an installed release, until one is set\n"},
      {"echo 'ID 30 Name=telephony' >etc/corvo_debug_settings.ini && corvo trace --dir etc level 9",
       0, ""},
      {"corvo trace --dir etc ids --on 27 --on 28 --off all | grep -v off", 0,
       "27  on   sealing and verifying\n28  on   files\n"},
      {"corvo trace --dir etc ids --on all --off 30 | grep off", 0, "30  off  telephony\n"},
      {"corvo trace --dir etc show", 0, "level 9\n30  off  telephony\n"},
      {"cat etc/*", 0,
       "Filter Level=9\nID 30 Name=telephony\nID Bitmap=fffffffffffffeffffffffffffffffff\n"},
      {"corvo trace --dir etc ids --on 80", 2, "corvo: 80: is no trace ID (00 to 7f)\n"},
      {"corvo trace --dir etc level 10 2>/dev/null", 2, ""},
  });
}

}  // namespace
