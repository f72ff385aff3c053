// formats/names.cpp - names of cells and nets: how they are kept beside a hypergraph, written, and looked up.
// SPDX-License-Identifier: MIT

#include "formats/names.h"

#include "formats/files.h"
#include "formats/formats.h"
#include "formats/parts.h"
#include "formats/text.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <fmt/core.h>
#include <numeric>

namespace kapris_formats
{

// ----------------------------------------------------------------------------------------------------------
// Writing

// '%' begins comments.
static bool IsPlain(std::string_view name)
{
  return !name.empty() && name[0] != '"' && name[0] != '%' && name.find(' ') == name.npos && IsVisible(name);
}

void AppendName(std::string *text, std::string_view name)
{
  if (IsPlain(name)) {
    *text += name;
    return;
  }
  *text += '"';
  for (size_t at = 0; at < name.size();) {
    unsigned long c = 0;
    const size_t length = ReadCharacter(name, at, &c);
    const std::string_view character = name.substr(at, std::max<size_t>(length, 1));
    if (character == "\"" || character == "\\")
      *text += '\\';
    // Escape leaves these two as they are.
    *text += Escape(character);
    at += character.size();
  }
  *text += '"';
}

static std::string NameIn(const std::vector<std::string> &names, int i)
{
  std::string text;

  if (names.empty())
    return fmt::format("{}", i + 1);
  AppendName(&text, names[static_cast<size_t>(i)]);
  return text;
}

std::string CellName(const Details &details, int cell)
{
  return NameIn(details.cells, cell);
}

std::string NetName(const Details &details, int net)
{
  return NameIn(details.nets, net);
}

std::string ShortName(std::string_view name)
{
  constexpr size_t longest = 60;
  const bool whole = name.size() <= longest;

  return fmt::format("'{}{}'", Escape(name.substr(0, longest)), whole ? "" : "...");
}

std::string FormatNames(const Details &details, const std::vector<int> &part)
{
  std::string text;

  for (size_t cell = 0; cell < part.size(); cell++) {
    if (details.cells.empty())
      AppendNumber(&text, static_cast<std::int64_t>(cell) + 1, '\t');
    else {
      AppendName(&text, details.cells[cell]);
      text += '\t';
    }
    AppendNumber(&text, part[cell], '\n');
  }
  return text;
}

// ----------------------------------------------------------------------------------------------------------
// Reading

// One escaped byte behind a backslash; false if there is none.
static bool ReadEscape(std::string_view rest, size_t *length, std::string *name)
{
  static constexpr std::string_view letters = "ntr\"\\", meanings = "\n\t\r\"\\";
  const size_t letter = rest.size() < 2 ? letters.npos : letters.find(rest[1]);
  unsigned byte = 0;

  *length = 2;
  if (letter != letters.npos) {
    *name += meanings[letter];
    return true;
  }
  *length = 4;
  if (rest.size() < 4 || rest[1] != 'x' ||
      std::from_chars(rest.data() + 2, rest.data() + 4, byte, 16).ptr != rest.data() + 4)
    return false;
  *name += static_cast<char>(byte);
  return true;
}

static std::string ReadQuotedName(Scan *scan)
{
  const char *place = scan->at++;
  std::string name;

  while (scan->at != scan->end && *scan->at != '"' && *scan->at != '\n') {
    size_t length = 1;
    if (*scan->at != '\\')
      name += *scan->at;
    else if (!ReadEscape({scan->at, static_cast<size_t>(scan->end - scan->at)}, &length, &name))
      FailAt(*scan, scan->at, R"(a backslash in quotation marks is the start of \n, \t, \r, \", \\ or \xNN)");
    scan->at += length;
  }
  if (scan->at == scan->end || *scan->at != '"')
    FailAt(*scan, place, "the line ends before the quotation mark that ends the name");
  scan->at++;
  if (scan->at != scan->end && !IsBlank(*scan->at) && *scan->at != '\n')
    FailAt(*scan, scan->at, fmt::format("{} follows the quotation mark at once", Quoted(*scan, scan->at)));
  return name;
}

std::string ReadName(Scan *scan)
{
  return scan->at != scan->end && *scan->at == '"' ? ReadQuotedName(scan) : std::string(NextWord(scan));
}

// A number from 1 to ncells, or 0.
static int NumberOf(std::string_view word, int ncells)
{
  int number = 0;
  const auto read = std::from_chars(word.data(), word.data() + word.size(), number);

  return read.ec == std::errc() && read.ptr == word.data() + word.size() && number >= 1 && number <= ncells
             ? number
             : 0;
}

static std::vector<int> SortNames(const std::vector<std::string> &names)
{
  std::vector<int> order(names.size());

  std::iota(order.begin(), order.end(), 0);
  std::sort(order.begin(), order.end(), [&names](int a, int b) {
    const int compared = names[static_cast<size_t>(a)].compare(names[static_cast<size_t>(b)]);
    return compared != 0 ? compared < 0 : a < b;
  });
  return order;
}

NameIndex IndexCells(const Details &details, int ncells)
{
  const bool numbers = std::none_of(details.cells.begin(), details.cells.end(), [](const std::string &name) {
    return !name.empty() && std::all_of(name.begin(), name.end(), IsDigit);
  });

  return {&details.cells, SortNames(details.cells), ncells, numbers};
}

std::vector<std::pair<int, int>> FindRepeats(const std::vector<std::string> &names)
{
  const std::vector<int> order = SortNames(names);
  std::vector<std::pair<int, int>> repeats;
  size_t first = 0;

  for (size_t i = 1; i < order.size(); i++)
    if (names[static_cast<size_t>(order[i])] == names[static_cast<size_t>(order[first])])
      repeats.emplace_back(order[first], order[i]);
    else
      first = i;
  return repeats;
}

std::pair<size_t, size_t> FindName(const NameIndex &index, std::string_view name)
{
  const auto at = [&index](int cell) -> std::string_view {
    return (*index.names)[static_cast<size_t>(cell)];
  };
  const auto first = std::lower_bound(index.order.begin(), index.order.end(), name,
                                      [&](int cell, std::string_view word) { return at(cell) < word; });
  const auto last = std::upper_bound(first, index.order.end(), name,
                                     [&](std::string_view word, int cell) { return word < at(cell); });

  return {static_cast<size_t>(first - index.order.begin()), static_cast<size_t>(last - index.order.begin())};
}

int ReadCell(Scan *scan, const NameIndex &index)
{
  const char *place = scan->at;
  const bool quoted = *place == '"';
  const std::string name = ReadName(scan);
  const auto [first, last] = FindName(index, name);
  if (last - first > 1)
    FailAt(*scan, place,
           fmt::format("{} cells are called {}{}", last - first, ShortName(name),
                       index.numbers
                           ? fmt::format(": give their numbers, the first is {}", index.order[first] + 1)
                           : ""));
  if (last > first)
    return index.order[first];
  const int number = index.numbers && !quoted ? NumberOf(name, index.ncells) : 0;
  if (number == 0)
    FailAt(*scan, place,
           index.order.empty()
               ? fmt::format("{} is not the number of a cell, 1 to {}", ShortName(name), index.ncells)
               : fmt::format("no cell is called {}", ShortName(name)));
  return number - 1;
}

// ----------------------------------------------------------------------------------------------------------
// Parts by name

// Whether the first line is a name and a part.
static bool IsNamedForm(const std::string &name, std::string_view text)
{
  Scan scan = StartScan(name, text);

  if (!NextFilledLine(&scan))
    return false;
  if (*scan.at == '"')
    return true;
  NextWord(&scan);
  return NextInLine(&scan);
}

static int ReadPart(Scan *scan, int nparts, bool complete)
{
  if (!NextInLine(scan))
    FailAt(*scan, scan->at, "the part of the cell is missing");
  const char *place = scan->at;
  const int part = complete ? ReadNumber(scan, "part") : ReadSigned(scan, "part");
  if (part < -1)
    FailAt(*scan, place, fmt::format("part {}: -1 leaves a cell free, parts are numbered from 0", part));
  if (nparts > 0 && part >= nparts)
    FailAt(*scan, place, fmt::format("part {}, but parts are numbered from 0 to {}", part, nparts - 1));
  return part;
}

std::vector<int> ReadNamed(const std::string &name, std::string_view text, const NameIndex &index, int nparts,
                           bool complete)
{
  const size_t n = static_cast<size_t>(index.ncells);
  Scan scan = StartScan(name, text);
  std::vector<int> part(n, -1);
  std::vector<long long> line(n, 0);
  size_t nread = 0;

  for (; NextFilledLine(&scan); nread++) {
    const char *place = scan.at;
    const size_t cell = static_cast<size_t>(ReadCell(&scan, index));
    if (line[cell] > 0)
      FailAt(scan, place, fmt::format("{} has its part in line {} already", Quoted(scan, place), line[cell]));
    line[cell] = scan.line;
    part[cell] = ReadPart(&scan, nparts, complete);
    EndLine(&scan, "the part");
  }
  if (complete && nread < n) {
    const size_t missing = static_cast<size_t>(std::find(line.begin(), line.end(), 0) - line.begin());
    FailAt(scan, scan.at,
           fmt::format("the text ends after the parts of {} of {} cells; cell {}{} has none", nread, n,
                       missing + 1,
                       index.names->empty() ? "" : fmt::format(", {},", ShortName((*index.names)[missing]))));
  }
  return part;
}

static std::vector<int> LoadEither(const std::string &path, const Details &details, int ncells, int nparts,
                                   bool complete)
{
  const std::string name = InputName(path);
  const Text text = OpenText(path);

  if (IsNamedForm(name, text.bytes))
    return ReadNamed(name, text.bytes, IndexCells(details, ncells), nparts, complete);
  return complete ? ReadParts(name, text.bytes, ncells, nparts) : ReadFixed(name, text.bytes, ncells, nparts);
}

std::vector<int> LoadNamedParts(const std::string &path, const Details &details, int ncells, int nparts)
{
  return LoadEither(path, details, ncells, nparts, true);
}

std::vector<int> LoadNamedFixed(const std::string &path, const Details &details, int ncells, int nparts)
{
  return LoadEither(path, details, ncells, nparts, false);
}

} // namespace kapris_formats
