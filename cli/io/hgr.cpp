// cli/io/hgr.cpp - the reader of .hgr text.
// SPDX-License-Identifier: MIT
//
//   header   nets, cells and which weights follow                ReadHeader
//   bound    the counts by the bytes that are left, before any   CheckCounts
//            memory is taken for them
//   nets     one line each: weight, pins from 1                  ReadNets
//   weights  one line per cell                                   ReadCellWeights
//   end      nothing but comments and blank lines                ReadHgr
//
// Nothing is repaired: a pin that a net names twice, a net of one pin and a net without pins stay as they
// are.

#include "io/hgr.h"

#include "failure.h"

#include "io/scan.h"

#include <climits>
#include <fmt/format.h>

namespace kapris_cli
{

struct Header {
  int nnets;
  int ncells;
  bool netweights;
  bool cellweights;
};

static int ReadCount(Scan *scan, const char *what)
{
  if (!NextInLine(scan))
    FailAt(*scan, scan->at, fmt::format("{} is missing", what));
  return ReadNumber(scan, what);
}

// A net is at least the end of its line, a weight at least a digit more. The last line may lack its end.
static void CheckCounts(const Scan &header_line, long long left, const Header &header)
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

static Header ReadHeader(Scan *scan)
{
  Header header = {0, 0, false, false};

  if (!NextFilledLine(scan))
    FailAt(*scan, scan->at, "the header is missing: nets, cells and which weights follow");
  const Scan header_line = *scan;
  header.nnets = ReadCount(scan, "the number of nets");
  header.ncells = ReadCount(scan, "the number of cells");
  if (NextInLine(scan)) {
    const char *fmt_at = scan->at;
    const int code = ReadNumber(scan, "the format code");
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

static int ReadPin(Scan *scan, int ncells)
{
  const char *pin_at = scan->at;
  const int pin = ReadNumber(scan, "pin");

  if (pin == 0)
    FailAt(*scan, pin_at, "pin 0: cells are counted from 1");
  if (pin > ncells)
    FailAt(*scan, pin_at, fmt::format("pin {}, but there are only {} cells", pin, ncells));
  return pin - 1;
}

static void ReadNets(Scan *scan, const Header &header, Hgr *hgr)
{
  hgr->netptr.reserve(static_cast<size_t>(header.nnets) + 1);
  hgr->netptr.push_back(0);
  if (header.netweights)
    hgr->netwgts.reserve(static_cast<size_t>(header.nnets));
  for (int net = 0; net < header.nnets; net++) {
    if (!NextLine(scan))
      FailAt(*scan, scan->at, fmt::format("the text ends after {} of {} nets", net, header.nnets));
    if (header.netweights) {
      if (!NextInLine(scan))
        FailAt(*scan, scan->at, fmt::format("the weight of net {} is missing", net + 1));
      hgr->netwgts.push_back(ReadNumber(scan, "net weight"));
    }
    while (NextInLine(scan))
      hgr->netind.push_back(ReadPin(scan, header.ncells));
    if (hgr->netind.size() > INT_MAX)
      FailAt(*scan, scan->at, fmt::format("more than {} pins, the largest number", INT_MAX));
    hgr->netptr.push_back(static_cast<int>(hgr->netind.size()));
    EndLine(scan, "the net");
  }
}

static void ReadCellWeights(Scan *scan, const Header &header, Hgr *hgr)
{
  hgr->cellwgts.reserve(static_cast<size_t>(header.ncells));
  for (int cell = 0; cell < header.ncells; cell++) {
    if (!NextLine(scan))
      FailAt(*scan, scan->at, fmt::format("the text ends after {} of {} cell weights", cell, header.ncells));
    if (!NextInLine(scan))
      FailAt(*scan, scan->at, fmt::format("the weight of cell {} is missing", cell + 1));
    hgr->cellwgts.push_back(ReadNumber(scan, "cell weight"));
    EndLine(scan, "the cell weight");
  }
}

Hgr ReadHgr(const std::string &name, std::string_view text)
{
  Scan scan = StartScan(name, text);
  const Header header = ReadHeader(&scan);
  Hgr hgr;

  hgr.ncells = header.ncells;
  hgr.nnets = header.nnets;
  ReadNets(&scan, header, &hgr);
  if (header.cellweights)
    ReadCellWeights(&scan, header, &hgr);
  if (NextFilledLine(&scan))
    FailAt(scan, scan.at,
           fmt::format("{} is left over after the last {}", Quoted(scan, scan.at),
                       header.cellweights ? "cell weight" : "net"));
  return hgr;
}

} // namespace kapris_cli
