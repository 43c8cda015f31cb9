// The pictures of a report, as SVG that takes its colours from the page.

#include "tools/corvo/evidence/Figures.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace corvo {
namespace {

constexpr int kWidth = Waveform::kColumnsPerRow;
constexpr int kBarHeight = 34;
constexpr int kTextHeight = 26;

constexpr int kWaveHeight = 84;
constexpr int kFullScale = 32768;
constexpr int kTicksPerRow = 5;
constexpr int kCellsPerRow = 75;  // of a terminal

const char* ClassOf(Protection protection) {
  return protection == Protection::kOpen ? "open" : ProtectionWord(protection);
}

std::string Decimal(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.2f", value);
  return text;
}

std::string Label(double x, int y, const char* anchor, const std::string& text) {
  return "<text x=\"" + Decimal(x) + "\" y=\"" + std::to_string(y) + "\" text-anchor=\"" + anchor +
         "\">" + text + "</text>";
}

std::string Open(int height, const std::string& description) {
  return "<svg viewBox=\"0 0 " + std::to_string(kWidth) + ' ' + std::to_string(height) +
         "\" role=\"img\" aria-label=\"" + description + "\">";
}

// Everything to scale, except that nothing becomes invisibly thin.
std::string Bar(const std::vector<CoveredRange>& ranges, LONGLONG end, int top) {
  std::string svg;
  const double scale = double{kWidth} / static_cast<double>(end);
  for (const CoveredRange& range : ranges) {
    if (range.offset >= end) break;
    const LONGLONG size = std::min(range.size, end - range.offset);
    svg += "<rect class=\"" + std::string(ClassOf(range.protection)) + "\" x=\"" +
           Decimal(static_cast<double>(range.offset) * scale) + "\" y=\"" + std::to_string(top) +
           "\" width=\"" + Decimal(std::max(static_cast<double>(size) * scale, 0.5)) +
           "\" height=\"" + std::to_string(kBarHeight) + "\"/>";
  }
  return svg + "<rect class=\"frame\" x=\"0.5\" y=\"" + std::to_string(top) + "\" width=\"" +
         std::to_string(kWidth - 1) + "\" height=\"" + std::to_string(kBarHeight) + "\"/>";
}

std::string TitledBar(const std::vector<CoveredRange>& ranges, LONGLONG end, int top,
                      const std::string& title) {
  return Label(0, top + kTextHeight - 8, "start", title) +
         Label(kWidth, top + kTextHeight - 8, "end", std::to_string(end) + " bytes") +
         Bar(ranges, end, top + kTextHeight);
}

std::string Legend(int top) {
  constexpr struct {
    Protection protection;
    const char* text;
  } kEntries[] = {{Protection::kCovered, "covered"},
                  {Protection::kSeal, "seal"},
                  {Protection::kFixed, "fixed"},
                  {Protection::kOpen, "not covered"}};
  std::string svg;
  int x = 0;
  for (const auto& entry : kEntries) {
    svg += "<rect class=\"" + std::string(ClassOf(entry.protection)) + "\" x=\"" +
           std::to_string(x) + "\" y=\"" + std::to_string(top + 6) +
           "\" width=\"14\" height=\"14\"/>" + Label(x + 20, top + 18, "start", entry.text);
    if (x != 0) top += kTextHeight;
    x = kWidth / 2 - x;
  }
  return svg;
}

LONGLONG AudioOffset(const std::vector<CoveredRange>& ranges) {
  for (const CoveredRange& range : ranges) {
    if (range.what == "audio") return range.offset;
  }
  return 0;
}

std::vector<std::string> CountLines(const std::vector<CoveredRange>& ranges) {
  std::vector<std::string> lines;
  for (const Protection protection :
       {Protection::kCovered, Protection::kSeal, Protection::kFixed, Protection::kOpen}) {
    lines.push_back(std::to_string(CountBytes(ranges, protection)) + " bytes " +
                    ProtectionWord(protection));
  }
  return lines;
}

std::string Row(const Waveform& waveform, std::size_t begin, std::size_t end, int top) {
  const int middle = top + kWaveHeight / 2;
  const double scale = double{kWaveHeight} / 2 / kFullScale;
  std::string path;
  for (std::size_t i = begin; i < end; ++i) {
    const Waveform::Column& column = waveform.columns[i];
    path.append("M").append(std::to_string(i - begin)).append(".5 ");
    path.append(Decimal(middle - column.greatest * scale)).append("V");
    path.append(Decimal(middle - column.least * scale + 0.5));
  }
  return "<path class=\"wave\" d=\"" + path + "\"/>";
}

std::string Guide(double x, int top) {
  const std::string at = Decimal(std::clamp(x, 0.5, kWidth - 0.5));
  return "<line class=\"guide\" x1=\"" + at + "\" x2=\"" + at + "\" y1=\"" + std::to_string(top) +
         "\" y2=\"" + std::to_string(top + kWaveHeight) + "\"/>";
}

std::string Axis(const Waveform& waveform, LONGLONG firstSecond, int top) {
  std::string svg;
  for (int i = 0; i <= kTicksPerRow; ++i) {
    const double x = double{kWidth} * i / kTicksPerRow;
    const char* const anchor = i == 0 ? "start" : i == kTicksPerRow ? "end" : "middle";
    svg += Guide(x, top);
    svg += Label(x, top + kWaveHeight + 18, anchor,
                 ClockText(firstSecond + waveform.secondsPerRow * i / kTicksPerRow));
  }
  return svg;
}

// How loud it is, as a row of blocks.
std::string TextRow(const Waveform& waveform, std::size_t begin, std::size_t end) {
  static const char* const kLevels[] = {" ", "▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
  constexpr std::size_t kStep = Waveform::kColumnsPerRow / kCellsPerRow;
  std::string line;
  for (std::size_t at = begin; at < end; at += kStep) {
    int peak = 0;
    for (std::size_t i = at; i < std::min(at + kStep, end); ++i) {
      const Waveform::Column& column = waveform.columns[i];
      peak = std::max({peak, std::abs(column.least), std::abs(column.greatest)});
    }
    line += kLevels[(peak * 8 + kFullScale - 1) / kFullScale];
  }
  return line;
}

}  // namespace

Figure DrawCoverage(const std::vector<CoveredRange>& ranges, const std::string& title) {
  const LONGLONG end = ranges.back().offset + ranges.back().size;
  const LONGLONG head = AudioOffset(ranges);
  constexpr int kBarPitch = kTextHeight + kBarHeight + 10;
  int height = kBarPitch;
  std::string svg = TitledBar(ranges, end, 0, "The whole file, to scale");
  if (head > 0 && head < end) {
    svg += TitledBar(ranges, head, height, "What stands before the audio, enlarged to scale");
    height += kBarPitch;
  }
  svg += Legend(height) + "</svg>";
  height += 2 * kTextHeight;
  const std::vector<std::string> lines = CountLines(ranges);
  std::string caption = title + ", by position: ";
  for (const std::string& line : lines) caption += line + (&line == &lines.back() ? "." : ", ");
  return {caption, Open(height, caption) + svg, {}};
}

Figure DrawWaveform(const Waveform& waveform) {
  constexpr int kRowPitch = kWaveHeight + kTextHeight;
  Figure figure;
  figure.caption = "Loudness over time of the decoded audio, " +
                   ClockText(waveform.samples / Waveform::kSamplesPerSecond) +
                   " (hours:minutes:seconds) long.";
  std::string rows;
  int top = 0;
  LONGLONG second = 0;
  for (std::size_t begin = 0; begin < waveform.columns.size(); begin += Waveform::kColumnsPerRow) {
    const std::size_t end =
        std::min<std::size_t>(begin + Waveform::kColumnsPerRow, waveform.columns.size());
    rows += Axis(waveform, second, top) + Row(waveform, begin, end, top);
    figure.lines.push_back(ClockText(second) + " |" + TextRow(waveform, begin, end));
    second += waveform.secondsPerRow;
    top += kRowPitch;
  }
  figure.svg = Open(std::max(top, 1), figure.caption) + rows + "</svg>";
  return figure;
}

std::string ClockText(LONGLONG seconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%lld:%02d:%02d", seconds / 3600,
                static_cast<int>(seconds / 60 % 60), static_cast<int>(seconds % 60));
  return text;
}

}  // namespace corvo
