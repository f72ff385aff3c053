// cli/report/frame.h - the page around the pictures; private to this folder.
// SPDX-License-Identifier: MIT
#pragma once

#include "report/svg.h"

#include <string>
#include <string_view>
#include <vector>

namespace kapris_report
{

// A table of plain texts; the first column names the rows. The id is for programs that read the page.
struct Table {
  std::string id;
  std::vector<std::string> head;
  std::vector<std::vector<std::string>> rows;
  std::string note; // what the table leaves out; empty: nothing
};

std::string TableHtml(const Table &table);
// The same behind a line to click on.
std::string FoldedTable(const std::string &title, const Table &table);

// A picture: heading, a sentence in HTML about it, the drawing with its description for those who cannot see it, and
// more HTML, such as tables. All but the sentence and the rest is escaped here.
struct Figure {
  std::string id, title, sentence, description;
  Svg svg;
  std::string rest;
};

std::string FigureHtml(const Figure &figure);
// What stands in the place of a picture that cannot be drawn.
std::string MissingFigure(const std::string &id, const std::string &title, const std::string &reason);

// The whole page.
std::string PageHtml(const std::string &title, const std::string &body);

} // namespace kapris_report
