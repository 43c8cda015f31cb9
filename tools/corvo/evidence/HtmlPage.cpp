// A page for the browser, for print and for the phone.

#include "tools/corvo/evidence/Page.h"

namespace corvo {
namespace {

// Tables turn into blocks of labelled lines where the screen is narrow; the labels are the column
// heads, repeated by data-label. Print is always light and breaks before each recording.
constexpr char kStyle[] = R"(
:root{--ink:#1b1f24;--soft:#57606a;--paper:#fff;--line:#d0d7de;--good:#116329;--good-bg:#dafbe1;
--bad:#a40e26;--bad-bg:#ffebe9;--covered:#2f6fb7;--fixed:#9aa7b4;--seal:#8250df;--open:#e8a33d}
*{box-sizing:border-box}
body{font:16px/1.5 system-ui,-apple-system,"Segoe UI",Roboto,"Liberation Sans",Arial,sans-serif;
color:var(--ink);background:var(--paper);max-width:60rem;margin:0 auto;padding:1.5rem}
h1{font-size:1.8rem;line-height:1.2;margin:0 0 .5rem}
h2{font-size:1.35rem;line-height:1.3;margin:2.5rem 0 .5rem;border-top:3px solid var(--ink);
padding-top:.75rem;overflow-wrap:anywhere}
h3{font-size:1.05rem;margin:1.75rem 0 .4rem}
p{margin:.4rem 0;overflow-wrap:anywhere}
.good,.bad{padding:.75rem 1rem;border-left:6px solid;font-size:1.1rem;font-weight:600}
.good{color:var(--good);background:var(--good-bg);border-color:var(--good)}
.bad{color:var(--bad);background:var(--bad-bg);border-color:var(--bad)}
.note{color:var(--soft);font-size:.9rem}
dl{display:grid;grid-template-columns:minmax(9rem,max-content) 1fr;gap:.2rem 1.25rem;margin:.5rem 0}
dt{color:var(--soft)}
dd{margin:0;overflow-wrap:anywhere;white-space:pre-wrap}
table{border-collapse:collapse;width:100%;font-size:.9rem;margin:.5rem 0}
th,td{text-align:left;vertical-align:top;padding:.3rem .6rem .3rem 0;
border-bottom:1px solid var(--line);overflow-wrap:anywhere}
td{white-space:pre-wrap}
td:not(:last-child){overflow-wrap:normal}
td:first-child{white-space:nowrap}
td:last-child{min-width:11rem}
th{color:var(--soft);font-weight:600;white-space:nowrap}
td:first-child,dd,pre{font-variant-numeric:tabular-nums}
pre{padding:.6rem .8rem;border:1px solid var(--line);white-space:pre-wrap;overflow-wrap:anywhere;
font:.9rem/1.4 ui-monospace,"Liberation Mono",Menlo,monospace}
figure{margin:.75rem 0;break-inside:avoid}
figcaption{color:var(--soft);font-size:.9rem}
svg{display:block;width:100%;height:auto}
svg text{fill:var(--ink);font-size:13px;font-family:inherit}
.covered{fill:var(--covered)}.fixed{fill:var(--fixed)}.seal{fill:var(--seal)}.open{fill:var(--open)}
.frame{fill:none;stroke:var(--soft)}.guide{stroke:var(--line)}
.wave{fill:none;stroke:var(--covered);stroke-width:1}
tr,dt,dd,.good,.bad,pre{break-inside:avoid}
h2,h3{break-after:avoid}
thead{display:table-header-group}
@media screen and (prefers-color-scheme:dark){:root{--ink:#e6edf3;--soft:#9ea7b3;--paper:#0d1117;
--line:#30363d;--good:#7ee787;--good-bg:#12261a;--bad:#ffa198;--bad-bg:#2d1517;--covered:#6cb0ff;
--fixed:#6e7681;--seal:#b995ff;--open:#f0b35b}}
@media screen and (max-width:40rem){body{padding:1rem}
dl{grid-template-columns:1fr;gap:0}dd{margin-bottom:.5rem}
thead{position:absolute;left:-9999px}
table,tbody,tr,td{display:block;width:100%}
tr{padding:.4rem 0;border-bottom:1px solid var(--line)}
td{border:0;padding:.05rem 0 .05rem 8rem}
td:empty{display:none}
td::before{content:attr(data-label);float:left;margin-left:-8rem;width:7.5rem;color:var(--soft)}
svg text{font-size:24px}}
@page{size:A4;margin:16mm 15mm}
@media print{body{max-width:none;padding:0;font-size:10.5pt}
dd{font-size:.85em}th,td{padding-top:.18rem;padding-bottom:.18rem}
table{break-inside:avoid}
section.part+section.part{break-before:page}
h2{margin-top:0}
*{-webkit-print-color-adjust:exact;print-color-adjust:exact}}
)";

std::string Escaped(const std::string& text) {
  std::string html;
  for (const char c : text) {
    switch (c) {
      case '&':
        html += "&amp;";
        break;
      case '<':
        html += "&lt;";
        break;
      case '>':
        html += "&gt;";
        break;
      case '"':
        html += "&quot;";
        break;
      default:
        html += c;
    }
  }
  return html;
}

std::string Element(const std::string& tag, const std::string& text) {
  return '<' + tag + '>' + Escaped(text) + "</" + tag + ">\n";
}

struct Writer {
  std::string operator()(const Paragraph& paragraph) const {
    switch (paragraph.kind) {
      case Paragraph::kPlain:
        break;
      case Paragraph::kGood:
        return "<p class=\"good\">" + Escaped(paragraph.text) + "</p>\n";
      case Paragraph::kBad:
        return "<p class=\"bad\">" + Escaped(paragraph.text) + "</p>\n";
      case Paragraph::kNote:
        return "<p class=\"note\">" + Escaped(paragraph.text) + "</p>\n";
      case Paragraph::kCommand:
        return Element("pre", paragraph.text);
    }
    return Element("p", paragraph.text);
  }

  std::string operator()(const Facts& facts) const {
    std::string html = "<dl>\n";
    for (const auto& [label, value] : facts.rows) {
      html += Element("dt", label) + Element("dd", value);
    }
    return html + "</dl>\n";
  }

  std::string operator()(const Table& table) const {
    std::string html = "<table>\n<thead><tr>";
    for (const std::string& head : table.head) {
      html += "<th scope=\"col\">" + Escaped(head) + "</th>";
    }
    html += "</tr></thead>\n<tbody>\n";
    for (const auto& row : table.rows) {
      html += "<tr>";
      for (std::size_t i = 0; i < row.size(); ++i) {
        html += "<td data-label=\"" + Escaped(table.head[i]) + "\">" + Escaped(row[i]) + "</td>";
      }
      html += "</tr>\n";
    }
    return html + "</tbody>\n</table>\n";
  }

  std::string operator()(const Figure& figure) const {
    return "<figure>\n" + figure.svg + '\n' + Element("figcaption", figure.caption) + "</figure>\n";
  }
};

std::string Blocks(const std::vector<Block>& blocks) {
  std::string html;
  for (const Block& block : blocks) html += std::visit(Writer(), block);
  return html;
}

}  // namespace

std::string RenderHtml(const Page& page) {
  std::string html =
      "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
      "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
      "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
      "style-src 'unsafe-inline'\">\n" +
      Element("title", page.title) + "<style>" + kStyle + "</style>\n</head>\n<body>\n<main>\n" +
      "<header>\n" + Element("h1", page.title) + Blocks(page.lead) + "</header>\n";
  for (const Part& part : page.parts) {
    html += "<section class=\"part\">\n" + Element("h2", part.title) + Blocks(part.lead);
    for (const Section& section : part.sections) {
      html +=
          "<section>\n" + Element("h3", section.title) + Blocks(section.blocks) + "</section>\n";
    }
    html += "</section>\n";
  }
  return html + "</main>\n</body>\n</html>\n";
}

}  // namespace corvo
