// formats/bookshelf_write.cpp - writes a hypergraph as the files of a Bookshelf problem.
// SPDX-License-Identifier: MIT

#include "formats/bookshelf.h"
#include "formats/failure.h"
#include "formats/formats.h"
#include "formats/scan.h"

#include <algorithm>
#include <fmt/core.h>

namespace kapris_formats
{

// Names are words here, and a line that begins with '#' is a comment.
static void CheckWords(const char *what, const std::vector<std::string> &names)
{
  for (size_t i = 0; i < names.size(); i++) {
    const std::string &name = names[i];
    const bool word = !name.empty() && name[0] != '#' && name.find('\n') == name.npos &&
                      std::none_of(name.begin(), name.end(), IsBlank);
    if (!word)
      throw Failure{EXIT_USAGE,
                    fmt::format("{} {} is called {}, which a file of Bookshelf cannot hold: write .hgr, "
                                "with --names",
                                what, i + 1, ShortName(name))};
  }
}

static void CheckRepeats(const char *what, const std::vector<std::string> &names)
{
  const auto repeats = FindRepeats(names);

  if (!repeats.empty())
    throw Failure{EXIT_USAGE,
                  fmt::format("{}s {} and {} are both called {}, which files of Bookshelf cannot hold", what,
                              repeats[0].first + 1, repeats[0].second + 1,
                              ShortName(names[static_cast<size_t>(repeats[0].first)]))};
}

// Names for what has none: c1, c2, ..., n1, ...
static std::vector<std::string> NamesOr(const std::vector<std::string> &names, const char *letter, int count)
{
  std::vector<std::string> made = names;

  for (int i = static_cast<int>(made.size()); i < count; i++)
    made.push_back(fmt::format("{}{}", letter, i + 1));
  return made;
}

static std::string FormatNodes(const Hgr &hgr, const std::vector<std::string> &cells)
{
  const auto terminals = std::count(hgr.cellwgts.begin(), hgr.cellwgts.end(), 0);
  std::string text = fmt::format("UCLA nodes 1.0\nNumNodes : {}\nNumTerminals : {}\n", hgr.ncells, terminals);

  for (int cell = 0; cell < hgr.ncells; cell++) {
    const std::int64_t weight = CellWeight(hgr, cell);
    text += cells[static_cast<size_t>(cell)];
    text += weight == 0 ? " 1 1 terminal\n" : fmt::format(" {} 1\n", weight);
  }
  return text;
}

static std::string FormatNets(const Hgr &hgr, const std::vector<std::string> &cells,
                              const std::vector<std::string> &nets)
{
  std::string text = fmt::format("UCLA nets 1.0\nNumNets : {}\nNumPins : {}\n", hgr.nnets, hgr.netind.size());

  for (size_t net = 0; net < static_cast<size_t>(hgr.nnets); net++) {
    text += fmt::format("NetDegree : {} {}\n", hgr.netptr[net + 1] - hgr.netptr[net], nets[net]);
    for (int i = hgr.netptr[net]; i < hgr.netptr[net + 1]; i++)
      text += cells[static_cast<size_t>(hgr.netind[static_cast<size_t>(i)])] + " B\n";
  }
  return text;
}

std::vector<std::string> BookshelfOutputs(const std::string &path)
{
  const std::string stem = path.substr(0, path.size() - 4);

  if (!path.ends_with(".aux") || path.size() == 4 || path.ends_with("/.aux"))
    throw Failure{EXIT_USAGE,
                  "the name of a Bookshelf problem ends with .aux: its other files stand beside it"};
  return {stem + ".nodes", stem + ".nets", stem + ".wts", stem + ".pl", path};
}

std::vector<std::pair<std::string, std::string>> FormatBookshelf(const std::string &path, const Hgr &hgr,
                                                                 const Details &details)
{
  const std::vector<std::string> paths = BookshelfOutputs(path);
  const std::vector<std::string> cells = NamesOr(details.cells, "c", hgr.ncells);
  const std::vector<std::string> nets = NamesOr(details.nets, "n", hgr.nnets);
  std::vector<std::pair<std::string, std::string>> files;
  std::string aux = "RowBasedPlacement :";

  CheckWords("cell", cells);
  CheckWords("net", nets);
  CheckRepeats("cell", cells);
  files.emplace_back(paths[0], FormatNodes(hgr, cells));
  files.emplace_back(paths[1], FormatNets(hgr, cells, nets));
  if (!hgr.netwgts.empty()) {
    CheckRepeats("net", nets);
    files.emplace_back(paths[2], "UCLA wts 1.0\n");
    for (size_t net = 0; net < nets.size(); net++)
      files.back().second += fmt::format("{} {}\n", nets[net], hgr.netwgts[net]);
  }
  if (!details.terminals.empty()) {
    files.emplace_back(paths[3], "UCLA pl 1.0\n");
    for (const Terminal &terminal : details.terminals)
      files.back().second += fmt::format("{} {} {} : N /FIXED\n", cells[static_cast<size_t>(terminal.cell)],
                                         terminal.x, terminal.y);
  }
  for (const auto &[file, text] : files) {
    const std::string name = file.substr(file.rfind('/') + 1);
    CheckWords("the file", {name});
    aux += " " + name;
  }
  files.emplace_back(path, aux + "\n");
  return files;
}

} // namespace kapris_formats
