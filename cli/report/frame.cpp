// cli/report/frame.cpp - the page around the pictures: style sheet, figures, tables.
// SPDX-License-Identifier: MIT

#include "report/frame.h"

#include "report/escape.h"

#include <fmt/core.h>

namespace kapris_report
{

// Colours that people with any kind of colour vision can tell apart, darker on light and lighter on dark ground; the
// amounts h1 to h8 differ in lightness alone.
static constexpr char style[] = R"(
:root{color-scheme:light dark;--bg:#f4f6f8;--card:#fff;--ink:#17202b;--soft:#566373;--rule:#8e9aa8;--grid:#e3e8ee;
--blue:#0072b2;--sky:#8cc4ea;--red:#c84b00;--green:#00795a;--h1:#dcebf7;--h2:#bcd9ef;--h3:#94c1e3;--h4:#67a6d4;
--h5:#3477b0;--h6:#215f98;--h7:#114a7c;--h8:#082f5c}
@media (prefers-color-scheme:dark){:root{--bg:#11161c;--card:#1a212a;--ink:#e6ebf1;--soft:#a4b0be;--rule:#6d7b8b;
--grid:#2c3641;--blue:#5fb4ea;--sky:#2d638c;--red:#ff9a5c;--green:#4ecfa6;--h1:#1d3447;--h2:#20486a;--h3:#265e8c;
--h4:#2d6ea3;--h5:#4a90c6;--h6:#70addb;--h7:#a0ccec;--h8:#d8ecfb}}
*{box-sizing:border-box}
body{margin:0;background:var(--bg);color:var(--ink);font:15px/1.5 system-ui,"Segoe UI",Roboto,"DejaVu Sans",sans-serif}
main{max-width:1240px;margin:0 auto;padding:20px 16px 48px}
h1{font-size:1.5em;line-height:1.25;margin:0 0 4px;overflow-wrap:anywhere}
h2{font-size:1.08em;margin:0 0 4px}
p{margin:0 0 10px;overflow-wrap:anywhere}
.soft{color:var(--soft)}
.verdict{font-size:1.1em;border-left:4px solid var(--green);padding:2px 0 2px 12px;margin:12px 0 18px}
.verdict.bad{border-color:var(--red)}
.cards{display:grid;grid-template-columns:repeat(auto-fit,minmax(min(100%,440px),1fr));gap:16px;align-items:start}
.cards+.cards{margin-top:16px}
.card{background:var(--card);border:1px solid var(--grid);border-radius:8px;padding:14px 16px;margin:0;min-width:0}
.wide{grid-column:1/-1}
.missing{color:var(--soft)}
svg{display:block;width:100%;max-width:620px;height:auto;margin:6px auto 0}
svg text{font:11.5px system-ui,"Segoe UI",Roboto,"DejaVu Sans",sans-serif;fill:var(--soft)}
svg .axis{fill:var(--ink)}
svg .on-light{fill:var(--ink);font-size:10.5px}
svg .on-dark{fill:var(--card);font-size:10.5px}
svg path{fill:none}
svg .grid{stroke:var(--grid);stroke-width:1}
svg .rule{stroke:var(--rule);stroke-width:1}
svg .bar{fill:var(--blue)}
svg .bar.over{fill:var(--red)}
svg .range{fill:var(--sky)}
svg .hatch{fill:url(#hatch)}
svg .target{stroke:var(--ink);stroke-width:1.6}
svg .limit{stroke:var(--ink);stroke-width:1.6;stroke-dasharray:4 2}
svg .blue{stroke:var(--blue);stroke-width:1.8;stroke-linejoin:round}
svg .red{stroke:var(--red);stroke-width:1.8;stroke-linejoin:round;stroke-dasharray:6 2.5}
svg .green{stroke:var(--green);stroke-width:1.8;stroke-linejoin:round;stroke-dasharray:2 2}
svg .dot{fill:var(--blue);fill-opacity:.75}
svg .ring{fill:var(--card);stroke:var(--red);stroke-width:1.5}
svg .best{fill:var(--green);stroke:var(--card);stroke-width:1}
svg .band{fill:var(--sky);fill-opacity:.55}
svg .shade{fill:var(--grid);fill-opacity:.6}
svg .frame{fill:none;stroke:var(--rule);stroke-width:1}
svg .cut{stroke:var(--red);stroke-width:.8;stroke-opacity:.8}
svg .h1{fill:var(--h1)}svg .h2{fill:var(--h2)}svg .h3{fill:var(--h3)}svg .h4{fill:var(--h4)}
svg .h5{fill:var(--h5)}svg .h6{fill:var(--h6)}svg .h7{fill:var(--h7)}svg .h8{fill:var(--h8)}
image{image-rendering:pixelated}
pre{margin:4px 0 8px;max-height:18em;overflow:auto;padding:10px 12px;background:var(--bg);border:1px solid var(--grid);
border-radius:6px;white-space:pre-wrap;
overflow-wrap:anywhere;font:13px/1.5 ui-monospace,"DejaVu Sans Mono",monospace}
pre span{display:inline-block;max-width:100%;overflow-wrap:anywhere}
details{margin-top:8px}
summary{cursor:pointer;color:var(--blue)}
.scroll{overflow:auto;max-height:26em;margin-top:6px}
table{border-collapse:collapse;font-size:13px;font-variant-numeric:tabular-nums}
th,td{padding:3px 12px 3px 0;text-align:right;border-bottom:1px solid var(--grid);white-space:nowrap;vertical-align:top}
th:first-child,td:first-child{text-align:left}
th{font-weight:600}
#figures td:first-child{white-space:normal}
.facts td{text-align:left;white-space:normal;overflow-wrap:anywhere}
.facts th{text-align:left;font-weight:400;color:var(--soft);white-space:nowrap}
footer{margin-top:24px;color:var(--soft);font-size:13px}
@media (max-width:600px){svg text{font-size:12.8px}}
@media print{:root{color-scheme:light;--bg:#fff;--card:#fff;--ink:#000;--soft:#333;--rule:#666;
--grid:#ddd;--blue:#0072b2;
--sky:#8cc4ea;--red:#c84b00;--green:#00795a;--h1:#dcebf7;--h2:#bcd9ef;--h3:#94c1e3;--h4:#67a6d4;--h5:#3477b0;
--h6:#215f98;--h7:#114a7c;--h8:#082f5c}
.card{break-inside:avoid}.scroll{max-height:none;overflow:visible}
*{print-color-adjust:exact;-webkit-print-color-adjust:exact}}
)";

static std::string RowHtml(const std::vector<std::string> &cells, const char *first, const char *others)
{
  std::string html = "<tr>";

  for (size_t i = 0; i < cells.size(); i++) {
    const char *tag = i == 0 ? first : others;
    html += fmt::format("<{0}>{1}</{0}>", tag, EscapeHtml(cells[i]));
  }
  return html + "</tr>\n";
}

std::string TableHtml(const Table &table)
{
  std::string html = fmt::format("<div class=\"scroll\" tabindex=\"0\"><table id=\"{}\"{}>\n", table.id,
                                 table.head.empty() ? " class=\"facts\"" : "");

  if (!table.head.empty())
    html += "<thead>" + RowHtml(table.head, "th", "th") + "</thead>\n";
  html += "<tbody>";
  for (const std::vector<std::string> &row : table.rows)
    html += RowHtml(row, table.head.empty() ? "th" : "td", "td");
  html += "</tbody></table></div>\n";
  if (!table.note.empty())
    html += "<p class=\"soft\">" + EscapeHtml(table.note) + "</p>\n";
  return html;
}

std::string FoldedTable(const std::string &title, const Table &table)
{
  return "<details><summary>" + EscapeHtml(title) + "</summary>" + TableHtml(table) + "</details>\n";
}

std::string FigureHtml(const Figure &figure)
{
  return fmt::format(
      "<section class=\"card\" id=\"{0}\"><h2>{1}</h2>\n<p>{2}</p>\n"
      "<svg viewBox=\"0 0 {3:g} {4:g}\" role=\"img\" aria-labelledby=\"{0}-title {0}-desc\">"
      "<title id=\"{0}-title\">{1}</title><desc id=\"{0}-desc\">{5}</desc>\n{6}</svg>\n{7}</section>\n",
      figure.id, EscapeHtml(figure.title), figure.sentence, svg_width, figure.svg.height,
      EscapeHtml(figure.description), figure.svg.body, figure.rest);
}

std::string MissingFigure(const std::string &id, const std::string &title, const std::string &reason)
{
  return fmt::format("<section class=\"card missing\" id=\"{}\"><h2>{}</h2>\n<p>{}</p></section>\n", id,
                     EscapeHtml(title), EscapeHtml(reason));
}

std::string PageHtml(const std::string &title, const std::string &body)
{
  return fmt::format(
      "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
      "<meta name=\"viewport\" content=\"width=device-width,initial-scale=1\">\n"
      "<meta name=\"color-scheme\" content=\"light dark\">\n<title>{}</title>\n<style>{}</style>\n"
      "</head>\n<body>\n<main>\n{}</main>\n</body>\n</html>\n",
      EscapeHtml(title), style, body);
}

} // namespace kapris_report
