// What inspect and report say about recordings, and what their pages are like.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "engine/CorvoVerifiedRecording.h"
#include "support/Bytes.h"
#include "support/Scratch.h"
#include "tools/Shell.h"
#include "tools/corvo/evidence/G726Decoder.h"

namespace {

using corvo_test::Le32;
using corvo_test::ReadFile;
using corvo_test::Shell;
using corvo_test::With;
using corvo_test::WriteFile;
using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

constexpr std::size_t kHeaderSize = 3170;

// The sample of 4632 bytes of audio and 18528 samples, sealed.
std::string Sealed(const Shell& shell) {
  shell.Run("cp $SAMPLES/now-recording.wav sealed.wav && corvo seal sealed.wav");
  return ReadFile(shell.Path("sealed.wav"));
}

json Inspect(const Shell& shell, const std::string& bytes) {
  WriteFile(shell.Path("x.wav"), bytes);
  return json::parse(shell.Run("corvo inspect --json x.wav").output);
}

// The chunks of a sealed recording in another order, with some more; the seal covers no order.
std::string Reordered(const std::string& sealed) {
  const std::string start = sealed.substr(0, 52), record = sealed.substr(52, 3098);
  return start + "LIST" + Le32(3) + "abc" + sealed.substr(3150) + record + "note" + Le32(2) + "hi";
}

TEST(CorvoEvidence, ExplainsWhatBecameOfARecording) {
  const Shell shell("explain");
  const std::string sealed = Sealed(shell);
  ASSERT_EQ(sealed.size(), 7802u);
  const std::string digest = sealed.substr(302, 20);
  const std::string layout =
      "digest matches when record, fact value and 4632 bytes of audio are read where sealing puts "
      "them; the chunks lead to ";
  const std::string record = "a record of 3090 bytes at offset 52";
  const std::string audio = "4632 bytes of audio at offset 3170";
  const std::string tried =
      "tried without success: a stored digest of which few bytes are damaged; as length of the "
      "audio 4631; as fact value 0, 4632";
  const std::string cut =
      "the file holds 802 bytes of audio fewer than it declares: 4632 are declared, 3830 are there";
  const std::string nothing =
      "no stored digest was found, neither by the chunks nor where sealing puts it";
  const std::string appended = With(sealed, 3166, Le32(4635)) + "xyz";
  const struct {
    const char* name;
    std::string bytes;
    const char* verdict;
    const char* kind;  // empty: there is nothing to explain
    std::string computed;
  } rows[] = {
      {"Good", sealed, "ok", "", ""},
      {"FlagCleared", With(sealed, 298, "\2"), "unsealed", "flag-cleared",
       "the stored digest matches; the flag at offset 298 is 2 instead of 1"},
      {"DigestDamaged", With(sealed, 310, {static_cast<char>(~digest[8]), digest[9], '\1', '\2'}),
       "broken", "digest-damaged",
       "the stored digest itself is damaged: 3 of its 20 bytes differ from the computed one"},
      {"DigestReplaced", With(sealed, 302, "5 of 20 bytes differ"), "broken", "unexplained", tried},
      {"DigestErased", With(sealed, 302, std::string(20, '\0')), "broken", "digest-erased",
       "the stored digest is all zeros"},
      {"Grown", appended, "broken", "trailing-ignored",
       "digest matches once the last 3 bytes of the audio are ignored"},
      {"GrownAndRiffSizeToo", With(appended, 4, Le32(7797)), "broken", "trailing-ignored",
       "digest matches once the last 3 bytes of the audio are ignored"},
      {"PadByteCounted", With(sealed, 3166, Le32(4633)) + "x", "broken", "trailing-ignored",
       "digest matches once the last 1 byte of the audio are ignored"},
      {"AudioHidden", With(sealed, 3166, Le32(4600)), "broken", "trailing-counted",
       "digest matches once 32 bytes more of the file are counted as audio"},
      {"SizeRaised", With(sealed, 3166, Le32(5000)), "malformed", "audio-size-raised",
       "digest matches over the first 4632 bytes of the audio: its declared size is 368 bytes too "
       "large"},
      {"Cut", sealed.substr(0, 7000), "malformed", "audio-short", cut},
      {"CutAndUnsealed", With(sealed, 298, std::string(1, '\0')).substr(0, 7000), "unsealed",
       "audio-short", cut},
      {"FactValue", With(sealed, 3158, Le32(1)), "broken", "fact-changed",
       "digest matches once the fact value at offset 3158 is 18528 instead of 1"},
      {"FormatTag", With(sealed, 36, "\1"), "malformed", "header-changed",
       layout + record + " and no audio"},
      {"NoRiff", With(sealed, 0, "RIFX"), "malformed", "header-changed",
       layout + "no record and no audio"},
      {"NoRecord", With(sealed, 52, "ALCX"), "malformed", "header-changed",
       layout + "no record and " + audio},
      {"NoDataAndNoSizes", With(With(sealed, 3162, "DATA" + Le32(9)), 4, Le32(9)), "malformed",
       "header-changed", layout + record + " and no audio"},
      {"OtherAudio", With(sealed, 3162, "DATA") + "data" + Le32(3) + "xyz", "broken",
       "header-changed", layout + record + " and 3 bytes of audio at offset 7810"},
      {"OtherRecord", With(sealed, 52, "ALCX") + sealed.substr(52, 8) + std::string(3090, 'f'),
       "unsealed", "header-changed", layout + "a record of 3090 bytes at offset 7802 and " + audio},
      {"AudioChanged", With(sealed, 5000, "\1\2"), "broken", "unexplained", tried},
      {"DetailChanged", With(sealed, 400, "x"), "broken", "unexplained", tried},
      {"NoRecordAndAudio", With(With(sealed, 52, "ALCX"), 5000, "\1\2"), "malformed", "unexplained",
       "the chunks lead to no stored digest; tried without success: record, fact value and audio "
       "where sealing puts them, with as length 4632"},
      {"NeverSealed", ReadFile(CORVO_SAMPLES "/now-recording.wav"), "unsealed", "no-digest",
       nothing},
      {"NoRecording", "Dear Sir,", "malformed", "no-digest", nothing},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const json found = Inspect(shell, row.bytes);
    EXPECT_EQ(found["verdict"], row.verdict);
    const bool expected = *row.kind != '\0';
    ASSERT_EQ(found["explanations"].size(), expected ? 1u : 0u) << found["explanations"];
    if (!expected) continue;
    EXPECT_EQ(found["explanations"][0]["kind"], row.kind);
    EXPECT_EQ(found["explanations"][0]["computed"], row.computed);
  }
}

// Changes each byte in three ways, but of long parts only some.
TEST(CorvoEvidence, TellsTheCoverageOfEveryByte) {
  const Shell shell("coverage");
  const std::string sealed = Sealed(shell);
  const std::string recordFirst =
      sealed.substr(0, 12) + sealed.substr(52, 3098) + sealed.substr(12, 40) + sealed.substr(3150);
  for (const std::string& whole : {sealed, sealed + "more", Reordered(sealed), recordFirst}) {
    const json found = Inspect(shell, whole);
    EXPECT_EQ(found["verdict"], "ok");
    std::size_t at = 0;
    for (const json& range : found["coverage"]) {
      ASSERT_EQ(range["offset"], at);
      const std::size_t size = range["size"];
      for (std::size_t i = 0; i<size; i += size> 4000 ? 797 : size > 24 ? 61 : 1) {
        for (const int pattern : {0x01, 0x10, 0xFF}) {
          std::string changed = whole;
          changed[at + i] = static_cast<char>(changed[at + i] ^ pattern);
          // A record declared 16 bytes shorter ends in zeros, which are read as empty chunks.
          const bool leadsToTheSame =
              pattern == 0x10 && at + i >= 4 && whole.compare(at + i - 4, 4, "ALCH") == 0;
          WriteFile(shell.Path("y.wav"), changed);
          RecordingExamination examined;
          VerifyRecording().Examine(shell.Path("y.wav").c_str(), examined);
          ASSERT_EQ(examined.verdict == RecordingVerdict::kOk,
                    leadsToTheSame || range["seal"] == "not covered")
              << range << " byte " << i << " pattern " << pattern;
        }
      }
      at += size;
    }
    EXPECT_EQ(at, whole.size());
  }
}

TEST(CorvoEvidence, ShowsAnExpertHowARecordingIsBuilt) {
  const Shell shell("inspect");
  WriteFile(shell.Path("x.wav"), Reordered(Sealed(shell)));
  EXPECT_EQ(shell.Run("corvo inspect x.wav | sed -n '/chunk map/,/^$/p; /Where it/,/^$/p'").output,
            "Parts of the file (chunk map):\n"
            "  Offset  Size  Part    What the digest takes\n"
            "  0       7794  \"RIFF\"  constants in its place\n"
            "  12      8     \"eyre\"  constants in its place\n"
            "  28      16    \"fmt \"  constants in its place\n"
            "  52      3     \"LIST\"  nothing\n"
            "  63      4     \"fact\"  its first four bytes\n"
            "  75      4632  \"data\"  audio and its size\n"
            "  4715    3090  \"ALCH\"  record without its seal\n"
            "  7813    2     \"note\"  nothing\n"
            "\n"
            "Where it is not as sealing writes it:\n"
            "  Offset  Size  What differs\n"
            "  52      8     \"ALCH\" chunk header\n"
            "  4715    3108  behind the audio\n"
            "\n");
  EXPECT_EQ(shell
                .Run("printf x | dd of=sealed.wav bs=1 seek=5000 conv=notrunc status=none;"
                     "corvo inspect sealed.wav gone.wav | grep -A3 wav:")
                .output,
            "sealed.wav: broken (its digest is not the one that was sealed)\n\n"
            "What can be said about the cause:\n"
            "  What exactly was changed can't be told: nothing that was tried explains it.\n"
            "--\n"
            "gone.wav: unreadable (No such file or directory)\n");
}

// An intact seal says nothing of them, and players may take the last of two sounds.
TEST(CorvoEvidence, WarnsOfPartsThatTheSealDoesNotCover) {
  const Shell shell("warning");
  const std::string sealed = Sealed(shell);
  const std::string forged = "data" + Le32(3) + "xyz";
  const struct {
    const char* name;
    std::string bytes;
    const char* named;
  } rows[] = {
      {"Behind", sealed + forged, "another \"data\" (3 bytes at offset 7802)."},
      {"BeforeAndNotMarked",
       With(sealed.substr(0, 28) + forged + sealed.substr(28), 309, std::string(1, '\0')),
       "another \"data\" (3 bytes at offset 28)."},
      {"Format", sealed + "fmt " + Le32(16) + sealed.substr(36, 16), "another \"fmt \" (16 bytes"},
      {"Unknown", Reordered(sealed), "\"LIST\" (3 bytes at offset 52), \"note\" (2 bytes"},
      {"Many", sealed + std::string(80, '\0'), "at offset 7826), and more."},
      {"AsSealed", sealed, "none"},
      {"Padded", sealed + '\0', "none"},
      {"Broken", With(sealed, 5000, "\1\2") + forged, "none"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const json warning = Inspect(shell, row.bytes)["warning"];
    EXPECT_THAT(warning.is_null() ? "none" : warning.get<std::string>(), HasSubstr(row.named));
  }
  WriteFile(shell.Path("x.wav"), sealed + forged);
  EXPECT_EQ(shell
                .Run("corvo report x.wav | grep -c '<p class=\"bad\">Warning: the file also';"
                     " corvo report --format text x.wav | grep -c 'Warning: the file also';"
                     " corvo inspect x.wav | grep -c 'Warning: the file also'")
                .output,
            "1\n1\n1\n");
}

TEST(CorvoEvidence, FitsATerminalAndKeepsSpaces) {
  const Shell shell("terminal");
  Sealed(shell);
  EXPECT_EQ(shell
                .Run("mv sealed.wav ' a  b '; corvo report --format text ' a  b ' gone.wav |"
                     " awk 'length > 100 || /^Rec/ || /^  unr/'")
                .output,
            "  unreadable  This file could not be read. Nothing can be   gone.wav\n"
            "Recording \\x20a \\x20b\\x20\nRecording gone.wav\n");
}

TEST(CorvoEvidence, IdentifiesTheFileAndTheProgram) {
  const Shell shell("identity");
  Sealed(shell);
  shell.Run("touch -d 2040-02-29T12:00:00.5Z sealed.wav");
  const std::string report = shell.Run("corvo report --format json sealed.wav").output;
  const json found = json::parse(report);
  const json& recording = found["recordings"][0];
  EXPECT_EQ(recording["sha256"].get<std::string>() + "  sealed.wav\n",
            shell.Run("sha256sum sealed.wav").output);
  EXPECT_EQ(recording["modified"], "2040-02-29T12:00:00.500000000Z");
  EXPECT_EQ(recording["start_time"], "2024-05-17T09:30:00.0000000Z");
  EXPECT_EQ(recording["stored_digest"], recording["computed_digest"]);
  EXPECT_EQ(recording["metadata"].size(), 28u);
  EXPECT_EQ(recording["waveform"], nullptr);
  EXPECT_EQ(found["tool"]["self_test"].size(), 6u);
  const auto buildId = [&](const char* file) {
    return shell.Run(std::string("readelf -n '") + file + "' | sed -n 's/.*Build ID: //p'").output;
  };
  EXPECT_EQ(found["tool"]["program_build_id"].get<std::string>() + "\n", buildId(CORVO_COMMAND));
  EXPECT_EQ(found["tool"]["library_build_id"].get<std::string>() + "\n", buildId(CORVO_LIBRARY));
}

TEST(CorvoEvidence, WritesAReportWhereItIsTold) {
  const Shell shell("output");
  Sealed(shell);
  shell.Walk({
      {"mkdir rec out && cp sealed.wav rec && chmod a-w rec", 0, ""},
      {"corvo report rec/sealed.wav -o out/a.html", 0, ""},
      {"corvo report rec/sealed.wav -o out/a.html", 2,
       "corvo: out/a.html: exists already; --force replaces it\n"},
      {"corvo report rec/sealed.wav -o out/a.html --force", 0, ""},
      {"corvo report rec/sealed.wav -o gone/a.html", 2,
       "corvo: gone/a.html: No such file or directory\n"},
      {"(ulimit -f 4; trap '' XFSZ; corvo report rec/sealed.wav -o out/b.html 2>/dev/null)", 2, ""},
      {"ls rec out", 0, "out:\na.html\n\nrec:\nsealed.wav\n"},
      {"export SOURCE_DATE_EPOCH=86399; for f in html json text; do for i in 1 2; do"
       " corvo report --codec g726 --format $f rec/sealed.wav >$f$i; done; cmp ${f}1 ${f}2 &&"
       " grep -c 1970-01-01T23:59:59Z ${f}1; done",
       0, "1\n1\n1\n"},
      {"grep -c 'SOURCE_DATE_EPOCH' html1 text1 && grep -c '\"time_given\": *true' json1", 0,
       "html1:1\ntext1:1\n1\n"},
      {"SOURCE_DATE_EPOCH=9x corvo report rec/sealed.wav", 2,
       "corvo: SOURCE_DATE_EPOCH is no count of seconds since 1970\n"},
      {"corvo report --codec gsm rec/sealed.wav 2>/dev/null", 2, ""},
      {"corvo report rec/sealed.wav $SAMPLES/now-recording.wav >/dev/null", 1, ""},
      {"corvo report rec/sealed.wav gone.wav $SAMPLES/now-recording.wav >/dev/null", 2, ""},
      {"corvo report rec/sealed.wav >/dev/full", 2, "corvo: the output can't be written\n"},
  });
}

TEST(CorvoEvidence, ShowsHostileTextsHarmlessly) {
  const struct {
    const char* item;
    const char* value;
    const char* html;
    const char* visible;
  } rows[] = {
      {"szItem22", "<script>alert(1)</script>&\"'",
       ">&lt;script&gt;alert(1)&lt;/script&gt;&amp;&quot;'<", "<script>alert(1)</script>&\"'"},
      {"szItem03", "a\nb\x1b[2Jc\x7f", ">a\\x0ab\\x1b[2Jc\\x7f<", "a\\x0ab\\x1b[2Jc\\x7f"},
      {"szItem07", "\xff\xc0\xaf\xed\xa0\x80\xf4\x90\x80\x80\xe2\x82",
       ">\\xff\\xc0\\xaf\\xed\\xa0\\x80\\xf4\\x90\\x80\\x80\\xe2\\x82<",
       "\\xff\\xc0\\xaf\\xed\\xa0\\x80\\xf4\\x90\\x80\\x80\\xe2\\x82"},
      {"szItem08", "Jos\u00e9 \u202e\u200b\u0085\\x0a\U0001F600",
       ">Jos\u00e9 \\xe2\\x80\\xae\\xe2\\x80\\x8b\\xc2\\x85\\\\x0a\U0001F600<",
       "Jos\u00e9 \\xe2\\x80\\xae\\xe2\\x80\\x8b\\xc2\\x85\\\\x0a\U0001F600"},
  };
  const Shell shell("hostile");
  std::string command = "corvo record x.wav $SAMPLES/now-recording.g726 --codec g726 --start 1";
  for (const auto& row : rows) {
    std::string value = std::string(row.item) + "=" + row.value;
    for (std::size_t at = 0; (at = value.find('\'', at)) != std::string::npos; at += 4) {
      value.replace(at, 1, "'\\''");
    }
    command += " --item '" + value + "'";
  }
  ASSERT_EQ(shell.Run(command + " && corvo seal x.wav").output, "x.wav: sealed\n");
  ASSERT_EQ(shell.Run("mv x.wav 'q\"<b>&\n\xff.wav'").output, "");
  const std::string html = shell.Run("corvo report q* --codec g726").output;
  const json found = json::parse(shell.Run("corvo inspect --json q*").output);
  for (const auto& row : rows) {
    SCOPED_TRACE(row.item);
    EXPECT_THAT(html, HasSubstr(row.html));
    const int place = std::atoi(row.item + 6);
    EXPECT_EQ(found["metadata"][static_cast<unsigned>(place - 1)]["value"], row.visible);
  }
  EXPECT_THAT(html, HasSubstr("<h2>Recording q&quot;&lt;b&gt;&amp;\\x0a\\xff.wav</h2>"));
  EXPECT_EQ(found["name"], "q\"<b>&\\n\\xff.wav");
  EXPECT_EQ(found["escaped"], true);
  EXPECT_THAT(html, AllOf(Not(HasSubstr("<script")), Not(HasSubstr("http:")),
                          Not(HasSubstr("https:")), Not(HasSubstr("src="))));
}

// Sound -----------------------------------------------------------------------------------------

std::vector<int> Decode(const std::string& bytes) {
  corvo::G726Decoder decoder;
  std::vector<int> samples;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    for (int shift = 6; shift >= 0; shift -= 2)
      samples.push_back(decoder.Decode(byte >> shift & 3));
  }
  return samples;
}

std::vector<int> DecodeByFfmpeg(const Shell& shell, const std::string& bytes) {
  WriteFile(shell.Path("in"), bytes);
  shell.Run("ffmpeg -v error -y -f g726 -code_size 2 -ar 8000 -i in -f s16le out </dev/null");
  const std::string pcm = ReadFile(shell.Path("out"));
  std::vector<int> samples;
  for (std::size_t i = 0; i + 1 < pcm.size(); i += 2) {
    samples.push_back(static_cast<std::int16_t>(static_cast<unsigned char>(pcm[i]) |
                                                static_cast<unsigned char>(pcm[i + 1]) << 8));
  }
  return samples;
}

// Quiet, and every so often a burst of any codes: the scale factor then stays the fast one.
std::string Bursts(int longestQuiet, int longestBurst) {
  unsigned state = 1;
  const auto random = [&](int count) {
    state = state * 1103515245u + 12345u;
    return static_cast<int>(state >> 16 & 0x7FFF) % count;
  };
  std::string bytes(10, '\x3C');
  while (bytes.size() < 4000) {
    for (int n = 1 + random(longestBurst); n > 0; --n) bytes += static_cast<char>(random(256));
    for (int n = 1 + random(longestQuiet); n > 0; --n) bytes += random(2) != 0 ? '\xC3' : '\x3C';
  }
  return bytes;
}

// The other decoder keeps the fraction of the slow scale factor, which the Recommendation (MIX)
// drops: where that one counts, the two come apart a little. Elsewhere they agree in every bit.
TEST(CorvoEvidence, DecodesSoundAsAnotherDecoderDoes) {
  const Shell shell("decode");
  if (shell.Run("command -v ffmpeg").exitCode != 0) GTEST_SKIP() << "ffmpeg is not installed";
  for (const std::string& bytes : {Bursts(8, 1), Bursts(12, 2), Bursts(20, 2)}) {
    EXPECT_EQ(Decode(bytes), DecodeByFfmpeg(shell, bytes));
  }
  const std::string speech = ReadFile(CORVO_SAMPLES "/now-recording.g726");
  const std::vector<int> ours = Decode(speech), theirs = DecodeByFfmpeg(shell, speech);
  ASSERT_EQ(ours.size(), theirs.size());
  double signal = 0, noise = 0;
  for (std::size_t i = 0; i < ours.size(); ++i) {
    signal += std::pow(theirs[i], 2);
    noise += std::pow(ours[i] - theirs[i], 2);
  }
  EXPECT_TRUE(std::equal(ours.begin(), ours.begin() + 600, theirs.begin()));
  EXPECT_GT(signal, 1000 * noise);
}

TEST(CorvoEvidence, DrawsTheSoundOnlyWhenAsked) {
  const Shell shell("wave");
  const std::string sealed = Sealed(shell);
  const std::string audio = sealed.substr(kHeaderSize);
  const auto draw = [&](const std::string& bytes) {
    WriteFile(shell.Path("x.wav"), bytes);
    const std::string report = shell.Run("corvo report --format json --codec g726 x.wav").output;
    return json::parse(report)["recordings"][0]["waveform"];
  };
  const json speech = draw(sealed);
  EXPECT_EQ(speech["seconds_per_row"], 5);
  const std::vector<int> samples = Decode(audio);
  const auto slice = samples.begin() + 40000 / 900 * 100;  // 44.4 samples each
  const json& column = speech["least_and_greatest"][100];
  EXPECT_LE(column[0], *std::min_element(slice + 45, slice + 88));
  EXPECT_GE(column[1], *std::max_element(slice + 45, slice + 88));
  EXPECT_EQ(speech["least_and_greatest"].size(), 417u);  // of 18528 samples

  std::string minutes = sealed;
  minutes.replace(3166, 4, Le32(600 * 2000)).resize(kHeaderSize + 600 * 2000, '\x3C');
  const json longer = draw(minutes);
  EXPECT_EQ(longer["seconds_per_row"], 60);
  EXPECT_EQ(longer["least_and_greatest"].size(), 10u * 900u);
  EXPECT_EQ(draw(sealed.substr(0, kHeaderSize + 1000))["samples"], 4000);  // what is there

  const std::string asked =
      "corvo report --format text --codec g726 sealed.wav | grep -c '^  0:00:0[05] |'";
  EXPECT_EQ(shell.Run(asked).output, "1\n");
}

// The browser ------------------------------------------------------------------------------------

constexpr char kChromium[] =
    "timeout 120 chromium --headless --no-sandbox --disable-gpu --no-first-run"
    " --disable-background-networking --disable-component-update --disable-sync"
    " --hide-scrollbars --user-data-dir=\"$PWD/profile\" ";

TEST(CorvoEvidence, ReportOpensInABrowser) {
  const Shell shell("browser");
  if (shell.Run("command -v chromium").exitCode != 0) GTEST_SKIP() << "chromium is not installed";
  if (shell.Run("command -v ffmpeg").exitCode != 0) GTEST_SKIP() << "ffmpeg is not installed";
  shell.Run(
      "corvo record x.wav $SAMPLES/now-recording.g726 --codec g726 --start 1"
      " --item 'szItem22=<script>document.title=\"run\"</script><img src=x onerror=alert(1)>';"
      "corvo seal x.wav; cp x.wav y.wav;"
      "printf x | dd of=y.wav bs=1 seek=5000 conv=notrunc status=none;"
      "corvo report --codec g726 x.wav y.wav >r.html");
  const std::string chromium = kChromium;
  const std::string dom =
      shell.Run(chromium + "--dump-dom \"file://$PWD/r.html\" 2>/dev/null").output;
  for (const char* const expected :
       {"<title>Report on the seal of recordings</title>", "<h2>Recording y.wav</h2>",
        "The seal is intact.", "The seal is broken.", "<h3>Limits</h3>",
        "&lt;script&gt;document.title"}) {
    EXPECT_THAT(dom, HasSubstr(expected));
  }
  EXPECT_THAT(dom, Not(HasSubstr("<img")));

  // The intact seal's green and the broken one's red, and the sound's blue, are on the picture.
  shell.Run(chromium +
            "--window-size=1000,3000 --screenshot=\"$PWD/r.png\""
            " \"file://$PWD/r.html\" >/dev/null 2>&1; "
            "ffmpeg -v error -i r.png -f rawvideo -pix_fmt rgb24 r.rgb </dev/null");
  const std::string pixels = ReadFile(shell.Path("r.rgb"));
  ASSERT_EQ(pixels.size(), 3u * 1000 * 3000);
  const auto count = [&](const char* rgb) {
    int found = 0;
    for (std::size_t i = 0; i < pixels.size(); i += 3) {
      found += pixels.compare(i, 3, rgb, 3) == 0 ? 1 : 0;
    }
    return found;
  };
  EXPECT_GT(count("\xDA\xFB\xE1"), 20000);  // the box of an intact seal
  EXPECT_GT(count("\x2F\x6F\xB7"), 40000);  // what is covered, and the sound

  // On a narrow screen nothing is wider than it. Only a page that is allowed scripts can tell.
  const std::string narrow =
      shell
          .Run(
              "sed 's/<meta http-equiv[^>]*>//; s|</body>|<script>document.title = \"width \" +"
              " document.documentElement.scrollWidth;</script></body>|' r.html >n.html; " +
              chromium + "--window-size=500,800 --dump-dom \"file://$PWD/n.html\" 2>/dev/null")
          .output;
  EXPECT_THAT(narrow, HasSubstr("<title>width 500</title>"));
}

}  // namespace
