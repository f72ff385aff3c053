// formats/bookshelf.cpp - placement problems in the files of the Bookshelf format.
// SPDX-License-Identifier: MIT
//
//   nodes   name, width, height, perhaps "terminal"                    ReadNodes
//   nets    "NetDegree : N name", then a line for each pin             ReadNets
//   wts     name and weight of nets                                    ReadNetWeights
//   pl      name and place of nodes                                    ReadPlaces
//
// Each text begins with a line "UCLA kind version"; lines that begin with '#' are comments.

#include "formats/bookshelf.h"

#include "formats/failure.h"
#include "formats/files.h"
#include "formats/nets.h"
#include "formats/scan.h"
#include "formats/text.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <fmt/core.h>

namespace kapris_formats
{

namespace
{

struct Nodes {
  std::vector<std::string> names;
  std::vector<bool> terminal;
};

struct NetsRead {
  Hgr hgr;
  std::vector<std::string> names;
};

} // namespace

// ----------------------------------------------------------------------------------------------------------
// What the texts share

// Passes the first line.
static Scan StartText(const NamedText &text, const char *kind, Problems *problems)
{
  Scan scan = StartScan(text.name, text.bytes, problems, '#');

  if (!NextFilledLine(&scan))
    FailAt(scan, scan.at, fmt::format("the first line 'UCLA {} 1.0' is missing", kind));
  const Scan line = scan;
  if (NextWord(&scan) != "UCLA" || NextWord(&scan) != kind)
    FailAt(line, line.at, fmt::format("the first line must be 'UCLA {} 1.0'", kind));
  NextWord(&scan);
  EndLine(&scan, "the first line");
  return scan;
}

// Words end at a colon too, which is a word of its own.
static std::string_view NextPiece(Scan *scan)
{
  NextInLine(scan);
  const char *first = scan->at;
  if (scan->at != scan->end && *scan->at == ':')
    scan->at++;
  else
    while (scan->at != scan->end && !IsBlank(*scan->at) && *scan->at != '\n' && *scan->at != ':')
      scan->at++;
  return {first, static_cast<size_t>(scan->at - first)};
}

// Reads "key : number" if the line has that form: number is what the file declares.
static bool ReadDeclared(Scan *scan, std::string_view key, int *number)
{
  Scan ahead = *scan;

  if (NextPiece(&ahead) != key || NextPiece(&ahead) != ":")
    return false;
  *number = ReadCount(&ahead, "the number");
  EndLine(&ahead, "the number");
  *scan = ahead;
  return true;
}

static void CheckDeclared(const Scan &scan, const char *key, int declared, size_t found)
{
  if (declared >= 0 && static_cast<size_t>(declared) != found)
    FaultAt(scan, scan.at, fmt::format("{} is {}, but there are {}", key, declared, found));
}

static bool ParseDecimal(std::string_view word, double *number)
{
  if (word.starts_with('+'))
    word.remove_prefix(1);
  const auto read = std::from_chars(word.data(), word.data() + word.size(), *number);

  return read.ec == std::errc() && read.ptr == word.data() + word.size() && std::isfinite(*number);
}

// A size is a whole number, whatever zeros follow its point.
static std::int64_t ReadSize(Scan *scan, const char *what)
{
  if (!NextInLine(scan)) {
    FaultAt(*scan, scan->at, fmt::format("the {} of the node is missing", what));
    return 0;
  }
  const char *place = scan->at;
  const std::string_view word = NextWord(scan);
  const size_t point = std::min(word.find('.'), word.size());
  const std::string_view digits = word.substr(0, point),
                         zeros = word.substr(std::min(point + 1, word.size()));
  std::int64_t size = 0;
  const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), size);
  if (read.ec == std::errc() && read.ptr == digits.data() + digits.size() && size >= 0 &&
      size <= most_weight && zeros.find_first_not_of('0') == zeros.npos)
    return size;
  FaultAt(*scan, place,
          fmt::format("{}: {} is not a whole number from 0 to {}", what, Quoted(*scan, place), most_weight));
  return 0;
}

// ----------------------------------------------------------------------------------------------------------
// The texts

static std::int64_t AddArea(const Scan &scan, const char *place, std::int64_t width, std::int64_t height,
                            std::int64_t *total)
{
  if (*total > most_weight)
    return 0;
  if (height > 0 && width > (most_weight - *total) / height) {
    *total = most_weight + 1;
    FaultAt(scan, place,
            fmt::format("the area {} x {} takes the total above {}", width, height, most_weight));
    return 0;
  }
  *total += width * height;
  return width * height;
}

static Nodes ReadNodes(const NamedText &text, Problems *problems, Hgr *hgr)
{
  Scan scan = StartText(text, "nodes", problems);
  int declared = -1, declared_terminals = -1;
  std::int64_t total = 0;
  std::vector<const char *> places;
  std::vector<long long> lines;
  Nodes nodes;

  while (NextFilledLine(&scan)) {
    if (ReadDeclared(&scan, "NumNodes", &declared) ||
        ReadDeclared(&scan, "NumTerminals", &declared_terminals))
      continue;
    const char *place = scan.at;
    lines.push_back(scan.line);
    nodes.names.emplace_back(NextWord(&scan));
    const std::int64_t width = ReadSize(&scan, "width"), height = ReadSize(&scan, "height");
    NextInLine(&scan);
    const char *kind_at = scan.at;
    const std::string_view kind = NextWord(&scan);
    if (!kind.empty() && kind != "terminal" && kind != "terminal_NI")
      FaultAt(scan, kind_at, fmt::format("{} is neither terminal nor terminal_NI", Quoted(scan, kind_at)));
    nodes.terminal.push_back(kind.starts_with("terminal"));
    hgr->cellwgts.push_back(nodes.terminal.back() ? 0 : AddArea(scan, place, width, height, &total));
    EndLine(&scan, "the node");
  }
  if (nodes.names.size() > INT_MAX)
    FailAt(scan, scan.at, fmt::format("more than {} nodes", INT_MAX));
  CheckDeclared(scan, "NumNodes", declared, nodes.names.size());
  CheckDeclared(scan, "NumTerminals", declared_terminals,
                static_cast<size_t>(std::count(nodes.terminal.begin(), nodes.terminal.end(), true)));
  for (const auto &[first, again] : FindRepeats(nodes.names)) {
    const std::string fault = fmt::format(
        "{}:{}:1: the node {} stands in line {} already", text.name, lines[static_cast<size_t>(again)],
        ShortName(nodes.names[static_cast<size_t>(again)]), lines[static_cast<size_t>(first)]);
    if (problems == nullptr)
      throw Failure{EXIT_MALFORMED, fault};
    AddProblem(problems, false, fault);
  }
  hgr->ncells = static_cast<int>(nodes.names.size());
  return nodes;
}

// "NetDegree : N name"; a net without a name is called by its number.
static bool ReadNetHead(Scan *scan, int *degree, NetsRead *nets)
{
  Scan ahead = *scan;

  if (NextPiece(&ahead) != "NetDegree" || NextPiece(&ahead) != ":")
    return false;
  *degree = ReadCount(&ahead, "the degree of the net");
  const std::string_view name = NextWord(&ahead);
  nets->names.push_back(name.empty() ? fmt::format("{}", nets->names.size() + 1) : std::string(name));
  EndLine(&ahead, "the name of the net");
  *scan = ahead;
  return true;
}

// A fault if the net before this place has more or fewer pins than its degree.
static void EndNet(const Scan &scan, int degree, NetsRead *nets)
{
  Hgr &hgr = nets->hgr;

  if (nets->names.empty())
    return;
  const int npins = static_cast<int>(hgr.netind.size()) - hgr.netptr.back();
  if (npins != degree)
    FaultAt(scan, scan.at,
            fmt::format("the net {} has {} pins before this line, but its degree is {}",
                        ShortName(nets->names.back()), npins, degree));
  hgr.netptr.push_back(static_cast<int>(hgr.netind.size()));
}

static void ReadPin(Scan *scan, const NameIndex &index, NetsRead *nets)
{
  const char *place = scan->at;
  const std::string_view word = NextWord(scan);
  const auto [found, end] = FindName(index, word);

  if (nets->names.empty())
    FailAt(*scan, place, "a pin stands before the first net");
  if (found == end)
    FaultAt(*scan, place, fmt::format("no node is called {}", Quoted(*scan, place)));
  else
    nets->hgr.netind.push_back(index.order[found]);
  if (nets->hgr.netind.size() > INT_MAX)
    FailAt(*scan, place, fmt::format("more than {} pins, the largest number", INT_MAX));
  // Direction and offset of the pin.
  while (!NextWord(scan).empty())
    ;
  EndLine(scan, "the pin");
}

static NetsRead ReadNets(const NamedText &text, const NameIndex &index, Problems *problems)
{
  Scan scan = StartText(text, "nets", problems);
  int declared = -1, declared_pins = -1, degree = 0;
  NetsRead nets;

  nets.hgr.netptr.push_back(0);
  while (NextFilledLine(&scan)) {
    const Scan line = scan;
    const int degree_before = degree;
    const size_t nnets = nets.names.size();
    if (ReadDeclared(&scan, "NumNets", &declared) || ReadDeclared(&scan, "NumPins", &declared_pins))
      continue;
    if (!ReadNetHead(&scan, &degree, &nets)) {
      ReadPin(&scan, index, &nets);
      continue;
    }
    // The net before ends where this one begins.
    std::string name = std::move(nets.names.back());
    nets.names.pop_back();
    if (nnets > 0)
      EndNet(line, degree_before, &nets);
    nets.names.push_back(std::move(name));
  }
  EndNet(scan, degree, &nets);
  if (nets.names.size() > INT_MAX)
    FailAt(scan, scan.at, fmt::format("more than {} nets", INT_MAX));
  CheckDeclared(scan, "NumNets", declared, nets.names.size());
  CheckDeclared(scan, "NumPins", declared_pins, nets.hgr.netind.size());
  nets.hgr.nnets = static_cast<int>(nets.names.size());
  return nets;
}

// Lines of nodes are passed over: these weigh their area.
static void ReadNetWeights(const NamedText &text, const Details &names, const NameIndex &nodes,
                           Problems *problems, Hgr *hgr)
{
  const Details nets = {names.nets, {}, {}};
  const NameIndex index = IndexCells(nets, hgr->nnets);
  Scan scan = StartText(text, "wts", problems);
  std::int64_t total = 0;

  hgr->netwgts.assign(static_cast<size_t>(hgr->nnets), 1);
  while (NextFilledLine(&scan)) {
    const char *place = scan.at;
    const std::string_view word = NextWord(&scan);
    const auto [first, last] = FindName(index, word);
    const auto [node, node_end] = FindName(nodes, word);
    if (!NextInLine(&scan)) {
      FaultAt(scan, scan.at, "the weight is missing");
    } else if (last - first == 1) {
      hgr->netwgts[static_cast<size_t>(index.order[first])] =
          std::max<std::int64_t>(ReadWeight(&scan, "net weight", &total), 0);
    } else {
      if (last > first)
        FaultAt(scan, place, fmt::format("{} nets are called {}", last - first, Quoted(scan, place)));
      else if (node == node_end)
        FaultAt(scan, place, fmt::format("no net is called {}", Quoted(scan, place)));
      else if (problems != nullptr)
        WarnAt(scan, place, "the weight of a node is passed over: cells weigh their area");
      NextWord(&scan);
    }
    EndLine(&scan, "the weight");
  }
  // The nets without a line count too.
  total = 0;
  for (const std::int64_t weight : hgr->netwgts) {
    if (weight > most_weight - total)
      FailAt(scan, scan.at, fmt::format("the nets weigh more than {} together", most_weight));
    total += weight;
  }
}

static void ReadPlaces(const NamedText &text, const Nodes &nodes, const NameIndex &index, Problems *problems,
                       Details *details)
{
  Scan scan = StartText(text, "pl", problems);

  while (NextFilledLine(&scan)) {
    const char *place = scan.at;
    const std::string_view word = NextWord(&scan);
    const auto [found, end] = FindName(index, word);
    double at[2] = {0.0, 0.0};
    bool whole = true;
    for (double &coordinate : at) {
      NextInLine(&scan);
      const char *number_at = scan.at;
      if (!ParseDecimal(NextWord(&scan), &coordinate)) {
        FaultAt(scan, number_at, fmt::format("{} is not a coordinate", Quoted(scan, number_at)));
        whole = false;
        break;
      }
    }
    // Orientation, and whether it is fixed.
    while (!NextWord(&scan).empty())
      ;
    if (found == end)
      FaultAt(scan, place, fmt::format("no node is called {}", Quoted(scan, place)));
    else if (whole && nodes.terminal[static_cast<size_t>(index.order[found])])
      details->terminals.push_back({index.order[found], at[0], at[1]});
    EndLine(&scan, "the place");
  }
  std::stable_sort(details->terminals.begin(), details->terminals.end(),
                   [](const Terminal &a, const Terminal &b) { return a.cell < b.cell; });
}

static void WarnNames(const NamedText &nets, const Details &details, Problems *problems)
{
  const auto repeats = FindRepeats(details.nets);

  if (!repeats.empty())
    AddProblem(problems, true,
               fmt::format("{}:1:1: warning: names of more than one net: {} repeated; the first is {}",
                           nets.name, repeats.size(),
                           ShortName(details.nets[static_cast<size_t>(repeats[0].first)])));
}

Hgr ReadBookshelf(const BookshelfTexts &texts, Problems *problems, Details *details)
{
  Hgr sizes;
  Details found;
  Nodes nodes = ReadNodes(texts.nodes, problems, &sizes);

  found.cells = nodes.names;
  const NameIndex index = IndexCells(found, sizes.ncells);
  NetsRead nets = ReadNets(texts.nets, index, problems);
  Hgr hgr = std::move(nets.hgr);
  hgr.ncells = sizes.ncells;
  hgr.cellwgts = std::move(sizes.cellwgts);
  found.nets = std::move(nets.names);
  if (!texts.wts.name.empty())
    ReadNetWeights(texts.wts, found, index, problems, &hgr);
  if (!texts.pl.name.empty())
    ReadPlaces(texts.pl, nodes, index, problems, &found);
  if (problems != nullptr)
    WarnNames(texts.nets, found, problems);
  if (details != nullptr)
    *details = std::move(found);
  return hgr;
}

// ----------------------------------------------------------------------------------------------------------
// Files

static const char *const kinds[] = {".nodes", ".nets", ".wts", ".pl"};

BookshelfPaths ReadAux(const std::string &path, std::string_view text)
{
  Scan scan = StartScan(InputName(path), text, nullptr, '#');
  const size_t slash = path.rfind('/');
  const std::string folder = path == "-" || slash == path.npos ? "" : path.substr(0, slash + 1);
  BookshelfPaths paths;
  std::string *const found[] = {&paths.nodes, &paths.nets, &paths.wts, &paths.pl};

  while (NextFilledLine(&scan)) {
    while (NextInLine(&scan)) {
      const char *place = scan.at;
      std::string_view word = NextWord(&scan), stem = word;
      if (stem.ends_with(".gz"))
        stem.remove_suffix(3);
      for (size_t k = 0; k < std::size(kinds); k++) {
        if (!stem.ends_with(kinds[k]))
          continue;
        if (!found[k]->empty())
          FailAt(scan, place, fmt::format("{} is a second file {}", Quoted(scan, place), kinds[k]));
        *found[k] = (word.starts_with('/') ? "" : folder) + std::string(word);
      }
    }
    EndLine(&scan, "the names");
  }
  for (size_t k = 0; k < 2; k++)
    if (found[k]->empty())
      FailAt(scan, scan.at, fmt::format("no file {} is named", kinds[k]));
  return paths;
}

Hgr LoadBookshelf(const std::string &path, std::string_view text, Problems *problems, Details *details)
{
  const BookshelfPaths paths = ReadAux(path, text);
  std::vector<Text> owners;
  const auto open = [&owners](const std::string &file) -> NamedText {
    if (file.empty())
      return {};
    owners.push_back(OpenText(file));
    return {InputName(file), owners.back().bytes};
  };

  return ReadBookshelf({open(paths.nodes), open(paths.nets), open(paths.wts), open(paths.pl)}, problems,
                       details);
}

} // namespace kapris_formats
