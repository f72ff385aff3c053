// cli/measure/bounds.cpp - what the library can add up, and how heavy a part may be.
// SPDX-License-Identifier: MIT
//
// The library refuses sums that are too large, in its own words; the tool finds out first and names the file.
// kapris_api.h states the limits.

#include "measure/bounds.h"

#include "libraries.h"

#include "formats/failure.h"
#include "measure/sums.h"

#include <algorithm>
#include <cstdio>
#include <fmt/core.h>

namespace kapris_cli
{

void CheckSums(const std::string &name, const Hgr &hgr, int nparts)
{
  std::int64_t sum = 0;

  for (int net = 0; net < hgr.nnets; net++) {
    const size_t n = static_cast<size_t>(net);
    const int span = std::min(hgr.netptr[n + 1] - hgr.netptr[n], nparts);
    if (!AddProduct(&sum, NetWeight(hgr, net), span) || sum > most_weight)
      throw Failure{
          EXIT_MALFORMED,
          fmt::format("{}: weights too large: net {}, of weight {}, takes the total of net weight x "
                      "parts that a net can span, {} of {}, above {}",
                      name, net + 1, NetWeight(hgr, net), span, nparts, most_weight)};
  }
}

Limits LimitsOf(std::int64_t total, const kapris::Targets &targets, std::optional<double> epsilon,
                double min_epsilon)
{
  const bool equal = targets.target_weights.empty();
  Limits limits;

  if (epsilon) {
    const std::int64_t all = equal ? kapris::PartLimit(total, targets, 0, *epsilon) : 0;
    limits.most = [=](int p) { return equal ? all : kapris::PartLimit(total, targets, p, *epsilon); };
  }
  if (min_epsilon < 1.0) {
    const std::int64_t all = equal ? kapris::PartMinimum(total, targets, 0, min_epsilon) : 0;
    limits.least = [=](int p) { return equal ? all : kapris::PartMinimum(total, targets, p, min_epsilon); };
  }
  return limits;
}

int CountOver(const Measures &measures, const Limits &limits)
{
  int nover = 0;

  for (const UsedPart &used : measures.used)
    nover += limits.most && used.weight > limits.most(used.number);
  return nover;
}

// A part without cells is below any minimum but 0.
long long CountUnder(const Measures &measures, long long nparts, const Limits &limits)
{
  size_t next = 0;
  long long nunder = 0;

  for (int p = 0; limits.least && p < nparts; p++) {
    const bool used = next < measures.used.size() && measures.used[next].number == p;
    nunder += (used ? measures.used[next++].weight : 0) < limits.least(p);
  }
  return nunder;
}

std::vector<std::string> LimitWarnings(const Hgr &hgr, const kapris::Targets &targets, double epsilon)
{
  const std::string percent =
      epsilon >= 1.0 ? fmt::format("; if {0:g} percent is meant, give {1:g}", epsilon, epsilon / 100) : "";
  std::vector<std::string> warnings;
  std::int64_t total = 0, most = 0;

  for (int cell = 0; cell < hgr.ncells; cell++)
    total += CellWeight(hgr, cell);
  for (int p = 0; p < (targets.target_weights.empty() ? 1 : targets.nparts); p++)
    most = std::max(most, kapris::PartLimit(total, targets, p, epsilon));
  if (targets.nparts > hgr.ncells)
    warnings.push_back(fmt::format("{} parts for {} cells: {} parts stay empty", targets.nparts, hgr.ncells,
                                   targets.nparts - hgr.ncells));
  else if (targets.nparts > 1 && most >= total)
    warnings.push_back(
        fmt::format("with an epsilon of {:g}, all cells fit into one part{}", epsilon, percent));
  else if (!percent.empty())
    warnings.push_back(fmt::format("an epsilon of {:g} allows parts of {:g} times their share{}", epsilon,
                                   1.0 + epsilon, percent));
  return warnings;
}

void PrintWarnings(const std::vector<std::string> &warnings)
{
  for (const std::string &warning : warnings)
    fmt::print(stderr, "kapris: warning: {}\n", warning);
}

} // namespace kapris_cli
