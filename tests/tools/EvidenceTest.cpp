// What inspect and report say about recordings, and what their pages are like.

#include <algorithm>
#include <cmath>
#include <cstring>

#include "engine/CorvoVerifiedRecording.h"
#include "tools/ShellTest.h"
#include "tools/corvo/evidence/G726Decoder.h"

namespace corvo_test {
namespace {

constexpr std::size_t kHeaderSize = 3170;

class CorvoEvidence : public ShellTest {
 protected:
  // The sample of 4632 bytes of audio and 18528 samples.
  CorvoEvidence() {
    Run("cp $SAMPLES/now-recording.wav sealed.wav && corvo seal sealed.wav");
    m_sealed = Read("sealed.wav");
  }

  json Inspect(const std::string& bytes) const {
    Write("x.wav", bytes);
    return Json("corvo inspect --json x.wav");
  }

  std::string m_sealed;
};

// The chunks of a sealed recording in another order, with some more; the seal covers no order.
std::string Reordered(const std::string& sealed) {
  const std::string start = sealed.substr(0, 52), record = sealed.substr(52, 3098);
  return start + "LIST" + Le32(3) + "abc" + sealed.substr(3150) + record + "note" + Le32(2) + "hi";
}

TEST_F(CorvoEvidence, ExplainsWhatBecameOfARecording) {
  const std::string& sealed = m_sealed;
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
  const struct {
    const char* name;
    std::string bytes;
    const char* verdict;
    const char* kind;
    std::string computed;
  } rows[] = {
      {"FlagCleared", With(sealed, 298, "\2"), "unsealed", "flag-cleared",
       "the stored digest matches; the flag at offset 298 is 2 instead of 1"},
      {"DigestDamaged", With(sealed, 310, {static_cast<char>(~digest[8]), digest[9], '\1', '\2'}),
       "broken", "digest-damaged",
       "the stored digest itself is damaged: 3 of its 20 bytes differ from the computed one"},
      {"DigestReplaced", With(sealed, 302, "5 of 20 bytes differ"), "broken", "unexplained", tried},
      {"DigestErased", With(sealed, 302, std::string(20, '\0')), "broken", "digest-erased",
       "the stored digest is all zeros"},
      {"Grown", With(sealed, 3166, Le32(4635)) + "xyz", "broken", "trailing-ignored",
       "digest matches once the last 3 bytes of the audio are ignored"},
      {"AudioHidden", With(sealed, 3166, Le32(4600)), "broken", "trailing-counted",
       "digest matches once 32 bytes more of the file are counted as audio"},
      {"SizeRaised", With(sealed, 3166, Le32(5000)), "malformed", "audio-size-raised",
       "digest matches over the first 4632 bytes of the audio: its declared size is 368 bytes too "
       "large"},
      {"Cut", sealed.substr(0, 7000), "malformed", "audio-short", cut},
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
      {"NoRecordAndAudio", With(With(sealed, 52, "ALCX"), 5000, "\1\2"), "malformed", "unexplained",
       "the chunks lead to no stored digest; tried without success: record, fact value and audio "
       "where sealing puts them, with as length 4632"},
      {"NeverSealed", ReadFile(CORVO_SAMPLES "/now-recording.wav"), "unsealed", "no-digest",
       nothing},
      {"NoRecording", "Dear Sir,", "malformed", "no-digest", nothing},
  };
  EXPECT_EQ(Inspect(sealed)["explanations"].size(), 0u);
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const json found = Inspect(row.bytes);
    EXPECT_EQ(found["verdict"], row.verdict);
    ASSERT_EQ(found["explanations"].size(), 1u) << found["explanations"];
    EXPECT_EQ(found["explanations"][0]["kind"], row.kind);
    EXPECT_EQ(found["explanations"][0]["computed"], row.computed);
  }
}

// Changes each byte in three ways, but of long parts only some.
TEST_F(CorvoEvidence, TellsTheCoverageOfEveryByte) {
  const std::string& sealed = m_sealed;
  const std::string recordFirst =
      sealed.substr(0, 12) + sealed.substr(52, 3098) + sealed.substr(12, 40) + sealed.substr(3150);
  for (const std::string& whole : {sealed, sealed + "more", Reordered(sealed), recordFirst}) {
    const json found = Inspect(whole);
    EXPECT_EQ(found["verdict"], "ok");
    std::size_t at = 0;
    for (const json& range : found["coverage"]) {
      ASSERT_EQ(range["offset"], at);
      const std::size_t size = range["size"];
      for (std::size_t i = 0; i<size; i += size> 4000 ? 797 : size > 24 ? 61 : 1) {
        for (const int pattern : {0x01, 0x10, 0xFF}) {
          // A record declared 16 bytes shorter ends in zeros, which are read as empty chunks.
          const bool leadsToTheSame =
              pattern == 0x10 && at + i >= 4 && whole.compare(at + i - 4, 4, "ALCH") == 0;
          Write("y.wav", With(whole, at + i, {static_cast<char>(whole[at + i] ^ pattern)}));
          RecordingExamination examined;
          VerifyRecording().Examine(Path("y.wav").c_str(), examined);
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

TEST_F(CorvoEvidence, ShowsAnExpertHowARecordingIsBuilt) {
  Write("x.wav", Reordered(m_sealed));
  Walk({
      {"corvo inspect x.wav | sed -n '/chunk map/,/^$/p; /Where it/,/^$/p'", 0,
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
       "\n"},
      {"printf x | dd of=sealed.wav bs=1 seek=5000 conv=notrunc status=none;"
       " corvo inspect sealed.wav gone.wav | grep -A3 wav:",
       0,
       "sealed.wav: broken (its digest is not the one that was sealed)\n\n"
       "What can be said about the cause:\n"
       "  What exactly was changed can't be told: nothing that was tried explains it.\n"
       "--\n"
       "gone.wav: unreadable (No such file or directory)\n"},
  });
}

// An intact seal says nothing of them, and players may take the last of two sounds.
TEST_F(CorvoEvidence, WarnsOfPartsThatTheSealDoesNotCover) {
  const std::string& sealed = m_sealed;
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
    const json warning = Inspect(row.bytes)["warning"];
    EXPECT_THAT(warning.is_null() ? "none" : warning.get<std::string>(), HasSubstr(row.named));
  }
  Write("x.wav", sealed + forged);
  Walk(
      {{"{ corvo report x.wav | grep '<p class=\"bad\">'; corvo report --format text x.wav;"
        " corvo inspect x.wav; } | grep -c 'Warning: the file also'",
        0, "3\n"}});
}

TEST_F(CorvoEvidence, FitsATerminalAndKeepsSpaces) {
  Walk(
      {{"mv sealed.wav ' a  b '; corvo report --format text ' a  b ' gone.wav |"
        " awk 'length > 100 || /^Rec/ || /^  unr/'",
        0,
        "  unreadable  This file could not be read. Nothing can be   gone.wav\n"
        "Recording \\x20a \\x20b\\x20\nRecording gone.wav\n"}});
}

TEST_F(CorvoEvidence, IdentifiesTheFileAndTheProgram) {
  Run("touch -d 2040-02-29T12:00:00.5Z sealed.wav");
  const json found = Json("corvo report --format json sealed.wav");
  const json& recording = found["recordings"][0];
  EXPECT_EQ(recording["sha256"].get<std::string>() + "  sealed.wav\n",
            Output("sha256sum sealed.wav"));
  EXPECT_EQ(recording["modified"], "2040-02-29T12:00:00.500000000Z");
  EXPECT_EQ(recording["start_time"], "2024-05-17T09:30:00.0000000Z");
  EXPECT_EQ(recording["stored_digest"], recording["computed_digest"]);
  EXPECT_EQ(recording["metadata"].size(), 28u);
  EXPECT_EQ(recording["waveform"], nullptr);
  EXPECT_EQ(found["tool"]["self_test"].size(), 6u);
  const auto buildId = [&](const char* file) {
    return Output(std::string("readelf -n '") + file + "' | sed -n 's/.*Build ID: //p'");
  };
  EXPECT_EQ(found["tool"]["program_build_id"].get<std::string>() + "\n", buildId(CORVO_COMMAND));
  EXPECT_EQ(found["tool"]["library_build_id"].get<std::string>() + "\n", buildId(CORVO_LIBRARY));
}

TEST_F(CorvoEvidence, WritesAReportWhereItIsTold) {
  Walk({
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

TEST_F(CorvoEvidence, ShowsHostileTextsHarmlessly) {
  const struct {
    std::string item;
    const char* value;
    std::string visible;  // in a page, too, where there is nothing of HTML's own
  } rows[] = {
      {"szItem22", "<script>alert(1)</script>&\"", "<script>alert(1)</script>&\""},
      {"szItem03", "a\nb\x1b[2Jc\x7f", "a\\x0ab\\x1b[2Jc\\x7f"},
      {"szItem07", "\xff\xc0\xaf\xed\xa0\x80\xf4\x90\x80\x80\xe2\x82",
       "\\xff\\xc0\\xaf\\xed\\xa0\\x80\\xf4\\x90\\x80\\x80\\xe2\\x82"},
      {"szItem08", "Jos\u00e9 \u202e\u200b\u0085\\x0a\U0001F600",
       "Jos\u00e9 \\xe2\\x80\\xae\\xe2\\x80\\x8b\\xc2\\x85\\\\x0a\U0001F600"},
  };
  std::string command = "corvo record x.wav $SAMPLES/now-recording.g726 --codec g726 --start 1";
  for (const auto& row : rows) command += " --item '" + row.item + "=" + row.value + "'";
  Walk({{command + " && corvo seal x.wav && mv x.wav 'q\"<b>&\n\xff.wav'", 0, "x.wav: sealed\n"}});
  const std::string html = Output("corvo report q* --codec g726");
  const json found = Json("corvo inspect --json q*");
  for (const auto& row : rows) {
    SCOPED_TRACE(row.item);
    EXPECT_EQ(html.find(">" + row.visible + "<") == std::string::npos, row.item == "szItem22");
    const std::size_t place = std::stoul(row.item.substr(6));
    EXPECT_EQ(found["metadata"][place - 1]["value"], row.visible);
  }
  EXPECT_THAT(html, HasSubstr(">&lt;script&gt;alert(1)&lt;/script&gt;&amp;&quot;<"));
  EXPECT_THAT(html, HasSubstr("<h2>Recording q&quot;&lt;b&gt;&amp;\\x0a\\xff.wav</h2>"));
  EXPECT_EQ(found["name"], "q\"<b>&\\n\\xff.wav");
  EXPECT_EQ(found["escaped"], true);
  for (const char* const live : {"<script", "http:", "https:", "src="}) {
    EXPECT_THAT(html, Not(HasSubstr(live)));
  }
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
TEST_F(CorvoEvidence, DecodesSoundAsAnotherDecoderDoes) {
  if (!Has("ffmpeg")) GTEST_SKIP() << "ffmpeg is not installed";
  const auto decodeByFfmpeg = [this](const std::string& bytes) {
    Write("in", bytes);
    Run("ffmpeg -v error -y -f g726 -code_size 2 -ar 8000 -i in -f s16le out </dev/null");
    const std::string pcm = Read("out");
    std::vector<std::int16_t> samples(pcm.size() / 2);
    std::memcpy(samples.data(), pcm.data(), samples.size() * 2);
    return std::vector<int>(samples.begin(), samples.end());
  };
  for (const std::string& bytes : {Bursts(8, 1), Bursts(12, 2), Bursts(20, 2)}) {
    EXPECT_EQ(Decode(bytes), decodeByFfmpeg(bytes));
  }
  const std::string speech = ReadFile(CORVO_SAMPLES "/now-recording.g726");
  const std::vector<int> ours = Decode(speech), theirs = decodeByFfmpeg(speech);
  ASSERT_EQ(ours.size(), theirs.size());
  double signal = 0, noise = 0;
  for (std::size_t i = 0; i < ours.size(); ++i) {
    signal += std::pow(theirs[i], 2);
    noise += std::pow(ours[i] - theirs[i], 2);
  }
  EXPECT_TRUE(std::equal(ours.begin(), ours.begin() + 600, theirs.begin()));
  EXPECT_GT(signal, 1000 * noise);
}

TEST_F(CorvoEvidence, DrawsTheSoundOnlyWhenAsked) {
  const auto draw = [&](const std::string& bytes) {
    Write("x.wav", bytes);
    return Json("corvo report --format json --codec g726 x.wav")["recordings"][0]["waveform"];
  };
  const json speech = draw(m_sealed);
  EXPECT_EQ(speech["seconds_per_row"], 5);
  const std::vector<int> samples = Decode(m_sealed.substr(kHeaderSize));
  const auto slice = samples.begin() + 40000 / 900 * 100;  // 44.4 samples each
  const json& column = speech["least_and_greatest"][100];
  EXPECT_LE(column[0], *std::min_element(slice + 45, slice + 88));
  EXPECT_GE(column[1], *std::max_element(slice + 45, slice + 88));
  EXPECT_EQ(speech["least_and_greatest"].size(), 417u);  // of 18528 samples

  const std::size_t tenMinutes = 600 * 2000;
  const json longer = draw(With(m_sealed.substr(0, kHeaderSize), 3166, Le32(tenMinutes)) +
                           std::string(tenMinutes, '\x3C'));
  EXPECT_EQ(longer["seconds_per_row"], 60);
  EXPECT_EQ(longer["least_and_greatest"].size(), 10u * 900u);
  EXPECT_EQ(draw(m_sealed.substr(0, kHeaderSize + 1000))["samples"], 4000);  // what is there
  Walk({{"corvo report --format text --codec g726 sealed.wav | grep -c '^  0:00:0[05] |'", 0,
         "1\n"}});
}

// The browser ------------------------------------------------------------------------------------

TEST_F(CorvoEvidence, ReportOpensInABrowser) {
  if (!Has("chromium") || !Has("ffmpeg")) GTEST_SKIP() << "chromium or ffmpeg is not installed";
  m_before =
      "browse() { timeout 120 chromium --headless --no-sandbox --disable-gpu --no-first-run"
      " --disable-background-networking --disable-component-update --disable-sync"
      " --hide-scrollbars --user-data-dir=\"$PWD/profile\" \"$@\" 2>/dev/null; }; ";
  Run("corvo record x.wav $SAMPLES/now-recording.g726 --codec g726 --start 1"
      " --item 'szItem22=<script>document.title=\"run\"</script><img src=x onerror=alert(1)>';"
      "corvo seal x.wav; cp x.wav y.wav;"
      "printf x | dd of=y.wav bs=1 seek=5000 conv=notrunc status=none;"
      "corvo report --codec g726 x.wav y.wav >r.html");
  const std::string dom = Output("browse --dump-dom \"file://$PWD/r.html\"");
  for (const char* const expected :
       {"<title>Report on the seal of recordings</title>", "<h2>Recording y.wav</h2>",
        "The seal is intact.", "The seal is broken.", "<h3>Limits</h3>",
        "&lt;script&gt;document.title"}) {
    EXPECT_THAT(dom, HasSubstr(expected));
  }
  EXPECT_THAT(dom, Not(HasSubstr("<img")));

  // The intact seal's green and the broken one's red, and the sound's blue, are on the picture.
  Run("browse --window-size=1000,3000 --screenshot=\"$PWD/r.png\" \"file://$PWD/r.html\";"
      " ffmpeg -v error -i r.png -f rawvideo -pix_fmt rgb24 r.rgb </dev/null");
  const std::string pixels = Read("r.rgb");
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
  Try(
      {{"sed 's/<meta http-equiv[^>]*>//; s|</body>|<script>document.title = \"width \" +"
        " document.documentElement.scrollWidth;</script></body>|' r.html >n.html;"
        " browse --window-size=500,800 --dump-dom \"file://$PWD/n.html\"",
        0, "<title>width 500</title>"}});
}

}  // namespace
}  // namespace corvo_test
