// formats/patoh.cpp - the reader of .patoh text.
// SPDX-License-Identifier: MIT
//
// One line per net as in .hgr, but the header counts cells before nets, and pins too, and cell weights may share lines.

#include "formats/formats.h"
#include "formats/nets.h"
#include "formats/scan.h"

#include <algorithm>
#include <fmt/core.h>

namespace kapris_formats
{

namespace
{

struct PatohHeader {
  int base;
  int ncells;
  int nnets;
  int npins;
  bool cellweights;
  bool netweights;
};

} // namespace

// A number that may be missing at the end of the header.
static int ReadOptional(Scan *scan, const char *what, int lowest, int highest, int missing)
{
  if (!NextInLine(scan))
    return missing;
  const char *place = scan->at;
  const int value = ReadCount(scan, what);
  if (value < lowest || value > highest)
    FailAt(*scan, place, fmt::format("{} is {}, not {} to {}", what, value, lowest, highest));
  return value;
}

// A net is at least the end of its line, a pin or weight a digit and what follows it, be it that same end.
static void CheckCounts(const Scan &header_line, long long left, const PatohHeader &header)
{
  const long long words = header.npins + (header.netweights ? 1LL : 0LL) * header.nnets;
  const long long needed =
      std::max<long long>(header.nnets, 2 * words) + (header.cellweights ? 2LL : 0LL) * header.ncells - 1;

  if (needed > left)
    FailAt(header_line, header_line.at,
           fmt::format("{} nets, {} pins and their weights need at least {} bytes, but only {} follow",
                       header.nnets, header.npins, needed, left));
}

static PatohHeader ReadHeader(Scan *scan)
{
  PatohHeader header = {};

  if (!NextFilledLine(scan))
    FailAt(*scan, scan->at, "the header is missing: base, cells, nets, pins, which weights follow");
  const Scan header_line = *scan;
  header.base = ReadOptional(scan, "the number of the first cell", 0, 1, 0);
  header.ncells = ReadCount(scan, "the number of cells");
  header.nnets = ReadCount(scan, "the number of nets");
  header.npins = ReadCount(scan, "the number of pins");
  const int scheme = ReadOptional(scan, "the weight scheme", 0, 3, 0);
  header.cellweights = scheme == 1 || scheme == 3;
  header.netweights = scheme == 2 || scheme == 3;
  NextInLine(scan);
  const char *place = scan->at;
  const int nconstraints = ReadOptional(scan, "the number of weights per cell", 0, INT_MAX, 1);
  if (nconstraints != 1)
    FailAt(*scan, place, fmt::format("{} weights per cell: only one is supported", nconstraints));
  EndLine(scan, "the header");
  CheckCounts(header_line, scan->end - scan->at, header);
  return header;
}

static void ReadCellWeights(Scan *scan, int ncells, Hgr *hgr)
{
  std::int64_t total = 0;

  hgr->cellwgts.reserve(static_cast<size_t>(ncells));
  while (static_cast<int>(hgr->cellwgts.size()) < ncells) {
    if (!NextFilledLine(scan))
      FailAt(*scan, scan->at,
             fmt::format("the text ends after {} of {} cell weights", hgr->cellwgts.size(), ncells));
    while (static_cast<int>(hgr->cellwgts.size()) < ncells && NextInLine(scan))
      hgr->cellwgts.push_back(ReadWeight(scan, "cell weight", &total));
  }
}

Hgr ReadPatoh(const std::string &name, std::string_view text, Problems *problems)
{
  Scan scan = StartScan(name, text, problems);
  const PatohHeader header = ReadHeader(&scan);
  const Scan first_net = scan;
  Hgr hgr;

  ReadNetLines(&scan, {header.nnets, header.ncells, header.base, header.netweights}, &hgr);
  if (hgr.netind.size() != static_cast<size_t>(header.npins))
    FaultAt(first_net, first_net.at,
            fmt::format("the header says {} pins, but the nets have {}", header.npins, hgr.netind.size()));
  if (header.cellweights)
    ReadCellWeights(&scan, header.ncells, &hgr);
  EndText(&scan, header.cellweights ? "the last cell weight" : "the last net");
  return hgr;
}

} // namespace kapris_formats
