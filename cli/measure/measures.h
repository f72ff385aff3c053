// cli/measure/measures.h - the quality of a partition, from its definition and without the library.
// SPDX-License-Identifier: MIT
#pragma once

#include "formats/hgr.h"
#include "report/library.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace kapris_report
{

struct UsedPart {
  int number;
  std::int64_t weight;
};

struct Measures {
  std::int64_t cut = 0;          // weight of the nets that span more than one part
  std::int64_t soed = 0;         // weight x parts that it spans, over these nets
  std::int64_t connectivity = 0; // weight x (parts that it spans - 1), over all nets with pins
  std::int64_t total = 0;        // weight of all cells
  std::vector<UsedPart> used;    // the parts that have cells, by number
};

// The parts in use, by number, and for each cell which of them it is in.
struct Placement {
  std::vector<int> numbers;
  std::vector<size_t> slot;
};
Placement Place(const std::vector<int> &part);

// part has one number >= 0 for each cell. The numbers may be far apart: memory depends on the parts in use. Throws
// Failure if the SOED leaves 64 bits, which CheckSums rules out; the name is for its message.
Measures Measure(const std::string &name, const Hgr &hgr, const std::vector<int> &part);

// The part that is heaviest over its share, less 1; 0 if nothing has weight. shares: of all parts, or empty: all equal.
double Imbalance(const Measures &measures, long long nparts, const std::vector<double> &shares = {});

struct CutNet {
  int net;
  std::vector<int> parts; // that it spans, rising
};

// The nets that span more than one part.
std::vector<CutNet> CutNets(const Hgr &hgr, const std::vector<int> &part);

// For each pair of parts the weight of the cut nets that touch both parts; of a part and itself, of its cut nets.
std::vector<std::vector<std::int64_t>> CutMatrix(const Hgr &hgr, const std::vector<CutNet> &nets, int nparts);

} // namespace kapris_report
