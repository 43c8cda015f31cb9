// A page for the terminal.

#include <algorithm>

#include "tools/corvo/evidence/Page.h"

namespace corvo {
namespace {

constexpr std::size_t kWidth = 96;
constexpr std::size_t kWidestLabel = 40;
constexpr std::size_t kWidestColumn = 44;  // but the last, which takes what is left
constexpr std::size_t kNarrowestLast = 20;

// In characters, one for each start of a UTF-8 sequence.
std::size_t Width(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  }));
}

std::string Padded(const std::string& text, std::size_t width) {
  const std::size_t own = Width(text);
  return own < width ? text + std::string(width - own, ' ') : text;
}

// Breaks at spaces; what has none stays whole.
std::vector<std::string> Lines(const std::string& text, std::size_t width) {
  std::vector<std::string> lines(1);
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t end = std::min(text.find(' ', at), text.size());
    const std::string word = text.substr(at, end - at);
    if (lines.back().empty()) {
      lines.back() = word;
    } else if (Width(lines.back()) + 1 + Width(word) > width) {
      lines.push_back(word);
    } else {
      lines.back() += ' ' + word;
    }
    at = end + 1;
  }
  return lines;
}

// The first line starts behind what stands already.
std::string Wrapped(const std::string& text, std::size_t indent) {
  std::string wrapped;
  for (const std::string& line : Lines(text, kWidth - indent)) {
    if (!wrapped.empty()) wrapped += '\n' + std::string(indent, ' ');
    wrapped += line;
  }
  return wrapped;
}

std::string WithoutTrailingSpace(std::string line) {
  line.erase(line.find_last_not_of(' ') + 1);
  return line + '\n';
}

struct Writer {
  std::string operator()(const Paragraph& paragraph) const {
    if (paragraph.kind == Paragraph::kCommand) return "  " + paragraph.text + '\n';
    return "  " + Wrapped(paragraph.text, 2) + '\n';
  }

  std::string operator()(const Facts& facts) const {
    std::size_t width = 0;
    for (const auto& [label, value] : facts.rows) width = std::max(width, Width(label));
    width = std::min(width, kWidestLabel);
    std::string lines;
    for (const auto& [label, value] : facts.rows) {
      lines += WithoutTrailingSpace("  " + Padded(label, width) + "  " + Wrapped(value, width + 4));
    }
    return lines;
  }

  std::string operator()(const Table& table) const {
    std::vector<std::size_t> widths;
    for (const std::string& cell : table.head) widths.push_back(Width(cell));
    for (const auto& row : table.rows) {
      for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], Width(row[i]));
    }
    std::size_t left = kWidth;
    for (std::size_t i = 0; i + 1 < widths.size(); ++i) {
      widths[i] = std::min(widths[i], kWidestColumn);
      left -= std::min(left, widths[i] + 2);
    }
    widths.back() = std::max(left, kNarrowestLast + 2) - 2;
    std::string lines = Row(table.head, widths);
    for (const auto& row : table.rows) lines += Row(row, widths);
    return lines;
  }

  std::string operator()(const Figure& figure) const {
    std::string lines = "  " + Wrapped(figure.caption, 2) + '\n';
    for (const std::string& line : figure.lines) lines += "  " + line + '\n';
    return lines;
  }

 private:
  static std::string Row(const std::vector<std::string>& cells,
                         const std::vector<std::size_t>& widths) {
    std::vector<std::vector<std::string>> columns;
    std::size_t height = 1;
    for (std::size_t i = 0; i < cells.size(); ++i) {
      columns.push_back(Lines(cells[i], widths[i]));
      height = std::max(height, columns.back().size());
    }
    std::string text;
    for (std::size_t at = 0; at < height; ++at) {
      std::string line;
      for (std::size_t i = 0; i < columns.size(); ++i) {
        const std::vector<std::string>& column = columns[i];
        line += "  " + Padded(at < column.size() ? column[at] : std::string(), widths[i]);
      }
      text += WithoutTrailingSpace(line);
    }
    return text;
  }
};

std::string Blocks(const std::vector<Block>& blocks) {
  std::string text;
  for (const Block& block : blocks) text += std::visit(Writer(), block);
  return text;
}

}  // namespace

std::string RenderText(const Page& page) {
  std::string text;
  if (!page.title.empty()) text += page.title + '\n' + std::string(Width(page.title), '=') + '\n';
  text += Blocks(page.lead);
  for (const Part& part : page.parts) {
    if (!text.empty()) text += '\n';
    text += part.title + '\n' + Blocks(part.lead);
    for (const Section& section : part.sections) {
      text += '\n' + section.title + ":\n" + Blocks(section.blocks);
    }
  }
  return text;
}

}  // namespace corvo
