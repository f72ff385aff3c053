// cli/measure/bounds.cpp - what the library can add up, and how heavy a part may be.
// SPDX-License-Identifier: MIT
//
// The library refuses sums that are too large, in its own words; the tool finds out first and names the file.
// kapris.h states the limits.

#include "measure/bounds.h"

#include "failure.h"

#include <algorithm>
#include <climits>
#include <fmt/format.h>
#include <numeric>
#include <unordered_map>

namespace kapris_cli
{

static void CheckSum(const std::string &name, const std::string &what, long long sum)
{
  if (sum > INT_MAX)
    throw Failure{EXIT_MALFORMED,
                  fmt::format("{}: weights too large: {} is {}, above {}", name, what, sum, INT_MAX)};
}

// The gain of a move is a sum over the nets of a cell, a net counting once for each of its pins there.
static void CheckGains(const std::string &name, const Hgr &hgr)
{
  // As far as cells have nets: a line of text can claim 2^31 cells.
  std::unordered_map<int, long long> sums;

  for (int net = 0; net < hgr.nnets; net++) {
    const size_t n = static_cast<size_t>(net);
    for (int i = hgr.netptr[n]; i < hgr.netptr[n + 1]; i++)
      sums[hgr.netind[static_cast<size_t>(i)]] += NetWeight(hgr, net);
  }
  for (const auto &[cell, sum] : sums)
    if (sum > INT_MAX)
      CheckSum(name, fmt::format("the total weight of the nets of cell {}", cell + 1), sum);
}

void CheckSums(const std::string &name, const Hgr &hgr, int nparts)
{
  // Not cell by cell: a line of text can claim 2^31 cells without weights.
  const long long cells =
      hgr.cellwgts.empty() ? hgr.ncells : std::accumulate(hgr.cellwgts.begin(), hgr.cellwgts.end(), 0LL);
  long long nets = 0, spans = 0, pins = 0;

  for (int net = 0; net < hgr.nnets; net++) {
    const size_t n = static_cast<size_t>(net);
    const long long size = hgr.netptr[n + 1] - hgr.netptr[n];
    const long long weight = NetWeight(hgr, net);
    nets += weight;
    spans += weight * std::min<long long>(size, nparts);
    pins += weight * size;
  }

  CheckSum(name, "twice the total cell weight", 2 * cells);
  CheckSum(name, "the total net weight plus one", nets + 1);
  if (nparts > 2) {
    CheckSum(name, "ten times the total net weight plus one", 10 * nets + 1);
    CheckSum(name, "the total of net weight x parts that a net can span", spans);
  }
  // No cell can exceed what all cells together do not.
  if (pins > INT_MAX)
    CheckGains(name, hgr);
}

static long long DivideUp(long long value, long long by)
{
  return value / by + (value % by != 0);
}

// Share by share, since the product of total and factor may leave 64 bits.
long long ShareLimit(long long total, long long nparts, long long millionths)
{
  constexpr long long million = 1000 * 1000;
  const long long factor = million + millionths;
  const long long share = total / nparts, rest = total % nparts;

  return factor * (share / million) +
         DivideUp(factor * (share % million) + DivideUp(factor * rest, nparts), million);
}

int CountOver(const Measures &measures, const Limits &limits)
{
  int nover = 0;

  for (const UsedPart &used : measures.used)
    if (limits && used.weight > limits(used.number))
      nover++;
  return nover;
}

} // namespace kapris_cli
