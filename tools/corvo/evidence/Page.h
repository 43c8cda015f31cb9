#ifndef TOOLS_CORVO_EVIDENCE_PAGE_H
#define TOOLS_CORVO_EVIDENCE_PAGE_H

#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace corvo {

// What a report or an inspection says, apart from how it is written down. Texts are valid UTF-8.

struct Paragraph {
  enum Kind { kPlain, kGood, kBad, kNote, kCommand };
  std::string text;
  Kind kind = kPlain;
};

struct Facts {
  std::vector<std::pair<std::string, std::string>> rows;  // label and value
};

struct Table {
  std::vector<std::string> head;
  std::vector<std::vector<std::string>> rows;
};

struct Figure {
  std::string caption;
  std::string svg;                 // complete element
  std::vector<std::string> lines;  // the same for a terminal
};

using Block = std::variant<Paragraph, Facts, Table, Figure>;

struct Section {
  std::string title;
  std::vector<Block> blocks;
};

// A recording, or what is said for all of them.
struct Part {
  std::string title;
  std::vector<Block> lead;  // above the first section
  std::vector<Section> sections;
};

struct Page {
  std::string title;
  std::vector<Block> lead;
  std::vector<Part> parts;
};

// One HTML page that needs nothing beside it: no scripts, no other files.
std::string RenderHtml(const Page& page);

// For a terminal of 100 columns. A page without a title starts with its first part.
std::string RenderText(const Page& page);

}  // namespace corvo

#endif
