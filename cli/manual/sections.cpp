// cli/manual/sections.cpp - takes apart the text that help prints above and below the options.
// SPDX-License-Identifier: MIT

#include "manual/table.h"

#include <cctype>
#include <sstream>

namespace kapris_cli
{

static bool OpensSection(const std::string &line, const std::string &next)
{
  return std::isupper(static_cast<unsigned char>(line[0])) && line.back() == ':' && next.starts_with(' ');
}

// fresh: the line is not below one that it could belong to.
static void ReadLine(std::vector<Paragraph> *paragraphs, bool fresh, const std::string &line)
{
  const size_t indent = line.find_first_not_of(' ');
  const size_t gap = line.find("  ", indent);

  if (gap != std::string::npos)
    paragraphs->push_back({line.substr(indent, gap - indent), line.substr(line.find_first_not_of(' ', gap))});
  else if (indent > 0)
    paragraphs->push_back({line.substr(indent), ""});
  else if (fresh || !paragraphs->back().term.empty())
    paragraphs->push_back({"", line});
  else
    paragraphs->back().text += " " + line;
}

std::vector<Section> ReadSections(const std::string &text)
{
  std::vector<Section> sections(1);
  std::vector<std::string> lines;
  const std::string example = "Example: ";
  size_t current = 0;
  bool fresh = true;

  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);)
    lines.push_back(line);
  for (size_t i = 0; i < lines.size(); i++) {
    if (lines[i].empty()) {
      fresh = true;
    } else if (OpensSection(lines[i], i + 1 < lines.size() ? lines[i + 1] : "")) {
      current = sections.size();
      sections.push_back({lines[i].substr(0, lines[i].size() - 1), {}});
      fresh = true;
    } else if (lines[i].starts_with(example)) {
      sections.push_back({"Examples", {{lines[i].substr(example.size()), ""}}});
    } else {
      if (lines[i][0] != ' ' && current != 0) {
        current = 0;
        fresh = true;
      }
      ReadLine(&sections[current].paragraphs, fresh, lines[i]);
      fresh = false;
    }
  }
  return sections;
}

} // namespace kapris_cli
