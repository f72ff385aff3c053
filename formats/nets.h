// formats/nets.h - what two formats share: weights, and nets as lines of text, an optional weight, then pins.
// SPDX-License-Identifier: MIT
#pragma once

#include "formats/hgr.h"
#include "formats/scan.h"

namespace kapris_formats
{

// Reads the weight here, after NextInLine, and adds it to the total of its kind, which is 0 at first. What it is goes
// into the messages: "cell weight". A fault unless it is in 0 .. most_weight, and at the weight that takes the total
// above that.
std::int64_t ReadWeight(Scan *scan, const char *what, std::int64_t *total);

struct NetLines {
  int nnets;
  int ncells;
  int base; // the number of the first cell
  bool weights;
};

// Reads that many lines into an empty hypergraph. With a list, faulty pins that are numbers are kept in it, and nets
// get their warnings.
void ReadNetLines(Scan *scan, const NetLines &lines, Hgr *hgr);

} // namespace kapris_formats
