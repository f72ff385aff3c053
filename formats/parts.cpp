// formats/parts.cpp - part files: one part number per line, in the order of the cells, counted from 0.
// SPDX-License-Identifier: MIT

#include "formats/parts.h"

#include "formats/files.h"
#include "formats/formats.h"
#include "formats/scan.h"

#include <cctype>
#include <fmt/core.h>

namespace kapris_formats
{

// Passes a "-1" that is a word of its own.
static bool SkipFree(Scan *scan)
{
  const std::string_view rest(scan->at, static_cast<size_t>(scan->end - scan->at));

  if (!rest.starts_with("-1") || (rest.size() > 2 && !std::isspace(static_cast<unsigned char>(rest[2]))))
    return false;
  scan->at += 2;
  return true;
}

static std::vector<int> ReadNumbers(const std::string &name, std::string_view text, int ncells, int nparts,
                                    bool free_allowed)
{
  Scan scan = StartScan(name, text);
  std::vector<int> part;

  // Grows with the lines that are there: the number of cells may come from a file that promises too many.
  while (static_cast<int>(part.size()) < ncells) {
    if (!NextLine(&scan))
      FailAt(scan, scan.at,
             fmt::format("the text ends after the parts of {} of {} cells", part.size(), ncells));
    if (!NextInLine(&scan))
      FailAt(scan, scan.at, fmt::format("the part of cell {} is missing", part.size() + 1));
    const char *part_at = scan.at;
    part.push_back(free_allowed && SkipFree(&scan) ? -1 : ReadNumber(&scan, "part"));
    if (nparts > 0 && part.back() >= nparts)
      FailAt(scan, part_at,
             fmt::format("part {}, but parts are numbered from 0 to {}", part.back(), nparts - 1));
    EndLine(&scan, "the part");
  }
  if (NextFilledLine(&scan))
    FailAt(scan, scan.at,
           fmt::format("{} is left over after the parts of {} cells", Quoted(scan, scan.at), ncells));
  return part;
}

std::vector<int> ReadParts(const std::string &name, std::string_view text, int ncells, int nparts)
{
  return ReadNumbers(name, text, ncells, nparts, false);
}

std::vector<int> ReadFixed(const std::string &name, std::string_view text, int ncells, int nparts)
{
  return ReadNumbers(name, text, ncells, nparts, true);
}

std::vector<int> LoadParts(const std::string &path, int ncells, int nparts)
{
  return ReadParts(InputName(path), OpenText(path).bytes, ncells, nparts);
}

std::vector<int> LoadFixed(const std::string &path, int ncells, int nparts)
{
  return ReadFixed(InputName(path), OpenText(path).bytes, ncells, nparts);
}

std::string FormatParts(const std::vector<int> &part)
{
  std::string text;

  for (const int p : part)
    AppendNumber(&text, p, '\n');
  return text;
}

} // namespace kapris_formats
