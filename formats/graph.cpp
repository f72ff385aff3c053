// formats/graph.cpp - graphs as adjacency lines: line i lists the neighbours of vertex i, so that an edge stands twice.
// SPDX-License-Identifier: MIT
//
//   header   vertices, edges, which weights follow             ReadHeader
//   lines    weight of the vertex, neighbours, their weights   ReadVertices
//   match    each edge with its other mention                  MatchEdges

#include "formats/formats.h"
#include "formats/nets.h"
#include "formats/scan.h"

#include <algorithm>
#include <climits>
#include <fmt/core.h>
#include <utility>

namespace kapris_formats
{

namespace
{

struct GraphHeader {
  int nvertices;
  int nedges;
  bool vertexweights = false;
  bool edgeweights = false;
};

// An edge as one of its ends has it.
struct Mention {
  int vertex, neighbour; // from 0
  std::int64_t weight;
  const char *place, *start; // in the text, and of its line
};

} // namespace

static void ReadCode(Scan *scan, GraphHeader *header)
{
  const char *place = scan->at;
  const int code = ReadCount(scan, "the format code");

  if (code > 111 || code % 10 > 1 || code / 10 % 10 > 1)
    FailAt(*scan, place,
           fmt::format("the format code is {}: its digits are 0 or 1, for sizes and weights of vertices "
                       "and weights of edges",
                       Quoted(*scan, place)));
  if (code >= 100)
    FailAt(*scan, place, "the format code asks for sizes of vertices, which have no meaning here");
  header->vertexweights = code / 10 == 1;
  header->edgeweights = code % 10 == 1;
  if (!NextInLine(scan))
    return;
  const char *count_place = scan->at;
  const int nweights = ReadCount(scan, "the number of weights per vertex");
  if (nweights != 1 && !(nweights == 0 && !header->vertexweights))
    FailAt(*scan, count_place, fmt::format("{} weights per vertex: only one is supported", nweights));
}

// A vertex is at least the end of its line, each mention of an edge a digit more. The last line may lack its end.
static GraphHeader ReadHeader(Scan *scan)
{
  GraphHeader header;

  if (!NextFilledLine(scan))
    FailAt(*scan, scan->at, "the header is missing: vertices, edges and which weights follow");
  const Scan line = *scan;
  header.nvertices = ReadCount(scan, "the number of vertices");
  header.nedges = ReadCount(scan, "the number of edges");
  if (NextInLine(scan))
    ReadCode(scan, &header);
  EndLine(scan, "the header");
  const long long left = scan->end - scan->at;
  const long long needed =
      std::max(1LL * header.nvertices, (header.edgeweights ? 8LL : 4LL) * header.nedges) - 1;
  if (needed > left)
    FailAt(line, line.at,
           fmt::format("{} vertices and {} edges need at least {} bytes, but only {} follow",
                       header.nvertices, header.nedges, needed, left));
  return header;
}

static std::int64_t ReadEdgeWeight(Scan *scan)
{
  std::int64_t total = 0;

  if (NextInLine(scan))
    return ReadWeight(scan, "edge weight", &total);
  FaultAt(*scan, scan->at, "the weight of the edge is missing");
  return no_number;
}

static void ReadNeighbours(Scan *scan, const GraphHeader &header, int vertex, std::vector<Mention> *mentions)
{
  while (NextInLine(scan)) {
    const char *place = scan->at;
    const int neighbour = ReadNumber(scan, "neighbour");
    const std::int64_t weight = header.edgeweights ? ReadEdgeWeight(scan) : 1;
    if (neighbour == no_number || weight == no_number)
      continue;
    if (neighbour < 1 || neighbour > header.nvertices)
      FaultAt(*scan, place,
              fmt::format("neighbour {} of vertex {}: vertices count from 1 to {}", neighbour, vertex + 1,
                          header.nvertices));
    else if (neighbour == vertex + 1)
      FaultAt(*scan, place, fmt::format("vertex {} cannot be its own neighbour", neighbour));
    else
      mentions->push_back({vertex, neighbour - 1, weight, place, scan->start});
  }
}

static std::vector<Mention> ReadVertices(Scan *scan, const GraphHeader &header, Hgr *hgr)
{
  std::vector<Mention> mentions;
  std::int64_t total = 0;

  for (int v = 0; v < header.nvertices; v++) {
    if (!NextLine(scan))
      FailAt(*scan, scan->at, fmt::format("the text ends after {} of {} vertices", v, header.nvertices));
    if (header.vertexweights && !NextInLine(scan))
      FaultAt(*scan, scan->at, fmt::format("the weight of vertex {} is missing", v + 1));
    else if (header.vertexweights)
      hgr->cellwgts.push_back(std::max<std::int64_t>(ReadWeight(scan, "vertex weight", &total), 0));
    ReadNeighbours(scan, header, v, &mentions);
    EndLine(scan, "the vertex");
  }
  EndText(scan, "the last vertex");
  return mentions;
}

static void FaultMention(const Scan &end, const Mention &mention, const std::string &message)
{
  Scan scan = end;

  // What is only counted needs no place, and to find one takes long.
  if (scan.problems == nullptr || scan.problems->kept.size() < most_kept)
    scan.line -= std::count(mention.start, end.start, '\n');
  scan.start = mention.start;
  FaultAt(scan, mention.place, message);
}

// The same place for both mentions of an edge.
static std::pair<int, int> EdgeOf(const Mention &mention)
{
  return std::minmax(mention.vertex, mention.neighbour);
}

// Makes a net of each edge that both ends have, with one weight.
static void MatchEdges(const Scan &scan, std::vector<Mention> *mentions, Hgr *hgr)
{
  std::int64_t total = 0;

  std::stable_sort(mentions->begin(), mentions->end(),
                   [](const Mention &a, const Mention &b) { return EdgeOf(a) < EdgeOf(b); });
  hgr->netptr.push_back(0);
  for (size_t i = 0, next = 0; i < mentions->size(); i = next) {
    const Mention &one = (*mentions)[i];
    for (next = i + 1; next < mentions->size() && EdgeOf((*mentions)[next]) == EdgeOf(one);)
      next++;
    const Mention &last = (*mentions)[next - 1];
    const auto fault = [&](const std::string &message) {
      FaultMention(scan, last,
                   fmt::format("vertices {} and {}: {}", one.vertex + 1, one.neighbour + 1, message));
    };
    if (next - i == 1 || (next - i == 2 && one.vertex == last.vertex))
      fault("only one of them lists the other as its neighbour");
    else if (next - i > 2)
      fault("there is more than one edge between them");
    else if (one.weight != last.weight)
      fault(fmt::format("the edge weighs {} in one line and {} in the other", one.weight, last.weight));
    else if (total <= most_weight && (total += one.weight) > most_weight)
      fault(fmt::format("the weight {} takes the total of the edges above {}", one.weight, most_weight));
    hgr->netind.insert(hgr->netind.end(), {EdgeOf(one).first, EdgeOf(one).second});
    hgr->netptr.push_back(static_cast<int>(hgr->netind.size()));
    hgr->netwgts.push_back(one.weight);
  }
  hgr->nnets = static_cast<int>(hgr->netwgts.size());
}

Hgr ReadGraph(const std::string &name, std::string_view text, Problems *problems)
{
  Scan scan = StartScan(name, text, problems);
  NextFilledLine(&scan);
  const Scan first = scan;
  const GraphHeader header = ReadHeader(&scan);
  Hgr hgr;

  hgr.ncells = header.nvertices;
  std::vector<Mention> mentions = ReadVertices(&scan, header, &hgr);
  if (mentions.size() > INT_MAX)
    FailAt(first, first.at, fmt::format("more than {} pins, the largest number", INT_MAX));
  MatchEdges(scan, &mentions, &hgr);
  if (hgr.nnets != header.nedges)
    FaultAt(first, first.at,
            fmt::format("the header says {} edges, but there are {}", header.nedges, hgr.nnets));
  if (!header.edgeweights)
    hgr.netwgts.clear();
  return hgr;
}

// ----------------------------------------------------------------------------------------------------------
// Writing

std::string FormatGraph(const Hgr &hgr)
{
  const size_t ncells = static_cast<size_t>(hgr.ncells);
  std::vector<std::vector<std::pair<int, std::int64_t>>> neighbours(ncells);
  const int code = (hgr.cellwgts.empty() ? 0 : 10) + (hgr.netwgts.empty() ? 0 : 1);
  std::string text =
      fmt::format("{} {}{}\n", hgr.ncells, hgr.nnets, code == 0 ? "" : fmt::format(" {:03}", code));

  for (int n = 0; n < hgr.nnets; n++) {
    const size_t first = static_cast<size_t>(hgr.netptr[static_cast<size_t>(n)]);
    const int a = hgr.netind[first], b = hgr.netind[first + 1];
    neighbours[static_cast<size_t>(a)].emplace_back(b, NetWeight(hgr, n));
    neighbours[static_cast<size_t>(b)].emplace_back(a, NetWeight(hgr, n));
  }
  for (size_t v = 0; v < ncells; v++) {
    const size_t start = text.size();
    if (!hgr.cellwgts.empty())
      AppendNumber(&text, hgr.cellwgts[v], ' ');
    for (const auto &[neighbour, weight] : neighbours[v]) {
      AppendNumber(&text, neighbour + 1, ' ');
      if (!hgr.netwgts.empty())
        AppendNumber(&text, weight, ' ');
    }
    if (text.size() > start)
      text.pop_back();
    text += '\n';
  }
  return text;
}

} // namespace kapris_formats
