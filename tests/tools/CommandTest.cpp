// The corvo command from end to end, as a user meets it.

#include "tools/ShellTest.h"

namespace corvo_test {
namespace {

using CorvoCommand = ShellTest;

struct Format {
  unsigned tag = 1, channels = 1, rate = 8000, align = 2, bits = 16;
};

// A WAVE file with a chunk of odd size, and its pad byte, before the audio.
std::string Wave(const Format& f, const std::string& audio) {
  return "RIFF" + Le32(60) + "WAVEfmt " + Le32(16) + Le16(f.tag) + Le16(f.channels) + Le32(f.rate) +
         Le32(f.rate * f.align) + Le16(f.align) + Le16(f.bits) + "LIST" + Le32(3) + "abc" +
         std::string(1, '\0') + "data" + Le32(audio.size()) + audio;
}

TEST_F(CorvoCommand, SealsVerifiesAndFindsAChangedByte) {
  Walk({
      {"cp $SAMPLES/now-recording.wav call.wav", 0, ""},
      {"corvo status call.wav", 1, "call.wav: not sealed\n"},
      {"corvo properties call.wav", 1, "call.wav: not sealed: it has no properties\n"},
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
      {"corvo status call.wav && ls", 0, "call.wav: sealed\ncall.wav\ncopy.wav\n"},
  });
}

// The library would take the nearest spelling, split at the backslash, or replace the link.
TEST_F(CorvoCommand, MeansExactlyTheFileThatIsNamed) {
  const std::string deep = "d=" + std::string(130, 'd') +
                           "; mkdir -p $d/$d && cd $d/$d && cp $SAMPLES/now-recording.wav x.wav &&"
                           " corvo status x.wav";
  Walk({
      {"cp $SAMPLES/now-recording.wav call.wav && ln -s call.wav link.wav && mkdir dir", 0, ""},
      {"corvo seal Call.wav", 2, "corvo: Call.wav: No such file or directory\n"},
      {"corvo seal dir", 2, "corvo: dir: is not a regular file\n"},
      {"cp call.wav 'dir\\call.wav' && corvo status 'dir\\call.wav'", 2,
       "corvo: dir\\call.wav: the full path holds a \"\\\"\n"},
      {deep, 2, "corvo: x.wav: the full path is longer than 259 characters\n"},
      {"head -c 3000 call.wav >short.wav && head -c 20 call.wav >shorter.wav", 0, ""},
      {"corvo status short.wav shorter.wav", 2,
       "short.wav: not sealed\n"
       "corvo: shorter.wav: is not a recording with a metadata record\n"},
      {"corvo seal link.wav && test -h link.wav && corvo status call.wav", 0,
       "link.wav: sealed\ncall.wav: sealed\n"},
  });
}

TEST_F(CorvoCommand, TakesTimesFromTheUserOrTheRecording) {
  const std::string ownStart("\x00\x5C\xEB\xC9\x3C\xA8\xDA\x01", 8);  // 2024-05-17T09:30:00Z
  const struct {
    std::string options;
    std::string duration;
    std::string startBytes;  // as the sealed file's "eyre" chunk holds them
  } rows[] = {
      {"", "0min:2sec", ownStart},
      {"--duration 1m5s", "1min:5sec", ownStart},
      {"--duration 1h0m59.9999999s", "60min:59sec", ownStart},
      {"--start 0 --end 659000000", "1min:5sec", std::string(8, '\0')},
      {"--start 1601-01-01T00:00:00.0000258Z", "0min:2sec", "\x02\x01" + std::string(6, '\0')},
  };
  for (const auto& row : rows) {
    Walk({{"cp $SAMPLES/now-recording.wav x.wav && corvo seal x.wav " + row.options +
               " && corvo properties x.wav | grep szDuration",
           0, "x.wav: sealed\n   5 szDuration   " + row.duration + "\n"}});
    EXPECT_EQ(Read("x.wav").substr(20, 8), row.startBytes);
  }
}

TEST_F(CorvoCommand, RefusesToGuessTimes) {
  Walk({
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

TEST_F(CorvoCommand, MakesRecordingsOfEachKind) {
  const std::string samples = CORVO_SAMPLES "/";
  const std::string gsm =
      ReadFile(samples + "nobody-available.wav").substr(3158);  // 65-byte blocks
  const std::string frames = ReadFile(samples + "nobody-available.gsm");
  const std::string silentHalf(  // behind the last four bits of the first frame
      "\x82\x74\x61\x4D\x28\x00\x48\x92\x24\x49\x92\x28\x00\x48\x92\x24"
      "\x49\x92\x28\x00\x48\x92\x24\x49\x92\x28\x00\x48\x92\x24\x49\x92",
      32);
  const std::string oddFrame = gsm.substr(0, 32) + static_cast<char>(gsm[32] & 0x0F) + silentHalf;
  const struct {
    std::string input;
    std::string options;
    std::size_t audioOffset;
    std::string audio;
  } rows[] = {
      {"abc", "--codec g726", 3170, "abc"},
      {Wave({100, 1, 8000, 1, 2}, "abc"), "", 3170, "abc"},
      {"abcd", "--codec pcm", 3154, "abcd"},
      {Wave({}, "abcd"), "", 3154, "abcd"},
      {frames, "--codec gsm", 3158, gsm},
      {frames.substr(0, 33), "--codec gsm", 3158, oddFrame},
      {Wave({49, 1, 8000, 65, 0}, gsm), "", 3158, gsm},
  };
  for (const auto& row : rows) {
    Write("in", row.input);
    Walk({{"corvo record --force out.wav in " + row.options, 0, ""}});
    const std::string made = Read("out.wav");
    ASSERT_GT(made.size(), row.audioOffset);
    EXPECT_TRUE(made.substr(row.audioOffset) == row.audio);
  }
}

TEST_F(CorvoCommand, RefusesAudioThatARecordingCantHold) {
  const std::string unlike =
      " bits, not one channel at 8000 Hz of 16-bit linear, GSM 6.10 or 2-bit G.726 audio";
  const struct {
    std::string input;
    std::string codec;
    std::string reason;
  } rows[] = {
      {"abcd", "", "is no WAVE file: --codec must tell what it holds"},
      {"", "--codec pcm", "holds no audio"},
      {"abc", "--codec pcm", "ends within a pcm block"},
      {std::string(33, '\xC0'), "--codec gsm", "is not made of GSM 6.10 frames"},
      {Wave({}, "abcd"), "--codec gsm", "holds pcm audio, not gsm"},
      {Wave({1, 2, 8000, 4, 16}, "abcd"), "",
       "holds format 1 with 2 channels, 8000 Hz, 16" + unlike},
      {Wave({100, 1, 8000, 1, 4}, "abcd"), "",
       "holds format 100 with 1 channels, 8000 Hz, 4" + unlike},
      {Wave({}, "abcd").substr(0, 58), "", "ends within a chunk"},
      {Wave({}, "abcd").substr(0, 50), "", "has no chunk \"data\""},
  };
  for (const auto& row : rows) {
    Write("in", row.input);
    Walk({{"corvo record out.wav in " + row.codec, 2, "corvo: in: " + row.reason + "\n"}});
  }
}

TEST_F(CorvoCommand, PutsMetadataIntoTheRecord) {
  Write("m.json", R"({"szItem03": "from; file", "szItem06": "ab", "szItem28": "\u00e9\n",
                      "dwItem14": 1, "dwItem26": 4294967295, "dwIPAddress": "192.0.2.255"})");
  Walk({
      {"corvo record --item szItem03= x.wav $SAMPLES/now-recording.g726 --codec g726 --metadata"
       " m.json --item dwItem15=0 --item szItem02=a=bc --start 1",
       0, ""},
      {"corvo seal x.wav && corvo properties --raw x.wav", 0,
       "x.wav: sealed\n"
       "Tolva;a=bc;;;0min:2sec;ab;;;192.0.2.255;;;;;1;0;;;;;;;;;;0;4294967295;Yes;\xC3\xA9\n\n"},
      {"corvo properties x.wav | tail -2", 0,
       "  27 dwSigned     Yes\n  28 szItem28     \xC3\xA9\\x0a\n"},
  });
}

TEST_F(CorvoCommand, RefusesMetadataThatDoesntFit) {
  const struct {
    std::string name;
    std::string value;  // for --item; in the JSON object as a string
    std::string json;   // another form that only the JSON object can have
    std::string reason;
  } rows[] = {
      {"szItem99", "a", "1", "is no metadata item"},
      {"dwSigned", "1", "1", "is no metadata item"},
      {"szItem02", "abcde", "null", "must be a text of at most 4 bytes"},
      {"szItem06", "\u00e9\u00e9", "7", "must be a text of at most 2 bytes"},
      {"dwItem14", "4294967296", "4294967296", "must be a number up to 4294967295"},
      {"dwItem15", "-1", "-1", "must be a number up to 4294967295"},
      {"dwItem26", " 1", "true", "must be a number up to 4294967295"},
      {"dwIPAddress", "192.0.2.256", "1", "must be an address such as 192.0.2.1"},
  };
  const std::string record = "corvo record x.wav $SAMPLES/now-recording.g726 --codec g726 ";
  for (const auto& row : rows) {
    const std::string refusal = "corvo: " + row.name + " " + row.reason + "\n";
    Walk({{record + "--item '" + row.name + "=" + row.value + "'", 2, refusal}});
    for (const std::string& value : {"\"" + row.value + "\"", row.json}) {
      Write("m.json", "{\"" + row.name + "\": " + value + "}");
      Walk({{record + "--metadata m.json", 2, refusal}});
    }
  }
  Walk({
      {"corvo record x.wav - --item szItem03", 2, "corvo: --item szItem03: is not NAME=VALUE\n"},
      {"echo '{\"szItem03\": \"a\\u0000b\"}' >m.json; corvo record x.wav - --metadata m.json", 2,
       "corvo: szItem03 must not hold a zero byte\n"},
      {"echo '[1' >m.json; corvo record x.wav - --metadata m.json", 2,
       "corvo: m.json: holds no JSON object\n"},
      {"corvo record x.wav - --metadata gone; ls", 0,
       "corvo: gone: No such file or directory\nm.json\n"},
  });
}

// Neither files nor directories, nor those that the command keeps for itself.
TEST_F(CorvoCommand, DatesBeyond2038AreLikeAnyOther) {
  Walk({
      {"mkdir -p in etc && cp $SAMPLES/now-recording.wav in/a.wav && touch etc/corvo_settings.ini "
       "&& corvo settings --dir etc set CfgMaxTime=300 &&"
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

TEST_F(CorvoCommand, WritesARecordingWholeOrNotAtAll) {
  Walk({
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

TEST_F(CorvoCommand, ShowsTheTraceWithoutChangingItsSettings) {
  Run("cp $SAMPLES/now-recording.wav x.wav; corvo seal x.wav");
  Run("echo 'Filter Level=0' >$STATE/corvo/corvo_debug_settings.ini");
  const Ran traced = Run("corvo --trace verify --through-host-call x.wav");
  EXPECT_THAT(traced.output, HasSubstr(" corvo    (27,8) "));
  EXPECT_THAT(traced.output, HasSubstr(": > VerifySignature(\"" + Path("x.wav") + "\")\n"));
  Try({{"cat $STATE/corvo/corvo_debug_settings.ini", 0, "Filter Level=0\n"}});
}

TEST_F(CorvoCommand, KeepsItsOwnFilesInItsHome) {
  Walk({
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

TEST_F(CorvoCommand, KeepsAServersSettings) {
  m_before = "settings() { corvo settings --dir \"$@\"; }; ";
  Walk({
      {"mkdir etc etc2; settings gone list", 2, "corvo: gone: No such file or directory\n"},
      {"settings etc list cfgmaxtime WAVSDir", 1,
       "CfgMaxTime=120  (default)\nWAVSDir  (not set)\n"},
      {"settings etc set CfgMaxTime=200 OutcallingRetries=11", 2,
       "corvo: OutcallingRetries: must be a number from 0 to 10\n"},
      {"settings etc set MiradorMode=maybe", 2, "corvo: MiradorMode: must be Y or N\n"},
      {"settings etc set own=1; ls etc", 0,
       "corvo: own: is no known setting; --force sets it all the same\n"},
      {"settings etc set --force own=a=b cfgmaxtime=200 WAVSDir=/srv HOSTIPADDRESS=x", 0, ""},
      {"settings etc get CFGMAXTIME own", 0, "200\na=b\n"},
      {"settings etc get SOG", 1, "corvo: SOG: is not set\n"},
      {"settings etc list | grep -v default | grep -v 'not set'", 0,
       "HOSTIPADDRESS=x  (file)\nWAVSDir=/srv  (file)\nCfgMaxTime=200  (file)\n"
       "OWN=a=b  (file)\n"},
      {"settings etc export out && tr -d '\\r' <out", 0, "CFGMAXTIME=200\nOWN=a=b\n"},
      {"settings etc export out", 2, "corvo: out: exists already; --force replaces it\n"},
      {"settings etc export --force etc/corvo_settings.ini", 2,
       "corvo: etc/corvo_settings.ini: is what would be exported\n"},
      {"settings etc get WAVSDir", 0, "/srv\n"},
      {"settings etc2 set --force HOSTIPADDRESS=own stale=1 && settings etc2 import --clear out &&"
       " tr -d '\\r' <etc2/corvo_settings.ini",
       0, "CFGMAXTIME=200\nHOSTIPADDRESS=own\nOWN=a=b\n"},
      {"settings etc2 export --all --force out && settings etc import --all --clear out &&"
       " cmp etc*/*",
       0, ""},
      {"rm etc/* && mkdir etc/corvo_settings.ini && settings etc set SOG=1", 2,
       "corvo: " + Path("etc/corvo_settings.ini") + ": is not a regular file\n"},
  });
}

TEST_F(CorvoCommand, SetsWhatAServerTraces) {
  m_before = "trace() { corvo trace --dir etc \"$@\"; }; ";
  Walk({
      {"mkdir etc; trace show", 0, "level 5, or 1 on an installed release, until one is set\n"},
      {"echo 'ID 30 Name=telephony' >etc/corvo_debug_settings.ini; trace level 9", 0, ""},
      {"trace ids --on 27 --on 28 --off all | grep -v off", 0,
       "27  on   sealing and verifying\n28  on   files\n"},
      {"trace ids --on all --off 30 | grep off", 0, "30  off  telephony\n"},
      {"trace show", 0, "level 9\n30  off  telephony\n"},
      {"cat etc/*", 0,
       "Filter Level=9\nID 30 Name=telephony\nID Bitmap=fffffffffffffeffffffffffffffffff\n"},
      {"trace ids --on 80", 2, "corvo: 80: is no trace ID (00 to 7f)\n"},
      {"trace level 10 2>/dev/null", 2, ""},
  });
}

}  // namespace
}  // namespace corvo_test
