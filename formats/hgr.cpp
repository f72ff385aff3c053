// formats/hgr.cpp - the reader of .hgr text.
// SPDX-License-Identifier: MIT
//
//   header   nets, cells and which weights follow                ReadHeader
//   bound    the counts by the bytes that are left, before any   CheckCounts
//            memory is taken for them
//   nets     one line each: weight, pins from 1                  ReadNetLines
//   weights  one line per cell                                   ReadCellWeights
//   doubt    whether it is a graph instead                       IsAdjacency
//   end      nothing but comments and blank lines                EndText

#include "formats/hgr.h"

#include "formats/failure.h"
#include "formats/nets.h"
#include "formats/scan.h"

#include <algorithm>
#include <fmt/core.h>
#include <utility>

namespace kapris_formats
{

namespace
{

struct HgrHeader {
  int nnets;
  int ncells;
  bool netweights;
  bool cellweights;
};

} // namespace

// A net is at least the end of its line, a weight at least a digit more. The last line may lack its end.
static void CheckCounts(const Scan &header_line, long long left, const HgrHeader &header)
{
  const long long needed =
      (header.netweights ? 2LL : 1LL) * header.nnets + (header.cellweights ? 2LL : 0LL) * header.ncells - 1;

  if (needed > left)
    FailAt(header_line, header_line.at,
           fmt::format("{} nets{}{} need at least {} bytes, but only {} follow", header.nnets,
                       header.netweights ? " with weights" : "",
                       header.cellweights ? fmt::format(" and {} cell weights", header.ncells) : "", needed,
                       left));
}

static HgrHeader ReadHeader(Scan *scan)
{
  HgrHeader header = {0, 0, false, false};

  if (!NextFilledLine(scan))
    FailAt(*scan, scan->at, "the header is missing: nets, cells and which weights follow");
  const Scan header_line = *scan;
  header.nnets = ReadCount(scan, "the number of nets");
  header.ncells = ReadCount(scan, "the number of cells");
  if (NextInLine(scan)) {
    const char *fmt_at = scan->at;
    const int code = ReadCount(scan, "the format code");
    if (code != 0 && code != 1 && code != 10 && code != 11)
      FailAt(*scan, fmt_at,
             fmt::format("the format code is {}, not 0 (no weights), 1 (nets), 10 (cells) or 11 (both)",
                         Quoted(*scan, fmt_at)));
    header.netweights = code % 10 == 1;
    header.cellweights = code / 10 == 1;
  }
  EndLine(scan, "the header");
  CheckCounts(header_line, scan->end - scan->at, header);
  return header;
}

static void ReadCellWeights(Scan *scan, const HgrHeader &header, Hgr *hgr)
{
  std::int64_t total = 0;

  hgr->cellwgts.reserve(static_cast<size_t>(header.ncells));
  for (int cell = 0; cell < header.ncells; cell++) {
    if (!NextLine(scan))
      FailAt(*scan, scan->at, fmt::format("the text ends after {} of {} cell weights", cell, header.ncells));
    if (!NextInLine(scan))
      FaultAt(*scan, scan->at, fmt::format("the weight of cell {} is missing", cell + 1));
    else
      hgr->cellwgts.push_back(ReadWeight(scan, "cell weight", &total));
    EndLine(scan, "the cell weight");
  }
}

// Whether the lines are those of an adjacency file: line i lists the neighbours of i, so that each edge stands twice.
static bool IsAdjacency(const Hgr &hgr)
{
  std::vector<std::pair<int, int>> edges, mirrored;

  if (hgr.netind.empty() || hgr.netind.size() != 2 * static_cast<size_t>(hgr.ncells))
    return false;
  for (int v = 0; v < hgr.nnets; v++)
    for (int i = hgr.netptr[static_cast<size_t>(v)]; i < hgr.netptr[static_cast<size_t>(v) + 1]; i++) {
      const int neighbour = hgr.netind[static_cast<size_t>(i)];
      if (neighbour == v)
        return false;
      edges.emplace_back(v, neighbour);
      mirrored.emplace_back(neighbour, v);
    }
  std::sort(edges.begin(), edges.end());
  std::sort(mirrored.begin(), mirrored.end());
  return edges == mirrored;
}

Hgr ReadHgr(const std::string &name, std::string_view text, Problems *problems)
{
  Scan scan = StartScan(name, text, problems);
  const HgrHeader header = ReadHeader(&scan);
  const Scan first_net = scan;
  Hgr hgr;

  ReadNetLines(&scan, {header.nnets, header.ncells, 1, header.netweights}, &hgr);
  if (problems != nullptr && IsAdjacency(hgr))
    WarnAt(first_net, first_net.at,
           fmt::format("this looks like an adjacency list (.graph): {} lines name each of {} edges twice; a "
                       "hypergraph file has one line per net that lists its cells",
                       hgr.nnets, hgr.ncells));
  if (header.cellweights)
    ReadCellWeights(&scan, header, &hgr);
  EndText(&scan, header.cellweights ? "the last cell weight" : "the last net");
  return hgr;
}

} // namespace kapris_formats
