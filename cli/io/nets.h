// cli/io/nets.h - nets as lines of text: an optional weight, then pins. Two formats have them.
// SPDX-License-Identifier: MIT
#pragma once

#include "io/hgr.h"
#include "io/scan.h"

namespace kapris_cli
{

struct NetLines {
  int nnets;
  int ncells;
  int base; // the number of the first cell
  bool weights;
};

// Reads that many lines into an empty hypergraph. With a list, faulty pins that are numbers are kept in it, and nets
// get their warnings.
void ReadNetLines(Scan *scan, const NetLines &lines, Hgr *hgr);

} // namespace kapris_cli
